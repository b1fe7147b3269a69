#include "core/check/finding.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"
#include "base/translation.h"

namespace vellum {
namespace {

constexpr Rule kRules[] = {
#define RULE(name, severity, text, asked, remedy) {Severity::severity, #name, text, asked, remedy},
#include "core/check/check_rules.inc"
#undef RULE
};

}  // namespace

std::string_view severity_name(Severity severity) {
  static constexpr std::string_view names[] = {"error", "warning", "note"};
  return names[static_cast<std::size_t>(severity)];
}

bool Rule::repaired() const { return std::string_view(remedy).ends_with("(repair)"); }

const Rule& rule(RuleId id) { return kRules[static_cast<std::size_t>(id)]; }

std::string rule_name(RuleId id) {
  std::string name = lower_case(rule(id).name);
  std::ranges::replace(name, '_', '-');
  return name;
}

std::string finding_text(const Finding& finding) {
  std::string text = translated(rule(finding.rule).text);
  return finding.detail.empty() ? text : text + ": " + finding.detail;
}

}  // namespace vellum
