// Any bytes at all are read as a configuration; what is written of it reads back as the same settings, and is
// written again as the same text.
#include "configuration/config_file.h"
#include "configuration/config_line.h"
#include "configuration/setting_values.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  reset_settings();
  config_parse({reinterpret_cast<const char*>(data), size});
  const auto values = all_setting_values();
  const std::string text = config_text(0);
  reset_settings();
  config_parse(text);
  check(config_text(0) == text);
  const auto rows = setting_table();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const SettingValue again = setting_value(rows[i]);
    check(values[i].text.size() <= kSettingTextLimit);
    // A short key lets in a text that its full key leaves no room for on the line.
    const bool cut = rows[i].name.size() + 3 + values[i].text.size() > kConfigLineLimit;
    check(cut ? values[i].text.starts_with(again.text) : again == values[i]);
  }
  return 0;
}
