#include "shell/message_box.h"

#include <QCheckBox>
#include <QLabel>

#include "shell/icon.h"
#include "shell/style.h"
#include "shell/text.h"

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

}  // namespace vellum
