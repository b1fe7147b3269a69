// Rows of any content, packed, perhaps damaged, and cut into pieces: what is decoded band by band is what the
// usual way gives for the whole stream.
#include <algorithm>
#include <vector>

#include "fuzz_support.h"
#include "image/deflate.h"
#include "image/picture_rows.h"
#include "image/png_bands.h"
#include "image/png_decode.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

struct Form {
  std::uint8_t depth, type;
};
constexpr Form kForms[] = {{1, 0}, {2, 0}, {8, 0}, {16, 0}, {8, 2}, {16, 2},
                           {4, 3}, {8, 3}, {8, 4}, {8, 6},  {16, 6}};
constexpr std::size_t kHead = 8;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHead) return -1;
  const Form form = kForms[data[0] % std::size(kForms)];
  const PngHeader header{data[1] % 64u + 1, data[2] + 1u, form.depth, form.type, 0, 0, 0};
  const auto wanted = static_cast<std::size_t>(png_filtered_bytes(header));
  const std::size_t line = wanted / header.height, band_bytes = line * (data[3] % 32 + 1);
  std::vector<std::uint8_t> rows(data + kHead, data + size);
  // Mostly as long as they have to be, with filters that exist.
  if (data[4] % 4 != 0) {
    rows.resize(wanted);
    for (std::size_t at = 0; at < wanted; at += line) rows[at] = static_cast<std::uint8_t>(rows[at] % 5);
  }
  std::vector<std::uint8_t> stream = deflate_bytes(rows, data[4] % 10);
  if (data[5] & 1)
    stream[(data[6] * std::size_t{257} + data[7]) % stream.size()] ^= static_cast<std::uint8_t>(data[5]);
  const std::size_t cut = data[7] % stream.size();
  const std::span<const std::uint8_t> whole(stream);
  const std::span<const std::uint8_t> pieces[] = {whole.first(cut), {}, whole.subspan(cut)};
  const Picture picture = png_decode_in_bands(header, pieces, grey_ramp(), band_bytes);
  const PngDecoded usual = png_decode(header, pieces, grey_ramp());
  // Of a stream that is damaged one reader may take what another one refuses.
  if ((data[5] & 1) == 0) check(usual.exact == static_cast<bool>(picture));
  if (!picture || !usual.picture) return 0;
  check(!usual.isShort);
  for (std::uint32_t y = 0; y < header.height; ++y)
    check(std::equal(picture.row(y), picture.row(y) + picture.stride(), usual.picture.row(y)));
  return 0;
}
