#include "image/png_decode.h"

#include <cstring>

#include "base/limits.h"
#include "base/scratch_pages.h"
#include "base/translation.h"
#include "image/inflate.h"
#include "image/png_bands.h"
#include "image/png_filter.h"
#include "image/png_rows.h"

namespace vellum {
namespace {

using Bytes = std::span<const std::uint8_t>;

/// Where the rows of a picture lie, without asking the picture once for each.
struct RowsOfPicture {
  std::uint8_t* bottom;
  std::size_t stride;
  std::uint32_t height;
  explicit RowsOfPicture(Picture& picture)
      : bottom(picture.edit_row(picture.height() - 1)), stride(picture.stride()), height(picture.height()) {}
  std::uint8_t* row(std::uint32_t y) const { return bottom + stride * (height - 1 - y); }
};

/// The whole stream in one piece: the payload itself where there is one only, otherwise `joined`.
Bytes in_one_piece(std::span<const Bytes> data, std::vector<std::uint8_t>& joined) {
  if (data.size() == 1) return data[0];
  std::size_t total = 0;
  for (const Bytes piece : data) total += piece.size();
  joined.reserve(total);
  for (const Bytes piece : data) joined.insert(joined.end(), piece.begin(), piece.end());
  return joined;
}

/// Puts the pixels of a pass's row, in the picture's own packing, at their places.
template <unsigned kBits>
void scatter(const std::uint8_t* pixels, std::uint8_t* row, const PngPass& pass) {
  for (std::uint32_t i = 0; i < pass.width; ++i) {
    const std::size_t x = pass.x0 + std::size_t{i} * pass.dx;
    if constexpr (kBits >= 8) {
      std::memcpy(row + x * (kBits / 8), pixels + std::size_t{i} * (kBits / 8), kBits / 8);
    } else {
      constexpr std::size_t in_byte = 8 / kBits;
      const unsigned value = pixels[i / in_byte] >> (8 - kBits - i % in_byte * kBits) & ((1u << kBits) - 1);
      row[x / in_byte] =
          static_cast<std::uint8_t>(row[x / in_byte] | value << (8 - kBits - x % in_byte * kBits));
    }
  }
}

using Scatter = void (*)(const std::uint8_t*, std::uint8_t*, const PngPass&);

Scatter scatter_for(std::uint32_t bits) {
  switch (bits) {
    case 1:
      return scatter<1>;
    case 4:
      return scatter<4>;
    case 8:
      return scatter<8>;
    case 24:
      return scatter<24>;
    default:
      return scatter<32>;
  }
}

/// Scratch memory up to this size is kept for the next image of the thread: an animation has many of the same
/// size, and fresh pages cost more than the rows that are put on them.
constexpr std::size_t kKeptScratch = std::size_t{4} << 20;

/// Undoes the filters of `filtered` pass by pass and hands each row of samples to `take(pass, y, samples)`.
template <class Take>
bool unfilter_rows(const PngHeader& header, ScratchPages& filtered, Take take) {
  const std::size_t distance = png_filter_distance(header);
  const std::vector<std::uint8_t> zeros(png_row_bytes(header, header.width) + kFilterSlack);
  std::uint8_t* at = filtered.bytes().data();
  for (const PngPass& pass : png_passes(header)) {
    const auto bytes = static_cast<std::size_t>(png_row_bytes(header, pass.width));
    const std::uint8_t* prior = zeros.data();
    std::size_t undone = 0;
    for (std::uint32_t y = 0; y < pass.height; ++y, --undone, at += bytes + 1) {
      if (undone == 0 && (undone = png_unfilter_some(at, pass.height - y, prior, bytes, distance)) == 0)
        return false;
      take(pass, y, at + 1);
      // The row above is needed by this one only.
      filtered.release_before(
          static_cast<std::size_t>(prior == zeros.data() ? 0 : prior - filtered.bytes().data()));
      prior = at + 1;
    }
  }
  return true;
}

bool read_rows(const PngHeader& header, ScratchPages& filtered, Picture& picture) {
  const RowsOfPicture rows(picture);
  const PngRowReader read = png_row_reader(header);
  const std::size_t used = (std::size_t{picture.width()} * picture.bits() + 7) / 8;
  return unfilter_rows(header, filtered, [&](const PngPass&, std::uint32_t y, const std::uint8_t* samples) {
    std::uint8_t* row = rows.row(y);
    read(samples, row, header.width);
    std::memset(row + used, 0, rows.stride - used);
  });
}

bool read_interlaced(const PngHeader& header, ScratchPages& filtered, Picture& picture) {
  const RowsOfPicture rows(picture);
  const PngRowReader read = png_row_reader(header);
  const Scatter put = scatter_for(picture.bits());
  std::vector<std::uint8_t> pixels(rows.stride);
  return unfilter_rows(header, filtered,
                       [&](const PngPass& pass, std::uint32_t y, const std::uint8_t* samples) {
                         read(samples, pixels.data(), pass.width);
                         put(pixels.data(), rows.row(pass.y0 + y * pass.dy), pass);
                       });
}

ScratchPages& scratch_for(std::size_t bytes, std::optional<ScratchPages>& own) {
  thread_local std::optional<ScratchPages> kept;
  if (bytes > kKeptScratch) return own.emplace(bytes);
  if (!kept || kept->bytes().size() < bytes) kept.emplace(bytes);
  return *kept;
}

const char* too_large() { return translated("the image is too large"); }
const char* too_short() { return translated("there is not enough image data"); }
constexpr const char* kBadFilter = "a row has a filter type that does not exist";
constexpr std::uint8_t kLastFilter = 4;

PngDecoded failure(const char* reason, bool limit = false) {
  return {{}, translated(reason), false, limit, false};
}

/// Takes the inflated rows: gives the picture, or null with a reason.
using TakeRows = const char* (*)(const PngHeader&, const Palette&, ScratchPages& filtered, Picture&);

const char* make_picture(const PngHeader& header, const Palette& palette, ScratchPages& filtered,
                         Picture& picture) {
  const std::uint32_t bits = png_picture_bits(header);
  picture = header.interlace ? PictureCreate(header.width, header.height, &palette, bits)
                             : PictureCreateForOverwrite(header.width, header.height, &palette, bits);
  if (!picture) return too_large();
  const auto rows = header.interlace ? read_interlaced : read_rows;
  return rows(header, filtered, picture) ? nullptr : kBadFilter;
}

const char* check_rows(const PngHeader& header, const Palette& palette, ScratchPages& filtered,
                       Picture& picture) {
  const std::uint8_t* at = filtered.bytes().data();
  for (const PngPass& pass : png_passes(header)) {
    const auto bytes = static_cast<std::size_t>(png_row_bytes(header, pass.width));
    for (std::uint32_t y = 0; y < pass.height; ++y, at += bytes + 1)
      if (at[0] > kLastFilter) return kBadFilter;
  }
  const std::uint32_t bits = png_picture_bits(header);
  picture = PictureCreateHeaderOnly(header.width, header.height, &palette, bits);
  return picture ? nullptr : too_large();
}

/// What forbids to look at the stream at all; without a reason where nothing does.
PngDecoded refusal(const PngHeader& header, std::span<const Bytes> data) {
  if (const char* fault = png_header_fault(header)) return failure(fault);
  const std::uint64_t filtered_bytes = png_filtered_bytes(header);
  // 16-bit samples are the only case in which the filtered rows are longer than the picture's, by a factor of
  // two.
  if (filtered_bytes > 2 * kMaximumPictureBytes) return failure(too_large(), true);
  std::uint64_t stream_bytes = 0;
  for (const Bytes piece : data) stream_bytes += piece.size();
  if (!can_inflate_to(stream_bytes, filtered_bytes)) return failure(too_short());
  // What the stream may hold is plausible: deflate can't mean more than 1032 times its bytes.
  if (const char* fault = memory_fault(filtered_bytes)) return failure(fault, true);
  return {};
}

/// The way that takes any stream, of a header and length that aren't refused.
PngDecoded read_image(const PngHeader& header, std::span<const Bytes> data, const Palette& palette,
                      PngShortData short_data, TakeRows take) {
  const std::uint64_t filtered_bytes = png_filtered_bytes(header);
  std::vector<std::uint8_t> joined;
  const Bytes stream = in_one_piece(data, joined);
  std::optional<ScratchPages> own;
  ScratchPages& filtered = scratch_for(static_cast<std::size_t>(filtered_bytes) + kFilterSlack, own);
  if (!filtered) return failure(translated("memory is exhausted"), true);
  bool exact = false;
  const auto inflated =
      inflate_into(stream, filtered.bytes().first(static_cast<std::size_t>(filtered_bytes)), &exact);
  if (!inflated) return failure(translated("the image data is damaged"));
  const bool is_short = *inflated < filtered_bytes;
  if (is_short && (short_data == PngShortData::Fault || *inflated == 0)) return failure(too_short());
  joined = {};
  if (is_short) std::ranges::fill(filtered.bytes().subspan(*inflated), std::uint8_t{0});
  Picture picture;
  if (const char* reason = take(header, palette, filtered, picture))
    return failure(reason, reason == too_large());
  return {std::move(picture), nullptr, is_short, false, exact};
}

}  // namespace

PngDecoded png_decode(const PngHeader& header, std::span<const Bytes> data, const Palette& palette,
                      PngShortData short_data) {
  if (const PngDecoded refused = refusal(header, data); refused.reason) return refused;
  if (png_goes_in_bands(header))
    if (Picture picture = png_decode_in_bands(header, data, palette))
      return {.picture = std::move(picture), .judged = false};
  return read_image(header, data, palette, short_data, make_picture);
}

PngDecoded png_check(const PngHeader& header, std::span<const Bytes> data, const Palette& palette,
                     PngShortData short_data) {
  if (const PngDecoded refused = refusal(header, data); refused.reason) return refused;
  return read_image(header, data, palette, short_data, check_rows);
}

PngDecoded png_expect(const PngHeader& header, std::span<const Bytes> data, const Palette& palette) {
  PngDecoded expected = refusal(header, data);
  if (expected.reason) return expected;
  expected.picture = PictureCreateHeaderOnly(header.width, header.height, &palette, png_picture_bits(header));
  return expected.picture ? expected : failure(too_large(), true);
}

}  // namespace vellum
