// The docks: one row for each.
#pragma once

#include <span>

#include "shell/docks/dock_panel.h"

namespace vellum {

struct DockRow {
  int command;  ///< of the command table, which opens and closes it (`dock_command<NUMBER>`), or opens it and
                ///< more
  const char* title;
  const char* tip;   ///< what it shows, in a sentence without its end
  const char* page;  ///< of the guide, by its topic
  const char* name;  ///< of its widget; a remembered arrangement knows the dock by it, so it stays
  Qt::DockWidgetArea side;
  bool opens;  ///< on a large screen, as long as nobody arranged anything
  DockPanel* (*make)(DockContext& context);
};

/// Docks of one side stand in the order of their rows.
std::span<const DockRow> dock_table();

template <class Panel>
DockPanel* make_panel(DockContext& context) {
  return new Panel(context);
}

}  // namespace vellum
