#include "operations/convert_kind.h"

#include <algorithm>

#include "base/fields.h"
#include "core/build/convert_records.h"
#include "image/png_form.h"
#include "operations/convert_colors.h"
#include "operations/frame_pictures.h"
#include "operations/frames.h"

namespace vellum {
namespace {

bool is_indexed(const DocumentWindow& window) {
  return std::ranges::all_of(frame_entries(window), [&](std::size_t entry) {
    const Picture picture = picture_of(window.list.record(entry));
    return picture && picture.bits() <= 8;
  });
}

bool is_half_transparent(const Picture& picture) {
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
  const std::vector<Picture> pictures = shown_pictures(to);
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

}  // namespace

bool may_dither(const DocumentWindow& from, DocumentKind kind) {
  return kind == DocumentKind::APNG && from.document.kind == DocumentKind::MING && is_indexed(from) &&
         !exact_colors(shown_pictures(from));
}

bool convert_kind(const DocumentWindow& from, DocumentWindow& to, const KindConversion& conversion,
                  Host& host) {
  if (!convert_document(from, to, conversion.kind, host)) return false;
  if (conversion.kind == DocumentKind::WEBP || !is_indexed(from) || is_indexed(to)) return true;
  return in_one_palette(to, conversion, host);
}

}  // namespace vellum
