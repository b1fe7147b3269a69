#include "operations/frame_pictures.h"

#include <algorithm>
#include <atomic>
#include <unordered_map>

#include "base/byte_order.h"
#include "base/parallel.h"
#include "core/edit/frame_layer.h"
#include "core/model/chunk_description.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "operations/frames.h"

namespace vellum {
namespace {

/// Blue lowest, alpha highest, as rows hold them; 0 for all that is transparent.
using Key = std::uint32_t;
using Indexes = std::unordered_map<Key, std::uint8_t>;

Key key_at(const std::uint8_t* row, std::size_t x, std::uint32_t bits) {
  if (bits == 32) {
    const Key key = read_le32(row + 4 * x);
    return key >> 24 == 0 ? 0 : key;
  }
  const std::uint8_t* pixel = row + 3 * x;
  return 0xFF000000u | Key{pixel[2]} << 16 | Key{pixel[1]} << 8 | pixel[0];
}

/// Calls use(x, key) for every pixel of a row.
template <class Use>
void for_each_key(const Picture& picture, std::uint32_t y, const Use& use) {
  const std::uint8_t* row = picture.row(y);
  for (std::size_t x = 0; x < picture.width(); ++x) use(x, key_at(row, x, picture.bits()));
}

Indexes indexes_of(const DocumentColors& colors) {
  Indexes indexes;
  for (std::uint32_t i = 0; i < colors.colors; ++i) {
    const Key alpha = i < colors.transparency.size() ? colors.transparency[i] : 255;
    const std::uint8_t* color = &colors.palette[3 * i];
    indexes.try_emplace(alpha == 0 ? 0 : alpha << 24 | Key{color[0]} << 16 | Key{color[1]} << 8 | color[2],
                        static_cast<std::uint8_t>(i));
  }
  return indexes;
}

Picture indexed(const Picture& picture, const DocumentColors& colors, const Indexes& indexes) {
  Picture result = create_rows(picture.width(), picture.height(), &colors.palette,
                               colors.colors > 16  ? 8
                               : colors.colors > 2 ? 4
                                                   : 1);
  const EditRows rows(result);
  if (!rows) return {};
  Key last = ~Key{0};
  std::uint8_t index = 0;
  bool known = false, whole = true;
  for (std::uint32_t y = 0; y < picture.height() && whole; ++y)
    for_each_key(picture, y, [&](std::size_t x, Key key) {
      if (!known || key != last) {
        const auto found = indexes.find(key);
        whole = whole && found != indexes.end();
        if (!whole) return;
        last = key;
        index = found->second;
        known = true;
      }
      put_index(rows[y], x, result.bits(), index);
    });
  return whole ? result : Picture();
}

}  // namespace

std::vector<HeldPicture> shown_pictures(const DocumentWindow& window) {
  const FrameSource source = frame_source_of(window);
  std::vector<HeldPicture> pictures;
  for (const std::size_t entry : frame_entries(window))
    pictures.push_back(hold_picture(frame_layer_of(source, window.list.record(entry)).picture));
  if (const Picture kept(window.document.defaultImage); kept)
    pictures.push_back(hold_picture(PictureWithTransparency(kept, source.table)));
  return pictures;
}

void put_frame_pictures(DocumentWindow& window, std::span<const HeldPicture> pictures,
                        const DocumentColors& colors) {
  const DocumentKind kind = window.document.kind;
  std::size_t next = 0;
  ChunkRecord record;
  for (const std::size_t entry : frame_entries(window)) {
    chunk_list_get(window.list, entry, record);
    record_take_picture(record, kind, pictures[next++].picture());
    if (kind == DocumentKind::MING) put_image_transparency(record, colors.transparency);
    record.description = chunk_description(record);
    chunk_list_put(window.list, entry, record);
  }
  if (next < pictures.size()) window.document.defaultImage = pictures[next].block;
  if (kind == DocumentKind::PING || kind == DocumentKind::APNG) put_document_colors(window, colors);
}

std::optional<DocumentColors> exact_colors(std::span<const HeldPicture> pictures) {
  DocumentColors colors{.colorType = 3};
  Indexes found;
  std::vector<std::uint8_t> alphas;
  Key last = 0;
  for (const HeldPicture& held : pictures) {
    const Picture picture = held.picture();
    for (std::uint32_t y = 0; picture && y < picture.height() && found.size() <= 256; ++y)
      for_each_key(picture, y, [&](std::size_t, Key key) {
        if ((key == last && !found.empty()) || found.size() > 256) return;
        last = key;
        if (!found.try_emplace(key, 0).second || alphas.size() == 256) return;
        for (unsigned c = 0; c < 3; ++c)
          colors.palette[3 * alphas.size() + c] = static_cast<std::uint8_t>(key >> (16 - 8 * c));
        alphas.push_back(static_cast<std::uint8_t>(key >> 24));
      });
  }
  if (found.empty() || found.size() > 256) return std::nullopt;
  colors.colors = static_cast<std::uint32_t>(alphas.size());
  colors.bitDepth = colors.colors > 16 ? 8 : colors.colors > 2 ? 4 : 1;
  if (std::ranges::any_of(alphas, [](std::uint8_t alpha) { return alpha < 255; }))
    colors.transparency = alphas;
  return colors;
}

std::optional<DocumentColors> shared_colors(const DocumentWindow& window) {
  const FrameSource source = frame_source_of(window);
  std::optional<DocumentColors> shared;
  for (const std::size_t entry : frame_entries(window)) {
    const ChunkRecord& record = window.list.record(entry);
    const Picture picture = picture_of(record);
    if (!picture || picture.bits() > 8) return std::nullopt;
    DocumentColors own{.colorType = 3, .bitDepth = static_cast<std::uint8_t>(picture.bits())};
    own.colors = PictureGetPalette(picture, own.palette);
    own.transparency = source.kind == DocumentKind::MING ? image_transparency(record) : source.table;
    own.transparency.resize(std::min<std::size_t>(own.transparency.size(), own.colors));
    if (shared && (own.palette != shared->palette || own.colors != shared->colors ||
                   own.transparency != shared->transparency))
      return std::nullopt;
    shared = own;
  }
  return shared;
}

std::vector<HeldPicture> in_colors(std::span<const HeldPicture> pictures, const DocumentColors& colors) {
  const Indexes indexes = indexes_of(colors);
  std::vector<HeldPicture> results(pictures.size());
  std::atomic<bool> failed = false;
  parallel_for(pictures.size(), [&](std::size_t i) {
    if (failed || !pictures[i]) return;
    results[i] = hold_picture(indexed(pictures[i].picture(), colors, indexes));
    if (!results[i]) failed = true;
  });
  return failed ? std::vector<HeldPicture>() : results;
}

}  // namespace vellum
