// Large images of PNG and its family, decoded band by band: one core inflates while another undoes filters
// and puts samples in place. Nothing but the picture is as large as the image.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "image/picture.h"
#include "image/png_header.h"
#include "image/png_rows.h"

namespace vellum {

class StreamInflate;

using PngPieces = std::span<const std::span<const std::uint8_t>>;

/// Whether an image is large enough to be worth it, and has rows in order, several to a band.
bool png_goes_in_bands(const PngHeader& header);

/// Bytes of filtered rows in a band.
inline constexpr std::size_t kPngBandBytes = std::size_t{512} << 10;

/// The rows of such an image as they come out of its stream, a band at a time: `inflate` and `put` for each
/// band in order, on two cores where there are two. After the first one that is not as it should be they do
/// nothing.
class PngBands {
 public:
  /// Bands that `inflate` may be in front of `put`.
  static constexpr std::size_t kAhead = 2;

  /// The pieces outlive it.
  PngBands(const PngHeader& header, PngPieces data, std::size_t band_bytes = kPngBandBytes);
  ~PngBands();

  std::size_t count() const { return (height_ + rows_ - 1) / rows_; }
  std::uint32_t begin(std::size_t band) const { return static_cast<std::uint32_t>(band) * rows_; }
  std::uint32_t end(std::size_t band) const { return begin(band) + rows(band); }
  /// Of all but the last band.
  std::uint32_t rows_of_one() const { return rows_; }

  void inflate(std::size_t band);
  /// Undoes the filters of a band, and lays each row, as those of pictures are, at `place(y)`. Bytes behind
  /// the last pixel stay what they are.
  void put(std::size_t band, const std::function<std::uint8_t*(std::uint32_t y)>& place);
  /// Whether the stream held this image and not a byte more, as far as it was read.
  bool sound() const { return sound_; }

 private:
  std::uint32_t rows(std::size_t band) const { return std::min(rows_, height_ - begin(band)); }
  std::uint8_t* first(std::size_t band) { return slots_[band % slots_.size()].data(); }
  bool undo_and_read(std::size_t band, const std::function<std::uint8_t*(std::uint32_t y)>& place);

  std::uint32_t width_, height_;
  std::size_t line_;  ///< bytes of a row with its filter type
  std::uint32_t rows_;
  std::size_t distance_;
  PngRowReader read_;
  // Those ahead, the one in use, and the one in front of it, whose last row it needs.
  std::array<std::vector<std::uint8_t>, kAhead + 1> slots_;
  std::vector<std::uint8_t> zeros_;
  const std::uint8_t* prior_;
  std::unique_ptr<StreamInflate> stream_;
  std::atomic<bool> sound_ = true;
};

/// The picture of a stream that holds this image and not a byte more; null for any other, and where memory is
/// exhausted: `png_decode` says why. For headers that it would take, without interlacing. A stream whose
/// codes are sparser than RFC 1951 allows gives its picture here, where other readers refuse it.
Picture png_decode_in_bands(const PngHeader& header, PngPieces data, const Palette& palette,
                            std::size_t band_bytes = kPngBandBytes);

}  // namespace vellum
