#include "image/resample.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

#include "base/limits.h"

#include "image/palette_match.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/resample_passes.h"
#include "image/resample_stored.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

/// The nearest source pixel for each target pixel, in any depth.
Picture point_sampled(const Picture& source, std::uint32_t width, std::uint32_t height) {
  const Palette palette = palette_of(source);
  Picture result = create_rows(width, height, &palette, source.bits());
  if (!result) return result;
  const ResampleAxis across = resample_axis(source.width(), width, ResampleFilter::Point, 1);
  const ResampleAxis down = resample_axis(source.height(), height, ResampleFilter::Point, 1);
  const EditRows rows(result);
  for_each_row(height, rows.stride, [&](std::uint32_t y) {
    const std::uint8_t* from = source.row(down.positions[y].first);
    for (std::size_t x = 0; x < width; ++x)
      copy_pixels(rows[y], x, from, across.positions[x].first, 1, source.bits());
  });
  return result;
}

PassOrder cheaper_order(const Picture& source, std::uint32_t width, std::uint32_t height) {
  const std::uint64_t down_first = (std::uint64_t{source.height()} + height) * width;
  const std::uint64_t across_first = (std::uint64_t{source.width()} + width) * height;
  return down_first <= across_first ? PassOrder::DownFirst : PassOrder::AcrossFirst;
}

Picture filtered(const Picture& source, std::uint32_t width, std::uint32_t height, ResampleFilter filter,
                 double blur) {
  const ResampleAxis across = resample_axis(source.width(), width, filter, blur),
                     down = resample_axis(source.height(), height, filter, blur);
  const PassOrder order = cheaper_order(source, width, height);
  if (order == PassOrder::DownFirst)
    if (Picture result = resample_stored(source, across, down)) return result;
  return resample_passes(source, across, down, order);
}

/// What an axis reads of its source; its positions are counted from there afterwards.
struct SourceSpan {
  std::int32_t begin, end;
};

SourceSpan cut_to_source(ResampleAxis& axis) {
  std::uint32_t begin = UINT32_MAX, end = 0;
  for (const auto& position : axis.positions) {
    begin = std::min(begin, position.first);
    end = std::max(end, position.first + position.count);
  }
  for (auto& position : axis.positions) position.first -= begin;
  return {static_cast<std::int32_t>(begin), static_cast<std::int32_t>(end)};
}

ResampleFilter settled(ResampleFilter filter, const Picture& picture, std::uint32_t width,
                       std::uint32_t height) {
  if (filter != ResampleFilter::Automatic) return filter;
  const bool grows = std::uint64_t{width} * height > std::uint64_t{picture.width()} * picture.height();
  return grows ? ResampleFilter::Mitchell : ResampleFilter::Lanczos;
}

/// The colors of a palette that can be matched, and what stands for transparency.
struct OpaqueEntries {
  Palette palette{};
  std::array<std::uint8_t, 256> index{};  ///< of each of them in the picture
  std::uint32_t count = 0;
  std::uint8_t clear = 0;

  OpaqueEntries(const Picture& picture, const PaletteUse& use) {
    const Palette all = palette_of(picture);
    const auto alpha = [&](std::size_t i) { return i < use.transparency.size() ? use.transparency[i] : 255; };
    const std::uint32_t entries = std::clamp(use.entries, 1u, picture.colours());
    for (std::uint32_t i = 0; i < entries; ++i) {
      if (alpha(i) < alpha(clear)) clear = static_cast<std::uint8_t>(i);
      if (alpha(i) < kLeastOpaque) continue;
      std::copy_n(&all[3 * i], 3, &palette[3 * count]);
      index[count++] = static_cast<std::uint8_t>(i);
    }
  }
};

Picture back_to_palette(const Picture& scaled, const Picture& like, const PaletteUse& use) {
  const OpaqueEntries opaque(like, use);
  const Palette palette = palette_of(like);
  Picture result = create_rows(scaled.width(), scaled.height(), &palette, like.bits());
  const Picture colors = scaled.bits() == 32 ? PictureToTrueColor(scaled) : scaled;
  const Picture matched = colors ? match_to_palette(colors, opaque.palette, opaque.count, 8) : Picture();
  const EditRows rows(result);
  if (!rows || !matched) return {};
  std::vector<std::uint8_t> line(scaled.width());
  for (std::uint32_t y = 0; y < scaled.height(); ++y) {
    for (std::size_t x = 0; x < line.size(); ++x) {
      const bool clear = scaled.bits() == 32 && scaled.row(y)[4 * x + 3] < kLeastOpaque;
      line[x] = clear ? opaque.clear : opaque.index[matched.row(y)[x]];
    }
    pack_indices(rows[y], 0, line.data(), line.size(), like.bits());
  }
  return result;
}

Picture filtered_in_palette(const Picture& picture, std::uint32_t width, std::uint32_t height,
                            ResampleFilter filter, double blur, const PaletteUse& use) {
  // PictureToTrueColor knows black and white alone in a 1-bit picture.
  Picture source = PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
  if (!use.transparency.empty()) source = PictureWithTransparency(picture, use.transparency);
  const Picture scaled = source ? filtered(source, width, height, filter, blur) : Picture();
  return scaled ? back_to_palette(scaled, picture, use) : Picture();
}

bool size_allowed(std::uint32_t width, std::uint32_t height) {
  return width != 0 && height != 0 && width <= kMaximumDimension && height <= kMaximumDimension;
}

}  // namespace

Picture PictureResample(const Picture& picture, std::uint32_t width, std::uint32_t height,
                        ResampleFilter filter, double blur, const PaletteUse& use) try {
  if (!has_rows(picture) || !size_allowed(width, height)) return {};
  if (width == picture.width() && height == picture.height() && blur == 1) return PictureDuplicate(picture);
  filter = settled(filter, picture, width, height);
  if (filter == ResampleFilter::Point) return point_sampled(picture, width, height);
  return picture.bits() <= 8 ? filtered_in_palette(picture, width, height, filter, blur, use)
                             : filtered(picture, width, height, filter, blur);
} catch (const std::bad_alloc&) {
  return {};
}

Picture PictureResamplePart(const Picture& picture, std::uint32_t width, std::uint32_t height,
                            const PictureRect& part, ResampleFilter filter, double blur) try {
  if (!has_rows(picture) || picture.bits() < 24 || !size_allowed(width, height)) return {};
  if (width == picture.width() && height == picture.height() && blur == 1) return PictureCrop(picture, part);
  filter = settled(filter, picture, width, height);
  const auto axis = [&](std::uint32_t from, std::uint32_t to, std::int32_t begin, std::int32_t end) {
    return resample_axis(from, to, filter, blur, static_cast<std::uint32_t>(begin),
                         static_cast<std::uint32_t>(end));
  };
  ResampleAxis across = axis(picture.width(), width, part.left, part.right),
               down = axis(picture.height(), height, part.top, part.bottom);
  const SourceSpan x = cut_to_source(across), y = cut_to_source(down);
  const Picture source = PictureCrop(picture, {x.begin, y.begin, x.end, y.end});
  if (!source) return {};
  return resample_passes(source, across, down, cheaper_order(picture, width, height));
} catch (const std::bad_alloc&) {
  return {};
}

Picture PictureInColoursOf(const Picture& picture, const Picture& like, const PaletteUse& use) {
  return back_to_palette(picture, like, use);
}

Picture PictureScalePercent(const Picture& picture, double x_percent, double y_percent,
                            ResampleFilter filter) {
  if (!picture) return {};
  const auto scaled = [](std::uint32_t size, double percent) {
    return static_cast<std::uint32_t>(std::clamp(size * percent / 100 + 0.5, 1.0, 4e9));
  };
  return PictureResample(picture, scaled(picture.width(), x_percent), scaled(picture.height(), y_percent),
                         filter);
}

}  // namespace vellum
