#include "generators/textures.h"

#include "image/picture_operations.h"
#include "image/png_file.h"

namespace vellum {

extern const std::span<const std::uint8_t> embedded_textures;

namespace {

constexpr std::int32_t kSide = 64;

}  // namespace

Picture texture_picture(std::size_t number) {
  static const Picture all = read_png_picture(embedded_textures).picture;
  const auto top = static_cast<std::int32_t>(number) * kSide;
  return PictureCrop(all, {0, top, kSide, top + kSide});
}

}  // namespace vellum
