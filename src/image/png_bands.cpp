#include "image/png_bands.h"

#include <cstring>

#include "base/parallel.h"
#include "image/png_filter.h"
#include "image/stream_inflate.h"

namespace vellum {
namespace {

/// Images from here on don't fit into the caches of a core.
constexpr std::uint64_t kLarge = std::uint64_t{4} << 20;

}  // namespace

bool png_goes_in_bands(const PngHeader& header) {
  return !header.interlace && png_filtered_bytes(header) > kLarge &&
         png_row_bytes(header, header.width) < kPngBandBytes;
}

PngBands::PngBands(const PngHeader& header, PngPieces data, std::size_t band_bytes)
    : width_(header.width),
      height_(header.height),
      line_(static_cast<std::size_t>(png_row_bytes(header, header.width)) + 1),
      rows_(static_cast<std::uint32_t>(std::clamp<std::size_t>(band_bytes / line_, 1, height_))),
      distance_(png_filter_distance(header)),
      read_(png_row_reader(header)),
      zeros_(line_ + kFilterSlack),
      prior_(zeros_.data()),
      stream_(std::make_unique<StreamInflate>(data)) {
  for (auto& slot : slots_) slot.resize(rows_ * line_ + kFilterSlack);
}

PngBands::~PngBands() = default;

void PngBands::inflate(std::size_t band) {
  if (!sound_) return;
  const std::size_t bytes = rows(band) * line_;
  const bool last = band + 1 == count();
  // One byte more than there should be shows whether the stream ends.
  if (stream_->read({first(band), bytes + last}) != bytes || (last && !stream_->ended())) sound_ = false;
}

bool PngBands::undo_and_read(std::size_t band, const std::function<std::uint8_t*(std::uint32_t y)>& place) {
  std::uint8_t* at = first(band);
  std::size_t undone = 0;
  for (std::uint32_t count = rows(band), i = 0; i < count; ++i, --undone, at += line_) {
    if (undone == 0 && (undone = png_unfilter_some(at, count - i, prior_, line_ - 1, distance_)) == 0)
      return false;
    read_(at + 1, place(begin(band) + i), width_);
    prior_ = at + 1;
  }
  return true;
}

void PngBands::put(std::size_t band, const std::function<std::uint8_t*(std::uint32_t y)>& place) {
  if (sound_ && !undo_and_read(band, place)) sound_ = false;
}

Picture png_decode_in_bands(const PngHeader& header, PngPieces data, const Palette& palette,
                            std::size_t band_bytes) {
  Picture picture =
      PictureCreateForOverwrite(header.width, header.height, &palette, png_picture_bits(header));
  if (!picture) return {};
  std::uint8_t* const top = picture.edit_row(0);
  const std::size_t stride = picture.stride();
  const std::size_t used = (std::size_t{picture.width()} * picture.bits() + 7) / 8;
  PngBands bands(header, data, band_bytes);
  const auto place = [&](std::uint32_t y) {
    std::uint8_t* const row = top - stride * y;  // rows lie from the bottom up
    std::memset(row + used, 0, stride - used);
    return row;
  };
  parallel_relay(
      bands.count(), PngBands::kAhead, [&](std::size_t band) { bands.inflate(band); },
      [&](std::size_t band) { bands.put(band, place); });
  return bands.sound() ? picture : Picture();
}

}  // namespace vellum
