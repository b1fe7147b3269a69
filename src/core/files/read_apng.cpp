// Animated PNG (APNG extension, now in the third edition of the PNG standard): frames from fcTL, IDAT and
// fdAT chunks.
#include <algorithm>
#include <atomic>
#include <utility>

#include "base/byte_order.h"
#include "base/parallel.h"
#include "base/translation.h"
#include "core/files/png_reading.h"
#include "core/settings.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

/// A frame as the file has it.
struct StreamFrame {
  const StreamChunk* control = nullptr;  ///< null for a default image outside the animation
  FrameControl fields;
  std::vector<std::span<const std::uint8_t>> data;
};

/// The frames of a file, gathered in its order.
struct StreamFrames {
  std::vector<StreamFrame> frames;
  StreamFrame defaultImage;
  std::uint32_t sequence = 0;  ///< the number that comes next over fcTL and fdAT together
};

FrameControl parse_frame_control(std::span<const std::uint8_t> p) {
  FrameControl control;
  control.sequence = read_be32(&p[0]);
  control.frameWidth = read_be32(&p[4]);
  control.frameHeight = read_be32(&p[8]);
  control.xOffset = read_be32(&p[12]);
  control.yOffset = read_be32(&p[16]);
  control.delayNum = read_be16(&p[20]);
  control.delayDen = read_be16(&p[22]);
  control.dispose = p[24] > 2 ? 0 : p[24];
  control.blend = p[25] > 1 ? 0 : p[25];
  return control;
}

const char* frame_fault(const FrameControl& control, const PngHeader& header) {
  if (control.frameWidth == 0 || control.frameHeight == 0) return translated("the frame has no pixels");
  if (std::uint64_t{control.xOffset} + control.frameWidth > header.width ||
      std::uint64_t{control.yOffset} + control.frameHeight > header.height)
    return translated("the frame lies outside the canvas");
  return nullptr;
}

/// "The frame control for the first frame covers the whole image" where its pixels are the IDAT's.
bool covers_canvas(const FrameControl& control, const PngHeader& header) {
  return control.xOffset == 0 && control.yOffset == 0 && control.frameWidth == header.width &&
         control.frameHeight == header.height;
}

bool take_frame_control(PngReading& reading, const StreamChunk& chunk, StreamFrames& found) {
  if (chunk.data.size() != 26)
    return reading.fail(chunk, translated("the length is not that of a frame control"));
  StreamFrame frame{&chunk, parse_frame_control(chunk.data), {}};
  if (frame.fields.sequence != found.sequence++)
    return reading.fail(chunk, translated("the sequence number is wrong"));
  if (!found.frames.empty() && found.frames.back().data.empty())
    return reading.fail(*found.frames.back().control, translated("the frame has no data"));
  if (const char* fault = frame_fault(frame.fields, reading.header)) return reading.fail(chunk, fault);
  found.frames.push_back(std::move(frame));
  return true;
}

bool take_frame_data(PngReading& reading, const StreamChunk& chunk, StreamFrames& found, bool image_seen) {
  if (chunk.data.size() < 4) return reading.fail(chunk, translated("the sequence number is missing"));
  if (read_be32(chunk.data.data()) != found.sequence++)
    return reading.fail(chunk, translated("the sequence number is wrong"));
  if (found.frames.empty() || !image_seen)
    return reading.fail(chunk, translated("the frame data has no frame in front of it"));
  found.frames.back().data.push_back(chunk.data.subspan(4));
  return true;
}

/// The image data belongs to the frame whose control stands in front of the first IDAT, or to no frame.
bool take_image_data(PngReading& reading, const StreamChunk& chunk, StreamFrames& found, bool first_frame) {
  if (!first_frame) {
    found.defaultImage.data.push_back(chunk.data);
    return true;
  }
  StreamFrame& frame = found.frames.front();
  if (!covers_canvas(frame.fields, reading.header))
    return reading.fail(*frame.control, translated("the first frame does not cover the canvas"));
  frame.data.push_back(chunk.data);
  return true;
}

bool gather_frames(PngReading& reading, StreamFrames& found) {
  bool image_seen = false, image_is_frame = false;
  for (const StreamChunk& chunk : reading.chunks) {
    bool good = true;
    if (chunk.tag == tag::fcTL) {
      good = take_frame_control(reading, chunk, found);
    } else if (chunk.tag == tag::fdAT) {
      good = take_frame_data(reading, chunk, found, image_seen);
    } else if (chunk.tag == tag::IDAT) {
      if (!std::exchange(image_seen, true)) image_is_frame = !found.frames.empty();
      good = take_image_data(reading, chunk, found, image_is_frame);
    }
    if (!good) return false;
  }
  if (!image_seen) return reading.fail(reading.chunks.back(), translated("the file has no image"));
  if (found.frames.empty())
    return reading.fail(reading.chunks.back(), translated("the animation has no frames"));
  if (found.frames.back().data.empty())
    return reading.fail(*found.frames.back().control, translated("the frame has no data"));
  return true;
}

PngHeader frame_header(const PngHeader& header, const FrameControl& control) {
  PngHeader own = header;
  own.width = control.frameWidth;
  own.height = control.frameHeight;
  return own;
}

std::uint64_t picture_bytes(const PngReading& reading, const StreamFrames& found) {
  std::uint64_t bytes = 0;
  const std::uint32_t bits = png_picture_bits(reading.header);
  for (const StreamFrame& frame : found.frames)
    bytes += std::uint64_t{picture_stride(frame.fields.frameWidth, bits)} * frame.fields.frameHeight;
  return bytes;
}

bool pictures_fit_memory(const PngReading& reading, const StreamFrames& found) {
  // Whoever plays the animation makes such a canvas, also of frames with one bit a pixel.
  const std::uint64_t canvas =
      std::uint64_t{reading.header.width} * reading.header.height * kPlayedPixelBytes;
  if (const char* fault = decoding_fault(canvas, reading.chunks.back().offset))
    return reading.fail(reading.chunks.front(), fault, FaultKind::Limit);
  return picture_bytes(reading, found) <= kMaximumKeptBytes ||
         reading.fail(reading.chunks.front(), translated("the frames together are too large"),
                      FaultKind::Limit);
}

/// Frames decoded between two steps of the progress bar: enough to keep all cores busy.
constexpr std::size_t kFramesAtOnce = 64;

/// What decoding a frame gave; its rows may be let go as soon as they are known to be right.
struct DecodedFrame {
  ChunkHandle picture;
  const char* reason = nullptr;
  bool isShort = false, limit = false;
};

DecodedFrame decode_frame(const PngReading& reading, const StreamFrame& frame, bool packed) {
  const PngHeader header = frame_header(reading.header, frame.fields);
  const PngDecoded decoded =
      (packed ? png_check : png_decode)(header, frame.data, reading.palette, PngShortData::Zeros);
  return {kept_with_stream(decoded, header, frame.data, reading.owner), decoded.reason, decoded.isShort,
          decoded.limit};
}

/// Leaves the check to whoever shows the frames. False, with nothing done, where one can't be right.
bool leave_unchecked(const PngReading& reading, const StreamFrames& found,
                     std::vector<ChunkHandle>& pictures) {
  for (const StreamFrame& frame : found.frames) {
    const PngHeader header = frame_header(reading.header, frame.fields);
    const PngDecoded expected = png_expect(header, frame.data, reading.palette);
    if (!expected.picture) break;
    pictures.push_back(
        kept_with_stream(expected, header, frame.data, reading.owner, nullptr, StreamSeen::NotYet));
  }
  if (pictures.size() != found.frames.size()) pictures.clear();
  for (const ChunkHandle& picture : pictures) reading.unchecked->streams.push_back(stored_image_of(picture));
  return !pictures.empty();
}

/// Decodes all frames, side by side.
bool decode_frames(PngReading& reading, const StreamFrames& found, std::vector<ChunkHandle>& pictures) {
  std::vector<DecodedFrame> decoded(found.frames.size());
  std::atomic<bool> damaged = false;
  const bool packed = stay_packed(decoded.size(), picture_bytes(reading, found));
  if (reading.unchecked && leave_unchecked(reading, found, pictures)) return true;
  for (std::size_t first = 0; first < decoded.size(); first += kFramesAtOnce) {
    parallel_for(std::min(kFramesAtOnce, decoded.size() - first), [&](std::size_t k) {
      if (damaged) return;
      decoded[first + k] = decode_frame(reading, found.frames[first + k], packed);
      if (!decoded[first + k].picture) damaged = true;
    });
    reading.progress.step(std::min(first + kFramesAtOnce, decoded.size()), decoded.size());
  }
  for (std::size_t i = 0; i < decoded.size(); ++i) {
    if (!decoded[i].picture && decoded[i].reason)
      return reading.fail(*found.frames[i].control, decoded[i].reason,
                          decoded[i].limit ? FaultKind::Limit : FaultKind::Damaged);
    if (decoded[i].isShort)
      reading.host.add_note(translated("Frame ") + std::to_string(i + 1) +
                            translated(" has less image data than its size asks for."));
    pictures.push_back(std::move(decoded[i].picture));
  }
  return true;
}

bool decode_default_image(PngReading& reading, const StreamFrames& found) {
  if (found.defaultImage.data.empty()) return true;
  PngDecoded decoded = png_decode(reading.header, found.defaultImage.data, reading.palette);
  reading.window.document.defaultImage =
      kept_with_stream(decoded, reading.header, found.defaultImage.data, reading.owner);
  if (decoded.picture) return true;
  const auto chunk = std::ranges::find(reading.chunks, tag::IDAT, &StreamChunk::tag);
  return reading.fail(*chunk, decoded.reason, decoded.limit ? FaultKind::Limit : FaultKind::Damaged);
}

bool append_frame(PngReading& reading, const StreamFrame& frame, const ChunkHandle& picture) {
  ChunkRecord record;
  record.tag = tag::IDAT;
  record.data = picture;
  record.size = static_cast<std::int32_t>(std::min<std::size_t>(picture.size(), 0x7FFFFFFF));
  put_png_header(record, frame_header(reading.header, frame.fields));
  record.frameControl = frame.fields;
  return reading.append(record, *frame.control);
}

bool is_dropped_text(ChunkTag tag) {
  return settings::APNGIncludeTextChunks == 0 && (tag == tag::tEXt || tag == tag::zTXt || tag == tag::iTXt);
}

}  // namespace

bool read_apng(PngReading& reading) {
  reading.window.document.kind = DocumentKind::APNG;
  StreamFrames found;
  std::vector<ChunkHandle> pictures;
  if (!gather_frames(reading, found) || !pictures_fit_memory(reading, found) ||
      !decode_frames(reading, found, pictures) || !decode_default_image(reading, found))
    return false;
  std::size_t frame = 0;
  for (const StreamChunk& chunk : reading.chunks) {
    bool good = true;
    if (chunk.tag == tag::fcTL) {
      good = append_frame(reading, found.frames[frame], pictures[frame]);
      ++frame;
    } else if (chunk.tag != tag::IDAT && chunk.tag != tag::fdAT && !is_dropped_text(chunk.tag)) {
      good = append_plain_chunk(reading, chunk);
    }
    if (!good) return false;
  }
  return true;
}

}  // namespace vellum
