#include "image/reduce_to_palette.h"

#include <magick/api.h>

#include <bit>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "base/limits.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// The colors of a picture in the order in which they appear from the top left, at most 256 of them.
class ColourIndex {
 public:
  /// The index of a blue, green, red pixel; nothing when it would be the 257th.
  std::optional<std::uint8_t> of(const std::uint8_t* pixel) {
    const std::uint32_t colour = pixel[0] | pixel[1] << 8 | pixel[2] << 16;
    if (colour == last_) return last_index_;
    const auto [at, added] = indices_.try_emplace(colour, static_cast<std::uint8_t>(indices_.size()));
    if (indices_.size() > 256) return std::nullopt;
    if (added)
      for (std::size_t i = 0; i < 3; ++i) palette_[3 * std::size_t{at->second} + i] = pixel[2 - i];
    last_ = colour;
    last_index_ = at->second;
    return last_index_;
  }
  std::size_t size() const { return indices_.size(); }
  const Palette& palette() const { return palette_; }

 private:
  std::unordered_map<std::uint32_t, std::uint8_t> indices_;
  Palette palette_{};
  std::uint32_t last_ = 0xFFFFFFFF;
  std::uint8_t last_index_ = 0;
};

/// Null when the picture has more than 256 colors.
Picture exact(const Picture& picture) {
  ColourIndex index;
  std::vector<std::uint8_t> indices;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::size_t x = 0; x < picture.width(); ++x)
      if (!index.of(picture.row(y) + 3 * x)) return {};
  const auto bits = static_cast<std::uint32_t>(std::bit_width(index.size() - 1));
  Picture result = create_rows(picture.width(), picture.height(), &index.palette(), std::max(bits, 1u));
  if (!result) return result;
  const EditRows rows(result);
  indices.resize(picture.width());
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    for (std::size_t x = 0; x < indices.size(); ++x) indices[x] = *index.of(picture.row(y) + 3 * x);
    pack_indices(rows[y], 0, indices.data(), indices.size(), result.bits());
  }
  return result;
}

void ignore_report(ExceptionType, const char*, const char*) {}

/// The library once for the process, bounded like everything else and silent; no files of its own are asked
/// for.
void prepare_library() {
  static std::once_flag once;
  std::call_once(once, [] {
    InitializeMagickEx(nullptr, MAGICK_OPT_NO_SIGNAL_HANDER, nullptr);
    SetWarningHandler(ignore_report);
    SetErrorHandler(ignore_report);
    SetMagickResourceLimit(WidthResource, kMaximumDimension);
    SetMagickResourceLimit(HeightResource, kMaximumDimension);
    SetMagickResourceLimit(PixelsResource, kMaximumPictureBytes / 3);
    SetMagickResourceLimit(MemoryResource, kMaximumPictureBytes / 3 * sizeof(PixelPacket) * 2);
    SetMagickResourceLimit(DiskResource, 0);
  });
}

struct ImageDeleter {
  void operator()(Image* image) const { DestroyImage(image); }
};
using ImageHandle = std::unique_ptr<Image, ImageDeleter>;

ImageHandle image_of(const Picture& picture, ExceptionInfo& exception) {
  std::vector<std::uint8_t> bytes;
  bytes.resize(3 * std::size_t{picture.width()} * picture.height());
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    std::copy_n(picture.row(y), 3 * std::size_t{picture.width()},
                bytes.data() + 3 * std::size_t{picture.width()} * y);
  return ImageHandle(
      ConstituteImage(picture.width(), picture.height(), "BGR", CharPixel, bytes.data(), &exception));
}

Picture quantized(const Picture& picture) {
  prepare_library();
  ExceptionInfo exception;
  GetExceptionInfo(&exception);
  const ImageHandle image = image_of(picture, exception);
  DestroyExceptionInfo(&exception);
  if (!image) return {};
  QuantizeInfo how;
  GetQuantizeInfo(&how);
  how.number_colors = 256;
  how.dither = MagickFalse;
  if (QuantizeImage(&how, image.get()) != MagickPass || image->storage_class != PseudoClass) return {};
  Palette palette{};
  for (std::size_t i = 0; i < std::min<std::size_t>(image->colors, 256); ++i) {
    palette[3 * i] = ScaleQuantumToChar(image->colormap[i].red);
    palette[3 * i + 1] = ScaleQuantumToChar(image->colormap[i].green);
    palette[3 * i + 2] = ScaleQuantumToChar(image->colormap[i].blue);
  }
  Picture result = create_rows(picture.width(), picture.height(), &palette, 8);
  if (!result) return result;
  const EditRows rows(result);
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    if (!AcquireImagePixels(image.get(), 0, y, picture.width(), 1, &image->exception)) return {};
    const IndexPacket* indices = AccessImmutableIndexes(image.get());
    if (!indices) return {};
    std::copy_n(indices, picture.width(), rows[y]);
  }
  return result;
}

}  // namespace

Picture reduce_to_palette(const Picture& picture) {
  if (!has_rows(picture) || picture.bits() != 24) return {};
  const Picture result = exact(picture);
  return result ? result : quantized(picture);
}

}  // namespace vellum
