// What Setup shows: three pages of settings.
#pragma once

#include <span>

#include "shell/forms/setting_page.h"

namespace vellum {

struct SetupPageRow {
  const char* name;  ///< on the tab, and in the topic of its help
  std::span<const SettingField> fields;
  int columns;  ///< of check boxes
};

std::span<const SetupPageRow> setup_pages();

}  // namespace vellum
