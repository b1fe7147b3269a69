#include "shell/services/clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

#include "core/edit/paste_chunks.h"
#include "shell/look/picture_image.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

const QMimeData* clipboard_data() { return QGuiApplication::clipboard()->mimeData(); }

bool refuse(Host& host, StringId message) {
  host.show(message);
  return false;
}

bool paste_image(DocumentWindow& window, const QMimeData& data, Host& host) {
  const Picture picture = picture_of_image(qvariant_cast<QImage>(data.imageData()));
  return picture ? paste_picture(window, picture, host) : refuse(host, StringId::NothingToPaste);
}

}  // namespace

QByteArray bytes_of(const std::vector<std::uint8_t>& block) {
  return QByteArray(reinterpret_cast<const char*>(block.data()), static_cast<qsizetype>(block.size()));
}

std::span<const std::uint8_t> span_of(const QByteArray& bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
}

QMimeData* mime_of(const CopiedChunks& copied) {
  auto* data = new QMimeData;
  data->setData(kChunkMime, bytes_of(copied.block));
  if (copied.picture) data->setImageData(image_of_picture(copied.picture));
  if (!copied.text.empty()) data->setText(to_qt(copied.text));
  return data;
}

void put_on_clipboard(const CopiedChunks& copied) {
  QGuiApplication::clipboard()->setMimeData(mime_of(copied));
}

bool paste_from_clipboard(DocumentWindow& window, Host& host) {
  const QMimeData* data = clipboard_data();
  if (!data) return refuse(host, StringId::NothingToPaste);
  if (data->hasFormat(kChunkMime)) return paste_block(window, span_of(data->data(kChunkMime)), host);
  if (data->hasImage()) return paste_image(window, *data, host);
  if (data->hasText()) return paste_text(window, data->text().toStdString(), host);
  return refuse(host, StringId::NothingToPaste);
}

}  // namespace vellum
