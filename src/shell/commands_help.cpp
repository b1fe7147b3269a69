// The commands of the Help menu.
#include "configuration/shell_settings.h"
#include "shell/about_box.h"
#include "shell/commands.h"
#include "shell/help/help_window.h"
#include "shell/main_window.h"
#include "shell/start/start_screens.h"
#include "shell/start/tips.h"
#include "shell/system_information.h"

namespace vellum {

void contents_command(MainWindow& main) {
  Host& host = main.services().host;
  const std::string text(string_text(StringId::ShowGuideQuestion));
  const Message question{StringId::ShowGuideQuestion, {}, text, {}, &settings::WarnShowManual};
  if (settings::WarnShowManual != 0 && host.ask && host.ask(question, false) != Answer::Yes) return;
  show_guide_page(QLatin1String(main.services().shift_held() ? kGuideIndex : kGuideStart));
}

void about_command(MainWindow& main) { show_about_box(&main); }

void system_information_command(MainWindow& main) { show_system_information(&main); }

void tip_command(MainWindow& main) { show_tips(&main); }

void welcome_command(MainWindow& main) { welcome(main); }

}  // namespace vellum
