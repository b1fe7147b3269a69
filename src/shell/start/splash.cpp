#include "shell/start/splash.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QSvgRenderer>
#include <QTimer>
#include <QWindow>
#include <utility>

#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr QSize kSize(560, 320);
constexpr QRect kTitle(40, 196, 480, 52), kLine(42, 246, 480, 24), kVersion(40, 284, 480, 20);

QPixmap splash_picture(qreal ratio) {
  QPixmap picture(kSize * ratio);
  picture.setDevicePixelRatio(ratio);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  QSvgRenderer(QStringLiteral(":/start/splash.svg")).render(&painter, QRectF(QPointF(), kSize));
  QFont font = style::heading_font();
  font.setPixelSize(40);
  font.setWeight(QFont::DemiBold);
  painter.setFont(font);
  painter.setPen(QColor(255, 253, 246));
  painter.drawText(kTitle, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Vellumcraft"));
  font.setPixelSize(15);
  font.setWeight(QFont::Normal);
  painter.setFont(font);
  painter.setPen(QColor(214, 230, 250));
  painter.drawText(kLine, Qt::AlignLeft | Qt::AlignVCenter,
                   QObject::tr("PNG, animated PNG, MNG and WebP, chunk by chunk"));
  font.setPixelSize(12);
  painter.setFont(font);
  painter.drawText(kVersion, Qt::AlignRight | Qt::AlignVCenter,
                   QObject::tr("Version %1").arg(QStringLiteral(VELLUM_VERSION)));
  return picture;
}

bool ends_it(QEvent::Type type) {
  return type == QEvent::MouseButtonPress || type == QEvent::KeyPress || type == QEvent::Wheel ||
         type == QEvent::DragEnter;
}

}  // namespace

Splash::Splash(QWidget& window, int milliseconds)
    : QSplashScreen(splash_picture(window.devicePixelRatioF())) {
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_QuitOnClose, false);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAccessibleName(tr("Vellumcraft"));
  QRect place(QPoint(), kSize);
  place.moveCenter(window.geometry().center());
  move(place.topLeft());
  winId();
  windowHandle()->setTransientParent(window.windowHandle());
  QTimer::singleShot(milliseconds, this, &QWidget::close);
  connect(&window, &QObject::destroyed, this, &QWidget::close);
  qApp->installEventFilter(this);
}

Splash::~Splash() = default;

bool Splash::eventFilter(QObject* object, QEvent* event) {
  if (ends_it(event->type())) close();
  const auto* widget = qobject_cast<QWidget*>(object);
  // A message, a dialog, a document: whatever comes is never behind the picture.
  if (event->type() == QEvent::Show && widget && widget != this &&
      (widget->isWindow() || widget->inherits("QMdiSubWindow")))
    close();
  return QSplashScreen::eventFilter(object, event);
}

void Splash::hideEvent(QHideEvent* event) {
  QSplashScreen::hideEvent(event);
  qApp->removeEventFilter(this);
  if (const auto call = std::exchange(gone, nullptr)) QTimer::singleShot(0, qApp, call);
}

}  // namespace vellum
