#include "shell/start/welcome_choices.h"

#include "configuration/setting_values.h"
#include "configuration/shell_settings.h"
#include "core/settings.h"

namespace vellum {
namespace {

enum Scale { kTextOnly = 0, kHalf = 3, kFull = 5 };

void store(const char* key, int value) {
  const SettingRow& row = *find_setting(key);
  if (*row.number != value) change_setting(row, {value, {}});
}

}  // namespace

WelcomeChoices stored_choices() {
  WelcomeChoices choices;
  choices.animationType = settings::DefaultAnimationType;
  choices.delay = settings::DefaultDelay;
  choices.viewMode = settings::DefaultViewMode;
  choices.backups = settings::CreateBackups != 0;
  choices.identify = settings::IdentifyFiles != 0;
  choices.tips = settings::ShowTipOfTheDay != 0;
  choices.work = choices.viewMode == kTextOnly ? Work::Chunks
                 : choices.viewMode == kHalf   ? Work::Both
                                               : Work::Animations;
  return choices;
}

void suit_work(WelcomeChoices& choices) {
  choices.viewMode = choices.work == Work::Chunks ? kTextOnly : choices.work == Work::Both ? kHalf : kFull;
  // Who looks into files of others changes them in place.
  choices.backups = choices.work == Work::Chunks;
}

void store_choices(const WelcomeChoices& choices) {
  store("DefaultAnimationType", choices.animationType);
  store("DefaultDelay", choices.delay);
  store("DefaultViewMode", choices.viewMode);
  store("CreateBackups", choices.backups);
  store("IdentifyFiles", choices.identify);
  store("ShowTipOfTheDay", choices.tips);
}

}  // namespace vellum
