// WebP files in memory: what they are, their pixels, and new files from pixels. The functions know bytes and
// pictures; documents are the core's.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "image/picture.h"
#include "image/stored_webp.h"
#include "image/webp_container.h"

namespace vellum {

struct WebpInfo {
  std::uint32_t width = 0, height = 0;  ///< of the canvas, in pixels
  bool hasAlpha = false;
  bool isAnimation = false;
};

/// What the headers say; nothing when the bytes are no WebP stream.
std::optional<WebpInfo> WEBPGetInfoEx(std::span<const std::uint8_t> file);

/// The picture of a still file, 32 or 24 bits; null when it is damaged or passes a limit.
Picture WEBPDecodeBGRA(std::span<const std::uint8_t> file);
Picture WEBPDecodeBGR(std::span<const std::uint8_t> file);

/// A still file from pixels; empty on failure. `stride` is in bytes from one row to the one below it, and
/// negative where the rows of `pixels` lie bottom up. Quality is 0 to 100. Lossless files keep every color,
/// those under alpha 0 too.
std::vector<std::uint8_t> WEBPEncodeBGRA(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                         std::uint32_t height, std::ptrdiff_t stride, int quality);
std::vector<std::uint8_t> WEBPEncodeBGR(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                        std::uint32_t height, std::ptrdiff_t stride, int quality);
std::vector<std::uint8_t> WEBPEncodeLosslessBGRA(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                                 std::uint32_t height, std::ptrdiff_t stride);
std::vector<std::uint8_t> WEBPEncodeLosslessBGR(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                                std::uint32_t height, std::ptrdiff_t stride);

/// A still file from a picture by the function for its depth: with alpha from 32 bits, without below;
/// indexed pictures go through their color table. `smallest`: what is lossless takes the most effort that
/// there is.
std::vector<std::uint8_t> encode_webp_still(const Picture& picture, bool lossless, int quality,
                                            bool smallest = false);

/// What the start callback is told.
struct WebpAnimation {
  std::uint32_t canvasWidth = 0, canvasHeight = 0;
  std::uint32_t bitsPerPixel = 32;  ///< 24 when the file says that nothing in it is transparent
  std::uint32_t loopCount = 0;      ///< 0: for ever
  std::uint32_t frameCount = 0;
  Colour backgroundColor = 0;  ///< 0xAABBGGRR
};

/// What the frame callback is told.
struct WebpFrame {
  std::int64_t timestamp = 0;  ///< milliseconds at which the frame ends
  Picture canvas;              ///< the whole canvas while the frame is shown: 32 bits, straight alpha
  std::uint32_t dispose = 0;   ///< 1: the frame's place is cleared behind it; 0: it stays
  KeptWebp stored{};           ///< what the canvas came from, where the file has an owner
};

/// Calls `start` once and `frame` for each frame in order, on this thread; either may refuse by false. False
/// for a still or damaged file, a refusal, or exhausted memory. `owner` keeps the bytes of the file alive.
bool WEBPGetAnimation(std::span<const std::uint8_t> file,
                      const std::function<bool(const WebpAnimation&)>& start,
                      const std::function<bool(const WebpFrame&)>& frame,
                      const std::shared_ptr<const FileContent>& owner = nullptr);

/// An animation that is to be written.
struct WebpParameters {
  std::uint32_t canvasWidth = 0, canvasHeight = 0;
  std::uint32_t loopCount = 0;  ///< 0: for ever; at most 65535 is written
  std::uint32_t frameCount = 0;
  Colour backgroundColor = 0;  ///< 0xAABBGGRR
  bool lossless = false;
  int quality = 75;
  bool smallest = false;                ///< lossless frames take the most effort that there is
  bool mixed = false;                   ///< each frame is tried with and without loss, the smaller stays
  std::span<const WebpExtra> extras{};  ///< chunks beside the frames
};

/// A frame that is asked for.
struct WebpFrameRequest {
  bool last = false;                ///< in: all frames are there; only `timestamp`, the whole time, is wanted
  std::function<Picture()> canvas;  ///< out: gives the whole canvas, 32 bits, where it is needed
  std::int64_t timestamp = 0;       ///< out: milliseconds at which the frame starts
  std::uint32_t dispose = 0;        ///< out: 1: the frame's place is cleared behind it
  KeptWebp stored{};                ///< out: what the canvas came from; null where it came from nothing
  bool anew = false;                ///< out: all the same its bytes are not to be written again
};

/// Writes an animation of `frameCount` frames. `next` is asked for one frame after the other, and once more
/// with `last` set; it may refuse by false. Count, order and times of frames stay as they are given. A frame
/// that lies on what it lay on when it was stored is written with the bytes that it had. Each other is the
/// rectangle that differs from what is on the canvas, so it shows exactly its canvas; one that came from a
/// file and can't keep its bytes loses nothing, so that those behind it may keep theirs. False on failure,
/// also of the sink.
bool WEBPWriteAnimation(const WebpParameters& parameters, const std::function<bool(WebpFrameRequest&)>& next,
                        const Sink& sink);

}  // namespace vellum
