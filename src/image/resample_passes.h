// The two passes of resampling, each a weighted sum along one axis.
#pragma once

#include <memory>

#include "image/picture_rows.h"
#include "image/resample_filter.h"

namespace vellum {

struct FastAxis;

enum class PassOrder { DownFirst, AcrossFirst };

/// Where the rows that are resampled lie: in a picture, or some of them in turns.
struct SourceRows {
  explicit SourceRows(const Picture& picture)
      : top(picture.row(0)),
        stride(-static_cast<std::ptrdiff_t>(picture.stride())),
        bytes(std::size_t{picture.width()} * picture.bits() / 8) {}
  /// Row y lies in slot y % slots, a power of 2.
  SourceRows(const std::uint8_t* first, std::size_t row_bytes, std::uint32_t slots)
      : top(first), stride(static_cast<std::ptrdiff_t>(row_bytes)), bytes(row_bytes), mask(slots - 1) {}
  const std::uint8_t* row(std::size_t y) const {
    return top + stride * static_cast<std::ptrdiff_t>(y & mask);
  }

  const std::uint8_t* top;
  std::ptrdiff_t stride;
  std::size_t bytes;  ///< of the pixels of a row
  std::uint32_t mask = ~std::uint32_t{0};
};

/// Both passes of some rows at a time, down first, as one core does them.
class DownFirst {
 public:
  /// Target rows at a time: what is between the passes stays in the cache.
  static constexpr std::uint32_t kRows = 16;

  /// The axes outlive it. `width` is that of the source, `bits` 24 or 32.
  DownFirst(const FastAxis& across, const FastAxis& down, std::uint32_t width, std::uint32_t bits);
  ~DownFirst();
  DownFirst(DownFirst&&) noexcept;

  /// Target rows from `top` to in front of `end`, kRows of them at most.
  void make(const SourceRows& source, std::uint32_t top, std::uint32_t end, const EditRows& rows);

 private:
  struct Scratch;
  std::unique_ptr<Scratch> scratch_;
};

/// A picture of 24 or 32 bits with the sizes of both axes. Each channel is rounded to 8 bits between the
/// passes; the colors of 32 bits are weighted by their alpha. Null when memory is exhausted.
Picture resample_passes(const Picture& source, const ResampleAxis& across, const ResampleAxis& down,
                        PassOrder order);

}  // namespace vellum
