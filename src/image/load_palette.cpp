#include "image/load_palette.h"

#include "image/graphic_file.h"
#include "image/palette_from_pictures.h"

namespace vellum {

std::optional<PaletteColors> load_palette(const std::filesystem::path& path, Host& host) {
  std::string reason;
  if (auto colors = read_palette_file(path, reason)) return colors;
  const GraphicReading reading = read_graphic_file(path.string());
  if (reading.fault == GraphicFault::UnknownKind) {
    host.show(StringId::NoPaletteInFile, {}, path.filename().string());
    return std::nullopt;
  }
  const Picture picture = told_reading(path, reading, host);
  if (!picture) return std::nullopt;
  return palette_of_picture(picture);
}

}  // namespace vellum
