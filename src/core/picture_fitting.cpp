#include "core/picture_fitting.h"

#include <algorithm>

#include "core/chunk_description.h"
#include "core/frame_layer.h"
#include "core/placement.h"
#include "core/png_reading.h"
#include "core/record_picture.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/png_form.h"
#include "image/reduce_to_palette.h"
#include "image/remap.h"

namespace vellum {
namespace {

/// Whether indexes of the picture mean these colors.
bool has_colors(const Picture& picture, const Palette& palette, std::uint32_t colors) {
  if (picture.bits() > 8 || largest_index(picture) >= colors) return false;
  Palette own;
  const std::uint32_t common = std::min(PictureGetPalette(picture, own), colors);
  return std::equal(own.begin(), own.begin() + 3 * common, palette.begin());
}

/// The entries of a palette that colors may be matched to: those that tRNS leaves opaque.
struct OpaqueEntries {
  Palette palette{};
  std::vector<std::uint8_t> index;          ///< of each in the whole palette
  std::optional<std::uint8_t> transparent;  ///< the first that is wholly transparent

  OpaqueEntries(const Palette& whole, std::uint32_t colors, const std::vector<std::uint8_t>& alpha) {
    for (std::uint32_t i = 0; i < colors; ++i) {
      const unsigned opacity = i < alpha.size() ? alpha[i] : 255;
      if (opacity == 0 && !transparent) transparent = static_cast<std::uint8_t>(i);
      if (opacity != 255) continue;
      std::copy_n(&whole[3 * i], 3, &palette[3 * index.size()]);
      index.push_back(static_cast<std::uint8_t>(i));
    }
  }
};

/// Indexes into the opaque entries as indexes into the palette; pixels without opacity get the transparent
/// one.
Picture in_whole_palette(const Picture& matched, const Picture& source, const OpaqueEntries& entries,
                         const Palette& palette, std::uint32_t colors) {
  Picture result = create_rows(matched.width(), matched.height(), &palette, depth_of_colors(colors));
  if (!matched || !result) return {};
  const EditRows rows(result);
  for (std::uint32_t y = 0; y < matched.height(); ++y)
    for (std::size_t x = 0; x < matched.width(); ++x) {
      std::uint8_t index = entries.index[get_index(matched.row(y), x, matched.bits())];
      if (entries.transparent && source.bits() == 32 && source.row(y)[4 * x + 3] == 0)
        index = *entries.transparent;
      put_index(rows[y], x, result.bits(), index);
    }
  return result;
}

void remove_entry(DocumentWindow& window, std::size_t index) {
  window.list.remove(index);
  if (static_cast<std::int64_t>(index) < window.document.caret) --window.document.caret;
}

void remove_tag(DocumentWindow& window, ChunkTag tag) {
  if (const std::size_t at = chunk_find_first(window.list, tag); at != kNoEntry) remove_entry(window, at);
}

/// The first PLTE gets the picture's colors.
void put_palette(DocumentWindow& window, const Picture& picture) {
  Palette palette;
  const std::size_t bytes = 3 * std::size_t{PictureGetPalette(picture, palette)};
  ChunkRecord record;
  record.tag = tag::PLTE;
  record.data = ChunkHandle::copy_of(std::span(palette).first(bytes));
  record.size = static_cast<std::int32_t>(bytes);
  const auto entry = make_entry(window.document, record);
  if (const std::size_t at = chunk_find_first(window.list, tag::PLTE); at != kNoEntry)
    return window.list.replace(at, entry);
  const auto place = place_for(shape_of(window.list, window.document.kind), tag::PLTE, 0);
  if (!place) return;
  window.list.insert(*place, entry);
  if (static_cast<std::int64_t>(*place) <= window.document.caret) ++window.document.caret;
}

/// Removes what was made for the header `before`, or for other colors, and means something else now.
void remove_unfit(DocumentWindow& window, const PngHeader& before, const PngHeader& header,
                  bool other_colors) {
  Palette palette;
  const PngContext context{header.bitDepth, header.colorType, chunk_find_palette(window.list, palette)};
  const bool other_depth = before.bitDepth != header.bitDepth;
  const bool other_samples = other_depth || (before.colorType & 3) != (header.colorType & 3);
  const std::pair<ChunkTag, bool> means_other[] = {
      {tag::tRNS, other_colors || other_depth || before.colorType != header.colorType},
      {tag::bKGD, other_colors || other_samples},
      {tag::hIST, other_colors},
      {tag::sBIT, false},
  };
  for (const auto& [tag, other] : means_other) {
    const std::size_t at = chunk_find_first(window.list, tag);
    if (at == kNoEntry) continue;
    if (other || !is_valid_chunk(tag, raw_payload(window.list.record(at)), context)) remove_entry(window, at);
  }
}

void store(DocumentWindow& window, std::size_t index, ChunkRecord& record) {
  record.description = chunk_description(record);
  chunk_list_put(window.list, index, record);
}

}  // namespace

PaletteChoice default_palette_choice() {
  if (settings::AllowAdvancedPalettes == 0) return PaletteChoice::Remap;
  return static_cast<PaletteChoice>(std::clamp(settings::PngPaletteOption, 0, 2));
}

Picture opaque_true_color(const Picture& picture) {
  return PictureToTrueColor(picture && picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

void header_take_picture(DocumentWindow& window, const Picture& picture) {
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IHDR, &record);
  if (at == kNoEntry) return;
  const PngHeader before = png_header_of(record);
  record.width = picture.width();
  record.height = picture.height();
  record.bitDepth = static_cast<std::uint8_t>(std::min(picture.bits(), 8u));
  record.colorType = color_type_of_bits(picture.bits());
  Palette palette;
  const std::uint32_t colors = chunk_find_palette(window.list, palette);
  const bool other_colors = picture.bits() <= 8 && !has_colors(picture, palette, colors);
  if (other_colors)
    put_palette(window, picture);
  else if (record.colorType == 3 && before.colorType == 3 && colors <= 1u << before.bitDepth)
    record.bitDepth = before.bitDepth;
  store(window, at, record);
  remove_unfit(window, before, png_header_of(record), other_colors);
}

void header_take_size(DocumentWindow& window, const Picture& picture) {
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IHDR, &record);
  if (at == kNoEntry) return;
  record.width = picture.width();
  record.height = picture.height();
  store(window, at, record);
}

PictureFitting::PictureFitting(DocumentWindow& window, Host& host, std::optional<PaletteChoice> choice)
    : window_(window), host_(host), choice_(choice.value_or(default_palette_choice())) {
  look_up();
}

void PictureFitting::look_up() {
  const DocumentKind kind = window_.document.kind;
  if (kind != DocumentKind::PING && kind != DocumentKind::APNG) return;
  ChunkRecord record;
  if (chunk_find_first(window_.list, tag::IHDR, &record) != kNoEntry) header_ = png_header_of(record);
  palette_.fill(0);
  colors_ = chunk_find_palette(window_.list, palette_);
  table_ = frame_source_of(window_).table;
}

Picture PictureFitting::matched(const Picture& picture) const {
  if (has_colors(picture, palette_, colors_)) return picture;
  const bool dither = choice_ == PaletteChoice::Dither;
  const auto match = [dither](const Picture& source, const Palette& palette, std::uint32_t colors) {
    return dither ? dither_to_colors(source, palette, colors) : remap_to_colors(source, palette, colors);
  };
  // A 1-bit picture would be matched by its bits alone.
  const Picture source = picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture;
  if (!source) return {};
  const OpaqueEntries entries(palette_, colors_, table_);
  if (entries.index.empty() || entries.index.size() == colors_) return match(source, palette_, colors_);
  return in_whole_palette(match(source, entries.palette, static_cast<std::uint32_t>(entries.index.size())),
                          source, entries, palette_, colors_);
}

Picture PictureFitting::reduced(const Picture& picture) const {
  return picture.bits() <= 8 ? picture : reduce_to_palette(PictureToTrueColor(picture));
}

bool PictureFitting::agree_to_alpha() {
  if (!alphaAgreed_) {
    const Message question{
        StringId::ColorTypeQuestion, {}, std::string(string_text(StringId::ColorTypeQuestion)), {}, nullptr};
    alphaAgreed_ = (!host_.ask || host_.ask(question, false) == Answer::Yes) && promote();
  }
  return *alphaAgreed_;
}

/// All images get 32 bits, what the tRNS made transparent without opacity, and the header says so.
bool PictureFitting::promote() {
  const FrameSource source = frame_source_of(window_);
  std::vector<std::pair<std::size_t, ChunkRecord>> changed;
  ChunkRecord record;
  for (std::size_t i = 0; i < window_.list.size(); ++i) {
    if (!is_image_entry(window_.document.kind, window_.list.record(i).tag)) continue;
    chunk_list_get(window_.list, i, record);
    const Picture picture = PictureWithTransparency(picture_of(record), source.table);
    if (!picture) return false;
    record_take_picture(record, window_.document.kind, picture);
    changed.emplace_back(i, record);
  }
  for (auto& [index, promoted] : changed) store(window_, index, promoted);
  if (const Picture kept(window_.document.defaultImage); kept)
    window_.document.defaultImage = PictureWithTransparency(kept, source.table).handle();
  const std::size_t at = chunk_find_first(window_.list, tag::IHDR, &record);
  record.colorType = 6;
  store(window_, at, record);
  remove_tag(window_, tag::tRNS);
  look_up();
  return true;
}

Picture PictureFitting::fit_to_header(const Picture& picture) {
  Palette greys;
  switch (header_.colorType) {
    case 3:
      return colors_ == 0 ? reduced(picture) : matched(picture);
    case 0:
      if (header_.bitDepth >= 8) return PictureToGrey(opaque_true_color(picture));
      greys = png_grey_palette(header_.bitDepth);
      return remap_to_colors(opaque_true_color(picture), greys, 1u << header_.bitDepth);
    case 2:
      if (picture.bits() == 32 && !picture_content(picture).opaque && agree_to_alpha()) return picture;
      return opaque_true_color(picture);
    default:
      return picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
  }
}

Picture PictureFitting::fit(const Picture& picture, bool first) {
  switch (window_.document.kind) {
    case DocumentKind::WEBP:
      return picture.bits() <= 8 ? opaque_true_color(picture) : picture;
    case DocumentKind::PING:
    case DocumentKind::APNG:
      break;
    default:
      return picture;
  }
  const bool still = window_.document.kind == DocumentKind::PING;
  if (!still && !first) return fit_to_header(picture);
  Picture fitted = picture;
  if (still && header_.colorType == 3 && colors_ != 0)
    fitted = choice_ == PaletteChoice::Replace ? reduced(picture) : matched(picture);
  if (!fitted) return fitted;
  header_take_picture(window_, fitted);
  look_up();
  return fitted;
}

bool PictureFitting::holds(const Picture& picture, const std::vector<std::uint8_t>& table) const {
  const DocumentKind kind = window_.document.kind;
  if (kind == DocumentKind::MING) return true;
  if (kind == DocumentKind::WEBP) return picture.bits() > 8;
  if (table != table_) return false;
  if (header_.colorType == 3) return has_colors(picture, palette_, colors_);
  if (header_.colorType == 0)
    return has_colors(picture, png_grey_palette(header_.bitDepth),
                      1u << std::min<unsigned>(header_.bitDepth, 8));
  return picture.bits() == (header_.colorType == 2 ? 24 : 32);
}

}  // namespace vellum
