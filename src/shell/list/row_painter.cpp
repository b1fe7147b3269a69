#include "shell/list/row_painter.h"

#include <cmath>

#include "configuration/shell_settings.h"
#include "core/chunks/chunk_facts.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "shell/look/icon.h"
#include "shell/look/text.h"
#include "shell/widgets/checkers.h"

namespace vellum {
namespace {

constexpr int kTextIndent = 4;
constexpr int kTextGap = 12;  // from the row's left edge, beside the label's width
constexpr int kRightMargin = 8;
constexpr int kBracketHeight = 8;
constexpr int kBracketPen = 2;
constexpr int kChecker = 6;

// Facts stand in a column of their own, as long as the text in front of them leaves it free.
constexpr int kFactsColumn = 52;     // characters
constexpr double kFactsShare = 0.5;  // of a narrow row
constexpr int kFactsGap = 16, kIconSide = 16, kIconGap = 6;
constexpr QRgb kMark = 0xFFFFEFA8;
constexpr int kLeastFacts = 24;  // less than that tells nothing
constexpr int kSwatch = 11, kSwatchStep = 13;

/// By family.
constexpr std::array<const char*, kChunkFamilies> kIcons = {
    "row_header", "row_frame",   "row_palette", "row_color", "row_text",
    "row_time",   "row_control", "row_measure", "row_end",   "row_unknown"};

/// The same place, moved to the next whole device pixel, so that a thumbnail isn't smeared over two.
QPointF on_device_pixel(const QPainter& painter, QPoint place) {
  const QTransform to_device = painter.deviceTransform();
  const QPointF device = to_device.map(QPointF(place));
  return to_device.inverted().map(QPointF(std::round(device.x()), std::round(device.y())));
}

QColor opaque(Colour colour) { return QColor(red_of(colour), green_of(colour), blue_of(colour)); }

void paint_picture(const RowPainting& p, const std::shared_ptr<const ChunkRecord>& record,
                   const ThumbnailPlace& place) {
  const double ratio = p.painter.device()->devicePixelRatioF();
  const QSize device_size(static_cast<int>(std::lround(place.frame.width() * ratio)),
                          static_cast<int>(std::lround(place.frame.height() * ratio)));
  static const std::vector<std::uint8_t> opaque_table;
  const bool mng = p.window.document.kind == DocumentKind::MING;
  const std::vector<std::uint8_t> own = mng ? image_transparency(*record) : opaque_table;
  QPixmap pixmap = p.thumbnails.get(record, device_size, mng ? own : p.transparency ? *p.transparency : own);
  if (pixmap.isNull()) return;
  pixmap.setDevicePixelRatio(ratio);
  p.painter.save();
  p.painter.setClipRect(place.canvas, Qt::IntersectClip);
  if (!place.frame.contains(place.canvas)) p.painter.fillRect(place.canvas, opaque(p.background));
  const QPointF corner = on_device_pixel(p.painter, place.frame.topLeft());
  // Light ones on every desktop, as the rows are.
  if (pixmap.hasAlphaChannel()) {
    p.painter.setClipRect(QRectF(corner, pixmap.deviceIndependentSize()), Qt::IntersectClip);
    paint_checkers(p.painter, QRectF(corner, pixmap.deviceIndependentSize()).toAlignedRect(), kChecker,
                   false);
  }
  p.painter.drawPixmap(corner, pixmap);
  p.painter.restore();
}

void paint_thumbnail(const RowPainting& p, std::size_t index, const QRect& row) {
  const Document& document = p.window.document;
  const auto& record = p.window.list.entry(index).record;
  if (document.thumbScale == 0 || !is_image_entry(document.kind, record->tag)) return;
  const Picture picture = picture_of(*record);
  if (!picture) return;
  const int percent = kThumbnailScales[static_cast<std::size_t>(document.thumbScale)];
  const ThumbnailPlace place = thumbnail_place(row, p.canvas, {picture.width(), picture.height()},
                                               GetFrameOffset(*record, document.kind), percent);
  paint_picture(p, record, place);
}

/// Blanks as wide as digits, so that numbers of rows end in one column.
QString in_column(const std::string& label, const QFontMetrics& metrics) {
  constexpr char16_t kDigitWide = 0x2007;
  QString text = to_qt(label);
  for (qsizetype i = 0; i < text.size() && text[i] == u' ' && metrics.inFont(QChar(kDigitWide)); ++i)
    text[i] = QChar(kDigitWide);
  return text;
}

/// On one line from the left of `room`; what is looked for gets a ground of its own.
void draw_marked(const RowPainting& p, const QRect& room, const QString& text,
                 const style::RowColours& colours) {
  const QFontMetrics metrics = p.painter.fontMetrics();
  const bool plain = colours.ground == p.plain.ground;
  for (qsizetype at = 0; plain && !p.marked.isEmpty(); at += p.marked.size()) {
    at = text.indexOf(p.marked, at, Qt::CaseInsensitive);
    if (at < 0) break;
    const int left = room.left() + metrics.horizontalAdvance(text, static_cast<int>(at));
    const int width = metrics.horizontalAdvance(text.mid(at, p.marked.size()));
    p.painter.fillRect(QRect(left, room.top(), width, room.height()), QColor::fromRgb(kMark));
  }
  p.painter.drawText(room, Qt::AlignLeft | Qt::TextSingleLine, text);
}

/// Where the text ends.
int paint_text(const RowPainting& p, const RowText& text, const QRect& row,
               const style::RowColours& colours) {
  QPainter& painter = p.painter;
  const QFontMetrics metrics = painter.fontMetrics();
  const QString label = in_column(text.label, metrics);
  const QRect line(row.left() + kTextIndent, row.top() + kTextIndent, row.width(), metrics.height());
  painter.setPen(colours.label);
  draw_marked(p, line, label, colours);
  QRect rest = line;
  rest.setLeft(row.left() + kTextGap + metrics.horizontalAdvance(label));
  rest.setRight(row.right() - kRightMargin);
  if (rest.width() <= 0) return rest.left();
  const QString shown = metrics.elidedText(to_qt(text.text), Qt::ElideRight, rest.width());
  painter.setPen(settings::MonoListText != 0 ? colours.label : colours.text);
  draw_marked(p, rest, shown, colours);
  return rest.left() + metrics.horizontalAdvance(shown);
}

/// Small squares from the left of `room`, which they are taken off.
void paint_swatches(QPainter& painter, const std::vector<Colour>& colors, QRect& room) {
  const int top = room.center().y() - kSwatch / 2;
  for (const Colour color : colors) {
    if (room.width() < kSwatchStep) return;
    const QRect square(room.left(), top, kSwatch, kSwatch);
    painter.fillRect(square, QColor(0x80, 0x80, 0x80));
    painter.fillRect(square.adjusted(1, 1, -1, -1), opaque(color));
    room.setLeft(room.left() + kSwatchStep);
  }
  if (!colors.empty()) room.setLeft(room.left() + kIconGap);
}

void paint_facts(const RowPainting& p, std::size_t index, const QRect& row, int textEnd,
                 const style::RowColours& colours) {
  const QFontMetrics metrics = p.painter.fontMetrics();
  const int column =
      std::min(metrics.averageCharWidth() * kFactsColumn, static_cast<int>(row.width() * kFactsShare));
  QRect room(std::max(row.left() + column, textEnd + kFactsGap), row.top() + kTextIndent, 0,
             metrics.height());
  room.setRight(row.right() - kRightMargin);
  if (room.width() < kIconSide + kIconGap + kLeastFacts) return;
  const double ratio = p.painter.device()->devicePixelRatioF();
  const auto family = static_cast<std::size_t>(chunk_family(p.window.list.record(index).tag));
  const QColor accent = colours.ground == QColor(Qt::white) ? QColor::fromRgb(style::kAccent) : colours.facts;
  QPixmap icon =
      drawn_icon(kIcons[family], static_cast<int>(std::lround(kIconSide * ratio)), colours.facts, accent);
  icon.setDevicePixelRatio(ratio);
  p.painter.drawPixmap(on_device_pixel(p.painter, {room.left(), room.center().y() - kIconSide / 2}), icon);
  room.setLeft(room.left() + kIconSide + kIconGap);
  const ChunkFacts facts = chunk_facts(p.window, index);
  paint_swatches(p.painter, facts.colors, room);
  p.painter.setPen(settings::MonoListText != 0 ? colours.label : colours.facts);
  draw_marked(p, room, metrics.elidedText(to_qt(facts.text), Qt::ElideRight, room.width()), colours);
}

/// Along the bottom of the row, turned up at both ends.
void paint_bracket(QPainter& painter, const QRect& row, const QColor& colour) {
  const int left = row.left() + 1, right = row.left() + row.width() - 1;
  const int bottom = row.top() + row.height() - 1;
  const int top = bottom + 1 - kBracketHeight;
  painter.setPen(QPen(colour, kBracketPen, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
  painter.drawPolyline(QPolygon({{left, top}, {left, bottom}, {right, bottom}, {right, top}}));
}

/// A star in the color of the row's ground, on a small disc.
void paint_favorite(QPainter& painter, const QRect& row, const QColor& ground) {
  constexpr double kDisc = 16, kPoints = 5, kInner = 0.42, kTurn = 3.14159265358979 / kPoints;
  const QRectF disc(row.right() - kDisc - kRightMargin / 2.0, row.top() + kTextIndent, kDisc, kDisc);
  QPolygonF star;
  for (int i = 0; i < 2 * static_cast<int>(kPoints); ++i) {
    const double radius = (i % 2 == 0 ? 0.42 : 0.42 * kInner) * kDisc, angle = i * kTurn;
    star << disc.center() + QPointF(radius * std::sin(angle), -radius * std::cos(angle));
  }
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromRgb(style::kAccent));
  painter.drawEllipse(disc);
  painter.setBrush(ground);
  painter.drawPolygon(star);
}

}  // namespace

void paint_row(const RowPainting& p, std::size_t index, const QRect& row) {
  const ChunkList& list = p.window.list;
  const style::RowColours& colours = list.entry(index).selected ? p.selected : p.plain;
  p.painter.save();
  p.painter.setClipRect(row, Qt::IntersectClip);
  p.painter.fillRect(row, colours.ground);
  paint_thumbnail(p, index, row);
  if (static_cast<std::int64_t>(index) == p.window.document.caret) paint_bracket(p.painter, row, p.bracket);
  const int end = paint_text(p, row_text(index, list.record(index).description), row, colours);
  paint_facts(p, index, row, end, colours);
  if (index == 0 && p.favorite) paint_favorite(p.painter, row, colours.ground);
  p.painter.restore();
}

}  // namespace vellum
