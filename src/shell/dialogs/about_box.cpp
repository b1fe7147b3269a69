#include "shell/dialogs/about_box.h"

#include <QLabel>
#include <QPushButton>

#include "shell/dialogs/system_information.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kIconSize = 96;

QLabel* text_label(QWidget* parent, const QString& text) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  return label;
}

QLayout* texts(QWidget* box) {
  auto* column = new QVBoxLayout;
  QLabel* name = text_label(box, QStringLiteral("Vellumcraft"));
  name->setFont(style::heading_font());
  column->addStretch(1);
  column->addWidget(name);
  column->addWidget(text_label(box, QObject::tr("Version %1").arg(QStringLiteral(VELLUM_VERSION))));
  column->addSpacing(style::kGap);
  column->addWidget(
      text_label(box, QObject::tr("Opens PNG, animated PNG, MNG and WebP files\nas what they are: "
                                  "ordered lists of chunks.")));
  column->addStretch(1);
  return column;
}

}  // namespace

void show_about_box(QWidget* parent) {
  QDialog box(parent);
  box.setWindowTitle(QObject::tr("About Vellumcraft"));
  auto* picture = new QLabel(&box);
  picture->setPixmap(
      program_icon("vellumcraft").pixmap(QSize(kIconSize, kIconSize), box.devicePixelRatioF()));
  QDialogButtonBox* buttons = add_buttons(box, QDialogButtonBox::Close, QStringLiteral("ABOUT"));
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  auto* system = buttons->addButton(QObject::tr("&System information..."), QDialogButtonBox::ActionRole);
  QObject::connect(system, &QPushButton::clicked, &box, [&box] { show_system_information(&box); });
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(picture);
  row->addLayout(texts(&box), 1);
  QVBoxLayout* layout = dialog_layout(box);
  layout->addLayout(row);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  box.exec();
}

}  // namespace vellum
