// The commands of the Help menu.
#include <QDesktopServices>
#include <QUrl>

#include "configuration/shell_settings.h"
#include "shell/dialogs/about_box.h"
#include "shell/dialogs/system_information.h"
#include "shell/help/help_window.h"
#include "shell/look/text.h"
#include "shell/start/tips.h"
#include "shell/widgets/dialog_frame.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"
#include "shell/window/start_screens.h"

namespace vellum {
namespace {

struct WebPage {
  int number;
  const char* address;  ///< empty: none yet
};

constexpr WebPage kWebPages[] = {{2903, ""}, {2904, ""}, {2905, ""}};

}  // namespace

void contents_command(MainWindow& main) {
  if (const QString topic = main.docks().topic(); !topic.isEmpty() && showHelp) return showHelp(topic);
  Host& host = main.services().host;
  const std::string text(string_text(StringId::ShowGuideQuestion));
  const Message question{StringId::ShowGuideQuestion, {}, text, {}, &settings::WarnShowManual};
  if (settings::WarnShowManual != 0 && host.ask && host.ask(question, false) != Answer::Yes) return;
  show_guide_page(QLatin1String(main.services().shift_held() ? kGuideIndex : kGuideStart));
}

void about_command(MainWindow& main) { show_about_box(&main); }

void open_web_page(MainWindow& main, int number) {
  const auto page = std::ranges::find(kWebPages, number, &WebPage::number);
  if (page == std::end(kWebPages) || !*page->address) return main.services().host.show(StringId::NoPageYet);
  QDesktopServices::openUrl(QUrl(to_qt(page->address)));
}

void not_implemented_command(MainWindow& main, DocumentFrame&) {
  main.services().host.show(StringId::NotImplemented);
}
void system_information_command(MainWindow& main) { show_system_information(&main); }

void tip_command(MainWindow& main) { show_tips(&main); }

void welcome_command(MainWindow& main) { welcome(main); }

}  // namespace vellum
