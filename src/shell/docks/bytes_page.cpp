#include "shell/docks/bytes_page.h"

#include <QVBoxLayout>
#include <algorithm>

#include "base/crc.h"
#include "base/fields.h"
#include "base/text.h"
#include "core/chunks/chunk_payload.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {

BytesPage::BytesPage(QWidget* parent)
    : QWidget(parent), summary_(new QLabel(this)), view_(new HexView(this)) {
  summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  view_->set_narrow(true);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, style::kGap, 0, 0);
  column->setSpacing(style::kGap);
  column->addWidget(summary_);
  column->addWidget(view_, 1);
  connect(view_, &HexView::changed, this, [this] {
    if (!setting_) emit typed();
  });
}

void BytesPage::show_entry(const DocumentWindow& window, std::size_t index, bool editable) {
  window_ = &window;
  index_ = index;
  editable_ = editable;
  stale_ = true;
  view_->set_read_only(!editable);
  if (isVisible()) refresh();
}

void BytesPage::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  refresh();
}

void BytesPage::refresh() {
  if (!std::exchange(stale_, false) || index_ >= window_->list.size()) return;
  const ChunkRecord& record = window_->list.record(index_);
  std::optional<std::vector<std::uint8_t>> payload;
  if (editable_)
    payload.emplace(raw_payload(record).begin(), raw_payload(record).end());
  else
    payload = chunk_payload(record, window_->document.kind);
  view_->setVisible(payload.has_value());
  summary_->setWordWrap(!payload);
  if (!payload) return summary_->setText(text_of(StringId::RawOfImage));
  summary_->setText(tr("%1, CRC %2")
                        .arg(to_qt(count_text(StringId::OneByte, payload->size())))
                        .arg(chunk_crc(record.tag, *payload), 8, 16, QLatin1Char('0')));
  if (std::ranges::equal(view_->bytes(), *payload)) return;
  setting_ = true;
  view_->set_bytes(std::move(*payload));
  setting_ = false;
}

}  // namespace vellum
