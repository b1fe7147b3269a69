// A palette and the records that go with it: out of the document, and back into it.
#include <algorithm>

#include "core/edit/palette_edit.h"
#include "core/model/chunk_description.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

using IndexMap = std::array<std::uint8_t, 256>;

bool has_indices(const Picture& picture) { return has_rows(picture) && picture.bits() <= 8; }

/// The header of a PNG when pixels of its images are indexes into the PLTE.
std::optional<ChunkRecord> paletted_header(const DocumentWindow& window) {
  ChunkRecord header;
  if (chunk_find_header(window.list, window.document, 0, header) == kNoEntry || header.colorType != 3)
    return std::nullopt;
  return header;
}

bool is_local(const DocumentWindow& window, std::size_t index) {
  const ChunkRecord& record = window.list.record(index);
  return window.document.kind == DocumentKind::MING && record.tag == tag::PNGI &&
         record.image->paletteBytes >= 3 && has_indices(picture_of(record));
}

std::uint32_t most_of_depth(std::uint8_t depth) { return 1u << std::min<unsigned>(depth, 8); }

/// Colors beyond what a pixel can reach are left out.
PaletteEdit edit_with(std::span<const std::uint8_t> colors, std::span<const std::uint8_t> alphas,
                      std::uint32_t most) {
  PaletteEdit edit{{}, most};
  for (std::size_t i = 0; 3 * i + 2 < colors.size() && i < most; ++i)
    edit.entries.push_back({colors[3 * i], colors[3 * i + 1], colors[3 * i + 2],
                            i < alphas.size() ? alphas[i] : std::uint8_t{255}, static_cast<int>(i)});
  return edit;
}

PaletteEdit local_edit(const ChunkRecord& record) {
  const EmbeddedImage& image = *record.image;
  const std::size_t bytes = std::min<std::size_t>(image.paletteBytes, image.palette.size());
  const std::size_t alphas = std::min<std::size_t>(image.transBytes, image.trans.size());
  return edit_with(std::span(image.palette).first(bytes), std::span(image.trans).first(alphas),
                   most_of_depth(record.bitDepth));
}

PaletteEdit global_edit(const DocumentWindow& window, std::size_t index) {
  const auto header = paletted_header(window);
  const std::size_t trans = header ? chunk_find_first(window.list, tag::tRNS) : kNoEntry;
  const auto alphas =
      trans == kNoEntry ? std::span<const std::uint8_t>() : raw_payload(window.list.record(trans));
  return edit_with(raw_payload(window.list.record(index)), alphas,
                   header ? most_of_depth(header->bitDepth) : 256);
}

void count_indices(const Picture& picture, PaletteUsage& usage) {
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) ++usage[indices[i]];
                       });
}

/// Where each old index goes. Indexes that the old palette doesn't have stay.
IndexMap index_map(const PaletteEdit& before, const PaletteEdit& after, bool change_images) {
  IndexMap map;
  for (std::size_t i = 0; i < map.size(); ++i) map[i] = static_cast<std::uint8_t>(i);
  for (std::size_t i = 0; i < before.entries.size(); ++i) {
    const auto moved = std::ranges::find(after.entries, static_cast<int>(i), &PaletteEntry::origin);
    map[i] = static_cast<std::uint8_t>(change_images && moved != after.entries.end()
                                           ? moved - after.entries.begin()
                                           : palette_match(after, before.entries[i]));
  }
  return map;
}

bool map_pixels(Picture& picture, const IndexMap& map) {
  const EditRows rows(picture);
  if (!rows) return false;
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    std::uint8_t mapped[kPixelRun];
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t x, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) mapped[i] = map[indices[i]];
                         pack_indices(rows[y], x, mapped, count, picture.bits());
                       });
  });
  return true;
}

/// A palette on its way back, with what has to be written anew for it. Nothing reaches the list before all is
/// there.
struct Change {
  const PaletteEdit& before;
  const PaletteEdit& after;
  IndexMap map;
  PaletteColors colors;

  bool map_picture(ChunkHandle& block) const {
    Picture picture(block);
    if (!has_indices(picture)) return true;
    if (!map_pixels(picture, map)) return false;
    PictureSetPalette(picture, colors.palette);
    block = picture.handle();
    return true;
  }

  /// Alphas up to the last one below 255, and at least one.
  std::vector<std::uint8_t> alphas() const {
    std::vector<std::uint8_t> bytes;
    for (const PaletteEntry& entry : after.entries) bytes.push_back(entry.alpha);
    while (bytes.size() > 1 && bytes.back() == 255) bytes.pop_back();
    return bytes;
  }

  /// The counts of a hIST, at the places that their entries have now.
  std::vector<std::uint8_t> histogram(std::span<const std::uint8_t> counts) const {
    std::vector<std::uint8_t> bytes(2 * after.entries.size());
    for (std::size_t i = 0; i < after.entries.size(); ++i) {
      const int origin = after.entries[i].origin;
      if (origin < 0 || 2 * static_cast<std::size_t>(origin) + 1 >= counts.size()) continue;
      std::copy_n(counts.begin() + 2 * origin, 2, bytes.begin() + 2 * static_cast<std::ptrdiff_t>(i));
    }
    return bytes;
  }
};

bool set_payload(ChunkRecord& record, std::span<const std::uint8_t> bytes) {
  record.data = ChunkHandle::copy_of(bytes);
  record.size = static_cast<std::int32_t>(bytes.size());
  record.description = chunk_description(record);
  return static_cast<bool>(record.data);
}

/// One entry of a PNG changed for a palette; `paletted`: pixels are indexes into it.
bool change_record(ChunkRecord& record, DocumentKind kind, const Change& change, bool paletted) {
  const auto payload = [&] { return raw_payload(record); };
  if (record.tag == tag::PLTE)
    return set_payload(record, std::span(change.colors.palette).first(3 * std::size_t{change.colors.count}));
  if (record.tag == tag::hIST && payload().size() == 2 * change.before.entries.size())
    return set_payload(record, change.histogram(payload()));
  if (!paletted) return true;
  if (is_image_entry(kind, record.tag)) return change.map_picture(record.data);
  if (record.tag == tag::tRNS) return set_payload(record, change.alphas());
  if (record.tag == tag::bKGD && payload().size() == 1) {
    const std::uint8_t mapped[] = {change.map[payload()[0]]};
    return set_payload(record, mapped);
  }
  return true;
}

bool apply_globally(DocumentWindow& window, std::size_t index, const Change& change) {
  const bool paletted = paletted_header(window).has_value();
  std::vector<std::pair<std::size_t, ChunkRecord>> changed;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    // Of several palettes the one that was edited alone.
    if (window.list.record(i).tag == tag::PLTE && i != index) continue;
    ChunkRecord record;
    chunk_list_get(window.list, i, record);
    const ChunkHandle before = record.data;
    if (!change_record(record, window.document.kind, change, paletted)) return false;
    if (record.data && !record.data.shares_with(before)) changed.emplace_back(i, std::move(record));
  }
  ChunkHandle image = window.document.defaultImage;
  if (paletted && image && !change.map_picture(image)) return false;
  window.document.defaultImage = image;
  for (const auto& [i, record] : changed) chunk_list_put(window.list, i, record);
  return true;
}

bool apply_locally(DocumentWindow& window, std::size_t index, const Change& change) {
  ChunkRecord record;
  chunk_list_get(window.list, index, record);
  if (!change.map_picture(record.data)) return false;
  EmbeddedImage& image = record.image.edit();
  image.palette = change.colors.palette;
  image.paletteBytes = 3 * change.colors.count;
  if (record.flags & CRF_TRNS) {
    const auto alphas = change.alphas();
    image.trans.fill(0);
    std::ranges::copy(alphas, image.trans.begin());
    image.transBytes = static_cast<std::uint32_t>(alphas.size());
  }
  if (record.flags & CRF_BKGD) image.background[0] = change.map[image.background[0]];
  return chunk_list_put(window.list, index, record);
}

}  // namespace

std::optional<PaletteEdit> palette_edit_of(const DocumentWindow& window, std::size_t index) {
  if (index >= window.list.size()) return std::nullopt;
  if (is_local(window, index)) return local_edit(window.list.record(index));
  if (window.list.record(index).tag != tag::PLTE) return std::nullopt;
  return global_edit(window, index);
}

PaletteUsage palette_usage(const DocumentWindow& window, std::size_t index) {
  PaletteUsage usage{};
  if (is_local(window, index)) {
    count_indices(picture_of(window.list.record(index)), usage);
    return usage;
  }
  if (!paletted_header(window)) return usage;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (!is_image_entry(window.document.kind, record.tag)) continue;
    if (const Picture picture = picture_of(record); has_indices(picture)) count_indices(picture, usage);
  }
  if (const Picture image(window.document.defaultImage); has_indices(image)) count_indices(image, usage);
  return usage;
}

bool apply_palette(DocumentWindow& window, std::size_t index, const PaletteEdit& edit, bool change_images) {
  const auto before = palette_edit_of(window, index);
  if (!before || edit.entries.empty() || edit.entries.size() > before->most ||
      before->entries == edit.entries)
    return false;
  const Change change{*before, edit, index_map(*before, edit, change_images), palette_colors(edit)};
  return is_local(window, index) ? apply_locally(window, index, change)
                                 : apply_globally(window, index, change);
}

}  // namespace vellum
