// A PNG file as one picture: what the graphic-file module for PNG needs, and no more.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "base/file.h"
#include "image/png_decode.h"

namespace vellum {

/// The image of a PNG file: depths as image/png_header.h says, tRNS not applied, rows that are missing zero.
/// CRCs are not looked at. The picture keeps its stream for its source where `owner` keeps the file.
PngDecoded read_png_picture(std::span<const std::uint8_t> file,
                            std::shared_ptr<const FileContent> owner = nullptr);
/// A picture of header and color table alone that describes the file; null when its header or palette is
/// damaged.
Picture read_png_information(std::span<const std::uint8_t> file);

/// A whole PNG file with the picture: to 8 bits a palette (greys in order: a grey image), 24 bits true color,
/// 32 bits with alpha. `level`: 0 (stored) to 9 (smallest). Empty when memory was exhausted.
std::vector<std::uint8_t> encode_png_picture(const Picture& picture, int level);

}  // namespace vellum
