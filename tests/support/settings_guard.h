// Settings are global: a test that changes any brings them back.
#pragma once

#include "configuration/setting_values.h"

namespace vellum::testing {

class SettingsGuard {
 public:
  SettingsGuard() = default;
  ~SettingsGuard() {
    reset_settings();
    set_all_setting_values(kept_);
  }
  SettingsGuard(const SettingsGuard&) = delete;
  SettingsGuard& operator=(const SettingsGuard&) = delete;

 private:
  std::vector<SettingValue> kept_ = all_setting_values();
};

}  // namespace vellum::testing
