#include "shell/start/tips.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTextDocument>
#include <QTextEdit>

#include "configuration/setting_values.h"
#include "configuration/shell_settings.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kPicture = 64;
constexpr QSize kText(400, 92);

std::vector<QString> read_tips() {
  std::vector<QString> read;
  QFile file(QStringLiteral(":/start/tips.md"));
  if (!file.open(QIODevice::ReadOnly)) return read;
  // Empty lines part them; what begins with "#" is a heading.
  for (const QString& tip :
       QString::fromUtf8(file.readAll()).split(QStringLiteral("\n\n"), Qt::SkipEmptyParts))
    if (!tip.startsWith(u'#')) read.push_back(shown(tip.simplified().toStdString()));
  return read;
}

QTextEdit* tip_text(QWidget* parent) {
  auto* text = new QTextEdit(parent);
  text->setReadOnly(true);
  text->setFrameShape(QFrame::NoFrame);
  text->viewport()->setAutoFillBackground(false);
  text->setMinimumSize(kText);
  text->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
  text->setAccessibleName(QObject::tr("Tip"));
  QFont font = text->font();
  font.setPointSize(std::max(font.pointSize(), 11));
  text->document()->setDefaultFont(font);
  return text;
}

}  // namespace

const std::vector<QString>& tips() {
  static const std::vector<QString> all = read_tips();
  return all;
}

QString take_tip() {
  const int count = static_cast<int>(tips().size());
  if (count == 0) return {};
  const int number = settings::TipOfTheDay >= 0 ? settings::TipOfTheDay % count : 0;
  settings::TipOfTheDay = (number + 1) % count;
  return tips()[static_cast<std::size_t>(number)];
}

bool tip_is_due(QDate today) {
  const int date = today.toString(QStringLiteral("yyyyMMdd")).toInt();
  if (settings::ShowTipOfTheDay == 0 || settings::LastTipDate == date) return false;
  settings::LastTipDate = date;
  return true;
}

void show_tips(QWidget* parent) {
  auto* dialog = new QDialog(parent);
  dialog->setObjectName(QStringLiteral("TipOfTheDay"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowTitle(QObject::tr("Tip of the day"));
  auto* picture = new QLabel(dialog);
  picture->setPixmap(
      program_icon("tip_of_the_day").pixmap(QSize(kPicture, kPicture), dialog->devicePixelRatioF()));
  auto* heading = new QLabel(text_of(StringId::DidYouKnow), dialog);
  heading->setFont(style::heading_font());
  QTextEdit* text = tip_text(dialog);
  text->setMarkdown(take_tip());
  auto* again = new QCheckBox(text_of(StringId::ShowTipsAtStart), dialog);
  again->setChecked(settings::ShowTipOfTheDay != 0);
  QObject::connect(again, &QCheckBox::toggled, dialog, [](bool on) {
    change_setting(*find_setting("ShowTipOfTheDay"), {on ? 1 : 0, {}});
  });
  QDialogButtonBox* buttons = add_buttons(*dialog, QDialogButtonBox::Close, QStringLiteral("TIPS"));
  auto* next = buttons->addButton(QObject::tr("&Next tip"), QDialogButtonBox::ActionRole);
  QObject::connect(next, &QPushButton::clicked, text, [text] { text->setMarkdown(take_tip()); });
  auto* column = new QVBoxLayout;
  column->setSpacing(style::kGap);
  column->addWidget(heading);
  column->addWidget(text, 1);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(picture, 0, Qt::AlignTop);
  row->addLayout(column, 1);
  QVBoxLayout* layout = dialog_layout(*dialog);
  layout->addLayout(row, 1);
  layout->addWidget(again);
  layout->addWidget(buttons);
  next->setDefault(true);
  next->setFocus();
  dialog->show();
}

}  // namespace vellum
