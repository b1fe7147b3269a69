// PNG stills through the rows of this wing.
#include "base/translation.h"
#include "image/chunk_stream.h"
#include "image/codecs.h"
#include "image/png_file.h"
#include "image/settings.h"

namespace vellum {

bool is_png(FileBytes file) {
  return file.size() >= kPngSignature.size() &&
         std::ranges::equal(file.first(kPngSignature.size()), kPngSignature);
}

GraphicReading decode_png(FileBytes file, Part part, const GraphicSwitches& switches) {
  if (part == Part::Header) return {read_png_information(file), {}, {}};
  const PngDecoded decoded = read_png_picture(file, switches.owner);
  if (decoded.picture) return {decoded.picture, {}, decoded.isShort ? translated("rows are missing") : ""};
  return {{}, decoded.limit ? GraphicFault::TooLarge : GraphicFault::Damaged, decoded.reason};
}

bool PNGWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches&, const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) {
    const auto bytes = encode_png_picture(picture, std::clamp(settings::PngCompression, 0, 9));
    return !bytes.empty() && file.write(bytes);
  });
}

}  // namespace vellum
