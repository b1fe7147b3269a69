#include "shell/window/context_menu.h"

#include "shell/look/text.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

enum class Shown { Always, SomeUnselected, SomeSelected, FrameOfAnimation, Pinned, NotPinned, Animation };

/// The row under the pointer becomes the caret's; or it does, and is selected, where nothing is.
enum class Aim { AsEver, Row, SelectionOrRow };

constexpr int kInsertCommand = 60;

/// In the order of the menu; 0 is a line.
struct MenuEntry {
  int number;
  Shown when = Shown::Always;
  const char* label = nullptr;  ///< null: that of the main menu
  Aim aim = Aim::AsEver;
};

constexpr MenuEntry kEntries[] = {
    {205, Shown::Always, nullptr, Aim::Row},
    {kInsertCommand},
    {201, Shown::Always, nullptr, Aim::SelectionOrRow},
    {202, Shown::Always, nullptr, Aim::SelectionOrRow},
    {203, Shown::Always, nullptr, Aim::Row},
    {61, Shown::Always, nullptr, Aim::SelectionOrRow},
    {0},
    {204},
    {208},
    {56},
    {0},
    {50, Shown::SomeUnselected, "Select all"},
    {51, Shown::SomeSelected, "Select none"},
    {124, Shown::FrameOfAnimation, "Export image"},
    {401, Shown::NotPinned, "Pin to favorites"},
    {402, Shown::Pinned, "Unpin from favorites"},
    {0},
    {330},
    {311},
    {328},
    {309},
    {322},
    {312},
    {308},
    {324},
    {62},
    {315},
    {304},
    {317},
    {316},
    {314},
    {310},
    {319},
    {326},
    {323},
    {329},
    {325},
    {318},
    {327},
    {0},
    {320, Shown::Animation, "Move to"},
    {321, Shown::Animation, "Copy to"},
};

bool is_pinned(MainWindow& main, DocumentFrame& frame) {
  const auto& is_favorite = main.services().is_favorite;
  return is_favorite && is_favorite(frame.document());
}

bool is_shown(Shown when, MainWindow& main, DocumentFrame& frame, std::size_t row) {
  const ChunkList& list = frame.entries();
  const DocumentKind kind = frame.document().kind;
  switch (when) {
    case Shown::SomeUnselected:
      return list.selected_count() < list.size();
    case Shown::SomeSelected:
      return list.selected_count() > 0;
    case Shown::FrameOfAnimation:
      return is_animation(kind) && row < list.size() && is_image_entry(kind, list.record(row).tag);
    case Shown::Pinned:
    case Shown::NotPinned:
      return is_pinned(main, frame) == (when == Shown::Pinned);
    case Shown::Animation:
      return is_animation(kind);
    default:
      return true;
  }
}

/// What a command of this menu works on where that isn't what the main menu's does.
void take_aim(DocumentFrame& frame, std::size_t row, Aim aim) {
  if (aim == Aim::AsEver || row >= frame.entries().size()) return;
  const bool selects = aim == Aim::SelectionOrRow;
  if (selects && frame.entries().selected_count() > 0) return;
  if (selects) frame.entries().select(row, true);
  frame.document().caret = static_cast<std::int32_t>(row);
  frame.list().viewport()->update();
}

void add_entry(QMenu& menu, const MenuEntry& entry, QAction& command, MainWindow& main, DocumentFrame& frame,
               std::size_t row) {
  if (entry.number == kInsertCommand) {
    QMenu* insert = menu.addMenu(command.icon(), QObject::tr("&Insert"));
    insert->setEnabled(command.isEnabled());
    fill_insert_menu(*insert, main, frame);
    QObject::connect(insert, &QMenu::aboutToShow, &frame, [&frame, row] { take_aim(frame, row, Aim::Row); });
    return;
  }
  if (!entry.label && entry.aim == Aim::AsEver) return menu.addAction(&command);
  QAction* action = menu.addAction(command.icon(), entry.label ? vellum::shown(entry.label) : command.text());
  const bool takes_row = entry.aim == Aim::SelectionOrRow && row < frame.entries().size();
  action->setEnabled(command.isEnabled() || takes_row);
  action->setStatusTip(command.statusTip());
  QObject::connect(action, &QAction::triggered, &frame, [&main, &frame, row, entry] {
    take_aim(frame, row, entry.aim);
    main.run(entry.number);
  });
}

}  // namespace

QMenu* make_context_menu(MainWindow& main, DocumentFrame& frame, std::size_t row) {
  auto* menu = new QMenu(&main);
  menu->setObjectName(QStringLiteral("row"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  bool line = false;
  for (const MenuEntry& entry : kEntries) {
    line = line || entry.number == 0;
    QAction* command = main.commands().action(entry.number);
    if (!command || !is_shown(entry.when, main, frame, row)) continue;
    if (std::exchange(line, false) && !menu->isEmpty()) menu->addSeparator();
    add_entry(*menu, entry, *command, main, frame, row);
  }
  return menu;
}

}  // namespace vellum
