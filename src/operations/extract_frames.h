// Frames of an animation as picture files.
#pragma once

#include <filesystem>

#include "base/host.h"
#include "operations/frames.h"

namespace vellum {

struct Extraction {
  std::filesystem::path folder;
  std::string stem;
  std::string extension = "png";  ///< of a graphic-file module, without a dot
  FrameList frames;
  bool composed = false;    ///< whole canvases in place of the images' own pictures
  bool numbered = true;     ///< off, with one frame: the stem alone
  bool sequential = true;   ///< numbers count frames; off: entries of the list
  std::uint32_t first = 1;  ///< number of the first frame, or entry
};

/// The file of each frame, in their order: "stem_00001.png".
std::vector<std::filesystem::path> extracted_names(const DocumentWindow& window,
                                                   const Extraction& extraction);
/// The same names, with " (2)" and so on behind those that are there already.
std::vector<std::filesystem::path> free_names(std::vector<std::filesystem::path> names);

/// The image's own picture, in true color with alpha where it has transparency.
Picture own_picture(const DocumentWindow& window, std::size_t entry);
/// The picture as a file of this extension takes it: formats without transparency get it over `background`,
/// and JPEG, BMP and PCX true color where `full` says so.
Picture picture_for_file(const Picture& picture, std::string_view extension, Colour background, bool full);

/// Writes the frames to these names and gives the number of files that were written; the rest was stopped by
/// the user or, after a message, by a failure.
std::size_t extract_frames(const DocumentWindow& window, const Extraction& extraction,
                           const std::vector<std::filesystem::path>& names, Host& host);

}  // namespace vellum
