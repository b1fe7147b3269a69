#include "shell/list/note_strip.h"

#include <QHBoxLayout>
#include <QStyle>

#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr std::size_t kMostShown = 4, kMostInTip = 40;

QString joined(const std::vector<std::string>& notes, std::size_t most) {
  QStringList lines;
  for (std::size_t i = 0; i < notes.size() && i < most; ++i) lines << to_qt(notes[i]);
  if (notes.size() > most) lines << QObject::tr("... and %1 more").arg(notes.size() - most);
  return lines.join(u'\n');
}

}  // namespace

NoteStrip::NoteStrip(QWidget* parent)
    : QFrame(parent), text_(new QLabel(this)), close_(new QToolButton(this)) {
  setObjectName(QStringLiteral("notes"));
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::ToolTipBase);
  text_->setForegroundRole(QPalette::ToolTipText);
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  text_->setAccessibleName(tr("Notes"));
  close_->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
  close_->setAutoRaise(true);
  close_->setObjectName(QStringLiteral("dismiss"));
  close_->setAccessibleName(tr("Dismiss notes"));
  close_->setToolTip(tr("Dismiss notes"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(style::kGap, style::kGap / 2, style::kGap / 2, style::kGap / 2);
  row->addWidget(text_, 1);
  row->addWidget(close_, 0, Qt::AlignTop);
  connect(close_, &QToolButton::clicked, this, &NoteStrip::dismissed);
  hide();
}

void NoteStrip::show_notes(const std::vector<std::string>& notes) {
  if (notes == shown_) return;
  shown_ = notes;
  text_->setText(joined(notes, kMostShown));
  text_->setToolTip(notes.size() > kMostShown
                        ? joined(notes, kMostInTip).toHtmlEscaped().replace(u'\n', QStringLiteral("<br>"))
                        : QString());
  setVisible(!notes.empty());
}

}  // namespace vellum
