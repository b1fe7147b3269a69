#include "image/fine_canvas.h"

#include <algorithm>
#include <atomic>

#include "image/alpha_rows.h"
#include "image/alpha_runs.h"
#include "image/lanes.h"
#include "image/picture_rect.h"

namespace vellum {
namespace {

constexpr std::uint8_t kNoRest = 128;
constexpr Colour kNoRests = 0x80808080;

/// Alpha is a fraction of 65535, so products lose less than one each; the one that is added makes opaque and
/// clear pixels exact.
VELLUM_INLINE void blend_all(std::uint8_t* __restrict shown, std::uint8_t* __restrict rest,
                             const std::uint8_t* __restrict source, const std::uint8_t* __restrict alpha,
                             std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const auto weight = static_cast<std::uint16_t>(alpha[i] * 257);
    const auto left = static_cast<std::uint16_t>(65535 - weight);
    const auto above = static_cast<std::uint16_t>(source[i] << 8 | kNoRest);
    const auto below = static_cast<std::uint16_t>(shown[i] << 8 | rest[i]);
    const auto first = static_cast<std::uint16_t>(std::uint32_t{above} * weight >> 16);
    const auto second = static_cast<std::uint16_t>(std::uint32_t{below} * left >> 16);
    const auto sum = static_cast<std::uint16_t>(first + second + 1);
    shown[i] = static_cast<std::uint8_t>(sum >> 8);
    rest[i] = static_cast<std::uint8_t>(sum);
  }
}

/// `SourceRun::load_for_24` for four pixels at a time; writes up to 4 bytes more.
VELLUM_INLINE void take_apart(SourceRun& run, const std::uint8_t* in, std::size_t count) {
  std::uint8_t *channel = run.channels.data(), *alpha = run.alphas.data();
  for (; count >= 4; count -= 4, in += 16, channel += 12, alpha += 12) {
    Bytes16 pixels;
    std::memcpy(&pixels, in, sizeof pixels);
    const Bytes16 colors =
        __builtin_shufflevector(pixels, pixels, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0);
    const Bytes16 weights =
        __builtin_shufflevector(pixels, pixels, 3, 3, 3, 7, 7, 7, 11, 11, 11, 15, 15, 15, 3, 3, 3, 3);
    std::memcpy(channel, &colors, sizeof colors);
    std::memcpy(alpha, &weights, sizeof weights);
  }
  for (; count > 0; --count, in += 4, channel += 3, alpha += 3) {
    std::memcpy(channel, in, 3);
    std::fill_n(alpha, 3, in[3]);
  }
}

/// Lays 32-bit pixels over pixels of `bytes` bytes.
void lay_plain(std::uint8_t* shown, std::uint8_t* rest, const std::uint8_t* in, std::size_t bytes,
               std::size_t count) {
  SourceRun run;
  bytes == 3 ? run.load_for_24(in, count) : run.load_for_32(in, count);
  blend_all(shown, rest, run.channels.data(), run.alphas.data(), bytes * count);
}

VELLUM_AVX2 void lay_avx2(std::uint8_t* shown, std::uint8_t* rest, const std::uint8_t* in, std::size_t bytes,
                          std::size_t count) {
  SourceRun run;
  bytes == 3 ? take_apart(run, in, count) : run.load_for_32(in, count);
  blend_all(shown, rest, run.channels.data(), run.alphas.data(), bytes * count);
}

bool is_clear_run(const std::uint8_t* pixels, std::size_t count) {
  std::uint32_t any = 0;
  for (std::size_t x = 0; x < count; ++x) any |= read_le32(pixels + 4 * x);
  return any >> 24 == 0;
}

bool has_half_transparent(const std::uint8_t* pixels, std::size_t count) {
  std::uint32_t any = 0;
  for (std::size_t x = 0; x < count; ++x) {
    const std::uint32_t alpha = read_le32(pixels + 4 * x) >> 24;
    any |= (alpha + 1) & 0xFE;
  }
  return any != 0;
}

/// Whether laying the picture leaves rests.
bool leaves_rests(const Picture& source) {
  if (source.bits() != 32) return false;
  std::atomic<bool> found = false;
  for_each_row(source.height(), source.stride(), [&](std::uint32_t y) {
    if (!found.load(std::memory_order_relaxed) && has_half_transparent(source.row(y), source.width()))
      found = true;
  });
  return found;
}

Picture no_rests(const Picture& shown) {
  Picture rest = PictureCreateForOverwrite(shown.width(), shown.height(), nullptr, shown.bits());
  if (std::uint8_t* block = rest.edit_block())
    std::fill(block + Picture::kHeaderBytes, block + rest.handle().size(), kNoRest);
  return rest;
}

/// A run of a row on its way onto the canvas.
struct Run {
  std::uint8_t *shown, *rest;  ///< `rest` may be null
  std::size_t bytes;           ///< of a pixel of the canvas
  std::size_t count;

  void forget_rests() const {
    if (rest) std::fill_n(rest, bytes * count, kNoRest);
  }
  void fill(Colour colour) const {
    fill_pixels(shown, 0, count, static_cast<std::uint32_t>(8 * bytes), colour);
    forget_rests();
  }
  /// `ground`: what the canvas is filled with first; null to leave what is there.
  void lay(const std::uint8_t* pixels, const Colour* ground) const {
    if (is_opaque_run(pixels, count)) {
      if (bytes == 3)
        take_colors(shown, pixels, count);
      else
        std::memcpy(shown, pixels, bytes * count);
      return forget_rests();
    }
    if (ground) fill(*ground);
    if (is_clear_run(pixels, count)) return;
    // Without rests no pixel is half transparent; those of the run go here.
    std::array<std::uint8_t, 4 * kPixelRun> none;
    if (!rest) none.fill(kNoRest);
    const auto lay_pixels = has_avx2() ? lay_avx2 : lay_plain;
    lay_pixels(shown, rest ? rest : none.data(), pixels, bytes, count);
  }
};

/// The part of a picture at a place that is on the canvas.
struct Part {
  std::uint32_t left, top, right, bottom;  ///< on the canvas
  std::uint32_t fromLeft, fromTop;         ///< in the picture
  bool empty() const { return left >= right || top >= bottom; }
};

Part visible_part(const Picture& canvas, const PictureRect& rect, const Picture& source) {
  const auto clip = [](std::int64_t value, std::uint32_t most) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, most));
  };
  return {clip(rect.left, canvas.width()),
          clip(rect.top, canvas.height()),
          clip(std::int64_t{rect.left} + source.width(), canvas.width()),
          clip(std::int64_t{rect.top} + source.height(), canvas.height()),
          static_cast<std::uint32_t>(std::max<std::int64_t>(-std::int64_t{rect.left}, 0)),
          static_cast<std::uint32_t>(std::max<std::int64_t>(-std::int64_t{rect.top}, 0))};
}

/// `ground`: null to lay the picture over what is there.
bool draw(FineCanvas& canvas, const PictureRect& rect, const Picture& source, const Colour* ground,
          bool rests_wanted) {
  const Part part = visible_part(canvas.shown, rect, source);
  if (part.empty()) return true;
  Picture rest = canvas.rest;
  if (!rest && rests_wanted && leaves_rests(source) && !(rest = no_rests(canvas.shown))) return false;
  canvas.rest = {};  // so that it isn't copied when it is written
  const EditRows rows(canvas.shown);
  const EditRows rests = rest ? EditRows(rest) : rows;
  canvas.rest = rest;
  if (!rows || !rests) return false;
  const std::size_t bytes = canvas.shown.bits() / 8, source_bytes = source.bits() / 8;
  const std::size_t width = part.right - part.left;
  for_each_row(part.bottom - part.top, 4 * width, [&](std::uint32_t y) {
    const std::uint8_t* from = source.row(part.fromTop + y) + source_bytes * part.fromLeft;
    const std::size_t at = bytes * part.left;
    std::uint8_t* shown = rows[part.top + y] + at;
    std::uint8_t* left = rest ? rests[part.top + y] + at : nullptr;
    if (source_bytes == 3) {
      cover_row(shown, bytes, from, width);
      return Run{shown, left, bytes, width}.forget_rests();
    }
    for (std::size_t x = 0; x < width; x += kPixelRun) {
      const Run run{shown + bytes * x, left ? left + bytes * x : nullptr, bytes,
                    std::min(kPixelRun, width - x)};
      run.lay(from + 4 * x, ground);
    }
  });
  return true;
}

/// One channel without the weight of alpha, which is above 0: both in 256ths and 128 above.
std::uint8_t plain_channel(std::uint32_t value, float scale) {
  const float plain = (static_cast<float>(value) - kNoRest) * scale + 0.5f;
  return static_cast<std::uint8_t>(std::clamp(plain, 0.0f, 255.0f));
}

void straight_row(std::uint8_t* out, const std::uint8_t* shown, const std::uint8_t* rest, std::size_t width) {
  for (std::size_t x = 0; x < width; ++x, out += 4, shown += 4, rest += 4) {
    const std::uint8_t alpha = shown[3];
    if (alpha == 255 || alpha == 0) {
      write_le32(out, alpha == 0 ? 0 : read_le32(shown));
      continue;
    }
    const float scale = 255.0f / static_cast<float>((alpha << 8 | rest[3]) - kNoRest);
    for (int c = 0; c < 3; ++c)
      out[c] = plain_channel(static_cast<std::uint32_t>(shown[c] << 8 | rest[c]), scale);
    out[3] = alpha;
  }
}

}  // namespace

void fine_fill(FineCanvas& canvas, const PictureRect& rect, Colour colour) {
  PictureFillRect(canvas.shown, rect.left, rect.top, width_of(rect), height_of(rect), colour);
  if (canvas.rest)
    PictureFillRect(canvas.rest, rect.left, rect.top, width_of(rect), height_of(rect), kNoRests);
}

FineCanvas fine_crop(const FineCanvas& canvas, const PictureRect& rect) {
  return {PictureCrop(canvas.shown, rect), canvas.rest ? PictureCrop(canvas.rest, rect) : Picture()};
}

bool fine_put(FineCanvas& canvas, const PictureRect& rect, const FineCanvas& part) {
  if (part.rest && !canvas.rest && !(canvas.rest = no_rests(canvas.shown))) return false;
  if (canvas.rest && !part.rest)
    PictureFillRect(canvas.rest, rect.left, rect.top, width_of(rect), height_of(rect), kNoRests);
  else if (canvas.rest)
    PictureBlit(canvas.rest, rect.left, rect.top, part.rest, 0, 0, width_of(rect), height_of(rect));
  PictureBlit(canvas.shown, rect.left, rect.top, part.shown, 0, 0, width_of(rect), height_of(rect));
  return true;
}

bool fine_lay(FineCanvas& canvas, const PictureRect& rect, const Picture& source) {
  return draw(canvas, rect, source, nullptr, true);
}

bool fine_replace(FineCanvas& canvas, const PictureRect& rect, const Picture& source, Colour ground,
                  bool once) {
  return draw(canvas, rect, source, &ground, !once);
}

namespace {

/// Without rests: as a rule all is opaque or clear, and nothing changes.
Picture straightened(const Picture& shown) {
  const auto is_partial = [&](std::uint32_t y) {
    const std::uint8_t* row = shown.row(y);
    for (std::size_t x = 0; x < shown.width(); ++x)
      if (static_cast<std::uint8_t>(row[4 * x + 3] + 1) > 1) return true;
    return false;
  };
  std::uint32_t first = 0;
  while (first < shown.height() && !is_partial(first)) ++first;
  if (first == shown.height()) return shown;
  Picture result = PictureDuplicate(shown);
  const EditRows rows(result);
  if (!rows) return {};
  for_each_row(result.height(), result.stride(),
               [&](std::uint32_t y) { straighten_row(rows[y], result.width()); });
  return result;
}

}  // namespace

Picture straight_picture(const FineCanvas& canvas) {
  if (!canvas.shown) return canvas.shown;
  if (!canvas.rest) return straightened(canvas.shown);
  const std::uint32_t width = canvas.shown.width(), height = canvas.shown.height();
  Picture result = create_rows(width, height, nullptr, 32);
  const PictureRect whole{0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
  return result && straighten_part(result, canvas, whole) ? result : Picture();
}

bool straighten_part(Picture& picture, const FineCanvas& canvas, const PictureRect& rect) {
  if (!canvas.rest) return static_cast<bool>(picture = straight_picture(canvas));
  const auto clip = [](std::int32_t value, std::uint32_t most) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, most));
  };
  const std::uint32_t left = clip(rect.left, picture.width()), right = clip(rect.right, picture.width());
  const std::uint32_t top = clip(rect.top, picture.height()), bottom = clip(rect.bottom, picture.height());
  if (left >= right || top >= bottom) return true;
  const EditRows rows(picture);
  if (!rows) return false;
  const std::size_t at = std::size_t{4} * left;
  for_each_row(bottom - top, std::size_t{4} * (right - left), [&](std::uint32_t y) {
    straight_row(rows[top + y] + at, canvas.shown.row(top + y) + at, canvas.rest.row(top + y) + at,
                 right - left);
  });
  return true;
}

}  // namespace vellum
