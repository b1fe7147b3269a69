// What checking a file finds, and the table of all that it can find.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/tags.h"

namespace vellum {

enum class Severity : std::uint8_t {
  Error,    ///< against the format: some reader refuses the file or shows something else
  Warning,  ///< legal or harmless, and hardly meant
  Note,     ///< worth knowing
};
std::string_view severity_name(Severity severity);

enum class RuleId : std::uint8_t {
#define RULE(name, severity, text, asked, remedy) name,
#include "core/check/check_rules.inc"
#undef RULE
};

struct Rule {
  Severity severity;
  const char *name, *text;
  const char* asked;   ///< what the format asks for, and where that stands; may be empty
  const char* remedy;  ///< what can be done; empty where a person has to know
  /// Whether repairing mends it without a choice.
  bool repaired() const;
};
const Rule& rule(RuleId id);
/// "crc-wrong": how scripts know it.
std::string rule_name(RuleId id);

struct Finding {
  RuleId rule;
  ChunkTag tag = 0;          ///< of the chunk; 0 where it is about the file
  std::uint32_t chunk = 0;   ///< which one of the file, from 1; 0 where it is about the file
  std::uint64_t offset = 0;  ///< of the chunk in the file, in bytes
  std::string detail;        ///< values: "stored 1234ABCD, computed 0BADF00D"; may be empty
};

/// "the check value is wrong: stored 1234ABCD, computed 0BADF00D"
std::string finding_text(const Finding& finding);

}  // namespace vellum
