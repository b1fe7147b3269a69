#include "core/files/still_file.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/translation.h"
#include "core/model/frame_values.h"
#include "core/model/tags.h"
#include "image/chunk_stream.h"

namespace vellum {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// What the bytes of a file tell beside its picture.
struct Table {
  std::vector<std::uint8_t> transparency;
  std::uint32_t colors = 256;
};

Table png_table(Bytes file) {
  Table table;
  const auto chunks = gather_chunks(file, kPngSignature.size(), tag::IDAT).chunks;
  if (chunks.empty() || chunks[0].data.size() != 13) return table;
  const PngHeader header = parse_png_header(chunks[0].data.first<13>());
  for (const StreamChunk& chunk : chunks) {
    if (chunk.tag == tag::PLTE && header.colorType == 3)
      table.colors = static_cast<std::uint32_t>(chunk.data.size() / 3);
    if (chunk.tag == tag::tRNS) table.transparency = transparency_table(chunk.data, header);
  }
  return table;
}

/// Entries of a color table whose flags these are, 0 where there is none (GIF89a, 18 and 20).
std::uint32_t gif_colors(std::uint8_t flags) { return (flags & 0x80) != 0 ? 2u << (flags & 7) : 0; }

/// The place behind sub-blocks.
std::size_t behind_blocks(Bytes file, std::size_t at) {
  while (at < file.size() && file[at] != 0) at += std::size_t{file[at]} + 1;
  return at + 1;
}

/// Up to the first image.
Table gif_table(Bytes file) {
  constexpr std::size_t kScreen = 13, kDescriptor = 10;
  constexpr std::uint8_t kExtension = 0x21, kGraphicControl = 0xF9, kImage = 0x2C;
  Table table;
  if (file.size() < kScreen) return table;
  const std::uint32_t all = gif_colors(file[10]);
  for (std::size_t at = kScreen + 3 * all; at + kDescriptor <= file.size();) {
    if (file[at] == kImage) {
      const std::uint32_t own = gif_colors(file[at + 9]);
      table.colors = own != 0 ? own : all != 0 ? all : 256;
      break;
    }
    if (file[at] != kExtension) break;
    // Label, 4 bytes: flags, delay, index (GIF89a, 23).
    if (file[at + 1] == kGraphicControl && file[at + 2] == 4 && (file[at + 3] & 1) != 0 &&
        table.transparency.empty()) {
      table.transparency.assign(std::size_t{file[at + 6]} + 1, 255);
      table.transparency.back() = 0;
    }
    at = behind_blocks(file, at + 2);
  }
  return table;
}

/// The header's count, in which 0 stands for all.
Table bmp_table(Bytes file) {
  Table table;
  if (file.size() >= 50 && read_le32(&file[14]) >= 40 && read_le32(&file[46]) != 0)
    table.colors = std::min(read_le32(&file[46]), 256u);
  return table;
}

Table table_of(const GraphicFileModule& module, Bytes file) {
  if (module.extension == "png") return png_table(file);
  if (module.extension == "gif") return gif_table(file);
  if (module.extension == "bmp") return bmp_table(file);
  return {};
}

bool is_opaque(const std::vector<std::uint8_t>& table, std::uint32_t bits) {
  return bits == 32 || (bits <= 8 && std::ranges::all_of(table, [](std::uint8_t a) { return a == 255; }));
}

}  // namespace

StillFile read_still_file(const std::filesystem::path& path, Part part) try {
  std::string reason;
  const auto file = read_file(path, reason, kMaximumFileBytes);
  if (!file) return {{{}, GraphicFault::Missing, reason}, {}, 0};
  const GraphicSwitches switches{.owner = std::make_shared<const FileContent>(*file)};
  StillFile still{read_graphic_bytes(*file, part, switches), {}, 0};
  const Picture& picture = still.reading.picture;
  if (!picture) return still;
  Table table = table_of(*still.reading.module, *file);
  still.colors = std::min(table.colors, picture.colours());
  if (!is_opaque(table.transparency, picture.bits())) still.transparency = std::move(table.transparency);
  return still;
} catch (const std::bad_alloc&) {
  return {{{}, GraphicFault::TooLarge, translated("memory is exhausted")}, {}, 0};
}

}  // namespace vellum
