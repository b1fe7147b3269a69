#include "core/edit/transparency_edit.h"

#include "core/model/record_picture.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/string_table.h"
#include "core/model/chunk_description.h"

namespace vellum {

namespace {

bool is_mng_image(const DocumentWindow& window, std::size_t index) {
  return window.document.kind == DocumentKind::MING && index < window.list.size() &&
         window.list.record(index).tag == tag::PNGI;
}

/// The alphas of an indexed image of an MNG; nothing for any other entry.
std::optional<TransparencyEdit> edit_of_image(const DocumentWindow& window, std::size_t index) {
  if (!is_mng_image(window, index)) return std::nullopt;
  const ChunkRecord& record = window.list.record(index);
  const std::uint32_t colors = std::min(record.image->paletteBytes / 3, 256u);
  if (record.colorType != 3 || colors == 0) return std::nullopt;
  TransparencyEdit edit;
  edit.header.bitDepth = record.bitDepth;
  edit.header.colorType = record.colorType;
  edit.palette = record.image->palette;
  edit.alphas.assign(colors, 255);
  std::copy_n(record.image->trans.begin(), std::min(record.image->transBytes, colors), edit.alphas.begin());
  return edit;
}

bool apply_to_image(DocumentWindow& window, std::size_t index, const TransparencyEdit& edit) {
  ChunkRecord record;
  if (!chunk_list_get(window.list, index, record)) return false;
  auto bytes = transparency_payload(edit);
  if (std::ranges::all_of(bytes, [](std::uint8_t alpha) { return alpha == 255; })) bytes.clear();
  const EmbeddedImage& image = *record.image;
  if (std::ranges::equal(bytes, std::span(image.trans).first(image.transBytes))) return false;
  put_image_transparency(record, bytes);
  return chunk_list_put(window.list, index, record);
}

}  // namespace

std::optional<TransparencyEdit> transparency_edit_of(const DocumentWindow& window, std::size_t index,
                                                     std::string& fault) {
  if (auto own = edit_of_image(window, index)) return own;
  TransparencyEdit edit;
  ChunkRecord header, record;
  if (!chunk_list_get(window.list, index, record) || record.tag != tag::tRNS ||
      chunk_find_header(window.list, window.document, index, header) == kNoEntry) {
    fault = string_text(StringId::ErrorAccessingChunk);
    return std::nullopt;
  }
  edit.header.bitDepth = header.bitDepth;
  edit.header.colorType = header.colorType;
  if (header.colorType == 4 || header.colorType == 6) {
    fault = string_text(StringId::AlphaHasNoTransparency);
    return std::nullopt;
  }
  const std::uint32_t colors = chunk_find_palette(window.list, edit.palette);
  if (edit.paletted() && colors == 0) {
    fault = string_text(StringId::NoPaletteHere);
    return std::nullopt;
  }
  const auto payload = raw_payload(record);
  if (edit.paletted()) {
    edit.alphas.assign(colors, 255);
    std::copy_n(payload.begin(), std::min<std::size_t>(payload.size(), colors), edit.alphas.begin());
  }
  for (std::size_t i = 0; !edit.paletted() && i < 3 && 2 * i + 1 < payload.size(); ++i)
    edit.samples[i] =
        static_cast<std::uint16_t>(std::min<std::uint32_t>(read_be16(&payload[2 * i]), edit.most()));
  return edit;
}

std::vector<std::uint8_t> transparency_payload(const TransparencyEdit& edit) {
  std::vector<std::uint8_t> bytes = edit.alphas;
  while (bytes.size() > 1 && bytes.back() == 255) bytes.pop_back();
  if (edit.paletted()) return bytes;
  bytes.resize(edit.header.colorType == 0 ? 2 : 6);
  for (std::size_t i = 0; i < bytes.size() / 2; ++i) write_be16(&bytes[2 * i], edit.samples[i]);
  return bytes;
}

std::array<std::uint16_t, 3> transparency_samples(const TransparencyEdit& edit, Colour pixel) {
  const auto sample = [&](std::uint32_t value) {
    return static_cast<std::uint16_t>(edit.header.bitDepth == 16 ? value * 257
                                                                 : std::min(value, edit.most()));
  };
  if (edit.header.colorType == 0) return {sample(pixel & 0xFF), 0, 0};
  return {sample(red_of(pixel)), sample(green_of(pixel)), sample(blue_of(pixel))};
}

bool apply_transparency(DocumentWindow& window, std::size_t index, const TransparencyEdit& edit) {
  if (is_mng_image(window, index)) return apply_to_image(window, index, edit);
  ChunkRecord record;
  if (!chunk_list_get(window.list, index, record)) return false;
  const auto bytes = transparency_payload(edit);
  if (std::ranges::equal(bytes, raw_payload(record))) return false;
  record.data = ChunkHandle::copy_of(bytes);
  record.size = static_cast<std::int32_t>(bytes.size());
  record.description = chunk_description(record);
  return record.data && chunk_list_put(window.list, index, record);
}

}  // namespace vellum
