// What a save depends on beside the document: taken from the settings once, before anything is written.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "image/png_header.h"

namespace vellum {

/// Makes the zlib stream of an image as png_encode does. Asked on several threads; empty on a failure.
using EncodeImage = std::function<std::vector<std::uint8_t>(const PngHeader& header, const Picture& picture,
                                                            std::optional<std::array<std::uint16_t, 3>> key)>;

struct SaveOptions {
  int compression = 9;                       ///< of PNG streams, 0 to 9
  bool updateTime = true;                    ///< tIME gets the time of the save
  bool animationTexts = true;                ///< text chunks go into an animated PNG
  bool identify = false;                     ///< an MNG gets a comment that tells who made it
  std::filesystem::path identificationFile;  ///< the text of that comment; empty: the account's name
  bool backup = false;                       ///< what stood at the path is copied to a sibling first
  int webpQuality = 75;                      ///< 0 to 100; counts where frames are written with loss
  bool webpLossless = false;
  bool webpMixed = false;     ///< each frame is tried with and without loss
  bool webpSmallest = false;  ///< lossless frames take the most effort that there is
  EncodeImage encode = {};    ///< empty: png_encode at `compression`
  bool keepStored = true;     ///< images that nobody changed are written as they were stored
  bool keepStreams = false;   ///< the records keep the streams that were written, for the next save
};

/// As the settings are, within their ranges.
SaveOptions save_options();

}  // namespace vellum
