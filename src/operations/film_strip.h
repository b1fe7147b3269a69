// Frames of an animation as cells of one picture, and back.
#pragma once

#include "base/host.h"
#include "operations/parameters.h"

namespace vellum {

struct FilmStrip {
  std::uint32_t columns = 0;                    ///< cells of a row; 0: all frames in one
  std::uint32_t cellWidth = 0, cellHeight = 0;  ///< pixels, 0: as the canvas
};

/// What is asked in front of a strip that is saved, and of one that is cut. Neither is an operation: one
/// makes a single picture of all frames, the other frames of a picture.
extern const Parameters kSaveStrip, kCutStrip;
FilmStrip film_strip_of(const FieldValues& values);

/// The canvas of each frame, in the order of the list, row by row from the top left; 24 bits. A canvas that
/// is larger than a cell is made smaller; it stands in the middle of its cell, on the background color. Null,
/// after a message, for a document without images and when memory is exhausted; null alone when the user
/// stops.
Picture film_strip(const DocumentWindow& window, const FilmStrip& strip, Host& host);

struct CutStrip {
  std::vector<Picture> cells;  ///< row by row
  std::size_t incomplete = 0;  ///< cells at the right and lower edges that were left out
};
/// Cuts a picture into cells of this size, each with the picture's depth and palette. No cells when it is
/// smaller than one, or memory is exhausted.
CutStrip cut_strip(const Picture& picture, std::uint32_t width, std::uint32_t height);

}  // namespace vellum
