// The tip of the day.
#pragma once

#include <QDate>
#include <QString>
#include <vector>

namespace vellum {

/// The tips in their order, as Markdown.
const std::vector<QString>& tips();

/// The tip whose turn it is; the one behind it has it then, and behind the last one the first.
QString take_tip();

/// Whether today's tip is to be shown by itself, once a day. `today` counts as shown afterwards.
bool tip_is_due(QDate today);

/// Shows tips in a window of their own, from that whose turn it is.
void show_tips(QWidget* parent);

}  // namespace vellum
