// Palette compression: indexed images of an MNG lose the colors that they don't use. Text deletion.
#include <array>

#include "core/chunks/chunk_table.h"
#include "core/edit/edit_closing.h"
#include "core/model/chunk_description.h"
#include "core/model/record_picture.h"
#include "image/picture_rows.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

struct UsedColors {
  std::array<std::uint8_t, 256> place{};  ///< of an old index among the new ones
  std::array<bool, 256> used{};
  std::uint32_t count = 0;
};

UsedColors used_colors(const Picture& picture) {
  UsedColors colors;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) colors.used[indices[i]] = true;
                       });
  for (std::size_t i = 0; i < picture.colours(); ++i)
    if (colors.used[i]) colors.place[i] = static_cast<std::uint8_t>(colors.count++);
  return colors;
}

/// Bits that tell so many colors apart, at least one.
std::uint32_t bits_for(std::uint32_t colors) {
  std::uint32_t bits = 1;
  while (1u << bits < colors) ++bits;
  return bits;
}

Picture in_used_colors(const Picture& picture, const UsedColors& colors, std::uint32_t bits) {
  const Palette old = palette_of(picture);
  Palette palette{};
  for (std::size_t i = 0; i < picture.colours(); ++i)
    if (colors.used[i])
      std::copy_n(old.begin() + static_cast<std::ptrdiff_t>(3 * i), 3,
                  palette.begin() + 3 * std::ptrdiff_t{colors.place[i]});
  Picture result = create_rows(picture.width(), picture.height(), &palette, picture_bits(bits));
  const EditRows rows(result);
  if (!rows) return {};
  std::vector<std::uint8_t> line(picture.width());
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t x, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) line[x + i] = colors.place[indices[i]];
                       });
    pack_indices(rows[y], 0, line.data(), line.size(), result.bits());
  }
  return result;
}

/// The image gets the fewer colors; its background goes along where it is still there.
void put_fewer_colors(ChunkRecord& record, const Picture& picture, const UsedColors& colors) {
  const std::uint8_t background = record.image->background[0];
  const bool keeps = (record.flags & CRF_BKGD) && colors.used[background];
  record_take_picture(record, DocumentKind::MING, picture);
  record.image.edit().paletteBytes = 3 * colors.count;
  record.flags &= ~std::uint32_t{CRF_BKGD};
  if (!keeps) return;
  record.flags |= CRF_BKGD;
  record.image.edit().background[0] = colors.place[background];
}

}  // namespace

bool palette_pass(Supercompression& work) {
  const Progress progress(work.host, string_text(StringId::Remapping));
  work.say(StringId::PaletteBegins);
  ChunkList& list = work.draft.list;
  ChunkRecord record;
  for (std::size_t i = 1; i < list.size(); ++i) {
    progress.step(i, list.size());
    if (work.host.stopped()) return false;
    if (list.record(i).tag != tag::PNGI) continue;
    chunk_list_get(list, i, record);
    const Picture picture = picture_of(record);
    if (!has_rows(picture)) return work.abort(StringId::ErrorAccessingChunk);
    if (picture.bits() > 8 || (record.flags & CRF_TRNS)) continue;
    const UsedColors colors = used_colors(picture);
    const std::uint32_t bits = bits_for(colors.count);
    if (bits >= picture.bits()) continue;
    work.say(StringId::SourcePaletteHas, {std::to_string(picture.colours())});
    work.say(StringId::ImageUsesColors, {std::to_string(colors.count)});
    work.say(StringId::TargetPaletteWill, {std::to_string(1u << bits)});
    work.say(StringId::RemappingImages);
    const Picture fewer = in_used_colors(picture, colors, bits);
    if (!fewer) return work.abort(StringId::MemoryError);
    put_fewer_colors(record, fewer, colors);
    record.description = chunk_description(record);
    chunk_list_put(list, i, record);
  }
  work.say(StringId::PaletteCompleted);
  return true;
}

bool text_pass(Supercompression& work) {
  work.host.set_status(string_text(StringId::Rebuilding));
  work.say(StringId::TextDeletionBegins);
  ChunkList& list = work.draft.list;
  std::vector<bool> goes(list.size());
  std::size_t count = 0;
  for (std::size_t i = 1; i < list.size(); ++i)
    if (list.record(i).tag == tag::tEXt || list.record(i).tag == tag::zTXt) goes[i] = true, ++count;
  list.remove_marked(goes);
  if (count > 0)
    work.say(StringId::TextsDeleted, {std::to_string(count)});
  else
    work.say(StringId::NoTextsDeleted);
  work.say(StringId::TextDeletionDone);
  return true;
}

}  // namespace vellum
