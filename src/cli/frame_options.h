// Values of options about frames, sizes and places.
#pragma once

#include <charconv>
#include <optional>
#include <string>

#include "cli/command.h"
#include "core/model/document.h"
#include "core/model/frame_values.h"

namespace vellum::cli {

/// A whole number from `least` to `most`, and nothing else in the text.
inline std::optional<std::int64_t> whole_number(std::string_view text, std::int64_t least,
                                                std::int64_t most) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value >= least && value <= most ? std::optional(value) : std::nullopt;
}

/// Two of them with a letter between: "WxH", "X,Y".
inline std::optional<std::pair<std::int64_t, std::int64_t>> number_pair(std::string_view text, char parting,
                                                                        std::int64_t least,
                                                                        std::int64_t most) {
  const auto at = text.find(parting);
  if (at == std::string_view::npos) return std::nullopt;
  const auto first = whole_number(text.substr(0, at), least, most);
  const auto second = whole_number(text.substr(at + 1), least, most);
  if (!first || !second) return std::nullopt;
  return std::pair(*first, *second);
}

/// Tells on standard error what is wrong with the command line; false.
inline bool wrong_usage(const std::string& reason) {
  std::fprintf(stderr, "vellum: %s\n", reason.c_str());
  return false;
}

/// Tells that there is no file, with the reason that was kept; `kFailed`.
inline int tell_of_failure(Host& host) {
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, host.take_fault());
  return kFailed;
}

}  // namespace vellum::cli
