// The commands of the Help menu.
#include <QDesktopServices>
#include <QUrl>

#include "shell/about_box.h"
#include "shell/commands.h"
#include "shell/main_window.h"
#include "shell/text.h"

namespace vellum {
namespace {

struct WebPage {
  int number;
  const char* address;  ///< empty: none yet
};

constexpr WebPage kWebPages[] = {{2903, ""}, {2904, ""}, {2905, ""}};

}  // namespace

void about_command(MainWindow& main) { show_about_box(&main); }

void open_web_page(MainWindow& main, int number) {
  const auto page = std::ranges::find(kWebPages, number, &WebPage::number);
  if (page == std::end(kWebPages) || !*page->address) return main.services().host.show(StringId::NoPageYet);
  QDesktopServices::openUrl(QUrl(to_qt(page->address)));
}

void not_implemented_command(MainWindow& main, DocumentFrame&) {
  main.services().host.show(StringId::NotImplemented);
}

}  // namespace vellum
