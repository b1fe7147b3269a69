// A message of the program as a box, all of it plain text.
#pragma once

#include <QMessageBox>

#include "base/host.h"

namespace vellum {

/// Shows the message with one of data/icons and waits. Clearing "Show me this message again next time."
/// stores 0 in the message's option at once. Returns the button pressed; Escape counts as the one that
/// changes least.
QMessageBox::StandardButton show_message_box(QWidget* parent, const Message& message, const char* icon,
                                             QMessageBox::StandardButtons buttons);

/// A question with answers of its own, one of which is marked. False when the user cancelled.
bool show_choice_box(QWidget* parent, Choice& choice);

}  // namespace vellum
