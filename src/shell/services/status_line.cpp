#include "shell/services/status_line.h"

#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr int kProgressSteps = 1000;

QLabel* plain_label(QWidget* parent, const QString& name) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setAccessibleName(name);
  label->setContentsMargins(style::kGap, 0, style::kGap, 0);
  return label;
}

}  // namespace

StatusLine::StatusLine(QWidget* parent)
    : QStatusBar(parent),
      selection_(plain_label(this, tr("Selection"))),
      document_(plain_label(this, tr("Document"))),
      caption_(plain_label(this, tr("Progress"))),
      bar_(new QProgressBar(this)),
      stop_(new QToolButton(this)) {
  bar_->setRange(0, kProgressSteps);
  bar_->setFixedWidth(style::kProgressWidth);
  bar_->setTextVisible(false);
  // Any press while an operation runs stops it; the button is where people look for that.
  stop_->setText(tr("Stop"));
  stop_->setAutoRaise(true);
  addWidget(selection_, 1);
  addPermanentWidget(document_);
  addPermanentWidget(caption_);
  addPermanentWidget(bar_);
  addPermanentWidget(stop_);
  progress_end();
}

void StatusLine::set_caption(const QString& text) {
  caption_->setText(text);
  caption_->setVisible(!text.isEmpty());
}

void StatusLine::progress_begin() {
  bar_->setValue(0);
  bar_->show();
  stop_->show();
}

void StatusLine::progress_step(std::uint64_t done, std::uint64_t total) {
  const double share = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
  bar_->setValue(static_cast<int>(std::min(share, 1.0) * kProgressSteps));
}

void StatusLine::progress_end() {
  set_caption({});
  bar_->hide();
  stop_->hide();
}

}  // namespace vellum
