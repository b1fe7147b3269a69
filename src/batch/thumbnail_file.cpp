#include "batch/thumbnail_file.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/file.h"
#include "image/picture_operations.h"
#include "image/resample.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

constexpr std::string_view kMagic = "THNL";
constexpr std::size_t kPixelsAt = 264, kPixelBytes = 3;
constexpr std::size_t kFileBytes = kPixelsAt + kPixelBytes * kThumbnailSide * kThumbnailSide;
constexpr std::uint32_t kVersion = 512;

}  // namespace

fs::path thumbnail_path(const fs::path& file, bool hidden) {
  const std::string name = (hidden ? "." : "") + file.stem().string() + ".THN";
  return file.parent_path() / name;
}

Picture make_thumbnail(const Picture& picture, Colour matt) {
  if (!picture) return {};
  const std::uint32_t percent =
      std::min(100 * kThumbnailSide / picture.width(), 100 * kThumbnailSide / picture.height());
  const auto scaled = [percent](std::uint32_t side) {
    return std::clamp<std::uint32_t>(static_cast<std::uint32_t>(std::uint64_t{side} * percent / 100), 1,
                                     kThumbnailSide);
  };
  const Picture color = picture.bits() == 32 ? picture : PictureToTrueColor(picture);
  const Picture small =
      PictureResample(color, scaled(picture.width()), scaled(picture.height()), ResampleFilter::Automatic);
  Picture thumbnail = PictureCreate(kThumbnailSide, kThumbnailSide, nullptr, 24);
  if (!small || !thumbnail) return {};
  PictureFillRect(thumbnail, 0, 0, kThumbnailSide, kThumbnailSide, matt);
  const auto middle = [](std::uint32_t side) { return static_cast<std::int32_t>(kThumbnailSide - side) / 2; };
  PictureComposite(thumbnail, middle(small.width()), middle(small.height()), small,
                   static_cast<std::int32_t>(small.width()), static_cast<std::int32_t>(small.height()));
  return thumbnail;
}

bool write_thumbnail(const fs::path& path, const Picture& thumbnail) {
  if (!thumbnail || thumbnail.width() != kThumbnailSide || thumbnail.height() != kThumbnailSide) return false;
  std::vector<std::uint8_t> bytes(kFileBytes);
  std::ranges::copy(kMagic, bytes.begin());
  write_le32(bytes.data() + kMagic.size(), kVersion);
  std::uint8_t* out = bytes.data() + kPixelsAt;
  for (std::uint32_t y = 0; y < kThumbnailSide; ++y)
    for (std::uint32_t x = 0; x < kThumbnailSide; ++x) {
      const Colour colour = PictureGetPixel(thumbnail, x, y);
      *out++ = red_of(colour);
      *out++ = green_of(colour);
      *out++ = blue_of(colour);
    }
  SafeFile file(path);
  return file.write(bytes) && file.commit();
}

Picture read_thumbnail(const fs::path& path) {
  std::string reason;
  const auto bytes = read_file(path, reason, kFileBytes);
  if (!bytes || bytes->size() < kFileBytes || !std::equal(kMagic.begin(), kMagic.end(), bytes->data()))
    return {};
  Picture thumbnail = PictureCreate(kThumbnailSide, kThumbnailSide, nullptr, 24);
  if (!thumbnail) return {};
  const std::uint8_t* in = bytes->data() + kPixelsAt;
  for (std::uint32_t y = 0; y < kThumbnailSide; ++y)
    for (std::uint32_t x = 0; x < kThumbnailSide; ++x, in += kPixelBytes)
      PicturePutPixel(thumbnail, x, y, make_colour(in[0], in[1], in[2], 255));
  return thumbnail;
}

Picture thumbnail_of(const fs::path& file) {
  for (const bool hidden : {false, true}) {
    const fs::path path = thumbnail_path(file, hidden);
    std::error_code missing, error;
    const auto made = fs::last_write_time(path, missing);
    if (!missing && made >= fs::last_write_time(file, error) && !error)
      if (Picture thumbnail = read_thumbnail(path)) return thumbnail;
  }
  return {};
}

}  // namespace vellum
