#include "shell/services/finished.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>
#include <QWidget>

namespace vellum {

void tell_finished(const QString& text) {
  if (QApplication::activeWindow() || QApplication::topLevelWidgets().isEmpty()) return;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->isVisible()) QApplication::alert(window);
  // Desktop notifications of freedesktop.org: name, replaced one, icon, title, text,
  // actions, hints, milliseconds (-1: as the desktop does).
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
      QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
  const QVariantMap hints{{QStringLiteral("desktop-entry"), QGuiApplication::desktopFileName()}};
  call.setArguments({QGuiApplication::applicationDisplayName(), 0u, QStringLiteral("vellumcraft"),
                     QGuiApplication::applicationDisplayName(), text, QStringList(), hints, -1});
  if (QDBusConnection bus = QDBusConnection::sessionBus(); bus.isConnected()) bus.send(call);
}

}  // namespace vellum
