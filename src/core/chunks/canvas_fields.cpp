// What the headers of all animations share: a canvas that holds the frames.
#include <algorithm>

#include "base/limits.h"
#include "base/text.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/model/frame_values.h"
#include "core/model/header_record.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// Width and height in the fields of an image record.
struct FrameSize {
  std::uint32_t &width, &height;
};
FrameSize frame_size(ChunkRecord& record, DocumentKind kind) {
  if (kind == DocumentKind::APNG) return {record.frameControl.frameWidth, record.frameControl.frameHeight};
  if (kind == DocumentKind::WEBP) return {record.webpImage.width, record.webpImage.height};
  return {record.width, record.height};
}

std::uint32_t distance(Colour a, Colour b) {
  const auto square = [](int difference) { return static_cast<std::uint32_t>(difference * difference); };
  return square(red_of(a) - red_of(b)) + square(green_of(a) - green_of(b)) + square(blue_of(a) - blue_of(b));
}

/// The first of `entries` colors of an indexed picture that is nearest to `color`.
Colour nearest_index(const Picture& picture, std::uint32_t entries, Colour color) {
  Palette palette;
  PictureGetPalette(picture, palette);
  Colour best = 0;
  const auto at = [&](Colour i) {
    return make_colour(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2]);
  };
  for (Colour i = 1; i < std::min(entries, picture.colours()); ++i)
    if (distance(at(i), color) < distance(at(best), color)) best = i;
  return best;
}

Colour margin_value(const DocumentWindow& window, const ChunkRecord& image, const Picture& picture) {
  if (picture.bits() == 32) return 0;
  const Colour background = document_background(window.list, window.document);
  return picture.bits() == 24 ? background : nearest_index(picture, usable_colors(window, image), background);
}

}  // namespace

std::optional<PngHeader> ruling_header(const EntryPlace& place) {
  ChunkRecord header;
  if (chunk_find_header(place.window.list, place.window.document, place.index, header) == kNoEntry)
    return std::nullopt;
  return png_header_of(header);
}

std::size_t first_image(const DocumentWindow& window) {
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag)) return i;
  return kNoEntry;
}

std::uint32_t usable_colors(const DocumentWindow& window, const ChunkRecord& image) {
  if (image.tag == tag::PNGI && image.flags & CRF_PLTE) return std::max(image.image->paletteBytes / 3, 1u);
  Palette palette;
  if (const std::uint32_t colors = chunk_find_palette(window.list, palette)) return colors;
  const std::size_t header = chunk_find_first(window.list, tag::IHDR);
  const unsigned depth = header == kNoEntry ? 8 : window.list.record(header).bitDepth;
  return 1u << std::min(depth, 8u);
}

bool has_images(const DocumentWindow& window) { return first_image(window) != kNoEntry; }

Extent frames_extent(const DocumentWindow& window) {
  if (!has_images(window)) return {};
  DocumentWindow copy;
  copy.document = window.document;
  copy.list = window.list;
  document_extent(copy.list, copy.document);
  return document_size(copy.list, copy.document);
}

bool enlarge_first_image(DocumentWindow& window, Extent size) {
  const std::size_t at = first_image(window);
  ChunkRecord record;
  if (!chunk_list_get(window.list, at, record)) return false;
  const DocumentKind kind = window.document.kind;
  const FrameOffset offset = GetFrameOffset(record, kind);
  const std::int64_t width = std::int64_t{size.width} - offset.x;
  const std::int64_t height = std::int64_t{size.height} - offset.y;
  const Picture picture = picture_of(record);
  if (!picture || width > kMaximumDimension || height > kMaximumDimension) return false;
  const FrameSize frame = frame_size(record, kind);
  if (width <= frame.width && height <= frame.height) return true;
  frame.width = std::max(frame.width, static_cast<std::uint32_t>(std::max<std::int64_t>(width, 0)));
  frame.height = std::max(frame.height, static_cast<std::uint32_t>(std::max<std::int64_t>(height, 0)));
  const Picture larger =
      PictureExtendCanvas(picture, frame.width, frame.height, 0, 0, margin_value(window, record, picture));
  if (!larger) return false;
  const bool tells_block = record.size == static_cast<std::int32_t>(record.data.size());
  record.data = larger.handle();
  if (tells_block) record.size = static_cast<std::int32_t>(larger.handle().size());
  return chunk_list_put(window.list, at, record);
}

std::optional<FieldFault> check_holds_frames(const DocumentWindow& window, std::int64_t width,
                                             std::int64_t height, const char* widthName,
                                             const char* heightName) {
  const Extent least = frames_extent(window);
  if (width >= least.width && height >= least.height) return std::nullopt;
  return FieldFault{width < least.width ? widthName : heightName, StringId::HeaderHoldsFrames,
                    format_text(string_text(StringId::HeaderHoldsFrames).data(), least.width, least.height),
                    false, 0};
}

bool apply_canvas_size(Applying& applying, const char* widthName, const char* heightName) {
  if (applying.values.number("enlarge") == 0 || !has_images(applying.window)) return true;
  if (!applying.changed(widthName) && !applying.changed(heightName)) return true;
  return enlarge_first_image(applying.window,
                             {static_cast<std::uint32_t>(applying.values.number(widthName)),
                              static_cast<std::uint32_t>(applying.values.number(heightName))});
}

void adapt_enlarge(const EntryPlace& place, std::vector<Field>& fields) {
  if (!has_images(place.window)) remove_field(fields, kEnlargeField.name);
}

}  // namespace vellum
