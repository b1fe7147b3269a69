// An animation of still pictures.
#pragma once

#include <filesystem>
#include <span>

#include "base/host.h"
#include "core/build/frame_stream.h"
#include "image/graphic_file.h"
#include "image/held_picture.h"
#include "operations/parameters.h"

namespace vellum {

/// What a person may say of an animation of pictures: delay, plays, whole, colors (0: as they are), dither.
extern const Parameters kBuild;

struct StillsBuild {
  DocumentKind kind = DocumentKind::APNG;
  std::uint32_t delay = 100;  ///< ms, of each frame
  std::uint32_t plays = 0;    ///< 0 for ever
  bool whole = false;         ///< animated PNG: frames are not cut to what changes
};

/// The picture of a file, with its transparency as alpha; of an animation the first one.
GraphicReading read_still(const std::filesystem::path& file, std::uint32_t enough = 0);

/// What a file shows first, with its transparency: of an open document with frames the first canvas, else
/// the picture of the file itself, at a size that is enough for `side` pixels a side. Null where neither is.
Picture first_shown(const DocumentWindow* window, const std::filesystem::path& file, std::uint32_t side);

/// A canvas on which pictures of any size are shown, each alone.
struct StillCanvas {
  Extent size;
  DocumentKind kind = DocumentKind::APNG;
  bool clear = false;              ///< something of the frame before would show through
  std::optional<Colour> ground{};  ///< around a smaller picture that must fill the canvas; none: transparent
};

/// A frame of a picture (with its transparency, as PictureWithTransparency takes it) in the left top corner.
/// The first one of an animated PNG makes its canvas, and those of a WebP replace what is there: they fill
/// the canvas. With a ground they keep their depth.
StreamedFrame placed_still(const Picture& picture, std::vector<std::uint8_t> transparency, std::size_t number,
                           const StillCanvas& canvas);

/// Makes an empty window an animation of these pictures (asked for some at a time), each alone on the canvas,
/// which has the size of the largest. Behind the first one an animated PNG has what changes alone, where all
/// have one size and depth. False when there is none, one is lost or too large, memory is exhausted or the
/// user stopped it; nothing is then left of it.
bool build_from_stills(DocumentWindow& window, std::span<const HeldPicture> pictures,
                       const StillsBuild& build, Host& host);
/// The same with the values of `kBuild`.
bool build_from_stills(DocumentWindow& window, std::span<const HeldPicture> pictures,
                       const FieldValues& values, DocumentKind kind, Host& host);

}  // namespace vellum
