// The lines of a dialog's state file: "DlgItem_000004=CBSL,a text".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vellum {

/// A line: the number of a control, the four letters of its kind, and what it held.
struct DialogLine {
  int id = 0;
  std::string_view tag;
  std::string_view text;
  bool operator==(const DialogLine&) const = default;
};

/// A line without its end; nothing for one that is none of a dialog's state.
std::optional<DialogLine> parse_dialog_line(std::string_view line);

/// The line with its end. `text` has no line ends; see `escaped_line`.
std::string dialog_line(const DialogLine& line);

/// A text of several lines as one, and the reverse.
std::string escaped_line(std::string_view text);
std::string unescaped_line(std::string_view line);

}  // namespace vellum
