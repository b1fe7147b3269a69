#include "shell/look/icon.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>
#include <cmath>

#include "shell/look/style.h"

// The macros declare functions and so can't stand in a namespace.
static void initialise_resources() {
  Q_INIT_RESOURCE(icons);
  Q_INIT_RESOURCE(start);
}

namespace vellum {
namespace {

constexpr const char* kInk = "#101010";  // the drawings' stand-in for the text color
constexpr double kDisabledShare = 0.62;  // how far a disabled icon fades into the window

QColor ink_of(QIcon::Mode mode) {
  const QPalette palette = QApplication::palette();
  const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
  if (mode == QIcon::Selected) return palette.color(QPalette::Active, QPalette::HighlightedText);
  if (mode == QIcon::Disabled) return style::between(text, palette.color(QPalette::Window), kDisabledShare);
  return text;
}

/// Names that freedesktop.org gives icons.
struct ThemeIcon {
  std::string_view name;
  const char* standard;
};
constexpr ThemeIcon kThemeIcons[] = {
    {"new", "document-new"},
    {"open", "document-open"},
    {"save", "document-save"},
    {"save_as", "document-save-as"},
    {"print", "document-print"},
    {"properties", "document-properties"},
    {"recent", "document-open-recent"},
    {"undo", "edit-undo"},
    {"redo", "edit-redo"},
    {"cut", "edit-cut"},
    {"copy", "edit-copy"},
    {"paste", "edit-paste"},
    {"delete", "edit-delete"},
    {"select_all", "edit-select-all"},
    {"find", "edit-find"},
    {"help", "help-contents"},
    {"about", "help-about"},
    {"play", "media-playback-start"},
    {"pause", "media-playback-pause"},
    {"stop", "media-playback-stop"},
    {"rewind", "media-skip-backward"},
    {"back", "go-previous"},
    {"forward", "go-next"},
};

/// Null where the desktop has no theme, or the theme no such icon.
QIcon theme_icon(const char* name) {
  const auto* row = std::ranges::find(kThemeIcons, std::string_view(name), &ThemeIcon::name);
  if (row == std::end(kThemeIcons) || QIcon::themeName() == QLatin1String("hicolor")) return {};
  return QIcon::fromTheme(QLatin1String(row->standard));
}

QByteArray drawing_of(const char* name) {
  QFile file(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(name)));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray in_colours(QByteArray drawing, const QColor& ink, const QColor& accent) {
  drawing.replace(kInk, ink.name().toLatin1());
  return drawing.replace(QColor::fromRgb(style::kAccent).name().toLatin1(), accent.name().toLatin1());
}

QByteArray drawing_for(QByteArray drawing, QIcon::Mode mode) {
  const QColor ink = ink_of(mode);
  const bool plain = mode == QIcon::Disabled || mode == QIcon::Selected;
  return in_colours(std::move(drawing), ink, plain ? ink : QColor::fromRgb(style::kAccent));
}

class SvgEngine : public QIconEngine {
 public:
  explicit SvgEngine(QByteArray drawing) : drawing_(std::move(drawing)) {}

  QIconEngine* clone() const override { return new SvgEngine(drawing_); }

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    QSvgRenderer(drawing_for(drawing_, mode)).render(painter, rect);
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return scaledPixmap(size, mode, state, 1.0);
  }

  /// `size` is in device pixels.
  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal) override {
    QPixmap& pixmap = cache_[{size.width(), size.height(), ink_of(mode).rgba()}];
    if (!pixmap.isNull()) return pixmap;
    pixmap = QPixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return pixmap;
  }

 private:
  QByteArray drawing_;
  std::map<std::tuple<int, int, QRgb>, QPixmap> cache_;
};

}  // namespace

QIcon program_icon(const char* name) {
  if (const QIcon shared = theme_icon(name); !shared.isNull()) return shared;
  const QByteArray drawing = drawing_of(name);
  return drawing.isEmpty() ? QIcon() : QIcon(new SvgEngine(drawing));
}

QPixmap drawn_icon(const char* name, int side, const QColor& ink, const QColor& accent) {
  static std::map<std::tuple<std::string_view, int, QRgb, QRgb>, QPixmap> drawn;
  QPixmap& pixmap = drawn[{name, side, ink.rgba(), accent.rgba()}];
  if (!pixmap.isNull()) return pixmap;
  pixmap = QPixmap(side, side);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  QSvgRenderer(in_colours(drawing_of(name), ink, accent)).render(&painter);
  return pixmap;
}

void register_icons() { initialise_resources(); }

}  // namespace vellum
