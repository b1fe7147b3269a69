#include "shell/list/row_painter.h"

#include <cmath>

#include "configuration/shell_settings.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kTextIndent = 4;
constexpr int kTextGap = 12;  // from the row's left edge, beside the label's width
constexpr int kRightMargin = 8;
constexpr int kBracketHeight = 8;
constexpr int kBracketPen = 2;

/// The same place, moved to the next whole device pixel, so that a thumbnail isn't smeared over two.
QPointF on_device_pixel(const QPainter& painter, QPoint place) {
  const QTransform to_device = painter.deviceTransform();
  const QPointF device = to_device.map(QPointF(place));
  return to_device.inverted().map(QPointF(std::round(device.x()), std::round(device.y())));
}

QColor opaque(Colour colour) { return QColor(red_of(colour), green_of(colour), blue_of(colour)); }

void paint_picture(const RowPainting& p, const std::shared_ptr<const ChunkRecord>& record,
                   const ThumbnailPlace& place, const QColor& ground) {
  const double ratio = p.painter.device()->devicePixelRatioF();
  const QSize device_size(static_cast<int>(std::lround(place.frame.width() * ratio)),
                          static_cast<int>(std::lround(place.frame.height() * ratio)));
  QPixmap pixmap = p.thumbnails.get(record, device_size);
  if (pixmap.isNull()) return;
  pixmap.setDevicePixelRatio(ratio);
  p.painter.save();
  p.painter.setClipRect(place.canvas, Qt::IntersectClip);
  if (!place.frame.contains(place.canvas)) p.painter.fillRect(place.canvas, opaque(p.background));
  const QPointF corner = on_device_pixel(p.painter, place.frame.topLeft());
  if (pixmap.hasAlphaChannel()) p.painter.fillRect(QRectF(corner, pixmap.deviceIndependentSize()), ground);
  p.painter.drawPixmap(corner, pixmap);
  p.painter.restore();
}

void paint_thumbnail(const RowPainting& p, std::size_t index, const QRect& row, const QColor& ground) {
  const Document& document = p.window.document;
  const auto& record = p.window.list.entry(index).record;
  if (document.thumbScale == 0 || !is_image_entry(document.kind, record->tag)) return;
  const Picture picture = picture_of(*record);
  if (!picture) return;
  const int percent = kThumbnailScales[static_cast<std::size_t>(document.thumbScale)];
  const ThumbnailPlace place = thumbnail_place(row, p.canvas, {picture.width(), picture.height()},
                                               GetFrameOffset(*record, document.kind), percent);
  paint_picture(p, record, place, ground);
}

void paint_text(QPainter& painter, const RowText& text, const QRect& row, const style::RowColours& colours) {
  const QFontMetrics metrics = painter.fontMetrics();
  const QString label = to_qt(text.label);
  const QRect line(row.left() + kTextIndent, row.top() + kTextIndent, row.width(), metrics.height());
  painter.setPen(colours.label);
  painter.drawText(line, Qt::AlignLeft | Qt::TextSingleLine, label);
  QRect rest = line;
  rest.setLeft(row.left() + kTextGap + metrics.horizontalAdvance(label));
  rest.setRight(row.right() - kRightMargin);
  if (rest.width() <= 0) return;
  painter.setPen(settings::MonoListText != 0 ? colours.label : colours.text);
  painter.drawText(rest, Qt::AlignLeft | Qt::TextSingleLine,
                   metrics.elidedText(to_qt(text.text), Qt::ElideRight, rest.width()));
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
  paint_thumbnail(p, index, row, colours.ground);
  if (static_cast<std::int64_t>(index) == p.window.document.caret) paint_bracket(p.painter, row, p.bracket);
  paint_text(p.painter, row_text(index, list.record(index).description), row, colours);
  if (index == 0 && p.favorite) paint_favorite(p.painter, row, colours.ground);
  p.painter.restore();
}

}  // namespace vellum
