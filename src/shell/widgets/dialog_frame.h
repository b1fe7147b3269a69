// What dialogs that are no plain forms share: margins, Help, a tab order from top to bottom.
#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QVBoxLayout>
#include <functional>

namespace vellum {

/// Shows a topic of the guide. Empty while there is none; Help is then disabled.
inline std::function<void(const QString& topic)> showHelp;

/// An upright layout with the program's margins for the dialog.
QVBoxLayout* dialog_layout(QDialog& dialog);

/// A row of buttons that accepts and rejects the dialog; Help, also by F1, shows the topic of the guide.
QDialogButtonBox* add_buttons(QDialog& dialog, QDialogButtonBox::StandardButtons buttons,
                              const QString& topic);
/// The same where the topic depends on what the dialog shows at that moment.
QDialogButtonBox* add_buttons(QDialog& dialog, QDialogButtonBox::StandardButtons buttons,
                              std::function<QString()> topic);
/// The Help button alone, and F1, for a dialog that connects its buttons itself.
void add_help(QDialog& dialog, QDialogButtonBox& buttons, std::function<QString()> topic);

}  // namespace vellum
