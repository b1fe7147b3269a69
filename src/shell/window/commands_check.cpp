// The dock that checks the document.
#include <QDockWidget>

#include "shell/docks/check_panel.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

const auto kDockName = QStringLiteral("CheckDock");

CheckPanel& panel_of(MainWindow& main) {
  if (auto* dock = main.findChild<QDockWidget*>(kDockName)) return *static_cast<CheckPanel*>(dock->widget());
  auto* dock = new QDockWidget(QObject::tr("Check document"), &main);
  dock->setObjectName(kDockName);
  auto* panel = new CheckPanel(main.services(), dock);
  dock->setWidget(panel);
  main.addDockWidget(Qt::BottomDockWidgetArea, dock);
  QObject::connect(&main, &MainWindow::refreshed, panel, [&main, panel] {
    panel->show_document(main.area().active());
    panel->follow();
  });
  return *panel;
}

}  // namespace

void check_command(MainWindow& main, DocumentFrame& frame) {
  CheckPanel& panel = panel_of(main);
  panel.parentWidget()->show();
  panel.parentWidget()->raise();
  panel.show_document(&frame);
  panel.check();
  panel.setFocus();
}

}  // namespace vellum
