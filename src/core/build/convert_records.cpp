#include "core/build/convert_records.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "base/fields.h"
#include "base/translation.h"
#include "core/build/build_animation.h"
#include "core/build/carried_chunks.h"
#include "core/chunks/chunk_policy.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/document_colors.h"
#include "core/edit/frame_layer.h"
#include "core/edit/picture_fitting.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "core/model/compose.h"
#include "core/model/frame_time.h"
#include "core/model/kind_table.h"
#include "core/model/loops.h"
#include "core/model/played_frames.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

bool fail(Host& host, const char* reason, FaultKind kind = FaultKind::Misuse) {
  return host.fail({kind, 0, -1, -1, reason});
}

/// A frame on its way from one kind to the other.
struct Moved {
  std::size_t entry;  ///< in its document
  FrameTime time;
  Picture own;                      ///< as it is there
  std::vector<std::uint8_t> table;  ///< transparency of that
  std::uint32_t dispose = 0;        ///< as its document has it, where that is idle too
};

/// A conversion under way.
struct Conversion {
  const DocumentWindow& from;
  DocumentWindow& to;
  Host& host;
  DocumentKind kind;
  std::vector<Moved> frames{};
  std::vector<FrameLayer> layers{};  ///< of the frames, in true color
  Extent canvas{};
  std::uint32_t plays = 0;
  FrameClock clock{};
  bool indexed = false;  ///< pictures stay as they are
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
    Moved frame{entry, frame_time(record, source.kind, source.ticks), picture_of(record),
                source.kind == DocumentKind::MING ? image_transparency(record) : source.table};
    FrameLayer layer = frame_layer_of(source, record);
    if (!has_rows(layer.picture)) return fail(conversion.host, translated("an image has lost its picture"));
    if (frame.own.bits() <= 8 && is_opaque_table(frame.table)) layer.picture = opaque_true_color(frame.own);
    frame.dispose = layer.dispose;
    conversion.frames.push_back(std::move(frame));
    conversion.layers.push_back(std::move(layer));
  }
  return !conversion.frames.empty() ||
         fail(conversion.host, translated("there is no image in this document"));
}

// ------------------------------------------------------------------------------------- what a kind can hold

/// An MNG lays every image over what is there, or over a cleared canvas. By the classic rules it has no
/// place for alpha but in whole canvases.
bool mng_holds(const FrameLayer& frame, const FrameLayer*, Extent canvas) {
  if (frame.dispose != 0) return false;
  const bool opaque = frame.picture.bits() == 24;
  if (settings::ClassicPlayback == 0) return opaque || frame.over || frame.clears;
  return covers_canvas(frame, canvas) || (opaque && !frame.clears);
}

/// An animated PNG begins with its whole canvas, and clears one where that is all of one frame.
bool apng_holds(const FrameLayer& frame, const FrameLayer* before, Extent canvas) {
  const bool replaces = !frame.over || frame.picture.bits() == 24;
  if (!before || !frame.clears || (replaces && covers_canvas(frame, canvas))) return true;
  return before->clears || covers_canvas(*before, canvas);
}

bool webp_holds(const FrameLayer& frame, const FrameLayer*, Extent canvas) {
  return frame.clears && covers_canvas(frame, canvas);
}

/// Whether every frame, which is settled, can go over as it is.
bool holds(const Conversion& conversion) {
  if (conversion.kind == DocumentKind::PING) return true;
  const auto fits = conversion.kind == DocumentKind::MING   ? mng_holds
                    : conversion.kind == DocumentKind::APNG ? apng_holds
                                                            : webp_holds;
  const auto& layers = conversion.layers;
  for (std::size_t i = 0; i < layers.size(); ++i)
    if (!fits(layers[i], i == 0 ? nullptr : &layers[i - 1], conversion.canvas)) return false;
  return true;
}

/// Frames become what they show. In later rounds of a loop that is what they showed in the first, as it
/// plays.
bool compose(Conversion& conversion) {
  if (!canvases_fit(conversion.frames.size(), conversion.canvas))
    return fail(conversion.host, translated("the frames are too large together"), FaultKind::Limit);
  const Progress progress(conversion.host, string_text(StringId::BuildingCaption));
  StraightCanvases canvases(conversion.from);
  std::map<std::size_t, Picture> shown;
  for (std::size_t i = 0; i < conversion.frames.size(); ++i) {
    if (conversion.host.stopped()) return false;
    const std::size_t entry = conversion.frames[i].entry;
    Picture& canvas = shown[entry];
    if (!canvas) canvas = canvases.next(conversion.from.list.record(entry));
    if (!canvas) return fail(conversion.host, translated("memory is exhausted"), FaultKind::Limit);
    FrameLayer& layer = conversion.layers[i];
    layer.picture = canvas;
    layer.offset = {};
    layer.dispose = 0;
    layer.over = false;
    layer.clears = true;
    conversion.frames[i].dispose = 0;
    progress.step(i + 1, conversion.frames.size());
  }
  return true;
}

/// What an animated PNG can't place is cut off, and the first frame becomes the whole canvas.
bool fit_to_canvas(Conversion& conversion) {
  for (std::size_t i = 0; i < conversion.layers.size(); ++i) {
    FrameLayer& layer = conversion.layers[i];
    const Picture before = layer.picture;
    layer = cut_to(layer, conversion.canvas);
    if (i == 0 && layer.picture && !covers_canvas(layer, conversion.canvas)) {
      const Picture deep =
          layer.picture.bits() == 32 ? layer.picture : PictureToTrueColorAlpha(layer.picture);
      layer.picture = PictureExtendCanvas(deep, conversion.canvas.width, conversion.canvas.height,
                                          layer.offset.x, layer.offset.y, 0);
      layer.offset = {};
    }
    if (!layer.picture) return fail(conversion.host, translated("memory is exhausted"), FaultKind::Limit);
    if (layer.picture.handle().shares_with(before.handle())) continue;
    conversion.frames[i].own = {};
    conversion.frames[i].dispose = 0;
  }
  return true;
}

/// Behind the frame in front of it an animated PNG clears the canvas of one that needs that.
void clear_behind(std::vector<FrameLayer>& layers, Extent canvas) {
  for (std::size_t i = 1; i < layers.size(); ++i) {
    const bool replaces = !layers[i].over || layers[i].picture.bits() == 24;
    if (layers[i].clears && !(replaces && covers_canvas(layers[i], canvas))) layers[i - 1].dispose = 1;
  }
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

/// By what headers say: of images that no file of the kind can hold nothing is decoded.
bool fits_kind(const Conversion& conversion) {
  const DocumentWindow& from = conversion.from;
  Extent size = document_size(from.list, from.document);
  for (std::size_t i = 0; i < from.list.size() && !is_animation(from.document.kind); ++i)
    if (is_image_entry(from.document.kind, from.list.record(i).tag)) {
      const Picture picture = picture_of(from.list.record(i));
      size = {picture.width(), picture.height()};
    }
  const std::int64_t most = kind_row(conversion.kind).mostPixels;
  return (size.width <= most && size.height <= most) ||
         conversion.host.fail({FaultKind::Limit, 0, -1, -1,
                               translated("the image is wider or higher than ") + std::to_string(most) +
                                   translated(" pixels")});
}

bool prepare(Conversion& conversion) {
  if (!fits_kind(conversion) || !gather(conversion)) return false;
  if (conversion.kind == DocumentKind::PING && conversion.frames.size() > 1)
    return fail(conversion.host, translated("the document has several images"));
  const Picture first = conversion.layers[0].picture;
  conversion.canvas = is_animation(conversion.from.document.kind) && conversion.kind != DocumentKind::PING
                          ? document_size(conversion.from.list, conversion.from.document)
                          : Extent{first.width(), first.height()};
  settle_clearing(conversion.layers, conversion.canvas);
  const bool composed = !holds(conversion);
  if (composed && !compose(conversion)) return false;
  if (conversion.kind == DocumentKind::APNG) {
    if (!fit_to_canvas(conversion)) return false;
    clear_behind(conversion.layers, conversion.canvas);
  }
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

// ------------------------------------------------------------------------------------------ the new document

/// Where the next chunk goes that tells of the document: behind the header and the acTL; in a WebP a profile
/// behind the header, the others at the end.
std::size_t carried_place(const DocumentWindow& to, ChunkTag tag, std::size_t carried) {
  if (to.document.kind == DocumentKind::WEBP) return tag == tag::ICCP ? 1 : to.list.size();
  return carried + (to.document.kind == DocumentKind::MING ? 1 : static_cast<std::size_t>(to.document.caret));
}

/// What `from` tells beside its pixels; what has no place in the new kind is told to the host, texts that a
/// WebP lacks together.
bool insert_carried(DocumentWindow& to, const DocumentWindow& from, Host* host) {
  const DocumentKind kind = to.document.kind;
  const std::size_t caret = static_cast<std::size_t>(to.document.caret);
  std::size_t carried = 0;
  for (std::size_t i = 0; i < from.list.size(); ++i) {
    const ChunkRecord& old = from.list.record(i);
    if (!tells_of_document(old.tag)) continue;
    const auto record = carried_chunk(old, kind);
    if (!record || (stands_once(record->tag, kind) && chunk_count_tag(to.list, record->tag) != 0)) {
      const bool summed = is_text(old.tag) && kind == DocumentKind::WEBP;
      if (host && !summed) host->add_note(mending_note(Mending::LeftOut, old.tag, i));
      continue;
    }
    if (chunk_list_insert(to.list, to.document, carried_place(to, record->tag, carried), *record) == 0)
      return false;
    ++carried;
  }
  const std::size_t lost = kind == DocumentKind::WEBP ? texts_lost(from, kind) : 0;
  if (host && lost > 0) host->add_note(filled(StringId::TextsNotKept, {std::to_string(lost)}));
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
  conversion.clock.kind = conversion.kind;
  if (!BeginAnimation(to, iterations_of(conversion), 0, *build_number(conversion.kind))) return false;
  if (conversion.kind == DocumentKind::WEBP) return true;
  if (conversion.kind == DocumentKind::MING) {
    conversion.clock.ticks = exact_ticks(conversion.frames);
    change_record(to.list, 0, [&](ChunkRecord& header) { header.ticksPerSecond = conversion.clock.ticks; });
  }
  return insert_carried(to, conversion.from, &conversion.host);
}

bool add(Conversion& conversion, std::size_t index) {
  const Moved& frame = conversion.frames[index];
  const FrameLayer& layer = conversion.layers[index];
  const bool hides_all = layer.picture.bits() == 24 && covers_canvas(layer, conversion.canvas);
  const bool clears = layer.clears && !hides_all;
  const std::uint32_t dispose = layer.dispose != 0 ? layer.dispose : frame.dispose;
  const AddFrameOptions options{kFrameDispose | kFrameBlend | kFrameTransparency, dispose,
                                layer.over ? 1u : 0u, 0, clears};
  const std::size_t at =
      AddFrame(conversion.to, conversion.indexed ? frame.own : layer.picture, -1, nullptr, layer.delay,
               layer.offset.x, layer.offset.y, static_cast<std::uint32_t>(index), &options);
  if (at == 0) return false;
  change_record(conversion.to.list, at - 1, [&](ChunkRecord& record) {
    conversion.clock.put_time(record, frame.time);
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

void put_background(Conversion& conversion) {
  const Colour color = document_background(conversion.from.list, conversion.from.document);
  if (color != document_background(conversion.to.list, conversion.to.document))
    put_document_background(conversion.to, color);
}

void tell_delays(const Conversion& conversion) {
  const auto tell = [&](StringId text, std::size_t frames) {
    if (frames > 0) conversion.host.add_note(filled(text, {count_text(StringId::OneFrame, frames)}));
  };
  tell(StringId::DelaysRounded, conversion.clock.rounded);
  tell(StringId::DelaysCut, conversion.clock.cut);
}

bool build(Conversion& conversion) {
  const Progress progress(conversion.host, string_text(StringId::BuildingCaption));
  if (!begin(conversion)) return false;
  for (std::size_t i = 0; i < conversion.frames.size(); ++i) {
    if (conversion.host.stopped()) return false;
    if (!add(conversion, i))
      return fail(conversion.host, translated("a frame is too large for this kind, or memory is exhausted"),
                  FaultKind::Limit);
    progress.step(i + 1, conversion.frames.size());
  }
  if (!EndAnimation(conversion.to, iterations_of(conversion))) return false;
  if (conversion.plays > 0) put_loop_plays(conversion.to, conversion.plays);
  if (conversion.indexed && conversion.kind == DocumentKind::APNG)
    put_colors(conversion.to, conversion.frames[0].own, conversion.frames[0].table);
  put_background(conversion);
  if (conversion.kind == DocumentKind::WEBP &&
      !insert_carried(conversion.to, conversion.from, &conversion.host))
    return fail(conversion.host, translated("memory is exhausted"), FaultKind::Limit);
  chunk_list_close_change(conversion.to.list, conversion.to.document);
  tell_delays(conversion);
  return true;
}

}  // namespace

bool make_still(DocumentWindow& to, const DocumentWindow& from, const Picture& picture,
                const std::vector<std::uint8_t>& table) {
  to.document.kind = DocumentKind::PING;
  if (!to.document.fileName.empty())
    to.document.fileName.replace_extension(kind_row(DocumentKind::PING).extensions.front());
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
    if (is_text(record.tag) && !carried_chunk(record, kind)) ++lost;
  }
  return lost;
}

bool convert_document(const DocumentWindow& from, DocumentWindow& to, DocumentKind kind, Host& host) {
  if (kind != DocumentKind::PING && !build_number(kind))
    return fail(host, translated("there is no such kind of document"));
  Conversion conversion{from, to, host, kind};
  to.document.thumbScale = from.document.thumbScale;
  const QuietList quiet(to.list);
  if (!prepare(conversion)) return false;
  if (kind != DocumentKind::PING) return build(conversion);
  const Moved& frame = conversion.frames[0];
  return conversion.indexed ? make_still(to, from, frame.own, frame.table)
                            : make_still(to, from, conversion.layers[0].picture);
}

}  // namespace vellum
