#include "shell/look/theme_look.h"

#include <QApplication>
#include <QPixmapCache>
#include <QStyleOption>
#include <cmath>

#include "extension/settings.h"
#include "shell/look/program_style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

ThemeInForce inForce;

VellumPixels pixels_of(QImage& image, double scale) {
  return {sizeof(VellumPixels), reinterpret_cast<std::uint32_t*>(image.bits()),  image.width(),
          image.height(),       static_cast<std::int32_t>(image.bytesPerLine()), scale};
}

QImage empty_image(QSize size, double scale) {
  QImage image((QSizeF(size) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(0);
  return image;
}

constexpr std::uint32_t kSupport[] = {VELLUM_SUPPORT_BUTTON, VELLUM_SUPPORT_SMALL_BUTTON, VELLUM_SUPPORT_TOOL,
                                      VELLUM_SUPPORT_TOOLBAR};

std::uint32_t call(const ThemeCalls& calls, ThemePart part, const VellumPixels& pixels, std::uint32_t state,
                   const QByteArray& text, int command) {
  switch (part) {
    case ThemePart::Button:
      return calls.button(&pixels, state, text.constData());
    case ThemePart::SmallButton:
      return calls.small_button(&pixels, state, text.constData());
    case ThemePart::Tool:
      return calls.tool(&pixels, state, static_cast<std::uint32_t>(command));
    case ThemePart::Toolbar:
      break;
  }
  return calls.toolbar(&pixels);
}

/// Roles of the palette, and the numbers of their colors.
struct RoleRow {
  QPalette::ColorRole role;
  int color;
};

constexpr RoleRow kRoles[] = {
    {QPalette::Window, VELLUM_COLOR_WINDOW},
    {QPalette::WindowText, VELLUM_COLOR_TEXT},
    {QPalette::Base, VELLUM_COLOR_FIELD},
    {QPalette::Text, VELLUM_COLOR_FIELD_TEXT},
    {QPalette::AlternateBase, VELLUM_COLOR_OTHER_FIELD},
    {QPalette::Button, VELLUM_COLOR_BUTTON},
    {QPalette::ButtonText, VELLUM_COLOR_BUTTON_TEXT},
    {QPalette::Highlight, VELLUM_COLOR_HIGHLIGHT},
    {QPalette::HighlightedText, VELLUM_COLOR_HIGHLIGHT_TEXT},
    {QPalette::Link, VELLUM_COLOR_LINK},
    {QPalette::LinkVisited, VELLUM_COLOR_LINK},
    {QPalette::PlaceholderText, VELLUM_COLOR_SECONDARY_TEXT},
    {QPalette::ToolTipBase, VELLUM_COLOR_TIP},
    {QPalette::ToolTipText, VELLUM_COLOR_TIP_TEXT},
    {QPalette::BrightText, VELLUM_COLOR_HIGHLIGHT_TEXT},
    {QPalette::Mid, VELLUM_COLOR_EDGE},
};

}  // namespace

ThemeInForce theme_in_force() { return inForce; }

void put_theme_in_force(ThemeInForce theme) {
  inForce = std::move(theme);
  QPixmapCache::clear();
  QApplication::setStyle(new ProgramStyle(inForce));
}

std::string start_theme(std::span<const std::filesystem::path> folders) {
  if (settings::ThemeCurrent.empty() || settings::ThemeCurrent == kDefaultTheme) return {};
  std::string reason;
  auto theme = load_theme(settings::ThemeCurrent, folders, reason);
  if (!theme) return settings::ThemeCurrent + ": " + reason;
  put_theme_in_force(std::make_shared<Theme>(std::move(*theme)));
  return {};
}

int theme_metric(int number, int otherwise) {
  constexpr int kMost = 256;  // a theme of others may say anything
  if (!inForce) return otherwise;
  const int size = inForce->calls.metric(static_cast<std::uint32_t>(number));
  return size > 0 ? std::min(size, kMost) : otherwise;
}

QColor theme_color(const Theme& theme, int number) { return QColor::fromRgb(theme.color(number)); }

QPalette theme_palette(const Theme& theme) {
  const QColor window = theme_color(theme, VELLUM_COLOR_WINDOW),
               button = theme_color(theme, VELLUM_COLOR_BUTTON);
  QPalette palette(button, window);  // the shades that lie between them follow
  for (const RoleRow& row : kRoles) palette.setColor(row.role, theme_color(theme, row.color));
  const QColor faint = theme_color(theme, VELLUM_COLOR_DISABLED_TEXT);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                          QPalette::PlaceholderText, QPalette::HighlightedText})
    palette.setColor(QPalette::Disabled, role, faint);
  palette.setColor(QPalette::Disabled, QPalette::Base, window);
  palette.setColor(QPalette::Disabled, QPalette::Highlight, theme_color(theme, VELLUM_COLOR_EDGE));
  return palette;
}

std::uint32_t theme_state(const QStyleOption& option) {
  struct StateRow {
    QStyle::StateFlag flag;
    std::uint32_t state;
  };
  static constexpr StateRow rows[] = {{QStyle::State_MouseOver, VELLUM_STATE_HOT},
                                      {QStyle::State_Sunken, VELLUM_STATE_PRESSED},
                                      {QStyle::State_On, VELLUM_STATE_CHECKED},
                                      {QStyle::State_HasFocus, VELLUM_STATE_FOCUSED}};
  if (!(option.state & QStyle::State_Enabled)) return VELLUM_STATE_DISABLED;
  std::uint32_t state = 0;
  for (const StateRow& row : rows)
    if (option.state & row.flag) state |= row.state;
  return state;
}

DrawnPart draw_theme_part(const Theme& theme, ThemePart part, QPainter& painter, const QRect& rect,
                          std::uint32_t state, const QString& text, int command) {
  if (!theme.draws(kSupport[static_cast<int>(part)]) || rect.isEmpty()) return {};
  const double scale = painter.device()->devicePixelRatioF();
  const QString key = QStringLiteral("theme %1 %2 %3 %4 %5 %6 %7")
                          .arg(to_qt(theme.file))
                          .arg(static_cast<int>(part))
                          .arg(state)
                          .arg(command)
                          .arg(rect.width())
                          .arg(rect.height())
                          .arg(scale);
  QPixmap drawn;
  if (QPixmapCache::find(key, &drawn)) {
    painter.drawPixmap(rect.topLeft(), drawn);
    return {true, false};
  }
  QImage image = empty_image(rect.size(), scale);
  if (image.isNull()) return {};
  const std::uint32_t answer =
      call(theme.calls, part, pixels_of(image, scale), state, text.toUtf8(), command);
  if (answer == 0) return {};
  if (answer == 1) QPixmapCache::insert(key, QPixmap::fromImage(image));
  painter.drawImage(rect.topLeft(), image);
  return {true, answer == 2};
}

QImage theme_sample(const Theme& theme, QSize size, double scale) {
  QImage image = empty_image(size, scale);
  const VellumPixels pixels = pixels_of(image, scale);
  return theme.calls.bitmap(&pixels) != 0 ? image : QImage();
}

}  // namespace vellum
