// The rows of a damaged image, as far as they are there.
#include <algorithm>

#include "base/limits.h"
#include "core/check/repairing.h"
#include "core/check/row_indexes.h"
#include "image/deflate.h"
#include "image/pieces_inflated.h"
#include "image/png_filter.h"

namespace vellum {
namespace {

/// Rows that are missing are only filled in where that takes no more than this, or a hundred times what is
/// there: a short file must not become a huge one.
constexpr std::uint64_t kFreely = std::uint64_t{64} << 20;

struct RowRepair {
  const PngHeader& header;
  PiecesInflated stream;
  RepairedImage& image;
  bool indexed;
  Payload rows{};  ///< filtered, with their filter bytes
  bool changed = false;
  std::vector<std::uint8_t> row{}, prior{};

  /// Whether all of the row was there; part of one is kept too.
  bool read_row(const PngPass& pass, std::size_t bytes) {
    const std::size_t at = rows.size();
    rows.resize(at + bytes + 1);
    const std::size_t got = stream.read(std::span(rows).subspan(at));
    if (got == 0) rows.resize(at);
    if (got == 0) return false;
    if (rows[at] > 4) {
      rows[at] = 0;
      changed = true;
    }
    if (indexed) look_at_indexes(pass, at, bytes);
    image.rowsThere += got == bytes + 1;
    return got == bytes + 1;
  }

  void look_at_indexes(const PngPass& pass, std::size_t at, std::size_t bytes) {
    std::copy_n(rows.begin() + static_cast<std::ptrdiff_t>(at), bytes + 1, row.begin());
    png_unfilter(row[0], &row[1], &prior[1], bytes, png_filter_distance(header));
    image.largestIndex =
        std::max(image.largestIndex, largest_index(&row[1], pass.width, header.bitDepth).value);
    std::swap(row, prior);
  }

  void read() {
    bool going = true;
    for (const PngPass& pass : png_passes(header)) {
      const auto bytes = static_cast<std::size_t>(png_row_bytes(header, pass.width));
      if (bytes == 0) continue;
      image.rows += pass.height;
      std::ranges::fill(prior, std::uint8_t{0});
      for (std::uint32_t y = 0; going && y < pass.height; ++y) going = read_row(pass, bytes);
    }
  }
};

}  // namespace

RepairedImage repair_image(const PngHeader& header, std::span<const std::span<const std::uint8_t>> pieces,
                           bool indexed) {
  RepairedImage image;
  const std::uint64_t filtered = png_filtered_bytes(header);
  if (filtered > 2 * kMaximumPictureBytes) return image;
  const std::vector<std::uint8_t> blank(static_cast<std::size_t>(png_row_bytes(header, header.width)) + 1 +
                                        kFilterSlack);
  RowRepair repair{header, PiecesInflated(pieces), image, indexed, {}, false, blank, blank};
  repair.read();
  std::uint8_t more = 0;
  const bool good = image.rowsThere == image.rows && !repair.changed && repair.stream.read({&more, 1}) == 0 &&
                    repair.stream.ended() && !repair.stream.more_behind();
  if (good) {
    image.pieces.assign(pieces.begin(), pieces.end());
    return image;
  }
  if (filtered > std::max(kFreely, 100 * std::uint64_t{repair.rows.size()})) image.rowsThere = 0;
  if (!image.there()) return image;
  repair.rows.resize(static_cast<std::size_t>(filtered));
  image.stream = deflate_bytes(repair.rows, 6);
  if (image.stream.empty()) image.rowsThere = 0;
  image.pieces = {image.stream};
  return image;
}

}  // namespace vellum
