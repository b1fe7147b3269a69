#include "core/convert_records.h"

#include <algorithm>

#include "base/limits.h"
#include "core/chunk_layout.h"
#include "core/new_chunk.h"
#include "core/png_reading.h"
#include "core/whole_canvases.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

bool fail(Host& host, const char* reason, FaultKind kind = FaultKind::Misuse) {
  return host.fail({kind, 0, -1, -1, reason});
}

/// What the frames of a document have in common.
struct Source {
  const DocumentWindow& window;
  std::vector<std::uint8_t> table;  ///< transparency of the document's pictures
  std::uint32_t ticks = 1000;       ///< of an MNG, to a second
};

Source source_of(const DocumentWindow& window) {
  Source source{window, {}};
  ChunkRecord header, transparency;
  if (chunk_find_first(window.list, tag::IHDR, &header) != kNoEntry &&
      chunk_find_first(window.list, tag::tRNS, &transparency) != kNoEntry)
    source.table = transparency_table(raw_payload(transparency), png_header_of(header));
  if (chunk_find_first(window.list, tag::MHDR, &header) != kNoEntry) source.ticks = header.ticksPerSecond;
  return source;
}

void put_still(const ChunkRecord&, std::vector<FrameLayer>&) {}

void put_apng(const ChunkRecord& record, std::vector<FrameLayer>& frames) {
  frames.back().dispose = std::min<std::uint32_t>(record.frameControl.dispose, 2);
  frames.back().over = record.frameControl.blend == 1;
}

/// Framing modes 3 and 4 clear the canvas in front of the image (MNG 1.0, "FRAM").
void put_mng(const ChunkRecord& record, std::vector<FrameLayer>& frames) {
  frames.back().over = true;
  const bool clears = (record.flags & CRF_FRAM) && record.image->framBlock.framingMode >= 3;
  if (clears && frames.size() > 1) frames[frames.size() - 2].dispose = 1;
}

/// How images of a kind are shown.
struct SourceRow {
  DocumentKind kind;
  void (*put)(const ChunkRecord& record, std::vector<FrameLayer>& frames);  ///< the last frame's manner
};

constexpr SourceRow kSources[] = {
    {DocumentKind::PING, put_still},
    {DocumentKind::APNG, put_apng},
    {DocumentKind::MING, put_mng},
};

/// The picture in true color, its transparency as alpha: that of the image itself in an MNG, else the
/// document's.
Picture shown_picture(const Source& source, const ChunkRecord& record) {
  const Picture picture = picture_of(record);
  if (!has_rows(picture) || picture.bits() == 32) return picture;
  std::vector<std::uint8_t> own;
  if (source.window.document.kind == DocumentKind::MING && (record.flags & CRF_TRNS))
    own = transparency_table(
        std::span(record.image->trans).first(std::min<std::size_t>(record.image->transBytes, 256)),
        png_header_of(record));
  const auto& table = source.window.document.kind == DocumentKind::MING ? own : source.table;
  return picture.bits() == 24 && table.empty() ? picture : PictureWithTransparency(picture, table);
}

bool gather(const DocumentWindow& window, std::vector<FrameLayer>& frames, Host& host) {
  const DocumentKind kind = window.document.kind;
  const auto row = std::ranges::find(kSources, kind, &SourceRow::kind);
  if (row == std::end(kSources)) return fail(host, "documents of this kind can't be converted");
  const Source source = source_of(window);
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (!is_image_entry(kind, record.tag)) continue;
    FrameLayer frame{shown_picture(source, record), frame_offset(record, kind),
                     frame_delay_ms(record, kind, source.ticks)};
    if (!has_rows(frame.picture)) return fail(host, "an image has lost its picture");
    frames.push_back(std::move(frame));
    row->put(record, frames);
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

bool append_header(const DocumentWindow& from, DocumentWindow& to, Extent canvas, bool alpha) {
  ChunkRecord record;
  new_chunk(to, record, tag::WEBH);
  WebpHeaderFields& header = record.webpHeader;
  header.canvasWidth = canvas.width;
  header.canvasHeight = canvas.height;
  header.loopCount = document_plays(from.list, from.document);
  header.colorType = alpha ? 6 : 2;
  header.bitsPerPixel = alpha ? 32 : 24;
  header.backgroundColor = document_background(from.list, from.document);
  return chunk_list_append(to.list, to.document, record) != 0;
}

bool append_image(DocumentWindow& to, const FrameLayer& frame) {
  ChunkRecord record;
  NewChunkArgument argument;
  argument.picture = frame.picture.handle();
  if (!new_chunk(to, record, tag::WEBI, argument)) return false;
  record.webpImage.delay = frame.delay;
  record.webpImage.dispose = frame.dispose == 1;
  return chunk_list_append(to.list, to.document, record) != 0;
}

}  // namespace

bool convert_to_webp(const DocumentWindow& from, DocumentWindow& to, Host& host) {
  std::vector<FrameLayer> frames;
  if (!gather(from, frames, host)) return false;
  const bool still = from.document.kind == DocumentKind::PING;
  const Extent canvas = still ? Extent{frames[0].picture.width(), frames[0].picture.height()}
                              : document_size(from.list, from.document);
  if (!compose(frames, canvas, host)) return false;
  to.document.kind = DocumentKind::WEBP;
  to.document.thumbScale = from.document.thumbScale;
  const bool alpha = std::ranges::any_of(frames, [](const FrameLayer& f) { return f.picture.bits() == 32; });
  bool good = append_header(from, to, canvas, alpha);
  for (const FrameLayer& frame : frames) good = good && append_image(to, frame);
  if (!good) return fail(host, "the document has too many frames", FaultKind::Limit);
  chunk_list_close_change(to.list, to.document);
  return true;
}

}  // namespace vellum
