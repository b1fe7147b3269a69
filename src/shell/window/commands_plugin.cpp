// The commands of animation plugins, which are known when the program runs.
#include <QMenu>

#include "core/build/build_animation.h"
#include "extension/plugin.h"
#include "extension/settings.h"
#include "shell/look/text.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

void run(MainWindow& main, const Plugin& plugin) {
  Services& services = main.services();
  if (services.busy && services.busy()) return;
  auto made = run_plugin(plugin, build_kind(kDefaultKind), &main, services.host);
  if (made.empty() && !services.host.stopped())
    services.host.show(StringId::PluginMadeNothing, {}, plugin.name);
  for (DocumentWindow& window : made)
    if (DocumentFrame* frame = main.add_document(std::move(window))) frame->size_to_content();
  main.refresh();
}

}  // namespace

void add_plugins(MainWindow& main) {
  if (settings::HidePlugins != 0) return;
  PluginsFound found = find_plugins(plugin_folders(), settings::SortPlugins != 0);
  std::string refused;
  for (const std::string& reason : found.refused) refused += (refused.empty() ? "" : "\n") + reason;
  if (!refused.empty())
    main.services().host.warn(StringId::PluginsRefused, settings::ShowPluginMessage, refused);
  if (found.plugins.empty()) return;
  QMenu* menu = main.commands().menu(Menu::Create);
  menu->addSeparator();
  int number = 10'000;
  for (Plugin& plugin : found.plugins) {
    QAction* action = menu->addAction(menu_text(to_qt(plugin.name)));
    action->setData(number++);
    action->setStatusTip(to_qt(plugin.description));
    QObject::connect(action, &QAction::triggered, &main,
                     [&main, plugin = std::move(plugin)] { run(main, plugin); });
  }
}

}  // namespace vellum
