#include "shell/docks/dock_table.h"

#include "shell/docks/strip_panel.h"

namespace vellum {
namespace {

constexpr DockRow kDocks[] = {
    // command, title, tip, topic of the guide, name, side, open as it comes, maker
    {822, "Film strip", "The frames side by side, to choose, move and delete", "IMAGESTRIP", "FilmStripDock",
     Qt::BottomDockWidgetArea, true, make_panel<StripPanel>},
};

}  // namespace

std::span<const DockRow> dock_table() { return kDocks; }

}  // namespace vellum
