#include "image/codecs.h"

#include "base/translation.h"
#include "image/picture_operations.h"
#include "image/settings.h"

namespace vellum {

GraphicReading reading_of_size(std::uint32_t width, std::uint32_t height, const Palette* palette,
                               std::uint32_t bits, Part part, std::size_t file_bytes) {
  if (part == Part::Header) return {PictureCreateHeaderOnly(width, height, palette, bits), {}, {}};
  const std::uint64_t bytes = std::uint64_t{picture_stride(width, bits)} * height;
  if (const char* fault = decoding_fault(bytes, file_bytes)) return {{}, GraphicFault::TooLarge, fault};
  GraphicReading reading{PictureCreate(width, height, palette, bits), {}, {}};
  if (!reading.picture) reading = {{}, GraphicFault::TooLarge, translated("the picture is too large")};
  return reading;
}

GraphicReading cut_reading(GraphicReading reading, std::uint32_t rows, std::uint32_t height) {
  if (rows == 0) return {{}, GraphicFault::Damaged, translated("the file ends before the first row")};
  if (rows < height)
    reading.told = std::to_string(height - rows) + translated(" of ") + std::to_string(height) +
                   translated(" rows are missing");
  return reading;
}

Palette palette_from_bgr(const std::uint8_t* table, std::size_t colours, std::size_t size) {
  Palette palette{};
  for (std::size_t i = 0; i < std::min<std::size_t>(colours, 256); ++i)
    for (std::size_t channel = 0; channel < 3; ++channel)
      palette[3 * i + channel] = table[size * i + 2 - channel];
  return palette;
}

Picture without_alpha(const Picture& picture) {
  if (picture.bits() != 32) return picture;
  return PictureFlattenAlpha(picture, static_cast<Colour>(settings::DefaultBackgroundColour) & 0xFFFFFF);
}

Picture true_colour_shown(const Picture& picture) {
  const Picture flat = without_alpha(picture);
  if (!flat || flat.bits() == 24) return flat;
  // Not PictureToTrueColor at once: that one makes 1 bit black and white.
  return PictureToTrueColor(PictureToTrueColorAlpha(flat));
}

bool has_grey_ramp(const Picture& picture) {
  return picture.bits() == 8 && palette_of(picture) == grey_ramp();
}

}  // namespace vellum
