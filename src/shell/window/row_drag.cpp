#include "shell/window/row_drag.h"

#include <QCoreApplication>
#include <QDir>
#include <QDrag>
#include <QPainter>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrl>

#include "base/text.h"
#include "core/edit/move_chunks.h"
#include "core/edit/paste_chunks.h"
#include "core/edit/undo.h"
#include "core/model/chunk_description.h"
#include "operations/extract_frames.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/clipboard.h"
#include "shell/services/picture_files.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// Number of the process and of the document window, as text with a blank between.
const QString kRowsMime = QStringLiteral("application/x-vellumcraft-rows");

const QString kFilesMime = QStringLiteral("text/uri-list");

constexpr int kPictureSize = 64, kBadgeHeight = 20;  // device-independent pixels
constexpr QPoint kHotSpot(-8, -8);

/// The first selected row, of an image where one is selected; kNoEntry without a selection.
std::size_t leading_row(DocumentFrame& frame) {
  const ChunkList& list = frame.entries();
  std::size_t first = kNoEntry;
  for (std::size_t i = 0; list.selected_count() > 0 && i < list.size(); ++i) {
    if (!list.entry(i).selected) continue;
    if (is_image_entry(frame.document().kind, list.record(i).tag)) return i;
    first = std::min(first, i);
  }
  return first;
}

bool has_selected_image(DocumentFrame& frame) {
  const std::size_t row = leading_row(frame);
  return row != kNoEntry && is_image_entry(frame.document().kind, frame.entries().record(row).tag);
}

/// What leads the drag: a small picture, or the label of a row on a plate.
QPixmap leading_picture(DocumentFrame& frame, std::size_t row, double ratio) {
  const Picture picture = picture_of(frame.entries().record(row));
  const bool image = is_image_entry(frame.document().kind, frame.entries().record(row).tag) && picture;
  const QString label =
      to_qt(std::string(trimmed(row_text(row, frame.entries().record(row).description).label)));
  const QSize own = image
                        ? QSize(static_cast<int>(picture.width()), static_cast<int>(picture.height()))
                        : QSize(frame.fontMetrics().horizontalAdvance(label) + 2 * style::kGap, kBadgeHeight);
  const QSize room(kPictureSize, kPictureSize);
  const QSize size =
      !image ? own
             : own.scaled(own.boundedTo(room) == own ? own : room, Qt::KeepAspectRatio).expandedTo({8, 8});
  QPixmap pixmap((QSizeF(size) * ratio).toSize());
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(image ? Qt::transparent : Qt::white);
  QPainter painter(&pixmap);
  if (image)
    painter.drawImage(QRect(QPoint(), size), scaled_image(picture, (QSizeF(size) * ratio).toSize()));
  else
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, label);
  return pixmap;
}

QByteArray place_text(const DocumentFrame& frame) {
  return QByteArray::number(QCoreApplication::applicationPid()) + ' ' +
         QByteArray::number(qulonglong{frame.number()});
}

/// The selected images as files, in a folder that goes when the program ends: who was given their names reads
/// them whenever he likes. Empty where they can't be written.
QVariantList files_of(DocumentFrame& frame, bool canvases) {
  static const QTemporaryDir folder(QDir::tempPath() + QStringLiteral("/vellumcraft-frames-XXXXXX"));
  const DocumentWindow& window = frame.content();
  const Extraction extraction{.folder = to_path(folder.path()),
                              .stem = std::filesystem::path(document_title(window.document)).stem().string(),
                              .frames = selected_frames(window),
                              .composed = canvases,
                              .numbered = frame_entries(window).size() > 1};
  const auto names = free_names(extracted_names(window, extraction));
  Host nobody;
  QVariantList urls;
  if (!folder.isValid() || extract_frames(window, extraction, names, nobody) < names.size()) return urls;
  for (const auto& name : names) urls << QUrl::fromLocalFile(path_text(name));
  return urls;
}

/// The block of chunks and the files cost as much as the pictures do, and a drag inside the program needs
/// none.
class DraggedRows : public QMimeData {
 public:
  DraggedRows(DocumentFrame& frame, bool canvases)
      : frame_(&frame), images_(has_selected_image(frame)), canvases_(canvases) {
    setData(kRowsMime, place_text(frame));
  }
  /// Other windows take images alone.
  bool has_images() const { return images_; }
  QStringList formats() const override {
    return images_ ? QStringList{kRowsMime, kChunkMime, kFilesMime} : QStringList{kRowsMime, kChunkMime};
  }
  bool hasFormat(const QString& format) const override { return formats().contains(format); }

 protected:
  QVariant retrieveData(const QString& format, QMetaType type) const override {
    if (format == kFilesMime && frame_ && images_) {
      if (files_.isEmpty()) files_ = files_of(*frame_, canvases_);
      return files_;
    }
    if (format != kChunkMime || !frame_) return QMimeData::retrieveData(format, type);
    Host nobody;
    const auto copied = copy_selected(frame_->content(), nobody);
    return copied ? bytes_of(copied->block) : QByteArray();
  }

 private:
  QPointer<DocumentFrame> frame_;
  bool images_, canvases_;
  mutable QVariantList files_;  ///< once somebody asked
};

/// The window that the rows come from; null for another program's.
DocumentFrame* source_of(MainWindow& main, const QByteArray& rows) {
  const QList<QByteArray> parts = rows.split(' ');
  if (parts.size() != 2 || parts[0].toLongLong() != QCoreApplication::applicationPid()) return nullptr;
  for (DocumentFrame* frame : main.area().documents())
    if (frame->number() == parts[1].toULongLong()) return frame;
  return nullptr;
}

/// What a drop has brought, kept until the drag is over.
struct Dropped {
  QByteArray rows, chunks;
  std::vector<std::filesystem::path> files;
};

void put(MainWindow& main, DocumentFrame& frame, const Dropped& dropped, std::size_t row) {
  if (main.services().busy()) return;
  DocumentWindow& window = frame.content();
  Host& host = main.services().host;
  row = std::min(row, window.list.size() - 1);
  main.raise();
  main.activateWindow();
  main.area().setActiveSubWindow(&frame);
  if (DocumentFrame* source = source_of(main, dropped.rows))
    drop_rows(window, source->content(), row, host);
  else if (!dropped.chunks.isEmpty())
    drop_block(window, span_of(dropped.chunks), row, host);
  else if (const auto pictures = read_picture_files(dropped.files, host); !pictures.empty())
    drop_pictures(window, pictures, row, host);
  undo_settle(window);
  frame.show_caret();
  main.refresh();
}

}  // namespace

QMimeData* dragged_rows(DocumentFrame& frame, bool canvases) { return new DraggedRows(frame, canvases); }

std::vector<std::filesystem::path> dragged_files(const QMimeData& data) {
  std::vector<std::filesystem::path> files;
  if (data.hasFormat(kRowsMime)) return files;
  for (const QUrl& url : data.urls())
    if (url.isLocalFile()) files.push_back(to_path(url.toLocalFile()));
  return files;
}

QPixmap drag_pixmap(DocumentFrame& frame) {
  const std::size_t first = leading_row(frame);
  if (first == kNoEntry) return {};
  const double ratio = frame.devicePixelRatioF();
  const QPixmap leading = leading_picture(frame, first, ratio);
  const QSize size = leading.deviceIndependentSize().toSize();
  const QString count = QString::number(frame.entries().selected_count());
  const QFontMetrics metrics(frame.font());
  const int badge = std::max(metrics.horizontalAdvance(count) + 2 * style::kGap, kBadgeHeight);
  QPixmap pixmap((QSizeF(size + QSize(badge, kBadgeHeight)) * ratio).toSize());
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.drawPixmap(0, 0, leading);
  const QRect plate(size.width() - style::kGap, size.height() - style::kGap, badge, kBadgeHeight);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor::fromRgb(style::kAccent));
  painter.drawRoundedRect(plate, kBadgeHeight / 2.0, kBadgeHeight / 2.0);
  painter.setPen(Qt::white);
  painter.drawText(plate, Qt::AlignCenter, count);
  return pixmap;
}

void drag_rows(DocumentFrame& frame, bool canvases) {
  const QPixmap pixmap = drag_pixmap(frame);
  if (pixmap.isNull()) return;
  // The drag belongs to the list and goes when it is over.
  auto* drag = new QDrag(frame.list().viewport());
  drag->setMimeData(dragged_rows(frame, canvases));
  drag->setPixmap(pixmap);
  drag->setHotSpot(kHotSpot);
  // Only the list itself takes rows as moved ones, and it moves them.
  drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
}

bool is_drag_of(const DocumentFrame& frame, const QMimeData& data) {
  return data.data(kRowsMime) == place_text(frame);
}

void put_rows_later(MainWindow& main, DocumentFrame& frame, std::size_t position, bool copy) {
  QTimer::singleShot(0, &frame, [&main, &frame, position, copy] {
    if (main.services().busy() || frame.entries().empty()) return;
    put_rows(frame.content(), {position, copy}, main.services().host);
    frame.show_caret();
    main.refresh();
  });
}

bool may_drop_on(DocumentFrame& frame, const QMimeData& data) {
  const auto* rows = dynamic_cast<const DraggedRows*>(&data);
  if (rows && !rows->has_images() && !is_drag_of(frame, data)) return false;
  if (data.hasFormat(kRowsMime) || data.hasFormat(kChunkMime)) return true;
  return is_animation(frame.document().kind) && !dragged_files(data).empty();
}

void drop_on(MainWindow& main, DocumentFrame& frame, const QMimeData& data, std::size_t row) {
  Dropped dropped{data.data(kRowsMime), {}, dragged_files(data)};
  if (!source_of(main, dropped.rows)) dropped.chunks = data.data(kChunkMime);
  // The other program waits for the end of the drop; messages come behind it.
  QTimer::singleShot(0, &frame, [&main, &frame, dropped, row] {
    if (!frame.entries().empty()) put(main, frame, dropped, row);
  });
}

}  // namespace vellum
