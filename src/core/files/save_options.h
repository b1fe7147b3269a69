// What a save depends on beside the document: taken from the settings once, before anything is written.
#pragma once

#include <filesystem>

namespace vellum {

struct SaveOptions {
  int compression = 9;                       ///< of PNG streams, 0 to 9
  bool updateTime = true;                    ///< tIME gets the time of the save
  bool animationTexts = true;                ///< text chunks go into an animated PNG
  bool identify = false;                     ///< an MNG gets a comment that tells who made it
  std::filesystem::path identificationFile;  ///< the text of that comment; empty: the account's name
  bool backup = false;                       ///< what stood at the path is copied to a sibling first
  int webpQuality = 75;                      ///< 0 to 100; counts where frames are written with loss
  bool webpLossless = false;
  bool webpMixed = false;  ///< each frame is tried with and without loss
};

/// As the settings are, within their ranges.
SaveOptions save_options();

}  // namespace vellum
