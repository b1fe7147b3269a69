// Composition: flattening, cross-fading and laying one picture over another.
#include "image/alpha_runs.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// x / 255 for x up to 255 * 255, in 16 bits, so that eight fit a vector register.
constexpr std::uint16_t divide_by_255(std::uint16_t x) {
  return static_cast<std::uint16_t>((x + 1 + (x >> 8)) >> 8);
}

/// `blend_channel` for `count` bytes. The alpha of a destination is a channel whose source is 255.
void blend_bytes(std::uint8_t* __restrict out, const std::uint8_t* __restrict src,
                 const std::uint8_t* __restrict dst, const std::uint8_t* __restrict alpha,
                 std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const auto over = divide_by_255(static_cast<std::uint16_t>(src[i] * alpha[i]));
    const auto under = divide_by_255(static_cast<std::uint16_t>(dst[i] * (255 - alpha[i])));
    out[i] = static_cast<std::uint8_t>(over + under);
  }
}

/// 32-bit pixels over pixels of 24 or 32 bits.
void composite_row(std::uint8_t* dst, std::size_t dst_size, const std::uint8_t* src, std::size_t width) {
  SourceRun run;
  std::array<std::uint8_t, 4 * kPixelRun> ground;
  for (std::size_t x = 0; x < width; x += kPixelRun) {
    const std::size_t count = std::min(kPixelRun, width - x);
    if (dst_size == 3)
      run.load_for_24(src + 4 * x, count);
    else
      run.load_for_32(src + 4 * x, count);
    std::uint8_t* out = dst + dst_size * x;
    std::memcpy(ground.data(), out, dst_size * count);
    blend_bytes(out, run.channels.data(), ground.data(), run.alphas.data(), dst_size * count);
  }
}

}  // namespace

Picture PictureFlattenAlpha(const Picture& picture, Colour colour) {
  if (!has_rows(picture) || picture.bits() != 32) return {};
  Picture result = create_rows(picture.width(), picture.height(), nullptr, 24);
  if (!result) return result;
  std::array<std::uint8_t, 3 * kPixelRun> ground;
  fill_pixels(ground.data(), 0, kPixelRun, 24, colour);
  const EditRows rows(result);
  const std::size_t width = picture.width();
  for_each_row(picture.height(), picture.stride(), [&](std::uint32_t y) {
    SourceRun run;
    for (std::size_t x = 0; x < width; x += kPixelRun) {
      const std::size_t count = std::min(kPixelRun, width - x);
      if (is_opaque_run(picture.row(y) + 4 * x, count)) {
        take_colors(rows[y] + 3 * x, picture.row(y) + 4 * x, count);
        continue;
      }
      run.load_for_24(picture.row(y) + 4 * x, count);
      blend_bytes(rows[y] + 3 * x, run.channels.data(), ground.data(), run.alphas.data(), 3 * count);
    }
  });
  return result;
}

Picture PictureFlatten(const Picture& picture, Colour colour) {
  if (has_rows(picture) && picture.bits() == 24) return whole_of(picture);
  return PictureFlattenAlpha(picture, colour);
}

Picture PictureCrossFade(const Picture& a, const Picture& b, std::uint32_t amount) {
  if (!has_rows(a) || !has_rows(b)) return {};
  const Picture from = a.bits() == 24 ? a : PictureToTrueColor(a);
  const Picture to = b.bits() == 24 ? b : PictureToTrueColor(b);
  if (!from || !to) return {};
  Picture result = create_rows(std::min(a.width(), b.width()), std::min(a.height(), b.height()), nullptr, 24);
  if (!result) return result;
  std::array<std::uint8_t, 3 * kPixelRun> alpha;
  alpha.fill(static_cast<std::uint8_t>(std::min(amount, 255u)));
  const EditRows rows(result);
  const std::size_t bytes = 3 * std::size_t{result.width()};
  for_each_row(result.height(), rows.stride, [&](std::uint32_t y) {
    for (std::size_t i = 0; i < bytes; i += alpha.size())
      blend_bytes(rows[y] + i, to.row(y) + i, from.row(y) + i, alpha.data(),
                  std::min(alpha.size(), bytes - i));
  });
  return result;
}

void PictureComposite(Picture& dst, std::int32_t x, std::int32_t y, const Picture& src, std::int32_t width,
                      std::int32_t height) {
  if (!has_rows(dst) || !has_rows(src) || dst.bits() < 24 || src.bits() < 24) return;
  const Picture source = src;  // keeps what is read apart when both are one picture
  const std::int64_t left = std::max(x, 0), top = std::max(y, 0);
  const std::int64_t right =
      std::min<std::int64_t>(x + std::min<std::int64_t>(width, source.width()), dst.width());
  const std::int64_t bottom =
      std::min<std::int64_t>(y + std::min<std::int64_t>(height, source.height()), dst.height());
  if (left >= right || top >= bottom) return;
  const EditRows rows(dst);
  if (!rows) return;
  const auto row = source.bits() == 32 ? composite_row : cover_row;
  const std::size_t dst_size = dst.bits() / 8, src_size = source.bits() / 8;
  const auto count = static_cast<std::size_t>(right - left);
  for_each_row(static_cast<std::uint32_t>(bottom - top), 4 * count, [&](std::uint32_t i) {
    const std::uint8_t* in =
        source.row(static_cast<std::uint32_t>(top - y) + i) + src_size * static_cast<std::size_t>(left - x);
    row(rows[static_cast<std::size_t>(top) + i] + dst_size * static_cast<std::size_t>(left), dst_size, in,
        count);
  });
}

}  // namespace vellum
