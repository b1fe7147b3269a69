#include "image/png_file.h"

#include <png.h>

#include <cstring>

#include "image/picture_operations.h"

namespace vellum {
namespace {

Picture read(std::span<const std::uint8_t> file, bool whole) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) return {};
  const bool alpha = image.format & PNG_FORMAT_FLAG_ALPHA;
  image.format = alpha ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
  const auto create = whole ? PictureCreate : PictureCreateHeaderOnly;
  Picture picture = create(image.width, image.height, nullptr, alpha ? 32 : 24);
  const bool read = picture && whole &&
                    png_image_finish_read(&image, nullptr, picture.edit_row(image.height - 1),
                                          -static_cast<png_int_32>(picture.stride()), nullptr);
  png_image_free(&image);
  return read || !whole ? picture : Picture();
}

}  // namespace

Picture read_png_picture(std::span<const std::uint8_t> file) { return read(file, true); }
Picture read_png_information(std::span<const std::uint8_t> file) { return read(file, false); }

std::vector<std::uint8_t> encode_png_picture(const Picture& picture, int) {
  const Picture full =
      picture.bits() == 24 || picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = full.width();
  image.height = full.height();
  image.format = full.bits() == 32 ? PNG_FORMAT_BGRA : PNG_FORMAT_BGR;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::vector<std::uint8_t> bytes(size);
  const bool written = png_image_write_to_memory(&image, bytes.data(), &size, 0, full.row(full.height() - 1),
                                                 -static_cast<png_int_32>(full.stride()), nullptr);
  bytes.resize(written ? size : 0);
  return bytes;
}

}  // namespace vellum
