#include "core/convert_records.h"

#include <algorithm>

#include "base/limits.h"
#include "core/chunk_layout.h"
#include "core/frame_layer.h"
#include "core/loops.h"
#include "core/new_chunk.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

bool fail(Host& host, const char* reason, FaultKind kind = FaultKind::Misuse) {
  return host.fail({kind, 0, -1, -1, reason});
}

bool gather(const DocumentWindow& window, std::vector<FrameLayer>& frames, Host& host) {
  const DocumentKind kind = window.document.kind;
  const FrameSource source = frame_source_of(window);
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (!is_image_entry(kind, record.tag)) continue;
    FrameLayer frame = frame_layer_of(source, record);
    if (!has_rows(frame.picture)) return fail(host, "an image has lost its picture");
    // An image of an MNG that clears the canvas ends the one before.
    if (kind == DocumentKind::MING && std::exchange(frame.dispose, 0) == 1 && !frames.empty())
      frames.back().dispose = 1;
    frames.push_back(std::move(frame));
  }
  return !frames.empty() || fail(host, "there is no image in this document");
}

bool compose(std::vector<FrameLayer>& frames, Extent canvas, Host& host) {
  if (are_whole_canvases(frames, canvas)) return true;
  const std::uint64_t bytes = picture_stride(canvas.width, 32) * std::uint64_t{canvas.height};
  if (bytes > kMaximumPictureBytes || bytes * frames.size() > kMaximumDocumentBytes)
    return fail(host, "the frames are too large together", FaultKind::Limit);
  return make_whole_canvases(frames, canvas) || fail(host, "memory is exhausted", FaultKind::Limit);
}

// ----------------------------------------------------------------------------------------------------- the
// other kinds

/// A conversion under way.
struct Conversion {
  const DocumentWindow& from;
  DocumentWindow& to;
  std::vector<FrameLayer> frames{};
  Extent canvas{};
  bool alpha = false;  ///< a picture has 32 bits
};

bool append(Conversion& conversion, const ChunkRecord& record) {
  return chunk_list_append(conversion.to.list, conversion.to.document, record) != 0;
}

bool append_default(Conversion& conversion, ChunkTag tag, std::uint32_t number = 0) {
  ChunkRecord record;
  NewChunkArgument argument;
  argument.number = number;
  return new_chunk(conversion.to, record, tag, argument) && append(conversion, record);
}

bool append_texts(Conversion& conversion) {
  static constexpr ChunkTag carried[] = {tag::tEXt, tag::zTXt, tag::iTXt, tag::tIME};
  for (std::size_t i = 0; i < conversion.from.list.size(); ++i) {
    ChunkRecord record = conversion.from.list.record(i);
    if (std::ranges::find(carried, record.tag) == std::end(carried)) continue;
    record.owner = nullptr;
    if (!append(conversion, record)) return false;
  }
  return true;
}

bool append_png_header(Conversion& conversion) {
  ChunkRecord record;
  new_chunk(conversion.to, record, tag::IHDR);
  record.width = conversion.canvas.width;
  record.height = conversion.canvas.height;
  record.colorType = conversion.alpha ? 6 : 2;
  return append(conversion, record);
}

bool append_image(Conversion& conversion, const FrameLayer& frame) {
  ChunkRecord record;
  return frame_record_of(conversion.to, frame, record) && append(conversion, record);
}

// PING

bool png_holds(const std::vector<FrameLayer>&, Extent) { return true; }

bool png_front(Conversion& conversion) { return append_png_header(conversion) && append_texts(conversion); }

bool png_back(Conversion& conversion) { return append_default(conversion, tag::IEND); }

// APNG

bool apng_holds(const std::vector<FrameLayer>& frames, Extent canvas) {
  return std::ranges::all_of(frames, [canvas](const FrameLayer& frame) {
    return frame.offset.x >= 0 && frame.offset.y >= 0 &&
           std::int64_t{frame.offset.x} + frame.picture.width() <= canvas.width &&
           std::int64_t{frame.offset.y} + frame.picture.height() <= canvas.height;
  });
}

bool apng_front(Conversion& conversion) {
  ChunkRecord control;
  new_chunk(conversion.to, control, tag::acTL);
  control.numPlays = GetIterations(conversion.from.list, conversion.from.document);
  return append_png_header(conversion) && append(conversion, control) && append_texts(conversion);
}

// MING

/// An MNG lays every image over what is there, or over a cleared canvas.
bool mng_holds(const std::vector<FrameLayer>& frames, Extent) {
  return std::ranges::all_of(frames, [](const FrameLayer& frame) {
    return frame.dispose == 0 && (frame.over || frame.picture.bits() == 24);
  });
}

/// Plays of the animation as a LOOP around the images; none for one play.
std::optional<std::uint32_t> loop_count(const Conversion& conversion) {
  const std::uint32_t plays = GetIterations(conversion.from.list, conversion.from.document);
  if (plays == 1 || conversion.frames.size() < 2) return std::nullopt;
  return plays == 0 ? kLoopForEver : plays;
}

bool mng_front(Conversion& conversion) {
  ChunkRecord header;
  new_chunk(conversion.to, header, tag::MHDR);
  header.frameWidth = conversion.canvas.width;
  header.frameHeight = conversion.canvas.height;
  const auto loops = loop_count(conversion);
  return append(conversion, header) && append_texts(conversion) &&
         (!loops || append_default(conversion, tag::LOOP, *loops));
}

bool mng_back(Conversion& conversion) {
  return (!loop_count(conversion) || append_default(conversion, tag::ENDL)) &&
         append_default(conversion, tag::MEND);
}

// WEBP

bool webp_front(Conversion& conversion) {
  const DocumentWindow& from = conversion.from;
  ChunkRecord record;
  new_chunk(conversion.to, record, tag::WEBH);
  WebpHeaderFields& header = record.webpHeader;
  header.canvasWidth = conversion.canvas.width;
  header.canvasHeight = conversion.canvas.height;
  header.loopCount = GetIterations(from.list, from.document);
  header.colorType = conversion.alpha ? 6 : 2;
  header.bitsPerPixel = conversion.alpha ? 32 : 24;
  header.backgroundColor = document_background(from.list, from.document);
  return append(conversion, record);
}

bool webp_back(Conversion&) { return true; }  // nothing stands behind the frames

/// How a document of a kind is made from frames.
struct TargetRow {
  DocumentKind kind;
  /// Whether the kind can express these frames as they are.
  bool (*holds)(const std::vector<FrameLayer>& frames, Extent canvas);
  bool (*front)(Conversion& conversion);
  bool (*back)(Conversion& conversion);
};

constexpr TargetRow kTargets[] = {
    {DocumentKind::PING, png_holds, png_front, png_back},
    {DocumentKind::APNG, apng_holds, apng_front, png_back},
    {DocumentKind::MING, mng_holds, mng_front, mng_back},
    {DocumentKind::WEBP, are_whole_canvases, webp_front, webp_back},
};

bool prepare(Conversion& conversion, const TargetRow& target, Host& host) {
  const DocumentWindow& from = conversion.from;
  if (!gather(from, conversion.frames, host)) return false;
  if (target.kind == DocumentKind::PING && conversion.frames.size() > 1)
    return fail(host, "the document has several images");
  const Picture& first = conversion.frames[0].picture;
  conversion.canvas = is_animation(from.document.kind) && target.kind != DocumentKind::PING
                          ? document_size(from.list, from.document)
                          : Extent{first.width(), first.height()};
  if (!target.holds(conversion.frames, conversion.canvas) &&
      !compose(conversion.frames, conversion.canvas, host))
    return false;
  conversion.alpha =
      std::ranges::any_of(conversion.frames, [](const FrameLayer& f) { return f.picture.bits() == 32; });
  return true;
}

}  // namespace

bool convert_document(const DocumentWindow& from, DocumentWindow& to, DocumentKind kind, Host& host) {
  const auto target = std::ranges::find(kTargets, kind, &TargetRow::kind);
  if (target == std::end(kTargets)) return fail(host, "there is no such kind of document");
  Conversion conversion{from, to};
  to.document.kind = kind;
  to.document.thumbScale = from.document.thumbScale;
  if (!prepare(conversion, *target, host)) return false;
  bool good = target->front(conversion);
  for (const FrameLayer& frame : conversion.frames) good = good && append_image(conversion, frame);
  if (!good || !target->back(conversion))
    return fail(host, "the document has too many frames", FaultKind::Limit);
  chunk_list_close_change(to.list, to.document);
  return true;
}

}  // namespace vellum
