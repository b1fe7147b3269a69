#include "support/libpng_oracle.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <memory>

namespace vellum::testing {
namespace {

void silent(png_structp, png_const_charp) {}

/// Reads into `rgba`; false when libpng jumps out. Holds no object that a jump would lose.
bool read_image(png_structp png, png_infop info, std::FILE* file, std::vector<std::uint8_t>& rgba,
                std::vector<png_bytep>& rows) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  png_init_io(png, file);
  png_set_benign_errors(png, 1);
  png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
  png_read_info(png, info);
  png_set_strip_16(png);
  png_set_expand(png);
  png_set_gray_to_rgb(png);
  png_set_add_alpha(png, 255, PNG_FILLER_AFTER);
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  const std::size_t row_bytes = png_get_rowbytes(png, info);
  rgba.resize(row_bytes * png_get_image_height(png, info));
  for (std::size_t at = 0; at < rgba.size(); at += row_bytes) rows.push_back(rgba.data() + at);
  png_read_image(png, rows.data());
  return true;
}

}  // namespace

std::vector<std::uint8_t> rgba_by_libpng(const std::filesystem::path& path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, silent);
  png_infop info = png_create_info_struct(png);
  std::vector<std::uint8_t> rgba;
  std::vector<png_bytep> rows;
  const bool good = file && read_image(png, info, file.get(), rgba, rows);
  png_destroy_read_struct(&png, &info, nullptr);
  if (!good) rgba.clear();
  return rgba;
}

}  // namespace vellum::testing
