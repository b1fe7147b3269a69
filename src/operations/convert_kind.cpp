#include "operations/convert_kind.h"

#include <algorithm>

#include "base/fields.h"
#include "core/build/convert_records.h"
#include "core/model/frame_values.h"
#include "image/png_form.h"
#include "operations/convert_colors.h"
#include "operations/dither.h"
#include "operations/frame_pictures.h"
#include "operations/frames.h"
#include "operations/operation_rows.h"

namespace vellum {
namespace {

bool is_indexed(const DocumentWindow& window) {
  return std::ranges::all_of(frame_entries(window), [&](std::size_t entry) {
    const Picture picture = picture_of(window.list.record(entry));
    return picture && picture.bits() <= 8;
  });
}

bool is_half_transparent(const HeldPicture& held) {
  const Picture picture = held.picture();
  if (!picture || picture.bits() < 32) return false;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* alpha = picture.row(y) + 3;
    for (std::uint32_t x = 0; x < picture.width(); ++x, alpha += 4)
      if (*alpha > 0 && *alpha < 255) return true;
  }
  return false;
}

/// The frames of an indexed document, which became true color on the way, in one palette again.
bool in_one_palette(DocumentWindow& to, const KindConversion& conversion, Host& host) {
  const std::vector<HeldPicture> pictures = shown_pictures(to);
  if (const auto exact = exact_colors(pictures)) {
    const auto indexed = in_colors(pictures, *exact);
    if (indexed.empty()) return false;
    put_frame_pictures(to, indexed, *exact);
    return true;
  }
  if (conversion.kind == DocumentKind::MING || std::ranges::any_of(pictures, is_half_transparent))
    return true;
  return convert_colors(to, {.colorType = 3, .dither = conversion.dither}, host);
}

/// Whether `dither` can make a difference: the palettes of the images become one that lacks colors.
bool may_dither(const DocumentWindow& from, DocumentKind kind) {
  return kind == DocumentKind::APNG && from.document.kind == DocumentKind::MING && is_indexed(from) &&
         !exact_colors(shown_pictures(from));
}

/// An image that brings back what was there has its like in no kind but animated PNG.
bool brings_back(const DocumentWindow& window) {
  return std::ranges::any_of(frame_entries(window), [&](std::size_t entry) {
    return GetFrameDispose(window.list.record(entry), window.document.kind) == 2;
  });
}

unsigned needs(const DocumentWindow& window, const FieldValues&, const FrameList&) {
  return brings_back(window) ? unsigned{kTellsCanvases} : 0;
}

template <DocumentKind kind>
void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  if (!may_dither(window, kind)) fields.clear();
}

template <DocumentKind kind>
std::string note(const FieldValues&, const DocumentWindow& window) {
  const std::size_t lost = texts_lost(window, kind);
  return lost > 0 ? filled(StringId::TextsNotKept, {std::to_string(lost)}) : "";
}

template <DocumentKind kind>
bool run(OperationRun& run) {
  return replace_draft(run, [&](DocumentWindow& made) {
    return convert_kind(run.draft, made, {kind, run.number("dither") != 0}, run.host);
  });
}

constexpr DocumentKind kMngAndWebp[] = {DocumentKind::MING, DocumentKind::WEBP},
                       kApngAndWebp[] = {DocumentKind::APNG, DocumentKind::WEBP},
                       kApngAndMng[] = {DocumentKind::APNG, DocumentKind::MING};

template <DocumentKind kind>
constexpr Operation kind_row(const char* name, const char* title, int command,
                             std::span<const DocumentKind> from) {
  return {.parameters = {.name = name,
                         .title = title,
                         .help = "The same animation in another kind of file",
                         .command = command,
                         .kinds = from,
                         .page = "convert",
                         .fields = {&kDither, 1},
                         .options = {&kDitherOption, 1},
                         .fit = fit<kind>,
                         .note = note<kind>},
          .convertOption = "kind",
          .result = OperationResult::NewWindow,
          .makes = kind,
          .prefix = StringId::ConvertedPrefix,
          .needs = needs,
          .run = run<kind>};
}

}  // namespace

bool convert_kind(const DocumentWindow& from, DocumentWindow& to, const KindConversion& conversion,
                  Host& host) {
  if (!convert_document(from, to, conversion.kind, host)) return false;
  if (conversion.kind == DocumentKind::WEBP || !is_indexed(from) || is_indexed(to)) return true;
  return in_one_palette(to, conversion, host);
}

constinit const Operation kToApng =
    kind_row<DocumentKind::APNG>("apng", "Convert to animated PNG", 263, kMngAndWebp);
constinit const Operation kToMng = kind_row<DocumentKind::MING>("mng", "Convert to MNG", 264, kApngAndWebp);
constinit const Operation kToWebp = kind_row<DocumentKind::WEBP>("webp", "Convert to WebP", 265, kApngAndMng);

}  // namespace vellum
