#include "shell/window/command_bar.h"

#include <QHelpEvent>
#include <QLayout>
#include <QMenuBar>
#include <QShortcut>
#include <QToolButton>
#include <QToolTip>
#include <algorithm>

#include "core/model/chunk_layout.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/look/tool_style.h"

namespace vellum {
namespace {

constexpr int kUndoCommand = 204, kRedoCommand = 208;

QStringList scale_names() {
  QStringList names;
  for (const int percent : kThumbnailScales)
    names << (percent == 0 ? QObject::tr("Text only") : QStringLiteral("%1%").arg(percent));
  return names;
}

/// What stands below a command's name in its tip; empty for one that works.
QString reason_of(const CommandRow& row) { return row.run ? QString() : text_of(StringId::LaterCommand); }

QString tip_of(const CommandRow& row) {
  const QString reason = reason_of(row);
  return reason.isEmpty() ? plain_label(row.label) : plain_label(row.label) + u'\n' + reason;
}

QToolBar* make_toolbar(QMainWindow& window) {
  auto* bar = new QToolBar(QObject::tr("Toolbar"), &window);
  bar->setObjectName(QStringLiteral("VellumcraftBar"));
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  bar->setIconSize(QSize(style::kToolIcon, style::kToolIcon));
  window.addToolBar(bar);
  return bar;
}

}  // namespace

QString plain_label(const char* label) { return shown(label).section(u'\t', 0, 0).remove(u'&'); }

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
  auto* action = new QAction(shown(row.label), this);
  action->setToolTip(tip_of(row));
  action->setStatusTip(reason_of(row));
  action->setMenuRole(QAction::NoRole);
  if (row.icon) action->setIcon(program_icon(row.icon));
  const int number = row.number;
  connect(action, &QAction::triggered, this, [this, number] { emit triggered(number); });
  actions_[number] = action;
}

QMenu* CommandBar::add_menu(const MenuRow& row, QMainWindow& window) {
  const QString label = shown(row.label);
  QMenu* menu =
      row.parent == Menu::None ? window.menuBar()->addMenu(label) : new QMenu(label, window.menuBar());
  if (row.icon) menu->setIcon(program_icon(row.icon));
  menu->installEventFilter(this);
  return menu;
}

void CommandBar::fill_menus(QMainWindow& window) {
  for (const MenuRow& row : menu_table()) menus_[row.menu] = add_menu(row, window);
  for (const CommandRow& row : command_table()) {
    if (row.menu != Menu::None) add_to_menu(row.menu, row.menuGroup, action(row.number));
    add_run_time_menus(row.number);
  }
}

void CommandBar::add_run_time_menus(int behind) {
  for (const MenuRow& row : menu_table())
    if (row.behind == behind) add_to_menu(row.parent, row.group, menus_.at(row.menu)->menuAction());
}

bool CommandBar::eventFilter(QObject* menu, QEvent* event) {
  if (menu == bar_) {
    if (event->type() == QEvent::StyleChange) dress_bar();
    return false;
  }
  if (event->type() != QEvent::ToolTip) return QObject::eventFilter(menu, event);
  const auto* help = static_cast<QHelpEvent*>(event);
  const QAction* pointed = static_cast<QMenu*>(menu)->actionAt(help->pos());
  QToolTip::showText(help->globalPos(), pointed ? pointed->statusTip() : QString());
  return true;
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
  int last = 0;
  for (const ToolRow& tool : tool_table()) {
    if (last != 0 && last != tool.group) bar_->addSeparator();
    last = tool.group;
    add_tool(tool.command);
  }
  bar_->installEventFilter(this);
  dress_bar();
}

/// The buttons have a style of their own, so the toolbar follows a theme by itself.
void CommandBar::dress_bar() {
  QStyle* old = look_;
  look_ = new ToolStyle(bar_);
  for (QToolButton* button : bar_->findChildren<QToolButton*>()) button->setStyle(look_);
  delete old;
  bar_->setMinimumHeight(theme_metric(VELLUM_METRIC_TOOLBAR_HEIGHT, 0));
  const int margin = theme_metric(VELLUM_METRIC_MARGIN, style::kGap) / 2;
  bar_->layout()->setContentsMargins(margin, margin, margin, margin);
  bar_->layout()->setSpacing(theme_metric(VELLUM_METRIC_GAP, style::kGap / 2) / 2);
}

void CommandBar::refresh_look() { bar_->update(); }

void CommandBar::add_menu_tools() {
  for (const MenuRow& row : menu_table()) {
    if (!row.icon || row.behind != 0) continue;
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

void CommandBar::add_tool(int command) {
  if (command == kScaleCommand) return add_scale(command);
  bar_->addAction(action(command));
  QWidget* button = bar_->widgetForAction(action(command));
  button->setProperty(kCommandProperty, command);
  button->setFocusPolicy(Qt::TabFocus);
  button->setAccessibleName(plain_label(find_command(command)->label));
}

void CommandBar::add_scale(int command) {
  const QString name = plain_label(find_command(command)->label);
  scale_ = new QComboBox(bar_);
  scale_->addItems(scale_names());
  scale_->setAccessibleName(name);
  scale_->setToolTip(name);
  scale_->setFocusPolicy(Qt::TabFocus);
  connect(scale_, &QComboBox::activated, action(command), &QAction::trigger);
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
  for (const CommandRow& row : command_table()) action(row.number)->setEnabled(command_enabled(row, state));
  scale_->setEnabled(action(kScaleCommand)->isEnabled());
  for (const MenuRow& row : menu_table()) {
    if (row.parent == Menu::None) continue;
    QMenu* menu = menus_.at(row.menu);
    menu->menuAction()->setEnabled(std::ranges::any_of(menu->actions(), &QAction::isEnabled));
  }
}

void CommandBar::show_undo(std::string_view undo, std::string_view redo) {
  for (const auto& [command, name, format] : {std::tuple(kUndoCommand, undo, StringId::UndoNamed),
                                              std::tuple(kRedoCommand, redo, StringId::RedoNamed)}) {
    const QString label = shown(find_command(command)->label);
    const QString named = name.empty() ? label.section(u'\t', 0, 0)
                                       : text_of(format).replace(QStringLiteral("%s"), to_qt(name));
    action(command)->setText(named + u'\t' + label.section(u'\t', 1));
    action(command)->setToolTip(QString(named).remove(u'&'));
  }
}

void CommandBar::show_scale(int index) { scale_->setCurrentIndex(index); }

}  // namespace vellum
