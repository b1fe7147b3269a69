#include "shell/empty_state.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "shell/icon.h"
#include "shell/style.h"
#include "shell/text.h"
#include "shell/work_area_ground.h"

namespace vellum {
namespace {

constexpr QSize kCard(460, 288);
constexpr int kPictureSize = 72;

/// The drawing at the top of the card, at the resolution of the screen that it is shown on.
class CardPicture : public QWidget {
 public:
  explicit CardPicture(QWidget* parent) : QWidget(parent), icon_(program_icon("sheet")) {
    setFixedSize(kPictureSize, kPictureSize);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    icon_.paint(&painter, rect());
  }

 private:
  QIcon icon_;
};

QLabel* centered_label(QWidget* parent, const QString& text) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setAlignment(Qt::AlignCenter);
  return label;
}

}  // namespace

EmptyState::EmptyState(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(style::kGap);
  auto* heading = centered_label(this, text_of(StringId::EmptyArea));
  heading->setFont(style::heading_font());
  auto* formats = centered_label(this, tr("PNG, animated PNG, MNG and WebP"));
  formats->setForegroundRole(QPalette::PlaceholderText);
  auto* button = new QPushButton(tr("&Open..."), this);
  button->setMinimumWidth(120);
  connect(button, &QPushButton::clicked, this, &EmptyState::open_wanted);
  layout->addStretch(1);
  layout->addWidget(new CardPicture(this), 0, Qt::AlignHCenter);
  layout->addSpacing(style::kGap);
  layout->addWidget(heading);
  layout->addWidget(formats);
  layout->addSpacing(style::kWideGap);
  layout->addWidget(button, 0, Qt::AlignHCenter);
  layout->addStretch(1);
  setFocusProxy(button);
}

void EmptyState::set_inviting(bool inviting) {
  inviting_ = inviting;
  update();
}

QRect EmptyState::card() const {
  QRect card(QPoint(), kCard.boundedTo(size() - QSize(style::kGap, style::kGap)));
  card.moveCenter(rect().center());
  return card;
}

void EmptyState::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor window = palette().color(QPalette::Window);
  const QColor text = palette().color(QPalette::WindowText);
  const QColor accent = QColor::fromRgb(style::kAccent);
  paint_ground(painter, rect(), palette());
  QPen pen(inviting_ ? accent : style::between(window, text, 0.35), inviting_ ? 2 : 1.2, Qt::CustomDashLine);
  pen.setDashPattern({5, 4});
  painter.setPen(pen);
  painter.setBrush(inviting_ ? style::between(window, accent, 0.12) : window);
  painter.drawRoundedRect(card(), style::kCornerRadius, style::kCornerRadius);
}

}  // namespace vellum
