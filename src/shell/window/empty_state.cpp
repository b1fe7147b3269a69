#include "shell/window/empty_state.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kNarrow = 460, kWide = 700;  // pixels of the card, without and with recent files
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

EmptyState::EmptyState(RecentFiles& recent, QWidget* parent)
    : QWidget(parent),
      card_(new QWidget(this)),
      heading_(new QLabel(tr("Recent files"), card_)),
      tiles_(new RecentTiles(recent, card_)) {
  auto* heading = centered_label(card_, text_of(StringId::EmptyArea));
  heading->setFont(style::heading_font());
  auto* formats = centered_label(card_, tr("PNG, animated PNG, MNG and WebP"));
  formats->setForegroundRole(QPalette::PlaceholderText);
  auto* button = new QPushButton(tr("&Open..."), card_);
  button->setMinimumWidth(120);
  heading_->setForegroundRole(QPalette::PlaceholderText);
  auto* layout = new QVBoxLayout(card_);
  layout->setContentsMargins(style::kMargin, style::kMargin, style::kMargin, style::kMargin);
  layout->setSpacing(style::kGap);
  layout->addWidget(new CardPicture(card_), 0, Qt::AlignHCenter);
  layout->addSpacing(style::kGap);
  layout->addWidget(heading);
  layout->addWidget(formats);
  layout->addSpacing(style::kGap);
  layout->addWidget(button, 0, Qt::AlignHCenter);
  layout->addSpacing(style::kGap);
  layout->addWidget(heading_);
  layout->addWidget(tiles_, 1);
  setFocusProxy(button);
  connect(button, &QPushButton::clicked, this, &EmptyState::open_wanted);
  connect(tiles_, &RecentTiles::chosen, this, &EmptyState::recent_wanted);
  connect(&recent, &RecentFiles::changed, this, &EmptyState::lay_out);
}

void EmptyState::set_inviting(bool inviting) {
  inviting_ = inviting;
  update();
}

/// The card is as high as its tiles want, and the tiles scroll where there is no room for that.
void EmptyState::lay_out() {
  const bool recent = tiles_->count() > 0;
  const QSize room = size() - QSize(style::kWideGap, style::kWideGap);
  const int width = std::min(recent ? kWide : kNarrow, room.width());
  heading_->setVisible(recent);
  tiles_->setVisible(recent);
  tiles_->setMinimumHeight(1);  // otherwise it is a high one that lists have by themselves
  const int wanted = recent ? tiles_->height_for(width - 2 * style::kMargin) : 0;
  const int others = card_->layout()->minimumSize().height();
  QRect place(0, 0, width, std::min(others + wanted, room.height()));
  place.moveCenter(rect().center());
  card_->setGeometry(place);
  update();
}

void EmptyState::resizeEvent(QResizeEvent*) { lay_out(); }

void EmptyState::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor window = palette().color(QPalette::Window);
  const QColor text = palette().color(QPalette::WindowText);
  const QColor accent = QColor::fromRgb(style::kAccent);
  painter.setPen(Qt::NoPen);
  painter.setBrush(inviting_ ? style::between(window, accent, 0.12) : window);
  const QRectF card(card_->geometry());
  painter.drawRoundedRect(card, style::kCornerRadius, style::kCornerRadius);
  QPen pen(inviting_ ? accent : style::between(window, text, 0.35), inviting_ ? 2 : 1.2, Qt::CustomDashLine);
  pen.setDashPattern({5, 4});
  painter.setPen(pen);
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(card.adjusted(8, 8, -8, -8), style::kCornerRadius - 4, style::kCornerRadius - 4);
}

}  // namespace vellum
