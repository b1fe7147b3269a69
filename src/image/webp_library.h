// What the WebP functions share below their interface: a file taken apart, pixels decoded into a place, and
// pixels encoded from a place. Nobody outside webp_*.cpp and the codec includes this.
#pragma once

#include <webp/demux.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "image/stored_webp.h"

namespace vellum {

struct WebpDemuxerDelete {
  void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using WebpDemuxer = std::unique_ptr<WebPDemuxer, WebpDemuxerDelete>;

/// The container taken apart and checked; null for a damaged or cut one. It refers to `file`.
WebpDemuxer open_webp(std::span<const std::uint8_t> file);

/// Where decoded pixels go: a rectangle of a picture.
struct WebpPlace {
  std::uint8_t* bottom = nullptr;  ///< the first byte of the bottom row, which comes first in memory
  std::size_t stride = 0;          ///< bytes from one row to the one above it
  std::uint32_t width = 0, height = 0;
  std::size_t bytes = 4;  ///< a pixel
};

/// The rectangle of a picture of 24 or 32 bits, which is written from now on.
WebpPlace place_in(Picture& picture, std::uint32_t x, std::uint32_t y, std::uint32_t width,
                   std::uint32_t height);

enum class WebpThreads { One, Two };

/// Decodes one image stream. False when it is damaged or not of the place's size.
bool decode_webp_into(std::span<const std::uint8_t> stream, const WebpPlace& place, WebpThreads threads);

/// Decodes what is there of a stream that is cut off; the number of its rows, from the top.
std::uint32_t decode_webp_part(std::span<const std::uint8_t> stream, const WebpPlace& place);

/// The canvas while the frame is shown, on that of the frame before it; null where it can't be made.
Picture compose_webp(const StoredWebp::Frame& frame, const StoredWebp::Frame& before, const Picture& ground);

/// Pixels to be encoded: blue, green, red, and alpha where there are 4 bytes a pixel.
struct WebpPixels {
  const std::uint8_t* top = nullptr;
  std::ptrdiff_t stride = 0;  ///< bytes from one row to the one below it; negative where rows lie bottom up
  std::uint32_t width = 0, height = 0;
  std::size_t bytes = 4;  ///< a pixel
};

struct WebpEncoding {
  bool lossless = false;  ///< every color stays
  int quality = 75;       ///< 0 to 100; of a lossless stream the effort
  WebpThreads threads = WebpThreads::One;
  bool exact = true;  ///< lossless: colors under alpha 0 stay too
  int method = 4;     ///< 0 (fast) to 6 (small)
};

/// A file of one image; empty when it can't be made.
std::vector<std::uint8_t> encode_webp_pixels(const WebpPixels& pixels, const WebpEncoding& encoding);

}  // namespace vellum
