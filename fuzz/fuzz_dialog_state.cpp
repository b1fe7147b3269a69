// Any bytes at all as the state file of a dialog, and as a text that a control holds: what is read is written
// and reads back as the same.
#include "base/text.h"
#include "configuration/dialog_lines.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  for (std::string_view rest = file; !rest.empty();) {
    const auto line = parse_dialog_line(take_line(rest));
    if (!line || line->text.ends_with('\r')) continue;  // no text of ours
    std::string written = dialog_line(*line);
    std::string_view again = written;
    check(parse_dialog_line(take_line(again)) == *line && again.empty());
    unescaped_line(line->text);
  }
  const std::string held = escaped_line(file);
  check(held.find_first_of("\r\n") == std::string::npos && unescaped_line(held) == file);
  return 0;
}
