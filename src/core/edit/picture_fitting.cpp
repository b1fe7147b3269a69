#include "core/edit/picture_fitting.h"

#include <algorithm>

#include "core/edit/document_colors.h"
#include "core/edit/frame_layer.h"
#include "core/model/chunk_description.h"
#include "core/model/header_record.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/palette_from_pictures.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/png_form.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

/// A picture in colors of its own: as it is up to 8 bits, else with all of them, or 256 that stand for them.
Picture with_own_palette(const Picture& picture, Host& host) {
  if (picture.bits() <= 8) return picture;
  const Picture opaque = PictureToTrueColor(picture);
  const PaletteColors colors = palette_of_picture(opaque);
  if (colors.count == 0) return {};
  return to_colors(opaque, {colors.palette, colors.count}, settings::WidePaletteDither != 0, &host);
}

void interlace_header(DocumentWindow& window) {
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::IHDR, &record);
  if (at == kNoEntry) return;
  record.interlace = 1;
  record.description = chunk_description(record);
  chunk_list_put(window.list, at, record);
}

struct Answering {
  StringId text;
  PaletteChoice choice;
};

/// What can be done with other colors in a kind of document, and what is done where nobody is asked.
struct ChoiceRow {
  DocumentKind kind;
  std::span<const Answering> answers;
  PaletteChoice silent;
};

constexpr Answering kStillAnswers[] = {{StringId::ReplacePalette, PaletteChoice::Replace},
                                       {StringId::DitherToPalette, PaletteChoice::Dither},
                                       {StringId::RemapToPalette, PaletteChoice::Remap}};
constexpr Answering kFrameAnswers[] = {{StringId::UseLocalPalette, PaletteChoice::Local},
                                       {StringId::RemapToGlobal, PaletteChoice::Remap},
                                       {StringId::DitherToGlobal, PaletteChoice::Dither}};
constexpr ChoiceRow kChoices[] = {
    {DocumentKind::PING, kStillAnswers, PaletteChoice::Remap},
    {DocumentKind::APNG, std::span(kFrameAnswers).subspan(1), PaletteChoice::Remap},
    {DocumentKind::MING, kFrameAnswers, PaletteChoice::Local},
};

const ChoiceRow& choice_row(DocumentKind kind) {
  return *std::ranges::find(kChoices, kind, &ChoiceRow::kind);
}

}  // namespace

Picture opaque_true_color(const Picture& picture) {
  return PictureToTrueColor(picture && picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

PictureFitting::PictureFitting(DocumentWindow& window, Host& host, std::optional<PaletteChoice> choice)
    : window_(window), host_(host), choice_(choice) {
  look_up();
}

void PictureFitting::look_up() {
  const DocumentKind kind = window_.document.kind;
  if (kind == DocumentKind::WEBP) return;
  ChunkRecord record;
  if (chunk_find_first(window_.list, tag::IHDR, &record) != kNoEntry) header_ = png_header_of(record);
  palette_.fill(0);
  colors_ = chunk_find_palette(window_.list, palette_);
  table_ = frame_source_of(window_).table;
}

/// The choice for a picture with other colors; nothing when the user cancelled.
std::optional<PaletteChoice> PictureFitting::choose() {
  const ChoiceRow& row = choice_row(window_.document.kind);
  if (choice_) return choice_;
  if (settings::AllowAdvancedPalettes == 0) return row.silent;
  const bool still = window_.document.kind == DocumentKind::PING;
  Choice question{StringId::PaletteOptionsTitle, StringId::OtherColors, {}, 0, {}, false};
  for (const Answering& answer : row.answers) question.answers.push_back(answer.text);
  const auto last = static_cast<int>(row.answers.size()) - 1;
  if (still) question.chosen = static_cast<std::size_t>(std::clamp(settings::PngPaletteOption, 0, last));
  if (!still) question.keepLabel = StringId::UseForSubsequent;
  if (host_.choose && !host_.choose(question)) return std::nullopt;
  if (still) settings::PngPaletteOption = static_cast<int>(question.chosen);
  const PaletteChoice chosen = row.answers[question.chosen].choice;
  if (question.keep) choice_ = chosen;
  return chosen;
}

/// A picture that meets a palette: its indexes, what its colors are matched to, or a palette of its own.
Picture PictureFitting::in_existing_palette(const Picture& picture) {
  if (has_colors(picture, palette_, colors_)) return picture;
  const auto choice = choose();
  cancelled_ = !choice;
  if (!choice) return {};
  if (*choice == PaletteChoice::Local) return picture;
  if (*choice != PaletteChoice::Replace)
    return to_colors(picture, {palette_, colors_, table_}, *choice == PaletteChoice::Dither, &host_);
  if (settings::WidePaletteInterlace != 0) interlace_header(window_);
  return with_own_palette(picture, host_);
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
  for (auto& [index, promoted] : changed) {
    promoted.description = chunk_description(promoted);
    chunk_list_put(window_.list, index, promoted);
  }
  if (const Picture kept(window_.document.defaultImage); kept)
    window_.document.defaultImage = PictureWithTransparency(kept, source.table).handle();
  put_document_colors(window_, {.colorType = 6});
  look_up();
  return true;
}

Picture PictureFitting::fit_to_header(const Picture& picture) {
  switch (header_.colorType) {
    case 3:
      return colors_ == 0 ? with_own_palette(picture, host_) : in_existing_palette(picture);
    case 0:
      if (header_.bitDepth >= 8) return PictureToGrey(opaque_true_color(picture));
      return to_colors(opaque_true_color(picture),
                       {png_grey_palette(header_.bitDepth), 1u << header_.bitDepth}, false, &host_);
    case 2:
      if (picture.bits() == 32 && !picture_content(picture).opaque && agree_to_alpha()) return picture;
      return opaque_true_color(picture);
    default:
      return picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
  }
}

bool PictureFitting::has_others(std::size_t replaced) {
  if (window_.document.kind == DocumentKind::APNG && window_.document.defaultImage) return true;
  for (std::size_t i = 0; !others_ && i < window_.list.size(); ++i)
    others_ = i != replaced && is_image_entry(window_.document.kind, window_.list.record(i).tag);
  return others_;
}

Picture PictureFitting::fit_alone(const Picture& picture, bool replaces) {
  const bool still = window_.document.kind == DocumentKind::PING;
  Picture fitted = picture;
  if ((still || replaces) && header_.colorType == 3 && colors_ != 0) fitted = in_existing_palette(picture);
  if (!fitted) return fitted;
  header_take_picture(window_, fitted);
  look_up();
  return fitted;
}

Picture PictureFitting::fit(const Picture& picture, std::size_t replaced) {
  cancelled_ = false;
  const Picture fitted = fit_to_kind(picture, replaced);
  if (!fitted && host_.stopped()) cancelled_ = true;
  return fitted;
}

Picture PictureFitting::fit_to_kind(const Picture& picture, std::size_t replaced) {
  switch (window_.document.kind) {
    case DocumentKind::WEBP:
      return picture.bits() <= 8 ? opaque_true_color(picture) : picture;
    case DocumentKind::PING:
      return fit_alone(picture, replaced != kNoEntry);
    case DocumentKind::APNG:
      return has_others(replaced) ? fit_to_header(picture) : fit_alone(picture, replaced != kNoEntry);
    default:
      return colors_ == 0 ? picture : in_existing_palette(picture);
  }
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
