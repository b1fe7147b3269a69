#include "shell/command_bar.h"

#include <QLayout>
#include <QMenuBar>
#include <QShortcut>
#include <QToolButton>
#include <algorithm>

#include "core/chunk_layout.h"
#include "shell/icon.h"
#include "shell/style.h"

namespace vellum {
namespace {

QStringList scale_names() {
  QStringList names;
  for (const int percent : kThumbnailScales)
    names << (percent == 0 ? QObject::tr("Text only") : QStringLiteral("%1%").arg(percent));
  return names;
}

QToolBar* make_toolbar(QMainWindow& window) {
  auto* bar = new QToolBar(QObject::tr("Toolbar"), &window);
  bar->setObjectName(QStringLiteral("VellumcraftBar"));
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  bar->setIconSize(QSize(style::kToolIcon, style::kToolIcon));
  bar->layout()->setContentsMargins(style::kGap / 2, style::kGap / 2, style::kGap / 2, style::kGap / 2);
  bar->layout()->setSpacing(style::kGap / 4);
  window.addToolBar(bar);
  return bar;
}

}  // namespace

QString plain_label(const char* label) { return QString::fromUtf8(label).section(u'\t', 0, 0).remove(u'&'); }

CommandBar::CommandBar(QMainWindow& window) : QObject(&window) {
  for (const CommandRow& row : command_table()) add_action(row);
  fill_menus(window);
  fill_toolbar(window);
  bind_keys(window);
}

QAction* CommandBar::action(int number) const {
  const auto at = actions_.find(number);
  return at == actions_.end() ? nullptr : at->second;
}

void CommandBar::add_action(const CommandRow& row) {
  auto* action = new QAction(QString::fromUtf8(row.label), this);
  action->setToolTip(plain_label(row.label));
  action->setMenuRole(QAction::NoRole);
  if (row.icon) action->setIcon(program_icon(row.icon));
  const int number = row.number;
  connect(action, &QAction::triggered, this, [this, number] { emit triggered(number); });
  actions_[number] = action;
}

void CommandBar::fill_menus(QMainWindow& window) {
  for (const MenuRow& row : menu_table()) {
    const QString label = QString::fromUtf8(row.label);
    menus_[row.menu] =
        row.parent == Menu::None ? window.menuBar()->addMenu(label) : new QMenu(label, window.menuBar());
  }
  for (const CommandRow& row : command_table())
    if (row.menu != Menu::None) add_to_menu(row.menu, row.menuGroup, action(row.number));
}

void CommandBar::add_to_menu(Menu menu, int group, QAction* action) {
  const auto row = std::ranges::find(menu_table(), menu, &MenuRow::menu);
  int& last = lastGroup_[menu];
  if (last == 0 && row->parent != Menu::None)
    add_to_menu(row->parent, row->group, menus_.at(menu)->menuAction());
  if (last != 0 && last != group) menus_.at(menu)->addSeparator();
  last = group;
  menus_.at(menu)->addAction(action);
}

void CommandBar::fill_toolbar(QMainWindow& window) {
  bar_ = make_toolbar(window);
  add_menu_tools();
  std::vector<const CommandRow*> tools;
  for (const CommandRow& row : command_table())
    if (row.tool != ToolPlace::None) tools.push_back(&row);
  std::ranges::stable_sort(tools, {}, [](const CommandRow* row) { return row->toolGroup; });
  int last = 0;
  for (const CommandRow* row : tools) {
    if (last != 0 && last != row->toolGroup) bar_->addSeparator();
    last = row->toolGroup;
    add_tool(*row);
  }
}

void CommandBar::add_menu_tools() {
  for (const MenuRow& row : menu_table()) {
    if (!row.icon) continue;
    auto* button = new QToolButton(bar_);
    button->setIcon(program_icon(row.icon));
    button->setText(plain_label(row.label));
    button->setToolTip(plain_label(row.label));
    button->setMenu(menus_.at(row.menu));
    button->setPopupMode(QToolButton::InstantPopup);
    bar_->addWidget(button);
  }
}

QWidget* CommandBar::tool_button(int number) const {
  QWidget* button = bar_->widgetForAction(action(number));
  return button && button->isVisible() ? button : nullptr;
}

void CommandBar::add_tool(const CommandRow& row) {
  if (row.tool == ToolPlace::Button) {
    bar_->addAction(action(row.number));
    return;
  }
  scale_ = new QComboBox(bar_);
  scale_->addItems(scale_names());
  scale_->setAccessibleName(plain_label(row.label));
  scale_->setToolTip(plain_label(row.label));
  scale_->setFocusPolicy(Qt::TabFocus);
  connect(scale_, &QComboBox::activated, action(row.number), &QAction::trigger);
  bar_->addWidget(scale_);
}

void CommandBar::bind_keys(QMainWindow& window) {
  for (const KeyRow& row : key_table()) {
    auto* key = new QShortcut(QKeySequence(QString::fromLatin1(row.keys)), &window);
    connect(key, &QShortcut::activated, action(row.command), [this, number = row.command] {
      byKey_ = true;
      action(number)->trigger();
      byKey_ = false;
    });
  }
  QMenuBar* bar = window.menuBar();
  auto* menus = new QShortcut(QKeySequence(Qt::Key_F10), &window);
  connect(menus, &QShortcut::activated, bar, [bar] { bar->setActiveAction(bar->actions().front()); });
}

void CommandBar::enable(const CommandState& state) {
  for (const CommandRow& row : command_table()) {
    const bool enabled = command_enabled(row, state);
    action(row.number)->setEnabled(enabled);
    if (row.tool == ToolPlace::DropDown) scale_->setEnabled(enabled);
  }
  for (const MenuRow& row : menu_table()) {
    if (row.parent == Menu::None) continue;
    QMenu* menu = menus_.at(row.menu);
    menu->menuAction()->setEnabled(std::ranges::any_of(menu->actions(), &QAction::isEnabled));
  }
}

void CommandBar::show_scale(int index) { scale_->setCurrentIndex(index); }

}  // namespace vellum
