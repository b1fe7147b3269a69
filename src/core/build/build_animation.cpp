#include "core/build/build_animation.h"

#include <algorithm>
#include <array>

#include "core/chunks/new_chunk.h"
#include "core/edit/document_colors.h"
#include "core/edit/frame_layer.h"
#include "core/model/chunk_description.h"
#include "core/model/chunk_layout.h"
#include "core/model/kind_table.h"
#include "core/model/loops.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/png_form.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

/// In the order of the numbers.
constexpr DocumentKind kBuilds[] = {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP};

/// What a failure brings back. Lists share their records, so this costs a pointer an entry of a header, and
/// for a frame nothing but the caret is ever kept.
struct Before {
  explicit Before(DocumentWindow& changed)
      : window(changed), document(changed.document), list(changed.list) {}
  bool restore() const {
    window.document = document;
    window.list = list;
    return false;
  }
  DocumentWindow& window;
  Document document;
  ChunkList list;
};

bool insert_here(DocumentWindow& window, const ChunkRecord& record) {
  const auto at = static_cast<std::size_t>(std::max(window.document.caret, 0));
  if (chunk_list_insert(window.list, window.document, std::min(at, window.list.size()), record) == 0)
    return false;
  ++window.document.caret;
  return true;
}

bool insert_default(DocumentWindow& window, ChunkTag tag, std::uint32_t number = 0) {
  ChunkRecord record;
  NewChunkArgument argument;
  argument.number = number;
  return new_chunk(window, record, tag, argument) && insert_here(window, record);
}

bool begin_apng(DocumentWindow& window, std::int32_t iterations) {
  ChunkRecord control;
  if (!insert_default(window, tag::IHDR) || !new_chunk(window, control, tag::acTL)) return false;
  control.numPlays = static_cast<std::uint32_t>(std::max(iterations, 0));
  return insert_here(window, control);
}

bool begin_mng(DocumentWindow& window, std::int32_t iterations) {
  ChunkRecord header;
  if (!new_chunk(window, header, tag::MHDR)) return false;
  header.ticksPerSecond = 1000;
  if (!insert_here(window, header)) return false;
  return iterations == kNoLoop || insert_default(window, tag::LOOP, kLoopForEver);
}

bool begin_webp(DocumentWindow& window, std::int32_t iterations) {
  ChunkRecord header;
  if (!new_chunk(window, header, tag::WEBH)) return false;
  header.webpHeader.loopCount = static_cast<std::uint32_t>(std::max(iterations, 0));
  return insert_here(window, header);
}

/// A frame on its way into the document.
struct Frame {
  DocumentWindow& window;
  Picture picture;
  FrameOffset offset;
  std::int32_t transparent;
  std::uint32_t delay;
  bool first;
  const AddFrameOptions& options;

  bool has(AddFrameFlag flag) const { return (options.flags & flag) != 0; }
};

/// Tells whether an index is one of the picture's colors.
bool is_index(const Picture& picture, std::int32_t index) {
  return index >= 0 && static_cast<std::uint32_t>(index) < picture.colours();
}

/// All opaque up to the entry, which is not.
std::vector<std::uint8_t> transparent_entry(std::int32_t index) {
  std::vector<std::uint8_t> table(static_cast<std::size_t>(index) + 1, 255);
  table.back() = 0;
  return table;
}

bool insert_payload(DocumentWindow& window, std::size_t at, ChunkTag tag,
                    std::span<const std::uint8_t> bytes) {
  ChunkRecord record;
  record.tag = tag;
  if (!put_payload(record, bytes) || chunk_list_insert(window.list, window.document, at, record) == 0)
    return false;
  ++window.document.caret;
  return true;
}

/// PLTE and tRNS stand directly behind the IHDR.
bool insert_palette(Frame& frame) {
  Palette palette;
  PictureGetPalette(frame.picture, palette);
  const std::size_t bytes = std::size_t{3} << frame.picture.bits();
  if (!insert_payload(frame.window, 1, tag::PLTE, std::span(palette).first(bytes))) return false;
  if (!is_index(frame.picture, frame.transparent)) return true;
  return insert_payload(frame.window, 2, tag::tRNS, transparent_entry(frame.transparent));
}

bool settle_png_header(Frame& frame) {
  ChunkRecord header;
  const std::size_t at = chunk_find_first(frame.window.list, tag::IHDR, &header);
  if (at == kNoEntry) return false;
  header.colorType = color_type_of_bits(frame.picture.bits());
  header.bitDepth = static_cast<std::uint8_t>(std::min(frame.picture.bits(), 8u));
  header.description = chunk_description(header);
  chunk_list_put(frame.window.list, at, header);
  return frame.picture.bits() > 8 || insert_palette(frame);
}

/// For each index the entry of the palette with its color; nothing when a color is missing. The transparent
/// entries stand for each other and for nothing else.
std::optional<std::array<std::uint8_t, 256>> same_colors(const Picture& picture, std::int32_t transparent,
                                                         const Palette& palette, std::uint32_t colors,
                                                         std::span<const std::uint8_t> table) {
  Palette own;
  const std::uint32_t count = PictureGetPalette(picture, own), used = largest_index(picture) + 1;
  std::array<std::uint8_t, 256> to{};
  for (std::uint32_t i = 0; i < std::min(count, used); ++i) {
    const bool clear = is_index(picture, transparent) && static_cast<std::uint32_t>(transparent) == i;
    std::uint32_t k = 0;
    const auto fits = [&](std::uint32_t entry) {
      const std::uint8_t alpha = entry < table.size() ? table[entry] : 255;
      return clear ? alpha == 0
                   : alpha == 255 && std::equal(&own[3 * i], &own[3 * i] + 3, &palette[3 * entry]);
    };
    while (k < colors && !fits(k)) ++k;
    if (k == colors) return std::nullopt;
    to[i] = static_cast<std::uint8_t>(k);
  }
  return to;
}

/// A later indexed frame in the colors of the document, where that loses nothing; it keeps its own otherwise.
bool match_to_document(Frame& frame) {
  if (frame.picture.bits() > 8) return true;
  Palette palette;
  const std::uint32_t colors = chunk_find_palette(frame.window.list, palette);
  if (colors == 0 || (frame.transparent < 0 && has_colors(frame.picture, palette, colors))) return true;
  const auto to = same_colors(frame.picture, frame.transparent, palette, colors,
                              document_transparency(frame.window.list));
  if (!to) return true;
  const std::uint32_t bits = colors > 16 ? 8 : colors > 2 ? 4 : 1;
  Picture matched = create_rows(frame.picture.width(), frame.picture.height(), &palette, bits);
  const EditRows rows(matched);
  if (!rows) return false;
  const std::uint32_t own = frame.picture.bits(), width = matched.width();
  for (std::uint32_t y = 0; y < matched.height(); ++y) {
    const std::uint8_t* from = frame.picture.row(y);
    std::uint8_t* row = rows[y];
    for (std::uint32_t x = 0; x < width; ++x) put_index(row, x, bits, (*to)[get_index(from, x, own)]);
  }
  frame.picture = matched;
  return true;
}

bool fill_apng(Frame& frame, ChunkRecord& record) {
  if (!(frame.first ? settle_png_header(frame) : match_to_document(frame))) return false;
  record_take_picture(record, DocumentKind::APNG, frame.picture);
  const bool over = frame.has(kFrameBlend) ? frame.options.blend == 1 : frame.picture.bits() == 32;
  record.frameControl.blend = over ? 1 : 0;
  if (frame.has(kFrameDispose))
    record.frameControl.dispose = static_cast<std::uint8_t>(std::min(frame.options.dispose, 2u));
  return true;
}

void put_mng_transparency(const Frame& frame, ChunkRecord& record) {
  const auto key = static_cast<Colour>(frame.transparent);
  if (is_index(frame.picture, frame.transparent))
    put_image_transparency(record, transparent_entry(frame.transparent));
  else if (frame.picture.bits() == 24 && frame.transparent >= 0)
    put_image_transparency(record,
                           std::array<std::uint8_t, 6>{0, red_of(key), 0, green_of(key), 0, blue_of(key)});
}

bool fill_mng(Frame& frame, ChunkRecord& record) {
  record_take_picture(record, DocumentKind::MING, frame.picture);
  put_mng_transparency(frame, record);
  EmbeddedImage& image = record.image.edit();
  const bool clears = frame.has(kFrameTransparency) ? frame.options.transparency : frame.transparent != -1;
  image.framBlock.framingMode = clears ? 3 : 1;
  image.defiBlock.concreteFlag = 1;
  image.defiBytes = 12;  // object, two flags, the location
  record.flags |= CRF_FRAM | CRF_DEFI;
  return true;
}

bool fill_webp(Frame& frame, ChunkRecord& record) {
  ChunkRecord header;
  const std::size_t at = chunk_find_first(frame.window.list, tag::WEBH, &header);
  if (at == kNoEntry) return false;
  const std::uint32_t bits = frame.picture.bits();
  if (bits < 24) frame.picture = PictureToTrueColor(frame.picture);
  if (!frame.picture) return false;
  if (frame.first) {
    header.webpHeader.colorType = color_type_of_bits(bits);
    header.webpHeader.bitsPerPixel = bits;
    header.description = chunk_description(header);
    chunk_list_put(frame.window.list, at, header);
  }
  record_take_picture(record, DocumentKind::WEBP, frame.picture);
  if (frame.has(kFrameDispose)) record.webpImage.dispose = frame.options.dispose == 1;
  return true;
}

bool fill_frame(Frame& frame, ChunkRecord& record) {
  const DocumentKind kind = frame.window.document.kind;
  record.tag = image_tag(kind);
  const bool filled = kind == DocumentKind::APNG   ? fill_apng(frame, record)
                      : kind == DocumentKind::MING ? fill_mng(frame, record)
                                                   : fill_webp(frame, record);
  if (!filled) return false;
  SetFrameOffset(record, kind, frame.offset);
  const std::uint32_t ticks = kind == DocumentKind::MING ? ticks_per_second(frame.window.list) : 1000;
  set_frame_delay(record, kind, ticks, frame.delay);
  return true;
}

/// Whether the kind's canvas can hold the frame where it stands.
bool fits_canvas(const Frame& frame) {
  const std::int64_t most = kind_row(frame.window.document.kind).mostPixels;
  return std::int64_t{frame.offset.x} + frame.picture.width() <= most &&
         std::int64_t{frame.offset.y} + frame.picture.height() <= most;
}

/// The picture with these colors, and without what lies left and above of the canvas.
bool prepare(Frame& frame, const Palette* palette) {
  const auto number = build_number(frame.window.document.kind);
  if (!number || !has_rows(frame.picture)) return false;
  if (palette) PictureSetPalette(frame.picture, *palette);
  if (frame.window.document.kind != DocumentKind::MING) {
    const FrameLayer cut = cut_at_origin({frame.picture, frame.offset});
    frame.picture = cut.picture;
    frame.offset = cut.offset;
  }
  return frame.picture && fits_canvas(frame);
}

}  // namespace

std::int32_t iterations_for(DocumentKind kind, bool loop) {
  return loop ? 0 : kind == DocumentKind::MING ? kNoLoop : 1;
}

std::optional<std::uint32_t> build_number(DocumentKind kind) {
  const auto row = std::ranges::find(kBuilds, kind);
  if (row == std::end(kBuilds)) return std::nullopt;
  return static_cast<std::uint32_t>(row - kBuilds);
}

DocumentKind build_kind(std::uint32_t number) {
  if (number == kDefaultKind)
    number = static_cast<std::uint32_t>(std::clamp(settings::DefaultAnimationType, 0, 2));
  return number < std::size(kBuilds) ? kBuilds[number] : DocumentKind::None;
}

bool BeginAnimation(DocumentWindow& window, std::int32_t iterations, std::uint32_t, std::uint32_t kind) {
  const Before before(window);
  Document& document = window.document;
  document.kind = build_kind(kind);
  if (document.kind == DocumentKind::None) return before.restore();
  if (!document.fileName.empty())
    document.fileName.replace_extension(kind_row(document.kind).extensions.front());
  const bool begun = document.kind == DocumentKind::APNG   ? begin_apng(window, iterations)
                     : document.kind == DocumentKind::MING ? begin_mng(window, iterations)
                                                           : begin_webp(window, iterations);
  return begun || before.restore();
}

std::size_t AddFrame(DocumentWindow& window, const Picture& picture, std::int32_t transparent,
                     const Palette* palette, std::uint32_t delay, std::int32_t x, std::int32_t y,
                     std::uint32_t index, const AddFrameOptions* options) {
  static constexpr AddFrameOptions none;
  Frame frame{window, picture, {x, y}, transparent, delay, index == 0, options ? *options : none};
  if (!prepare(frame, palette)) return 0;
  // Only the first frame changes what stands in the list already.
  const std::optional<Before> before = frame.first ? std::optional<Before>(window) : std::nullopt;
  const std::int32_t caret = window.document.caret;
  if (frame.has(kFrameAtIndex)) window.document.caret = static_cast<std::int32_t>(frame.options.index);
  ChunkRecord record;
  if (fill_frame(frame, record) && insert_here(window, record))
    return static_cast<std::size_t>(window.document.caret);
  if (before) before->restore();
  window.document.caret = caret;
  return 0;
}

bool EndAnimation(DocumentWindow& window, std::int32_t iterations) {
  const Before before(window);
  Document& document = window.document;
  bool good = build_number(document.kind).has_value();
  if (document.kind == DocumentKind::MING)
    good = (iterations == kNoLoop || insert_default(window, tag::ENDL)) && insert_default(window, tag::MEND);
  if (document.kind == DocumentKind::APNG) good = insert_default(window, tag::IEND);
  if (!good) return before.restore();
  document.caret = 0;
  chunk_list_close_change(window.list, document);
  document.dirty = true;
  return true;
}

void put_loop_plays(DocumentWindow& window, std::uint32_t plays) {
  const std::size_t at = chunk_find_first(window.list, tag::LOOP);
  if (at == kNoEntry) return;
  NewChunkArgument argument;
  argument.number = plays;
  ChunkRecord loop;
  if (!new_chunk(window, loop, tag::LOOP, argument)) return;
  loop.description = chunk_description(loop);
  chunk_list_put(window.list, at, loop);
}

}  // namespace vellum
