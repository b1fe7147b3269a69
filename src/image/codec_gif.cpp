// GIF87a and GIF89a, first image only, through giflib.
#include <gif_lib.h>

#include <bit>
#include <cstring>
#include <vector>

#include "base/translation.h"
#include "image/codecs.h"
#include "image/reduce_to_palette.h"

namespace vellum {
namespace {

struct ReaderDeleter {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using Reader = std::unique_ptr<GifFileType, ReaderDeleter>;

int take_bytes(GifFileType* gif, GifByteType* out, int count) {
  auto& rest = *static_cast<FileBytes*>(gif->UserData);
  const std::size_t taken = std::min(rest.size(), static_cast<std::size_t>(count));
  if (taken > 0) std::memcpy(out, rest.data(), taken);
  rest = rest.subspan(taken);
  return static_cast<int>(taken);
}

/// Walks to the first image; extensions before it are passed over.
bool find_image(GifFileType* gif) {
  for (GifRecordType record{}; DGifGetRecordType(gif, &record) == GIF_OK;) {
    if (record == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(gif) == GIF_OK;
    if (record != EXTENSION_RECORD_TYPE) return false;
    int code = 0;
    GifByteType* block = nullptr;
    if (DGifGetExtension(gif, &code, &block) != GIF_OK) return false;
    while (block)
      if (DGifGetExtensionNext(gif, &block) != GIF_OK) return false;
  }
  return false;
}

/// A file may bring no table at all. GIF89a then leaves the colors to the reader, black and white first.
Palette default_palette() {
  Palette palette = grey_ramp();
  std::fill_n(palette.begin() + 3, 3, std::uint8_t{255});
  return palette;
}

struct Shape {
  std::uint32_t width = 0, height = 0, bits = 8;
  std::uint32_t background = 0;
  Palette palette{};
};

Shape shape_of(const GifFileType& gif) {
  Shape shape{.width = static_cast<std::uint32_t>(gif.SWidth),
              .height = static_cast<std::uint32_t>(gif.SHeight)};
  // Some writers leave the screen empty: it is then what the image needs.
  if (shape.width == 0) shape.width = static_cast<std::uint32_t>(gif.Image.Left + gif.Image.Width);
  if (shape.height == 0) shape.height = static_cast<std::uint32_t>(gif.Image.Top + gif.Image.Height);
  const ColorMapObject* table = gif.Image.ColorMap ? gif.Image.ColorMap : gif.SColorMap;
  if (!table) {
    shape.palette = default_palette();
    return shape;
  }
  shape.bits = picture_bits(static_cast<std::uint32_t>(table->BitsPerPixel));
  for (int i = 0; i < std::min(table->ColorCount, 256); ++i) {
    const GifColorType& colour = table->Colors[i];
    const std::uint8_t triple[] = {colour.Red, colour.Green, colour.Blue};
    std::ranges::copy(triple, shape.palette.begin() + 3 * i);
  }
  if (gif.SBackGroundColor < table->ColorCount)
    shape.background = static_cast<std::uint32_t>(gif.SBackGroundColor);
  return shape;
}

/// The order in which the rows of an image are stored: all, or the four passes of GIF89a, appendix E.
std::vector<std::uint32_t> row_order(std::uint32_t height, bool interlaced) {
  std::vector<std::uint32_t> order;
  order.reserve(height);
  constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 4> passes = {
      {{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
  for (const auto& [first, step] : passes) {
    for (std::uint32_t y = interlaced ? first : 0; y < height; y += interlaced ? step : 1) order.push_back(y);
    if (!interlaced) break;
  }
  return order;
}

/// The number of rows that the file has.
std::uint32_t decode_image(GifFileType* gif, Picture& picture) {
  const auto left = static_cast<std::uint32_t>(gif->Image.Left),
             top = static_cast<std::uint32_t>(gif->Image.Top);
  const auto width = static_cast<std::uint32_t>(gif->Image.Width),
             height = static_cast<std::uint32_t>(gif->Image.Height);
  const std::uint32_t shown = left < picture.width() ? std::min(width, picture.width() - left) : 0;
  // An index behind the table shows its first color.
  const std::uint32_t colours = picture.colours();
  const EditRows rows(picture);
  std::vector<GifPixelType> line(width);
  std::uint32_t count = 0;
  for (const std::uint32_t y : row_order(height, gif->Image.Interlace)) {
    if (DGifGetLine(gif, line.data(), static_cast<int>(width)) != GIF_OK) break;
    ++count;
    if (top + y >= picture.height()) continue;
    for (std::uint32_t x = 0; x < shown; ++x)
      put_index(rows[top + y], left + x, picture.bits(), line[x] < colours ? line[x] : 0);
  }
  return count;
}

struct MapDeleter {
  void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};

int put_bytes(GifFileType* gif, const GifByteType* bytes, int count) {
  auto& file = *static_cast<SafeFile*>(gif->UserData);
  return file.write({bytes, static_cast<std::size_t>(count)}) ? count : 0;
}

std::unique_ptr<ColorMapObject, MapDeleter> map_of(const Picture& picture) {
  const int colours = static_cast<int>(picture.colours());
  std::unique_ptr<ColorMapObject, MapDeleter> map(GifMakeMapObject(colours, nullptr));
  const Palette palette = palette_of(picture);
  for (std::size_t i = 0; map && i < picture.colours(); ++i)
    map->Colors[i] = {palette[3 * i], palette[3 * i + 1], palette[3 * i + 2]};
  return map;
}

bool put_rows(GifFileType* gif, const Picture& picture) {
  const auto width = static_cast<int>(picture.width());
  std::vector<GifPixelType> line(picture.width());
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    unpack_indices(line.data(), picture.row(y), 0, line.size(), picture.bits());
    if (EGifPutLine(gif, line.data(), width) != GIF_OK) return false;
  }
  return true;
}

bool encode_gif(const Picture& picture, SafeFile& file) {
  if (!picture || picture.width() > 65535 || picture.height() > 65535) return false;
  const auto map = map_of(picture);
  int error = 0;
  GifFileType* gif = map ? EGifOpen(&file, put_bytes, &error) : nullptr;
  if (!gif) return false;
  const auto width = static_cast<int>(picture.width()), height = static_cast<int>(picture.height());
  const bool written = EGifPutScreenDesc(gif, width, height, 8, 0, map.get()) == GIF_OK &&
                       EGifPutImageDesc(gif, 0, 0, width, height, false, nullptr) == GIF_OK &&
                       put_rows(gif, picture);
  return EGifCloseFile(gif, &error) == GIF_OK && written && file.ok();
}

/// Indexed as a GIF needs it.
Picture indexed(const Picture& picture) {
  const Picture flat = without_alpha(picture);
  return flat && flat.bits() == 24 ? reduce_to_palette(flat) : flat;
}

}  // namespace

bool is_gif(FileBytes file) {
  constexpr std::string_view kSignature = "GIF8";
  return file.size() >= kSignature.size() && std::ranges::equal(file.first(kSignature.size()), kSignature);
}

GraphicReading decode_gif(FileBytes file, Part part, const GraphicSwitches&) {
  FileBytes rest = file;
  const Reader gif(DGifOpen(&rest, take_bytes, nullptr));
  if (!gif || !find_image(gif.get())) return {{}, GraphicFault::Damaged, translated("it holds no image")};
  const Shape shape = shape_of(*gif);
  GraphicReading reading =
      reading_of_size(shape.width, shape.height, &shape.palette, shape.bits, part, file.size());
  if (!reading.picture || part == Part::Header) return reading;
  if (shape.background != 0) {
    const EditRows rows(reading.picture);
    for (std::uint32_t y = 0; y < shape.height; ++y)
      fill_pixels(rows[y], 0, shape.width, shape.bits, shape.background);
  }
  const std::uint32_t rows = decode_image(gif.get(), reading.picture);
  return cut_reading(std::move(reading), rows, static_cast<std::uint32_t>(gif->Image.Height));
}

bool GIFWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches&, const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) { return encode_gif(indexed(picture), file); });
}

}  // namespace vellum
