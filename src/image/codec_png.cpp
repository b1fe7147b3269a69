// PNG stills through the rows of this wing.
#include "image/codecs.h"
#include "image/png_file.h"
#include "image/settings.h"

namespace vellum {

Picture PNGGetFileInformation(const std::filesystem::path& path, const GraphicSwitches&) {
  return read_through(path, read_png_information);
}

Picture PNGReadGraphicFile(const std::filesystem::path& path, const GraphicSwitches&) {
  return read_through(path, read_png_picture);
}

bool PNGWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches&, const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) {
    const auto bytes = encode_png_picture(picture, std::clamp(settings::PngCompression, 0, 9));
    return !bytes.empty() && file.write(bytes);
  });
}

}  // namespace vellum
