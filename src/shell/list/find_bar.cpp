#include "shell/list/find_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QStyle>
#include <QToolButton>

#include "base/fields.h"
#include "base/text.h"
#include "configuration/shell_settings.h"
#include "shell/list/chunk_list_view.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kTextWidth = 220, kLeastTextWidth = 90;
constexpr std::size_t kLongList = 5000;
constexpr int kPause = 150;  // milliseconds

QToolButton* tool(FindBar& bar, const QString& name, const char* object) {
  auto* button = new QToolButton(&bar);
  button->setAutoRaise(true);
  button->setToolTip(name);
  button->setAccessibleName(name);
  button->setObjectName(QLatin1String(object));
  return button;
}

}  // namespace

FindBar::FindBar(ChunkListView& list, QWidget* parent)
    : QFrame(parent),
      list_(list),
      text_(new QLineEdit(this)),
      hides_(new QCheckBox(tr("&Matching rows only"), this)),
      count_(new QLabel(this)) {
  setObjectName(QStringLiteral("find"));
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  text_->setPlaceholderText(tr("Find in rows"));
  text_->setAccessibleName(tr("Find in rows"));
  text_->setClearButtonEnabled(true);
  text_->setMinimumWidth(kLeastTextWidth);
  text_->setMaximumWidth(kTextWidth);
  hides_->setChecked(settings::FindHidesRows != 0);
  hides_->setToolTip(hides_->text().remove(u'&'));  // it gives way in a narrow window
  count_->setObjectName(QStringLiteral("count"));
  count_->setMinimumWidth(0);
  auto* before = tool(*this, tr("Find backwards (Shift+F3)"), "before");
  auto* next = tool(*this, tr("Find next (F3)"), "next");
  auto* close = tool(*this, tr("Close (Escape)"), "close");
  before->setArrowType(Qt::UpArrow);
  next->setArrowType(Qt::DownArrow);
  close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(style::kGap, style::kGap / 2, style::kGap / 2, style::kGap / 2);
  row->addWidget(text_, 2);
  row->addWidget(before);
  row->addWidget(next);
  row->addWidget(hides_);
  row->addSpacing(style::kGap);
  row->addWidget(count_, 1);
  row->addWidget(close);
  pause_.setSingleShot(true);
  connect(&pause_, &QTimer::timeout, this, &FindBar::search);
  connect(text_, &QLineEdit::textChanged, this,
          [this] { list_.entries() > kLongList ? pause_.start(kPause) : search(); });
  connect(hides_, &QCheckBox::toggled, this, [this](bool on) {
    settings::FindHidesRows = on;
    search();
  });
  connect(before, &QToolButton::clicked, this, [this] { step(false); });
  connect(next, &QToolButton::clicked, this, [this] { step(true); });
  connect(close, &QToolButton::clicked, this, &FindBar::dismiss);
  connect(&list_, &ChunkListView::changed, this, &FindBar::show_count);
  hide();
}

void FindBar::open() {
  show();
  text_->setFocus();
  text_->selectAll();
  search();
}

void FindBar::dismiss() {
  pause_.stop();
  hide();
  list_.find_text({}, false);
  list_.setFocus();
}

void FindBar::step(bool forwards) {
  if (isHidden() || text_->text().isEmpty()) return open();
  if (pause_.isActive()) search();
  list_.go_to_found(forwards);
}

void FindBar::search() {
  pause_.stop();
  list_.find_text(text_->text(), hides_->isChecked());
  show_count();
}

void FindBar::show_count() {
  if (isHidden()) return;
  const RowSearch& found = list_.search();
  if (!found.active()) return count_->clear();
  const std::string rows =
      filled(StringId::FindCount, {grouped(found.count()), count_text(StringId::OneRow, list_.entries())});
  count_->setText(found.count() == 0 ? text_of(StringId::FindNoMatch) : to_qt(rows));
}

void FindBar::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      return dismiss();
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return step(!(event->modifiers() & Qt::ShiftModifier));
    case Qt::Key_Down:
      return list_.setFocus();
    default:
      QFrame::keyPressEvent(event);
  }
}

}  // namespace vellum
