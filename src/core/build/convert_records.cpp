#include "core/build/convert_records.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/build/build_animation.h"
#include "core/build/carried_chunks.h"
#include "core/chunks/chunk_policy.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/document_colors.h"
#include "core/edit/frame_layer.h"
#include "core/edit/picture_fitting.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "core/model/frame_time.h"
#include "core/model/loops.h"
#include "core/model/played_frames.h"
#include "core/model/record_picture.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

bool fail(Host& host, const char* reason, FaultKind kind = FaultKind::Misuse) {
  return host.fail({kind, 0, -1, -1, reason});
}

/// A frame on its way from one kind to the other.
struct Moved {
  FrameLayer layer;  ///< in true color
  FrameTime time;
  Picture own;                      ///< as it is in its document
  std::vector<std::uint8_t> table;  ///< transparency of that
};

/// A conversion under way.
struct Conversion {
  const DocumentWindow& from;
  DocumentWindow& to;
  Host& host;
  DocumentKind kind;
  std::vector<Moved> frames{};
  Extent canvas{};
  std::uint32_t plays = 0;
  std::uint32_t ticks = 1000;  ///< of an MNG that is made
  bool indexed = false;        ///< pictures stay as they are
};

bool is_opaque_table(const std::vector<std::uint8_t>& table) {
  return std::ranges::all_of(table, [](std::uint8_t alpha) { return alpha == 255; });
}

bool gather(Conversion& conversion) {
  const DocumentWindow& from = conversion.from;
  const FrameSource source = frame_source_of(from);
  const PlayedFrames played = played_frames(from);
  if (played.loopsLost) conversion.host.show(StringId::LoopsLost);
  conversion.plays = played.plays;
  for (const std::size_t entry : played.entries) {
    const ChunkRecord& record = from.list.record(entry);
    Moved frame{frame_layer_of(source, record), frame_time(record, source.kind, source.ticks),
                picture_of(record),
                source.kind == DocumentKind::MING ? image_transparency(record) : source.table};
    if (!has_rows(frame.layer.picture)) return fail(conversion.host, "an image has lost its picture");
    if (frame.own.bits() <= 8 && is_opaque_table(frame.table))
      frame.layer.picture = opaque_true_color(frame.own);
    // An image of an MNG clears the canvas before it is drawn; in the other kinds the frame in front does.
    if (source.kind == DocumentKind::MING && std::exchange(frame.layer.dispose, 0u) == 1 &&
        !conversion.frames.empty())
      conversion.frames.back().layer.dispose = 1;
    conversion.frames.push_back(std::move(frame));
  }
  return !conversion.frames.empty() || fail(conversion.host, "there is no image in this document");
}

// ------------------------------------------------------------------------------------- what a kind can hold

/// Previous is known to animated PNG files alone; an MNG lays every image over what is there, or over a
/// cleared canvas; a WebP has whole canvases.
bool holds(const Conversion& conversion) {
  const auto all = [&](const auto& fits) {
    return std::ranges::all_of(conversion.frames, [&](const Moved& frame) { return fits(frame.layer); });
  };
  switch (conversion.kind) {
    case DocumentKind::MING:
      return all([](const FrameLayer& frame) {
        return frame.dispose == 0 && (frame.over || frame.picture.bits() == 24);
      });
    case DocumentKind::WEBP:
      return all([&](const FrameLayer& frame) { return are_whole_canvases({frame}, conversion.canvas); });
    default:
      return true;
  }
}

bool compose(Conversion& conversion) {
  if (!canvases_fit(conversion.frames.size(), conversion.canvas))
    return fail(conversion.host, "the frames are too large together", FaultKind::Limit);
  const Progress progress(conversion.host, string_text(StringId::BuildingCaption));
  CanvasLeft left;
  std::size_t done = 0;
  for (Moved& frame : conversion.frames) {
    if (conversion.host.stopped()) return false;
    if (!make_whole_canvas(left, frame.layer, conversion.canvas))
      return fail(conversion.host, "memory is exhausted", FaultKind::Limit);
    progress.step(++done, conversion.frames.size());
  }
  return true;
}

/// Cuts off what an animated PNG can't place.
bool cut_to_canvas(Conversion& conversion) {
  for (Moved& frame : conversion.frames) {
    const Picture before = frame.layer.picture;
    frame.layer = cut_to(frame.layer, conversion.canvas);
    if (!frame.layer.picture) return fail(conversion.host, "memory is exhausted", FaultKind::Limit);
    if (frame.layer.picture.handle().data() != before.handle().data()) frame.own = {};
  }
  return true;
}

bool same_colors(const Moved& a, const Moved& b) {
  Palette first, second;
  return PictureGetPalette(a.own, first) == PictureGetPalette(b.own, second) && first == second &&
         a.table == b.table;
}

/// Whether indexed pictures can stay: an MNG has a palette for each image, a PNG one for all.
bool keeps_indexes(const Conversion& conversion) {
  const bool indexed = std::ranges::all_of(
      conversion.frames, [](const Moved& frame) { return frame.own && frame.own.bits() <= 8; });
  if (!indexed || conversion.kind == DocumentKind::WEBP) return false;
  return conversion.kind == DocumentKind::MING ||
         std::ranges::all_of(conversion.frames, [&](const Moved& frame) {
           return same_colors(frame, conversion.frames.front());
         });
}

bool prepare(Conversion& conversion) {
  if (!gather(conversion)) return false;
  if (conversion.kind == DocumentKind::PING && conversion.frames.size() > 1)
    return fail(conversion.host, "the document has several images");
  const Picture& first = conversion.frames[0].layer.picture;
  conversion.canvas = is_animation(conversion.from.document.kind) && conversion.kind != DocumentKind::PING
                          ? document_size(conversion.from.list, conversion.from.document)
                          : Extent{first.width(), first.height()};
  const bool composed = !holds(conversion);
  if (composed && !compose(conversion)) return false;
  if (conversion.kind == DocumentKind::APNG && !cut_to_canvas(conversion)) return false;
  conversion.indexed = !composed && keeps_indexes(conversion);
  return true;
}

// --------------------------------------------------------------------------------------------------- delays

/// Ticks that tell every delay exactly, 1000 where they do; 1000 too where that takes more than a million.
std::uint32_t exact_ticks(const std::vector<Moved>& frames) {
  constexpr std::uint64_t kUsual = 1000, kMost = 1'000'000;
  std::uint64_t ticks = 1;
  for (const Moved& frame : frames) {
    const std::uint64_t divisor = std::max<std::uint64_t>(std::gcd(frame.time.num, frame.time.den), 1);
    ticks = std::lcm(ticks, frame.time.den / divisor);
    if (ticks > kMost) return kUsual;
  }
  return static_cast<std::uint32_t>(kUsual % ticks == 0 ? kUsual : ticks);
}

/// Gives each frame of a WebP whole milliseconds; what was rounded off goes to the next one.
void round_times(std::vector<Moved>& frames) {
  double carried = 0;
  for (Moved& frame : frames) {
    const double wanted =
        1000.0 * static_cast<double>(frame.time.num) / static_cast<double>(frame.time.den) + carried;
    const double whole = std::max(std::round(wanted), 0.0);
    carried = wanted - whole;
    frame.time = {static_cast<std::uint64_t>(whole), 1000};
  }
}

// ------------------------------------------------------------------------------------------ the new document

/// Where the next chunk goes that tells of the document: behind the header and the acTL; in a WebP a profile
/// behind the header, the others at the end.
std::size_t carried_place(const DocumentWindow& to, ChunkTag tag, std::size_t carried) {
  if (to.document.kind == DocumentKind::WEBP) return tag == tag::ICCP ? 1 : to.list.size();
  return carried + (to.document.kind == DocumentKind::MING ? 1 : static_cast<std::size_t>(to.document.caret));
}

/// What `from` tells beside its pixels; what has no place in the new kind is told to the host. Texts that a
/// WebP lacks are asked about where the conversion is asked for.
bool insert_carried(DocumentWindow& to, const DocumentWindow& from, Host* host) {
  const DocumentKind kind = to.document.kind;
  const std::size_t caret = static_cast<std::size_t>(to.document.caret);
  std::size_t carried = 0;
  for (std::size_t i = 0; i < from.list.size(); ++i) {
    const ChunkRecord& old = from.list.record(i);
    if (!tells_of_document(old.tag)) continue;
    const auto record = carried_chunk(old, kind);
    if (!record || (stands_once(record->tag, kind) && chunk_count_tag(to.list, record->tag) != 0)) {
      if (host) host->add_note(mending_note(Mending::LeftOut, old.tag, i));
      continue;
    }
    if (chunk_list_insert(to.list, to.document, carried_place(to, record->tag, carried), *record) == 0)
      return false;
    ++carried;
  }
  if (kind != DocumentKind::WEBP) to.document.caret = static_cast<std::int32_t>(caret + carried);
  return true;
}

template <class Change>
void change_record(ChunkList& list, std::size_t at, const Change& change) {
  ChunkRecord record;
  if (!chunk_list_get(list, at, record)) return;
  change(record);
  record.description = chunk_description(record);
  chunk_list_put(list, at, record);
}

/// Iterations for the calls; an MNG of one image needs no loop.
std::int32_t iterations_of(const Conversion& conversion) {
  if (conversion.kind == DocumentKind::MING)
    return conversion.plays == 1 || conversion.frames.size() < 2 ? kNoLoop : 0;
  return static_cast<std::int32_t>(std::min(conversion.plays, kLoopForEver));
}

bool begin(Conversion& conversion) {
  DocumentWindow& to = conversion.to;
  if (!BeginAnimation(to, iterations_of(conversion), 0, *build_number(conversion.kind))) return false;
  if (conversion.kind == DocumentKind::WEBP) return true;
  if (conversion.kind == DocumentKind::MING) {
    conversion.ticks = exact_ticks(conversion.frames);
    change_record(to.list, 0, [&](ChunkRecord& header) { header.ticksPerSecond = conversion.ticks; });
  }
  return insert_carried(to, conversion.from, &conversion.host);
}

bool add(Conversion& conversion, std::size_t index) {
  const Moved& frame = conversion.frames[index];
  const FrameLayer& layer = frame.layer;
  // What shows through a picture in place of another is a cleared canvas.
  const bool clears = layer.dispose == 1 || (!layer.over && layer.picture.bits() == 32);
  const AddFrameOptions options{kFrameDispose | kFrameBlend | kFrameTransparency, layer.dispose,
                                layer.over ? 1u : 0u, 0, clears};
  const std::size_t at =
      AddFrame(conversion.to, conversion.indexed ? frame.own : layer.picture, -1, nullptr, layer.delay,
               layer.offset.x, layer.offset.y, static_cast<std::uint32_t>(index), &options);
  if (at == 0) return false;
  change_record(conversion.to.list, at - 1, [&](ChunkRecord& record) {
    set_frame_time(record, conversion.kind, conversion.ticks, frame.time);
    if (conversion.indexed && conversion.kind == DocumentKind::MING)
      put_image_transparency(record, frame.table);
  });
  return true;
}

/// The transparency of indexed frames, which was not told frame by frame.
void put_colors(DocumentWindow& to, const Picture& picture, const std::vector<std::uint8_t>& table) {
  if (picture.bits() > 8) return;
  DocumentColors colors{.colorType = 3, .bitDepth = static_cast<std::uint8_t>(picture.bits())};
  colors.colors = PictureGetPalette(picture, colors.palette);
  colors.transparency.assign(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(
                                                                table.size(), colors.colors)));
  put_document_colors(to, colors);
}

/// The count of a loop that ends.
void put_plays(Conversion& conversion) {
  const std::size_t at = chunk_find_first(conversion.to.list, tag::LOOP);
  if (at == kNoEntry || conversion.plays == 0) return;
  NewChunkArgument argument;
  argument.number = conversion.plays;
  ChunkRecord loop;
  if (!new_chunk(conversion.to, loop, tag::LOOP, argument)) return;
  loop.description = chunk_description(loop);
  chunk_list_put(conversion.to.list, at, loop);
}

void put_background(Conversion& conversion) {
  const Colour color = document_background(conversion.from.list, conversion.from.document);
  if (color != document_background(conversion.to.list, conversion.to.document))
    put_document_background(conversion.to, color);
}

bool build(Conversion& conversion) {
  const Progress progress(conversion.host, string_text(StringId::BuildingCaption));
  if (!begin(conversion)) return false;
  for (std::size_t i = 0; i < conversion.frames.size(); ++i) {
    if (conversion.host.stopped()) return false;
    if (!add(conversion, i))
      return fail(conversion.host, "a frame is too large for this kind, or memory is exhausted",
                  FaultKind::Limit);
    progress.step(i + 1, conversion.frames.size());
  }
  if (!EndAnimation(conversion.to, iterations_of(conversion))) return false;
  put_plays(conversion);
  if (conversion.indexed && conversion.kind == DocumentKind::APNG)
    put_colors(conversion.to, conversion.frames[0].own, conversion.frames[0].table);
  put_background(conversion);
  if (conversion.kind == DocumentKind::WEBP &&
      !insert_carried(conversion.to, conversion.from, &conversion.host))
    return fail(conversion.host, "memory is exhausted", FaultKind::Limit);
  chunk_list_close_change(conversion.to.list, conversion.to.document);
  return true;
}

}  // namespace

bool make_still(DocumentWindow& to, const DocumentWindow& from, const Picture& picture,
                const std::vector<std::uint8_t>& table) {
  to.document.kind = DocumentKind::PING;
  if (!to.document.fileName.empty()) to.document.fileName.replace_extension(".png");
  const auto append = [&](ChunkTag tag, const NewChunkArgument& argument = {}) {
    ChunkRecord record;
    return new_chunk(to, record, tag, argument) && chunk_list_append(to.list, to.document, record) != 0;
  };
  NewChunkArgument image;
  image.picture = picture.handle();
  if (!has_rows(picture) || !append(tag::IHDR)) return false;
  to.document.caret = 1;
  if (!insert_carried(to, from, nullptr) || !append(tag::IDAT, image) || !append(tag::IEND)) return false;
  to.document.caret = 0;
  header_take_picture(to, picture);
  put_colors(to, picture, table);
  chunk_list_close_change(to.list, to.document);
  to.document.dirty = true;
  return true;
}

std::size_t texts_lost(const DocumentWindow& from, DocumentKind kind) {
  std::size_t lost = 0;
  for (std::size_t i = 0; i < from.list.size(); ++i) {
    const ChunkRecord& record = from.list.record(i);
    const bool text = record.tag == tag::tEXt || record.tag == tag::zTXt || record.tag == tag::iTXt;
    if (text && !carried_chunk(record, kind)) ++lost;
  }
  return lost;
}

bool convert_document(const DocumentWindow& from, DocumentWindow& to, DocumentKind kind, Host& host) {
  if (kind != DocumentKind::PING && !build_number(kind))
    return fail(host, "there is no such kind of document");
  Conversion conversion{from, to, host, kind};
  to.document.thumbScale = from.document.thumbScale;
  const QuietList quiet(to.list);
  if (!prepare(conversion)) return false;
  if (kind == DocumentKind::WEBP) round_times(conversion.frames);
  if (kind != DocumentKind::PING) return build(conversion);
  const Moved& frame = conversion.frames[0];
  return conversion.indexed ? make_still(to, from, frame.own, frame.table)
                            : make_still(to, from, frame.layer.picture);
}

}  // namespace vellum
