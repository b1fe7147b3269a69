// Any bytes at all as a picture file of one of the seven formats. What is read has all its rows; what is
// written of it reads back with the same size, and with the same pixels where the format loses nothing.
#include "fuzz_support.h"
#include "image/graphic_file.h"
#include "image/picture_rows.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

constexpr std::uint64_t kMostPixels = 1'000'000;  ///< larger ones only make the fuzzer slow

void check_rows(const Picture& picture) {
  check(is_picture(picture.handle()) && has_rows(picture));
  PictureGetPixel(picture, picture.width() - 1, picture.height() - 1);
}

void write_and_read(const GraphicFileModule& module, const Picture& picture) {
  static const std::string stem = scratch_file(".");
  const std::string path = stem + std::string(module.extension);
  if (!GraphicFileWrite(path, picture)) return;
  const Picture again = GraphicFileRead(path);
  check(again && again.width() == picture.width() && again.height() == picture.height());
  if (module.extension != "png") return;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x)
      check(PictureGetPixel(again, x, y) == PictureGetPixel(picture, x, y));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return -1;
  const Input file(data + 1, size - 1);
  const GraphicReading header = read_graphic_bytes(file, Part::Header);
  if (!header.picture) check(header.fault != GraphicFault::None);
  if (header.picture && std::uint64_t{header.picture.width()} * header.picture.height() > kMostPixels)
    return -1;
  const GraphicReading whole = read_graphic_bytes(file);
  check(static_cast<bool>(whole.picture) == (whole.fault == GraphicFault::None));
  if (!whole.picture) return 0;
  check(header.picture && header.picture.width() == whole.picture.width());
  check_rows(whole.picture);
  const auto modules = graphic_file_modules();
  if (std::uint64_t{whole.picture.width()} * whole.picture.height() <= 10'000)
    write_and_read(modules[data[0] % modules.size()], whole.picture);
  return 0;
}
