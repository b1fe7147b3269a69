#include "shell/widgets/dialog_frame.h"

#include <QPushButton>
#include <QShortcut>

#include "shell/look/style.h"

namespace vellum {

QVBoxLayout* dialog_layout(QDialog& dialog) {
  auto* layout = new QVBoxLayout(&dialog);
  layout->setContentsMargins(style::kWideGap, style::kWideGap, style::kWideGap, style::kWideGap);
  layout->setSpacing(style::kWideGap);
  return layout;
}

QDialogButtonBox* add_buttons(QDialog& dialog, QDialogButtonBox::StandardButtons buttons,
                              const QString& topic) {
  return add_buttons(dialog, buttons, [topic] { return topic; });
}

QDialogButtonBox* add_buttons(QDialog& dialog, QDialogButtonBox::StandardButtons buttons,
                              std::function<QString()> topic) {
  auto* box = new QDialogButtonBox(buttons, &dialog);
  QObject::connect(box, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(box, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  add_help(dialog, *box, std::move(topic));
  return box;
}

void add_help(QDialog& dialog, QDialogButtonBox& buttons, std::function<QString()> topic) {
  buttons.addButton(QDialogButtonBox::Help)->setEnabled(static_cast<bool>(showHelp));
  const auto help = [topic = std::move(topic)] {
    if (showHelp) showHelp(topic());
  };
  QObject::connect(&buttons, &QDialogButtonBox::helpRequested, &dialog, help);
  QObject::connect(new QShortcut(QKeySequence::HelpContents, &dialog), &QShortcut::activated, &dialog, help);
}

}  // namespace vellum
