#include "core/edit/new_document.h"
#include "image/webp_container.h"

#include <algorithm>

#include "base/limits.h"
#include "base/string_table.h"
#include "base/translation.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/insertion.h"
#include "core/model/chunk_layout.h"
#include "core/model/header_record.h"
#include "core/model/loops.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/remap.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostPlays = 0x7FFFFFFF;  // 31 bits, as all counts of PNG and MNG
constexpr std::uint32_t kMostWebpPlays = 0xFFFF;

/// A document that is being made.
struct Making {
  DocumentWindow& window;
  const NewDocument& parameters;

  void append(const ChunkRecord& record) const { chunk_list_append(window.list, window.document, record); }
  void append_default(ChunkTag tag, std::uint32_t number = 0) const {
    ChunkRecord record;
    NewChunkArgument argument;
    argument.number = number;
    if (new_chunk(window, record, tag, argument)) append(record);
  }
};

void append_instructions(const Making& making) {
  if (settings::AddInstructionsToNew == 0) return;
  const bool still = making.parameters.kind == DocumentKind::PING;
  making.append(text_record(
      "Comment", string_text(still ? StringId::InstructionsForStill : StringId::InstructionsForAnimation)));
}

void make_png(const Making& making) {
  const NewDocument& parameters = making.parameters;
  ChunkRecord header;
  new_chunk(making.window, header, tag::IHDR);
  put_png_header(header, {parameters.width, parameters.height, parameters.bitDepth, parameters.colorType, 0,
                          0, parameters.interlaced ? std::uint8_t{1} : std::uint8_t{0}});
  making.append(header);
  if (parameters.kind == DocumentKind::APNG) {
    ChunkRecord control;
    new_chunk(making.window, control, tag::acTL);
    control.numPlays = parameters.plays;
    making.append(control);
  }
  append_instructions(making);
  if (parameters.colorType == 3) making.append_default(tag::PLTE);
  making.append_default(tag::IEND);
}

void make_mng(const Making& making) {
  const NewDocument& parameters = making.parameters;
  ChunkRecord header;
  new_chunk(making.window, header, tag::MHDR);
  header.frameWidth = parameters.width;
  header.frameHeight = parameters.height;
  header.ticksPerSecond = parameters.ticks;
  making.append(header);
  append_instructions(making);
  if (parameters.plays != 1) {
    making.append_default(tag::LOOP, parameters.plays == 0 ? kLoopForEver : parameters.plays);
    making.append_default(tag::ENDL);
  }
  making.append_default(tag::MEND);
}

/// Behind it the first image goes: into the loop, where there is one.
std::int32_t first_caret(const ChunkList& list) {
  const std::size_t loop = chunk_find_first(list, tag::LOOP);
  std::size_t caret = loop != kNoEntry ? loop : list.size() - 1;
  if (list.record(caret).tag == tag::IEND || list.record(caret).tag == tag::MEND) --caret;
  return static_cast<std::int32_t>(caret);
}

void make_webp(const Making& making) {
  const NewDocument& parameters = making.parameters;
  ChunkRecord header;
  new_chunk(making.window, header, tag::WEBH);
  header.webpHeader.canvasWidth = parameters.width;
  header.webpHeader.canvasHeight = parameters.height;
  header.webpHeader.loopCount = parameters.plays;
  header.webpHeader.backgroundColor = parameters.background;
  making.append(header);
}

struct KindRow {
  DocumentKind kind;
  void (*make)(const Making& making);
  std::uint32_t mostPixels;  ///< of width and height
  std::uint32_t mostPlays;
};

constexpr KindRow kKinds[] = {
    {DocumentKind::PING, make_png, kMaximumDimension, kMostPlays},
    {DocumentKind::APNG, make_png, kMaximumDimension, kMostPlays},
    {DocumentKind::MING, make_mng, kMaximumDimension, kMostPlays},
    {DocumentKind::WEBP, make_webp, kMostWebpPixels, kMostWebpPlays},
};

/// The parameters with the default size where none is given.
NewDocument completed(NewDocument parameters) {
  const auto size = [](int setting) { return static_cast<std::uint32_t>(std::clamp(setting, 1, 1'000'000)); };
  if (parameters.width == 0) parameters.width = size(settings::DefaultWidth);
  if (parameters.height == 0) parameters.height = size(settings::DefaultDepth);
  return parameters;
}

/// Color table and filling of a blank image under a PNG header.
struct Blank {
  std::uint32_t bits = 24;
  Palette palette{};
  Colour fill = 0;
};

Blank blank_of(const DocumentWindow& window) {
  Blank blank;
  const auto background = static_cast<Colour>(settings::DefaultBackgroundColour) & 0xFFFFFF;
  blank.fill = background;
  ChunkRecord record;
  if (chunk_find_first(window.list, tag::IHDR, &record) == kNoEntry) return blank;
  const PngHeader header = png_header_of(record);
  blank.bits = png_picture_bits(header);
  if (blank.bits == 32) blank.fill = 0;
  if (blank.bits > 8) return blank;
  std::uint32_t colors = 1u << std::min<unsigned>(header.bitDepth, 8);
  blank.palette = png_grey_palette(header.bitDepth);
  if (header.colorType == 3) colors = chunk_find_palette(window.list, blank.palette);
  blank.fill = NearestPaletteIndex(red_of(background), green_of(background), blue_of(background),
                                   blank.palette, colors);
  return blank;
}

}  // namespace

bool add_blank_image(DocumentWindow& window) {
  const Blank blank = blank_of(window);
  const Extent size = document_size(window.list, window.document);
  Picture picture = PictureCreate(size.width, size.height, &blank.palette, blank.bits);
  if (!picture) return false;
  PictureFillRect(picture, 0, 0, static_cast<std::int32_t>(size.width),
                  static_cast<std::int32_t>(size.height), blank.fill);
  NewChunkArgument argument;
  argument.picture = picture.handle();
  ChunkRecord record;
  if (!new_chunk(window, record, image_tag(window.document.kind), argument)) return false;
  Insertion insertion(window, window.list.size());
  const bool placed = insertion.add(std::move(record)) == Placed::Done;
  insertion.flush();
  chunk_list_close_change(window.list, window.document);
  return placed;
}

NewDocument default_new_document(DocumentKind kind) {
  NewDocument parameters;
  parameters.kind = kind;
  parameters.interlaced = settings::InterlacedImage != 0;
  parameters.background = static_cast<std::uint32_t>(settings::DefaultBackgroundColour) & 0xFFFFFF;
  return completed(parameters);
}

const char* new_document_fault(const NewDocument& given) {
  const NewDocument parameters = completed(given);
  const auto row = std::ranges::find(kKinds, parameters.kind, &KindRow::kind);
  if (row == std::end(kKinds)) return translated("there is no such kind of document");
  if (std::max(parameters.width, parameters.height) > row->mostPixels)
    return translated("the canvas is too wide or too high");
  if (parameters.plays > row->mostPlays) return translated("there are too many plays");
  if (parameters.kind == DocumentKind::MING)
    return parameters.ticks >= 1 && parameters.ticks <= kMostPlays ? nullptr
                                                                   : translated("the ticks are out of range");
  if (parameters.kind == DocumentKind::WEBP) return nullptr;
  return png_header_fault(
      {parameters.width, parameters.height, parameters.bitDepth, parameters.colorType, 0, 0, 0});
}

bool new_document(DocumentWindow& window, const NewDocument& given) {
  if (new_document_fault(given)) return false;
  const NewDocument parameters = completed(given);
  window.document.kind = parameters.kind;
  window.document.thumbScale = std::clamp(settings::DefaultViewMode, 0, 7);
  const QuietList quiet(window.list);
  std::ranges::find(kKinds, parameters.kind, &KindRow::kind)->make({window, parameters});
  window.document.caret = first_caret(window.list);
  chunk_list_close_change(window.list, window.document);
  return true;
}

}  // namespace vellum
