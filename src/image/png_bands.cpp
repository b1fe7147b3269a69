#include "image/png_bands.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <vector>

#include "base/parallel.h"
#include "image/png_filter.h"
#include "image/png_rows.h"
#include "image/stream_inflate.h"

namespace vellum {
namespace {

/// Images from here on don't fit into the caches of a core.
constexpr std::uint64_t kLarge = std::uint64_t{4} << 20;
constexpr std::size_t kAhead = 2;

/// Rows of an image as they are filtered, in bands that take turns in a few slots.
class Bands {
 public:
  Bands(const PngHeader& header, std::size_t band_bytes)
      : height_(header.height),
        line_(static_cast<std::size_t>(png_row_bytes(header, header.width)) + 1),
        rows_(static_cast<std::uint32_t>(std::clamp<std::size_t>(band_bytes / line_, 1, height_))) {
    for (auto& slot : slots_) slot.resize(rows_ * line_ + kFilterSlack);
  }

  std::size_t count() const { return (height_ + rows_ - 1) / rows_; }
  std::size_t line() const { return line_; }
  std::uint32_t begin(std::size_t band) const { return static_cast<std::uint32_t>(band) * rows_; }
  std::uint32_t rows(std::size_t band) const { return std::min(rows_, height_ - begin(band)); }
  std::uint8_t* first(std::size_t band) { return slots_[band % slots_.size()].data(); }

  /// False where the stream is not what the image needs.
  bool fill(std::size_t band, StreamInflate& stream) {
    const std::size_t bytes = rows(band) * line_;
    const bool last = band + 1 == count();
    // One byte more than there should be shows whether the stream ends.
    return stream.read({first(band), bytes + last}) == bytes && (!last || stream.ended());
  }

 private:
  std::uint32_t height_;
  std::size_t line_;  ///< bytes of a row with its filter type
  std::uint32_t rows_;
  // Those ahead, the one in use, and the one in front of it, whose last row it needs.
  std::array<std::vector<std::uint8_t>, kAhead + 1> slots_;
};

/// Hands each band to `use`, which is false where a row is wrong. False when a band is not as it should be.
template <class Use>
bool read_bands(Bands& bands, PngPieces data, const Use& use) {
  StreamInflate stream(data);
  std::atomic<bool> sound = true;
  parallel_relay(
      bands.count(), kAhead,
      [&](std::size_t band) {
        if (sound && !bands.fill(band, stream)) sound = false;
      },
      [&](std::size_t band) {
        if (sound && !use(band)) sound = false;
      });
  return sound;
}

}  // namespace

bool png_goes_in_bands(const PngHeader& header) {
  return !header.interlace && png_filtered_bytes(header) > kLarge &&
         png_row_bytes(header, header.width) < kPngBandBytes;
}

Picture png_decode_in_bands(const PngHeader& header, PngPieces data, const Palette& palette,
                            std::size_t band_bytes) {
  Picture picture =
      PictureCreateForOverwrite(header.width, header.height, &palette, png_picture_bits(header));
  if (!picture) return {};
  std::uint8_t* const top = picture.edit_row(0);
  const std::size_t stride = picture.stride();
  const std::size_t used = (std::size_t{picture.width()} * picture.bits() + 7) / 8;
  const PngRowReader read = png_row_reader(header);
  const std::size_t distance = png_filter_distance(header);
  Bands bands(header, band_bytes);
  const std::size_t line = bands.line();
  const std::vector<std::uint8_t> zeros(line + kFilterSlack);
  const std::uint8_t* prior = zeros.data();
  const bool sound = read_bands(bands, data, [&](std::size_t band) {
    std::uint8_t* at = bands.first(band);
    std::size_t undone = 0;
    for (std::uint32_t rows = bands.rows(band), i = 0; i < rows; ++i, --undone, at += line) {
      if (undone == 0 && (undone = png_unfilter_some(at, rows - i, prior, line - 1, distance)) == 0)
        return false;
      // Rows lie from the bottom up.
      std::uint8_t* const row = top - stride * (bands.begin(band) + i);
      read(at + 1, row, header.width);
      std::memset(row + used, 0, stride - used);
      prior = at + 1;
    }
    return true;
  });
  return sound ? picture : Picture();
}

}  // namespace vellum
