// The rows of a PNG image, inflated one after the other: whether they are all there, and what they hold.
#include <algorithm>

#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/checking.h"
#include "core/check/row_indexes.h"
#include "image/pieces_inflated.h"
#include "image/png_filter.h"

namespace vellum {
namespace {

/// A look at the rows of one image.
struct RowLook {
  Checking& checking;
  const StreamChunk& at;
  const PngHeader& header;
  std::uint32_t palette;
  PiecesInflated stream;
  std::vector<std::uint8_t> row, prior;
  bool filterTold = false, indexTold = false;

  bool looks_at_indexes() const {
    return header.colorType == 3 && palette > 0 && palette < 1u << header.bitDepth && !filterTold;
  }

  void look(const PngPass& pass, std::uint32_t y, std::size_t bytes) {
    if (row[0] > 4 && !filterTold) {
      filterTold = true;
      checking.find(RuleId::Filter_unknown, at,
                    format_text(translated("type %u in row %u"), row[0], pass.y0 + y * pass.dy));
    }
    if (!looks_at_indexes()) return;
    png_unfilter(row[0], &row[1], &prior[1], bytes, png_filter_distance(header));
    const LargestIndex index = largest_index(&row[1], pass.width, header.bitDepth);
    if (index.value >= palette && !indexTold) {
      indexTold = true;
      checking.find(RuleId::Index_outside, at,
                    format_text(translated("index %u of %u entries at %u, %u"), index.value, palette,
                                pass.x0 + index.x * pass.dx, pass.y0 + y * pass.dy));
    }
  }

  /// Whether all rows were there.
  bool rows() {
    std::uint64_t done = 0;
    for (const PngPass& pass : png_passes(header)) {
      const auto bytes = static_cast<std::size_t>(png_row_bytes(header, pass.width));
      std::ranges::fill(prior, std::uint8_t{0});
      if (bytes == 0) continue;
      for (std::uint32_t y = 0; y < pass.height; ++y, ++done) {
        if (stream.read(std::span(row).first(bytes + 1)) < bytes + 1) {
          tell_missing(done);
          return false;
        }
        look(pass, y, bytes);
        std::swap(row, prior);
      }
    }
    return true;
  }

  void tell_missing(std::uint64_t done) {
    const std::string there = grouped(done) + translated(" rows are there");
    if (stream.damaged())
      checking.find(RuleId::Image_damaged, at,
                    there + (stream.why().empty() ? "" : translated(", then ") + stream.why()));
    else
      checking.find(RuleId::Image_short, at, there);
  }

  void end() {
    std::uint8_t more = 0;
    if (stream.read({&more, 1}) == 1) return checking.find(RuleId::Image_long, at);
    if (stream.damaged())
      checking.find(stream.why() == "incorrect data check" ? RuleId::Image_adler : RuleId::Image_damaged, at,
                    stream.why());
    else if (!stream.ended())
      checking.find(RuleId::Image_damaged, at,
                    translated("all rows are there, but not the end of the stream"));
    else if (stream.more_behind())
      checking.find(RuleId::Stream_long, at);
  }
};

}  // namespace

void check_image_data(Checking& checking, const StreamChunk& at, const PngHeader& header,
                      std::span<const std::span<const std::uint8_t>> data, std::uint32_t palette) {
  const std::uint64_t bytes = png_row_bytes(header, header.width) + 1 + kFilterSlack;
  if (bytes > kMaximumPictureBytes / 4) return checking.find(RuleId::Image_too_large, at);
  const std::vector<std::uint8_t> blank(static_cast<std::size_t>(bytes));
  RowLook look{checking, at, header, palette, PiecesInflated(data), blank, blank};
  if (look.rows()) look.end();
}

}  // namespace vellum
