#include "shell/docks/dock_table.h"

#include "shell/docks/check_panel.h"
#include "shell/docks/inspector_panel.h"
#include "shell/docks/preview_panel.h"
#include "shell/docks/strip_panel.h"

namespace vellum {
namespace {

constexpr DockRow kDocks[] = {
    // command, title, tip, topic of the guide, name, side, open as it comes, maker
    {821, "Preview", "Plays the document while it is edited", "PREVIEW", "PreviewDock",
     Qt::RightDockWidgetArea, true, make_panel<PreviewPanel>},
    {823, "Inspector", "What the selected entry holds, to be changed in place", "INSPECTOR", "InspectorDock",
     Qt::RightDockWidgetArea, true, make_panel<InspectorPanel>},
    {822, "Film strip", "The frames side by side, to choose, move and delete", "IMAGESTRIP", "FilmStripDock",
     Qt::BottomDockWidgetArea, true, make_panel<StripPanel>},
    {824, "Check", "What is wrong with the document, and its repair", "CHECK", "CheckDock",
     Qt::BottomDockWidgetArea, false, make_panel<CheckPanel>},
};

}  // namespace

std::span<const DockRow> dock_table() { return kDocks; }

}  // namespace vellum
