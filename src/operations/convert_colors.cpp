#include "operations/convert_colors.h"

#include <algorithm>

#include "base/parallel.h"
#include "core/edit/document_colors.h"
#include "core/edit/image_edit.h"
#include "core/edit/picture_fitting.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/png_form.h"
#include "image/remap.h"
#include "image/to_colors.h"
#include "operations/frame_pictures.h"
#include "operations/manage_frames.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

/// A conversion with all that one image needs of the others.
struct Target {
  const ColorConversion& conversion;
  DocumentKind kind;
  std::optional<std::uint8_t> transparent;  ///< entry of the palette that stands for transparency
  PaletteColors palette{};
};

std::vector<std::uint8_t> transparency_of(const Target& target) {
  if (!target.transparent) return {};
  std::vector<std::uint8_t> table(target.palette.count, 255);
  table[*target.transparent] = 0;
  return table;
}

bool is_two_levels(const ColorConversion& conversion) {
  return conversion.colorType == 3 && conversion.bitDepth == 1 && conversion.threshold > 0;
}

bool holds_alpha(const ColorConversion& conversion) {
  return conversion.colorType == 4 || conversion.colorType == 6 ||
         (conversion.colorType == 3 && !is_two_levels(conversion));
}

/// White where the grey reaches the threshold.
Picture at_threshold(const Picture& picture, const Palette& palette, unsigned threshold) {
  const Picture grey = PictureToGrey(picture);
  Picture result = create_rows(picture.width(), picture.height(), &palette, 1);
  const EditRows rows(result);
  if (!grey || !rows) return {};
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* from = grey.row(y);
    std::uint8_t* to = rows[y];
    for (std::uint32_t x = 0; x < picture.width(); ++x) put_index(to, x, 1, from[x] >= threshold);
  }
  return result;
}

/// 32 bits: greys with the picture's alpha.
Picture grey_with_alpha(const Picture& picture) {
  Picture result = picture.bits() == 32 ? PictureDuplicate(picture) : PictureToTrueColorAlpha(picture);
  const EditRows rows(result);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < result.height(); ++y)
    for (std::uint8_t *pixel = rows[y], *end = pixel + 4 * std::size_t{result.width()}; pixel < end;
         pixel += 4)
      std::fill_n(pixel, 3, grey_of(pixel[2], pixel[1], pixel[0]));
  return result;
}

Picture in_greys(const Picture& picture, const ColorConversion& conversion, Host* host) {
  const Picture opaque = opaque_true_color(picture);
  if (conversion.bitDepth == 0 || conversion.bitDepth >= 8) return PictureToGrey(opaque);
  return to_colors(opaque, {png_grey_palette(conversion.bitDepth), 1u << conversion.bitDepth},
                   conversion.dither, host);
}

/// As 32 bits, transparent where the entry for it would be.
Picture with_cut_alpha(const Picture& indexed, const Picture& picture) {
  Picture result = PictureToTrueColorAlpha(indexed);
  const EditRows rows(result);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < result.height(); ++y) {
    const std::uint8_t* alpha = picture.row(y) + 3;
    std::uint8_t* out = rows[y] + 3;
    for (std::uint32_t x = 0; x < result.width(); ++x, alpha += 4, out += 4)
      *out = *alpha < kLeastOpaque ? 0 : 255;
  }
  return result;
}

Picture in_palette(const Picture& picture, const Target& target, Host* host) {
  const ColorConversion& conversion = target.conversion;
  if (is_two_levels(conversion) && !conversion.dither)
    return at_threshold(opaque_true_color(picture), target.palette.palette,
                        static_cast<unsigned>(conversion.threshold));
  return to_colors(picture, {target.palette.palette, target.palette.count, transparency_of(target)},
                   conversion.dither, host);
}

Picture in_color_type(const Picture& picture, const Target& target, Host* host) {
  switch (target.conversion.colorType) {
    case 0:
      return in_greys(picture, target.conversion, host);
    case 2:
      return opaque_true_color(picture);
    case 3:
      return in_palette(picture, target, host);
    case 4:
      return grey_with_alpha(picture);
    default:
      if (picture.bits() == 32) return picture;
      return with_alpha_level(picture, static_cast<std::uint8_t>(target.conversion.alphaLevel));
  }
}

/// `host`, where it is given, hears of the progress and may stop it.
Picture converted(const Picture& picture, const Target& target, Host* host = nullptr) {
  const Picture result = in_color_type(picture, target, host);
  return target.kind == DocumentKind::WEBP && result && result.bits() <= 8 ? opaque_true_color(result)
                                                                           : result;
}

/// The palette of the conversion, with an entry for transparency at its end where one is needed.
bool choose_palette(Target& target, std::span<const HeldPicture> pictures, bool transparency, Host& host) {
  const ColorConversion& conversion = target.conversion;
  if (conversion.colorType != 3) return true;
  const std::uint32_t depth = conversion.bitDepth == 0 ? 8 : conversion.bitDepth;
  const std::uint32_t most = std::min(conversion.most, 1u << depth) - (transparency ? 1 : 0);
  target.palette = conversion.palette;
  PaletteMethod method = conversion.method;
  method.holes = transparency;
  if (target.palette.count == 0)
    target.palette = superpalette(
        pictures.size(), [&](std::size_t i) { return pictures[i].picture(); }, most, host, method);
  if (target.palette.count == 0) return false;
  target.palette.count = std::min(target.palette.count, (1u << depth) - (transparency ? 1 : 0));
  if (transparency) target.transparent = static_cast<std::uint8_t>(target.palette.count++);
  std::fill(target.palette.palette.begin() + 3 * target.palette.count, target.palette.palette.end(), 0);
  if (target.transparent) std::fill_n(&target.palette.palette[3u * *target.transparent], 3, 0);
  return true;
}

/// Pictures of more pixels are matched one after the other, each on all cores, so that the user is heard in
/// between.
constexpr std::uint64_t kLargePicture = 1'000'000;

/// The host of one step of many.
Host host_of_step(Host& host, const Progress& progress, std::size_t step, std::size_t steps) {
  constexpr std::uint64_t kParts = 1000;
  Host part;
  part.stop_requested = host.stop_requested;
  part.progress_step = [&progress, step, steps](std::uint64_t done, std::uint64_t total) {
    progress.step(kParts * step + kParts * done / std::max<std::uint64_t>(total, 1), kParts * steps);
  };
  return part;
}

/// All pictures converted, small ones some at a time; nothing when one fails or the user stops it.
std::vector<HeldPicture> convert_all(std::span<const HeldPicture> pictures, const Target& target,
                                     Host& host) {
  const Progress progress(host, string_text(StringId::Remapping));
  const auto is_large = [](const HeldPicture& held) {
    const Picture picture = held.picture();
    return std::uint64_t{picture.width()} * picture.height() >= kLargePicture;
  };
  const std::size_t step = std::ranges::any_of(pictures, is_large) ? 1 : 4 * parallel_width();
  std::vector<HeldPicture> results(pictures.size());
  for (std::size_t first = 0; first < pictures.size(); first += step) {
    if (host.stopped()) return {};
    Host part = host_of_step(host, progress, first, pictures.size());
    if (step == 1) results[first] = hold_picture(converted(pictures[first].picture(), target, &part));
    const std::size_t count = std::min(step, pictures.size() - first);
    if (step > 1)
      parallel_for(count, [&](std::size_t i) {
        results[first + i] = hold_picture(converted(pictures[first + i].picture(), target));
      });
    if (!results[first]) return {};
    progress.step(first + count, pictures.size());
  }
  const bool whole = std::ranges::all_of(results, [](const HeldPicture& picture) { return bool(picture); });
  return whole ? results : std::vector<HeldPicture>();
}

/// The pictures with all their colors and alphas in one palette, where there are so few and nobody asked for
/// other ones.
bool keep_exactly(DocumentWindow& draft, std::span<const HeldPicture> pictures,
                  const ColorConversion& conversion) {
  const PaletteMethod& method = conversion.method;
  if (conversion.colorType != 3 || conversion.palette.count != 0 || method.fifteenBits || method.sorted ||
      draft.document.kind == DocumentKind::WEBP)
    return false;
  auto colors = exact_colors(pictures);
  const std::uint32_t depth = conversion.bitDepth == 0 ? 8 : conversion.bitDepth;
  if (!colors || colors->colors > std::min(conversion.most, 1u << depth)) return false;
  if (conversion.bitDepth != 0) colors->bitDepth = conversion.bitDepth;
  const auto results = in_colors(pictures, *colors);
  if (!results.empty()) put_frame_pictures(draft, results, *colors);
  return !results.empty();
}

DocumentColors colors_of(const Target& target) {
  DocumentColors colors{.colorType = target.conversion.colorType,
                        .bitDepth = std::max<std::uint8_t>(target.conversion.bitDepth, 8)};
  if (target.conversion.bitDepth != 0 && target.conversion.bitDepth < 8)
    colors.bitDepth = target.conversion.bitDepth;
  if (colors.colorType != 3) return colors;
  if (target.conversion.bitDepth == 0)
    colors.bitDepth = static_cast<std::uint8_t>(picture_bits(depth_of_colors(target.palette.count)));
  colors.palette = target.palette.palette;
  colors.colors = target.palette.count;
  colors.transparency = transparency_of(target);
  return colors;
}

/// What can't be transparent lies over the background.
bool flatten(DocumentWindow& draft, std::vector<HeldPicture>& pictures, Host& host) {
  if (is_animation(draft.document.kind)) {
    if (!reconstruct_frames(draft, CanvasDepth::TrueColor, host)) return false;
    pictures = shown_pictures(draft);
  }
  const Colour background = document_background(draft.list, draft.document);
  for (HeldPicture& held : pictures)
    if (const Picture picture = held.picture(); picture && picture.bits() == 32)
      held = hold_picture(PictureFlattenAlpha(picture, background));
  return true;
}

}  // namespace

ColorConversion black_and_white(int threshold, bool dither) {
  ColorConversion conversion{.colorType = 3, .bitDepth = 1, .dither = dither, .threshold = threshold};
  conversion.palette.count = 2;
  std::fill_n(&conversion.palette.palette[3], 3, 255);
  return conversion;
}

bool convert_colors(DocumentWindow& window, const ColorConversion& conversion, Host& host) {
  DocumentWindow draft{window.document, window.list, {}};
  std::vector<HeldPicture> pictures = shown_pictures(draft);
  const bool transparency = has_transparency(draft);
  if (transparency && !holds_alpha(conversion) && !flatten(draft, pictures, host)) return false;
  if (pictures.empty() || std::ranges::any_of(pictures, [](const HeldPicture& p) { return !p; }))
    return false;
  if (host.stopped()) return false;
  if (keep_exactly(draft, pictures, conversion)) {
    take_draft(window, draft);
    return true;
  }
  Target target{conversion, draft.document.kind, {}};
  if (!choose_palette(target, pictures, transparency && holds_alpha(conversion), host)) return false;
  const std::vector<HeldPicture> results = convert_all(pictures, target, host);
  if (results.empty()) return false;
  put_frame_pictures(draft, results, colors_of(target));
  take_draft(window, draft);
  return true;
}

Picture convert_picture(const Picture& picture, const ColorConversion& conversion, Colour background) {
  const bool cut = conversion.colorType == 3 && !is_two_levels(conversion) && picture.bits() == 32;
  const bool flat = !cut && (conversion.colorType & 4) == 0 && picture.bits() == 32;
  const Picture result = converted(flat ? PictureFlattenAlpha(picture, background) : picture,
                                   Target{conversion, DocumentKind::PING, {}, conversion.palette});
  return cut && result ? with_cut_alpha(result, picture) : result;
}

ColorConversion header_conversion(const PngHeader& wanted) {
  return {.colorType = wanted.colorType,
          .bitDepth = wanted.bitDepth,
          .most = 1u << std::min<unsigned>(wanted.bitDepth, 8),
          .alphaLevel = std::clamp(settings::InitialAlphaLevel, 0, 255)};
}

bool convert_to_header(DocumentWindow& window, const PngHeader& wanted, Host& host) {
  return convert_colors(window, header_conversion(wanted), host);
}

}  // namespace vellum
