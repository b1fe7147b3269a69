#include "shell/services/message_box.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

QString box_text(std::string_view text) { return to_qt(text).remove(u'\r'); }

void add_option(QMessageBox& box, int* option) {
  auto* check = new QCheckBox(text_of(StringId::ShowAgain), &box);
  check->setChecked(*option != 0);
  QObject::connect(check, &QCheckBox::toggled, [option](bool on) { *option = on; });
  box.setCheckBox(check);
}

/// File names and keywords may look like HTML: no part of the box takes it for that.
void keep_plain(QMessageBox& box) {
  box.setTextFormat(Qt::PlainText);
  for (QLabel* label : box.findChildren<QLabel*>()) label->setTextFormat(Qt::PlainText);
}

}  // namespace

QMessageBox::StandardButton show_message_box(QWidget* parent, const Message& message, const char* icon,
                                             QMessageBox::StandardButtons buttons) {
  const QString title = message.title == StringId{} ? QStringLiteral("Vellumcraft") : text_of(message.title);
  QMessageBox box(QMessageBox::NoIcon, title, box_text(message.text), buttons, parent);
  box.setIconPixmap(
      program_icon(icon).pixmap(QSize(style::kBoxIcon, style::kBoxIcon), box.devicePixelRatioF()));
  if (!message.more.empty()) box.setInformativeText(box_text(message.more));
  if (message.option) add_option(box, message.option);
  keep_plain(box);
  return static_cast<QMessageBox::StandardButton>(box.exec());
}

bool show_choice_box(QWidget* parent, Choice& choice) {
  QDialog box(parent);
  box.setWindowTitle(text_of(choice.title));
  auto* rows = new QVBoxLayout(&box);
  rows->setSpacing(style::kGap);
  rows->addWidget(new QLabel(text_of(choice.text), &box));
  QButtonGroup answers;
  for (std::size_t i = 0; i < choice.answers.size(); ++i) {
    auto* button = new QRadioButton(text_of(choice.answers[i]), &box);
    button->setChecked(i == choice.chosen);
    answers.addButton(button, static_cast<int>(i));
    rows->addWidget(button);
  }
  auto* keep = choice.keepLabel == StringId{} ? nullptr : new QCheckBox(text_of(choice.keepLabel), &box);
  if (keep) rows->addWidget(keep);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &box);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &box, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);
  rows->addWidget(buttons);
  if (box.exec() != QDialog::Accepted) return false;
  choice.chosen = static_cast<std::size_t>(std::max(answers.checkedId(), 0));
  choice.keep = keep && keep->isChecked();
  return true;
}

}  // namespace vellum
