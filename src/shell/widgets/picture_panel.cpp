#include "shell/widgets/picture_panel.h"

#include <QToolButton>

#include "base/text.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

QToolButton* tool(QWidget* parent, const QString& text, const QString& name) {
  auto* button = new QToolButton(parent);
  button->setText(text);
  button->setToolTip(name);
  button->setAccessibleName(name);
  button->setAutoRaise(true);
  return button;
}

}  // namespace

PicturePanel::PicturePanel(QWidget* parent)
    : QWidget(parent),
      view_(new PictureView(this)),
      zoom_(new QComboBox(this)),
      tools_(new QHBoxLayout),
      size_(new QLabel(this)),
      pointer_(new QLabel(this)) {
  zoom_->setAccessibleName(tr("Zoom"));
  for (const int step : PictureView::zoom_steps()) zoom_->addItem(QStringLiteral("%1 %").arg(step), step);
  auto* smaller = tool(this, QStringLiteral("\u2212"), tr("Zoom out"));
  auto* larger = tool(this, QStringLiteral("+"), tr("Zoom in"));
  auto* fit = tool(this, tr("Fit"), tr("Show all of the picture"));
  const auto step = [this](int direction) {
    view_->step_zoom(direction, QRectF(view_->viewport()->rect()).center());
  };
  connect(smaller, &QToolButton::clicked, this, [step] { step(-1); });
  connect(larger, &QToolButton::clicked, this, [step] { step(1); });
  connect(fit, &QToolButton::clicked, view_, &PictureView::fit);
  connect(zoom_, &QComboBox::activated, this, [this] { view_->set_zoom(zoom_->currentData().toInt()); });
  connect(view_, &PictureView::zoomed, this, &PicturePanel::show_zoom);
  connect(view_, &PictureView::pointed, pointer_, &QLabel::setText);
  for (QWidget* widget : {static_cast<QWidget*>(smaller), static_cast<QWidget*>(zoom_),
                          static_cast<QWidget*>(larger), static_cast<QWidget*>(fit)})
    tools_->addWidget(widget);
  tools_->addStretch(1);
  auto* below = new QHBoxLayout;
  below->addWidget(size_);
  below->addStretch(1);
  below->addWidget(pointer_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap / 2);
  layout->addLayout(tools_);
  layout->addWidget(view_, 1);
  layout->addLayout(below);
  show_zoom(view_->zoom());
}

void PicturePanel::set_picture(const Picture& shown, const Picture& described) {
  view_->set_picture(shown);
  const Picture& picture = described ? described : shown;
  if (!picture) return size_->clear();
  const std::string colors = grouped(std::uint64_t{1} << std::min(picture.bits(), 24u));
  size_->setText(to_qt(format_text(string_text(StringId::PictureSize).data(), picture.width(),
                                   picture.height(), colors.c_str())));
}

void PicturePanel::show_zoom(int percent) { zoom_->setCurrentIndex(zoom_->findData(percent)); }

}  // namespace vellum
