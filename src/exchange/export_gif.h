// What both ways of writing a GIF share.
#pragma once

#include "exchange/exporter.h"
#include "exchange/gif_writer.h"

namespace vellum {

struct GifOptions {
  bool dither = false;
  std::uint32_t threshold = 128;  ///< alpha at or below it is transparent
  Colour mask = 0xFFFFFF;         ///< color of the transparent entry
  bool best = false;              ///< a computed palette is refined
};

/// Hundredths of a second, at least one.
std::uint32_t gif_delay(std::uint32_t milliseconds);
/// Head, and how often it plays; the background is nearest to that of the document, or to the mask color.
Bytes gif_beginning(const ExportRun& run, const GifOptions& options, const GifColors& colors);
/// Index of the background, as above.
std::uint8_t gif_background(const DocumentWindow& window, Colour mask, const GifColors& colors);
/// One byte a pixel, rows from the top.
std::vector<std::uint8_t> indexes_of(const Picture& picture);
/// A picture in the colors of a GIF. Null when memory is exhausted.
Picture in_gif_colors(const Picture& picture, const GifColors& colors, bool dither);

/// Writes the animation as frames cut to what changes. False with the reason kept in the host.
bool write_optimized_gif(ExportRun& run, const GifOptions& options, const Sink& sink);

}  // namespace vellum
