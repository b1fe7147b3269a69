#include "shell/widgets/raw_page.h"

#include <QVBoxLayout>

#include "base/crc.h"
#include "base/fields.h"
#include "base/text.h"
#include "core/chunks/chunk_payload.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {

RawPage::RawPage(ChunkTag tag, PayloadSource source, QWidget* parent)
    : QWidget(parent),
      tag_(tag),
      source_(std::move(source)),
      summary_(new QLabel(this)),
      panel_(new HexPanel(this)) {
  panel_->view().set_read_only(true);
  summary_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(style::kGap);
  layout->addWidget(summary_);
  layout->addWidget(panel_, 1);
}

void RawPage::refresh() {
  auto payload = source_();
  panel_->setVisible(payload.has_value());
  if (!payload) return summary_->setText(text_of(StringId::RawOfImage));
  summary_->setText(tr("%1, CRC %2")
                        .arg(to_qt(count_text(StringId::OneByte, payload->size())))
                        .arg(chunk_crc(tag_, *payload), 8, 16, QLatin1Char('0')));
  view().set_bytes(std::move(*payload));
}

void RawPage::showEvent(QShowEvent* event) {
  refresh();
  QWidget::showEvent(event);
}

QWidget* make_raw_page(QWidget* parent, const DocumentWindow& window, std::size_t index) {
  const auto payload = [&window, index] {
    return index < window.list.size() ? chunk_payload(window.list.record(index), window.document.kind)
                                      : std::nullopt;
  };
  return new RawPage(window.list.record(index).tag, payload, parent);
}

}  // namespace vellum
