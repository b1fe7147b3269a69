// From the image data of a PNG, of a frame of an animated PNG, or of an image in an MNG, to a picture.
#pragma once

#include <span>
#include <vector>

#include "image/picture.h"
#include "image/png_header.h"

namespace vellum {

struct PngDecoded {
  Picture picture;               ///< null on failure
  const char* reason = nullptr;  ///< why, as a sentence part
  bool isShort = false;          ///< rows were missing and are 0
  bool limit = false;            ///< the failure is a limit of this program and not a fault of the file
  bool exact = false;            ///< the stream holds this image and not a byte more
  bool judged = true;            ///< whether `exact` was asked at all; else `png_check` tells it
};

/// What an image whose stream is whole, but holds fewer rows than the header asks for, is.
enum class PngShortData {
  Fault,
  Zeros,  ///< the missing rows are 0: black, transparent or index 0
};

/// Decodes an image. `data` are the payloads of its IDAT (or fdAT) chunks in file order, which together are
/// one zlib stream. `palette` is the color table of indexed and grey pictures. The picture has
/// png_picture_bits(header): samples of 16 bits are cut to their high byte, 2 bits come out as 8 with the
/// values 0 to 3, rows go bottom-up, trailing bits of a row are 0.
///
/// Memory: the picture, and of a small or damaged image the joined stream, where there are several payloads,
/// and the filtered rows that are not yet undone; all after the lengths were checked.
PngDecoded png_decode(const PngHeader& header, std::span<const std::span<const std::uint8_t>> data,
                      const Palette& palette, PngShortData short_data = PngShortData::Fault);

/// The same findings without the rows: the picture is of header and color table alone.
PngDecoded png_check(const PngHeader& header, std::span<const std::span<const std::uint8_t>> data,
                     const Palette& palette, PngShortData short_data = PngShortData::Fault);

/// What can be said before the stream is looked at: a picture of header and color table alone, or why there
/// will be none.
PngDecoded png_expect(const PngHeader& header, std::span<const std::span<const std::uint8_t>> data,
                      const Palette& palette);

}  // namespace vellum
