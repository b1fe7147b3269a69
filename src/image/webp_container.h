// The container of a WebP file (RIFF): its chunks, and a file from images and other chunks.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/file.h"
#include "image/picture.h"

namespace vellum {

/// Pixels of a canvas or frame in either direction (VP8 data format).
inline constexpr std::uint32_t kMostWebpPixels = 16383;

/// One chunk as it lies in the file; the tag is the big-endian number of its four letters.
struct WebpChunk {
  std::uint32_t tag = 0;
  std::span<const std::uint8_t> data;
};

/// The chunks of a RIFF form of type WEBP that are whole, in order; nothing for other bytes.
std::vector<WebpChunk> webp_chunks(std::span<const std::uint8_t> file);

/// Whether the tag is one of those that make up image and animation, which no other chunk may have.
bool is_webp_image_chunk(std::uint32_t tag);

/// Whether it is a frame, or the pixels of a still file.
bool is_webp_frame(std::uint32_t tag);
/// The chunks inside a frame; none for other chunks.
std::vector<WebpChunk> webp_frame_chunks(const WebpChunk& chunk);
/// Of chunks that lie one behind the other, as in a file behind its head, the part that holds the pixels
/// (ALPH and VP8, or VP8L); empty where that is not in one piece.
std::span<const std::uint8_t> webp_pixel_part(std::span<const std::uint8_t> chunks);
/// The same of a still file.
std::span<const std::uint8_t> webp_still_pixels(std::span<const std::uint8_t> file);

/// A chunk beside the images, and how many frames stand in front of it. A color profile is written in front
/// of all images, camera data and XMP behind them, wherever they are said to stand.
struct WebpExtra {
  std::uint32_t tag = 0;
  std::span<const std::uint8_t> data;
  std::size_t behind = 0;
};

/// A frame: a file of one image, or the chunks of its pixels alone, and how it is shown.
struct WebpFramePart {
  std::span<const std::uint8_t> still;
  std::uint32_t x = 0, y = 0, width = 0, height = 0;  ///< x and y are even
  std::uint32_t duration = 0;                         ///< milliseconds, 24 bits
  bool dispose = false, blend = false;
};

/// What a file is made of.
struct WebpContents {
  std::uint32_t width = 0, height = 0;
  bool animated = false;
  Colour background = 0;    ///< 0xAABBGGRR, of an animation
  std::uint32_t loops = 0;  ///< of an animation
  std::vector<WebpFramePart> frames;
  std::vector<WebpExtra> extras;
};

/// Writes the file; a still picture without extras as its encoder made it. False where it would be longer
/// than the container can tell (4 GiB), where a frame holds no image, and where the sink fails.
bool write_webp_file(const WebpContents& contents, const Sink& sink);

class WebpAssembly;

/// An animation that is written while its frames come. What fails once fails all that follows.
class WebpAnimationFile {
 public:
  /// `contents` without its frames, of which there will be `frames`; the sink outlives this.
  WebpAnimationFile(const WebpContents& contents, std::size_t frames, const Sink& sink);
  ~WebpAnimationFile();
  WebpAnimationFile(const WebpAnimationFile&) = delete;
  WebpAnimationFile& operator=(const WebpAnimationFile&) = delete;

  /// False as `write_webp_file`.
  bool add(const WebpFramePart& frame);
  /// Puts what is known now into the head.
  bool end();

 private:
  std::unique_ptr<WebpAssembly> assembly_;
};

}  // namespace vellum
