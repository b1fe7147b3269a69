#include "core/model/document.h"

#include <algorithm>
#include <utility>

#include "base/string_table.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "core/model/frame_values.h"
#include "core/model/kind_table.h"
#include "core/settings.h"

namespace vellum {
namespace {

/// The far edge of all frames so far; 64 bits, as offsets and sizes of a hostile file add up beyond 32.
struct Reach {
  std::int64_t width = 0, height = 0;
  void add(std::int64_t x, std::int64_t y, std::uint32_t w, std::uint32_t h) {
    width = std::max(width, x + w);
    height = std::max(height, y + h);
  }
  bool fits(std::int64_t most) const { return width > 0 && height > 0 && width <= most && height <= most; }
};

Reach reach_of_apng(const ChunkList& list, const Document& document) {
  Reach reach;
  if (const Picture image(document.defaultImage); image) reach.add(0, 0, image.width(), image.height());
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (!is_image_entry(DocumentKind::APNG, record.tag)) continue;
    const FrameControl& frame = record.frameControl;
    reach.add(frame.xOffset, frame.yOffset, frame.frameWidth, frame.frameHeight);
  }
  return reach;
}

Reach reach_of_mng(const ChunkList& list, const Document&) {
  Reach reach;
  std::int64_t x = 0, y = 0;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (record.tag == tag::DEFI && record.size > 4) {
      x = static_cast<std::int32_t>(payload_be32(record, 4));
      y = static_cast<std::int32_t>(payload_be32(record, 8));
    }
    if (record.tag != tag::PNGI || !(record.flags & CRF_IHDR)) continue;
    const bool own = (record.flags & CRF_DEFI) && record.image->defiBytes >= 5;
    const FrameOffset folded = GetFrameOffset(record, DocumentKind::MING);
    reach.add(own ? folded.x : x, own ? folded.y : y, record.width, record.height);
  }
  return reach;
}

Reach reach_of_webp(const ChunkList& list, const Document&) {
  Reach reach;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const WebpImageFields& frame = list.record(i).webpImage;
    if (list.record(i).tag == tag::WEBI) reach.add(frame.xOffset, frame.yOffset, frame.width, frame.height);
  }
  return reach;
}

/// How the header of a kind takes the extent.
struct ExtentRow {
  DocumentKind kind;
  ChunkTag header;
  Reach (*reach)(const ChunkList&, const Document&);
  std::uint32_t& (*width)(ChunkRecord&);
  std::uint32_t& (*height)(ChunkRecord&);
};

constexpr ExtentRow kExtents[] = {
    {DocumentKind::APNG, tag::IHDR, reach_of_apng, [](ChunkRecord& r) -> std::uint32_t& { return r.width; },
     [](ChunkRecord& r) -> std::uint32_t& { return r.height; }},
    {DocumentKind::MING, tag::MHDR, reach_of_mng,
     [](ChunkRecord& r) -> std::uint32_t& { return r.frameWidth; },
     [](ChunkRecord& r) -> std::uint32_t& { return r.frameHeight; }},
    {DocumentKind::WEBP, tag::WEBH, reach_of_webp,
     [](ChunkRecord& r) -> std::uint32_t& { return r.webpHeader.canvasWidth; },
     [](ChunkRecord& r) -> std::uint32_t& { return r.webpHeader.canvasHeight; }},
};

/// Stores a record with its description rebuilt, where it differs from the entry in nothing but `change`.
template <class Change>
void update_entry(ChunkList& list, std::size_t index, Change change) {
  ChunkRecord record;
  if (!chunk_list_get(list, index, record)) return;
  if (!change(record)) return;
  record.description = chunk_description(record);
  chunk_list_put(list, index, record);
}

void update_frame_count(ChunkList& list, const Document& document) {
  const auto images = static_cast<std::uint32_t>(chunk_count_images(list, document.kind));
  const auto set = [images](std::uint32_t& field) { return std::exchange(field, images) != images; };
  if (document.kind == DocumentKind::APNG)
    update_entry(list, chunk_find_first(list, tag::acTL), [&](ChunkRecord& r) { return set(r.numFrames); });
  if (document.kind == DocumentKind::WEBP)
    update_entry(list, chunk_find_first(list, tag::WEBH),
                 [&](ChunkRecord& r) { return set(r.webpHeader.frameCount); });
}

}  // namespace

void document_extent(ChunkList& list, Document& document) {
  update_frame_count(list, document);
  const auto row = std::ranges::find(kExtents, document.kind, &ExtentRow::kind);
  if (row == std::end(kExtents) || list.empty() || list.record(0).tag != row->header) return;
  const Reach reach = row->reach(list, document);
  if (!reach.fits(kind_row(document.kind).mostPixels)) return;
  update_entry(list, 0, [&](ChunkRecord& header) {
    const auto width = static_cast<std::uint32_t>(reach.width);
    const auto height = static_cast<std::uint32_t>(reach.height);
    const bool same = row->width(header) == width && row->height(header) == height;
    row->width(header) = width;
    row->height(header) = height;
    return !same;
  });
}

Extent document_size(const ChunkList& list, const Document& document) {
  static constexpr std::pair<DocumentKind, ChunkTag> headers[] = {{DocumentKind::PING, tag::IHDR},
                                                                  {DocumentKind::APNG, tag::IHDR},
                                                                  {DocumentKind::MING, tag::MHDR},
                                                                  {DocumentKind::WEBP, tag::WEBH}};
  for (const auto& [kind, header_tag] : headers) {
    if (kind != document.kind) continue;
    const std::size_t at = chunk_find_first(list, header_tag);
    if (at == kNoEntry) return {};
    const ChunkRecord& header = list.record(at);
    if (header_tag == tag::MHDR) return {header.frameWidth, header.frameHeight};
    if (header_tag == tag::WEBH) return {header.webpHeader.canvasWidth, header.webpHeader.canvasHeight};
    return {header.width, header.height};
  }
  return {};
}

void document_clear(DocumentWindow& window) {
  window.document = {};
  window.list.clear();
  window.undoLevels.clear();
  window.redoLevels.clear();
}

std::string document_title(const Document& document) {
  if (!document.fileName.empty()) return document.fileName.string();
  return std::string(string_text(StringId::DefaultTitle)).append(kind_row(document.kind).extensions.front());
}

DocumentWindow duplicate_document(const DocumentWindow& window, std::string_view prefix) {
  DocumentWindow copy;
  const std::filesystem::path name = document_title(window.document);
  copy.document.fileName = name.parent_path() / (std::string(prefix) + name.filename().string());
  copy.document.thumbScale = window.document.thumbScale;
  copy.document.kind = window.document.kind;
  copy.document.caret = window.document.caret;
  copy.document.defaultImage = window.document.defaultImage;
  copy.list = window.list;
  chunk_list_layout(copy.list, copy.document);
  return copy;
}

}  // namespace vellum
