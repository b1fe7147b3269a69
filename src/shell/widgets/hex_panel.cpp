#include "shell/widgets/hex_panel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>

#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {

HexPanel::HexPanel(QWidget* parent)
    : QWidget(parent),
      view_(new HexView(this)),
      wanted_(new QLineEdit(this)),
      form_(new QComboBox(this)),
      offset_(new QLineEdit(this)),
      place_(new QLabel(this)) {
  wanted_->setPlaceholderText(tr("Find"));
  wanted_->setAccessibleName(tr("Find"));
  wanted_->setClearButtonEnabled(true);
  form_->addItems({tr("Hexadecimal"), tr("Text")});
  form_->setAccessibleName(tr("Search for"));
  offset_->setPlaceholderText(tr("Go to offset"));
  offset_->setAccessibleName(tr("Go to offset"));
  offset_->setToolTip(tr("A decimal number, or a hexadecimal one behind 0x"));
  auto* next = new QPushButton(tr("Find &next"), this);
  next->setAutoDefault(false);
  connect(next, &QPushButton::clicked, this, &HexPanel::find_next);
  connect(wanted_, &QLineEdit::returnPressed, this, &HexPanel::find_next);
  connect(offset_, &QLineEdit::returnPressed, this, &HexPanel::go_to_field);
  connect(view_, &HexView::caret_moved, this, &HexPanel::show_place);
  auto* tools = new QHBoxLayout;
  tools->addWidget(wanted_, 3);
  tools->addWidget(form_);
  tools->addWidget(next);
  tools->addSpacing(style::kWideGap);
  offset_->setMinimumWidth(offset_->fontMetrics().horizontalAdvance(offset_->placeholderText()) +
                           style::kMargin);
  tools->addWidget(offset_, 1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  layout->addLayout(tools);
  layout->addWidget(view_, 1);
  layout->addWidget(place_);
  show_place();
}

void HexPanel::find_next() {
  const QByteArray text = wanted_->text().toUtf8();
  std::vector<std::uint8_t> bytes(text.begin(), text.end());
  const auto numbers = parse_hex({text.data(), static_cast<std::size_t>(text.size())});
  if (form_->currentIndex() == 0) bytes = numbers.value_or(std::vector<std::uint8_t>());
  if (bytes.empty() || !view_->find(bytes)) place_->setText(tr("Not found"));
}

void HexPanel::go_to_field() {
  const QString text = offset_->text().trimmed();
  bool valid = false;
  const qulonglong offset = text.toULongLong(&valid, text.startsWith(u"0x", Qt::CaseInsensitive) ? 16 : 10);
  if (!valid || offset > view_->bytes().size()) return place_->setText(tr("There is no such offset"));
  view_->go_to(offset);
  view_->setFocus();
}

void HexPanel::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->matches(QKeySequence::Find)) return wanted_->setFocus();
  if (event->key() == Qt::Key_G && event->modifiers() == Qt::ControlModifier) return offset_->setFocus();
  if (event->key() == Qt::Key_F3) return find_next();
  // The fields have acted on it; a dialog around them must not close by it.
  if (enter) return;
  QWidget::keyPressEvent(event);
}

void HexPanel::show_place() {
  QString text = tr("Offset %1 (0x%2) of %3")
                     .arg(view_->caret())
                     .arg(QString::number(view_->caret(), 16).toUpper())
                     .arg(view_->bytes().size());
  if (view_->selection_size() > 0) text += tr(", %1 selected").arg(view_->selection_size());
  if (view_->inserting()) text += tr(", insert mode");
  place_->setText(text);
}

}  // namespace vellum
