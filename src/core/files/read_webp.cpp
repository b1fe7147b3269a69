#include "core/files/read_webp.h"

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/memory_budget.h"
#include "base/translation.h"
#include "core/chunks/new_chunk.h"
#include "core/files/png_reading.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

/// A frame whose rows may be let go.
struct ReadFrame {
  ChunkHandle canvas;
  std::int64_t end = 0;  ///< milliseconds
  std::uint32_t dispose = 0;
};

/// A file that is being read.
struct WebpReading {
  DocumentWindow& window;
  Host& host;
  const Progress& progress;
  std::span<const std::uint8_t> file;
  std::shared_ptr<const FileContent> owner;  ///< of its bytes; may be null
  std::vector<ReadFrame> frames;
  std::uint32_t frameCount = 0;
  std::vector<WebpExtra> extras{};  ///< chunks beside the images, in their order
  std::size_t nextExtra = 0;
  std::uint64_t unstored = 0;  ///< bytes of canvases that can't be made again from the file
  bool packed = false;         ///< what can be made again is not kept in memory
  bool told = false;           ///< the reason of a failure is kept already

  bool fail(const char* reason, FaultKind kind = FaultKind::Damaged) {
    told = true;
    return host.fail({kind, 0, -1, -1, reason});
  }
  bool append(const ChunkRecord& record) {
    return chunk_list_append(window.list, window.document, record) != 0 ||
           fail(translated("the file has too many frames"), FaultKind::Limit);
  }
};

bool append_header(WebpReading& reading, const WebpHeaderFields& fields) {
  ChunkRecord record;
  reading.window.document.kind = DocumentKind::WEBP;
  new_chunk(reading.window, record, tag::WEBH);
  record.webpHeader = fields;
  return reading.append(record);
}

/// The chunks of the file that hold no part of an image. What the program calls its own records by is no name
/// for raw bytes.
void gather_extras(WebpReading& reading) {
  std::set<ChunkTag> dropped;
  std::size_t images = 0;
  for (const WebpChunk& chunk : webp_chunks(reading.file)) {
    if (is_webp_frame(chunk.tag)) ++images;
    if (chunk.tag == tag::WEBH || chunk.tag == tag::WEBI)
      dropped.insert(chunk.tag);
    else if (!is_webp_image_chunk(chunk.tag))
      reading.extras.push_back({chunk.tag, chunk.data, chunk.tag == tag::ICCP ? 0 : images});
    for (const WebpChunk& inner : webp_frame_chunks(chunk))
      if (!is_webp_image_chunk(inner.tag)) dropped.insert(inner.tag);
  }
  tell_dropped(reading.host, dropped);
}

/// The entries of the chunks that stand in front of frame `images`.
bool append_extras(WebpReading& reading, std::size_t images) {
  for (; reading.nextExtra < reading.extras.size(); ++reading.nextExtra) {
    const WebpExtra& extra = reading.extras[reading.nextExtra];
    if (extra.behind > images) break;
    ChunkRecord record;
    record.tag = extra.tag;
    record.size = static_cast<std::int32_t>(extra.data.size());
    record.data = ChunkHandle::copy_of(extra.data);
    if (!reading.append(record)) return false;
  }
  return true;
}

bool append_frame(WebpReading& reading, const ChunkHandle& picture, std::int64_t delay,
                  std::uint32_t dispose) {
  ChunkRecord record;
  NewChunkArgument argument;
  argument.picture = picture;
  new_chunk(reading.window, record, tag::WEBI, argument);
  record.webpImage.delay = static_cast<std::uint32_t>(std::clamp<std::int64_t>(delay, 0, 0xFFFFFFFF));
  record.webpImage.dispose = dispose == 1;
  return reading.append(record);
}

/// Why pictures of so many bytes are not made for this file; false with it kept.
bool may_decode(WebpReading& reading, std::uint64_t bytes) {
  const char* const fault = decoding_fault(bytes, reading.file.size());
  return !fault || reading.fail(fault, FaultKind::Limit);
}

/// The picture of a still file, which may be decoded again from its bytes.
ChunkHandle kept_still(const WebpReading& reading, const Picture& picture) {
  StoredWebp::Frame frame;
  frame.pixels = webp_still_pixels(reading.file);
  if (!reading.owner || frame.pixels.empty()) return kept_picture(picture, nullptr);
  frame.canvasWidth = picture.width();
  frame.canvasHeight = picture.height();
  frame.area = {0, 0, static_cast<std::int32_t>(picture.width()),
                static_cast<std::int32_t>(picture.height())};
  frame.bits = picture.bits();
  frame.alone = frame.onNothing = true;
  return kept_picture(picture, std::make_shared<const StoredWebp>(frame, nullptr, reading.owner, picture));
}

bool read_still(WebpReading& reading, const WebpInfo& info) {
  if (!may_decode(reading, std::uint64_t{info.width} * info.height * 4)) return false;
  const Picture picture = info.hasAlpha ? WEBPDecodeBGRA(reading.file) : WEBPDecodeBGR(reading.file);
  if (!picture) return reading.fail(translated("the image data is damaged"));
  WebpHeaderFields header;
  header.canvasWidth = info.width;
  header.canvasHeight = info.height;
  header.colorType = info.hasAlpha ? 6 : 2;
  header.bitsPerPixel = info.hasAlpha ? 32 : 24;
  // A still file states no background.
  header.backgroundColor = static_cast<Colour>(settings::DefaultBackgroundColour);
  return append_header(reading, header) && append_extras(reading, 0) &&
         append_frame(reading, kept_still(reading, picture), 0, 0) && append_extras(reading, kNoEntry);
}

/// Frames that change little make canvases of few bytes.
std::uint64_t most_canvas_bytes(std::uint64_t file) {
  return std::clamp(file * kMaximumExpansion, kUnquestionedCanvasBytes, kMaximumKeptBytes);
}

bool start_animation(WebpReading& reading, const WebpAnimation& animation) {
  if (animation.frameCount < 1) return reading.fail(translated("there are no frames"));
  const std::uint64_t canvas = std::uint64_t{animation.canvasWidth} * animation.canvasHeight * 4;
  if (!may_decode(reading, canvas / 4 * kPlayedPixelBytes)) return false;
  if (std::max(animation.canvasWidth, animation.canvasHeight) > kMaximumDimension ||
      canvas > kMaximumPictureBytes || canvas * animation.frameCount > most_canvas_bytes(reading.file.size()))
    return reading.fail(translated("the frames are too large together"), FaultKind::Limit);
  if (animation.frameCount >= kMaximumEntries)
    return reading.fail(translated("the file has too many frames"), FaultKind::Limit);
  reading.frameCount = animation.frameCount;
  reading.packed = stay_packed(animation.frameCount, canvas * animation.frameCount);
  reading.frames.reserve(animation.frameCount);
  return append_header(
      reading, {animation.canvasWidth, animation.canvasHeight, animation.loopCount, animation.frameCount,
                animation.bitsPerPixel == 32 ? 6u : 2u, animation.bitsPerPixel, animation.backgroundColor});
}

bool take_frame(WebpReading& reading, const WebpFrame& frame) {
  if (!frame.stored) reading.unstored += frame.canvas.handle().size();
  if (!may_decode(reading, reading.unstored)) return false;
  const ChunkHandle canvas = kept_picture(frame.canvas, frame.stored);
  if (reading.packed && frame.stored) let_go(canvas);
  reading.frames.push_back({canvas, frame.timestamp, frame.dispose});
  reading.progress.step(reading.frames.size(), reading.frameCount);
  return true;
}

bool read_animation(WebpReading& reading) {
  const bool decoded = WEBPGetAnimation(
      reading.file, [&](const WebpAnimation& animation) { return start_animation(reading, animation); },
      [&](const WebpFrame& frame) { return take_frame(reading, frame); }, reading.owner);
  if (!decoded) return reading.told ? false : reading.fail(translated("the animation is damaged"));
  std::int64_t before = 0;
  for (std::size_t i = 0; i < reading.frames.size(); ++i) {
    const ReadFrame& frame = reading.frames[i];
    if (!append_extras(reading, i) || !append_frame(reading, frame.canvas, frame.end - before, frame.dispose))
      return false;
    before = frame.end;
  }
  return append_extras(reading, kNoEntry);
}

/// Whether something stands behind what the RIFF header counts (WebP container: size of what follows, and a
/// byte of padding where that is odd).
bool bytes_behind_end(std::span<const std::uint8_t> file) {
  const std::uint64_t size = read_le32(&file[4]);
  return file.size() > 8 + size + size % 2;
}

}  // namespace

bool read_webp(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
               std::shared_ptr<const FileContent> owner) {
  const auto info = WEBPGetInfoEx(file);
  if (!info)
    return host.fail(
        {FaultKind::Damaged, 0, -1, 0, translated("the header of a WebP file is missing or damaged")});
  const QuietList quiet(window.list);
  const Progress progress(host, string_text(StringId::Loading));
  WebpReading reading{window, host, progress, file, std::move(owner), {}};
  gather_extras(reading);
  if (!(info->isAnimation ? read_animation(reading) : read_still(reading, *info))) return false;
  chunk_list_close_change(window.list, window.document);
  if (bytes_behind_end(file)) host.add_note(string_text(StringId::BytesBehindEnd));
  return true;
}

}  // namespace vellum
