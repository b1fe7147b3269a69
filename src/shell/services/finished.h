// Tells a person who has turned to another program that long work has come to its end.
#pragma once

#include <QString>

namespace vellum {

/// Marks the window in the task bar, and asks the desktop to show a notification, where no window of the
/// program is active. Nothing where nobody waits.
void tell_finished(const QString& text);

}  // namespace vellum
