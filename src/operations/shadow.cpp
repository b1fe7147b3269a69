// Shadow: what each frame shows throws one onto the canvas.
#include <algorithm>
#include <array>
#include <cstring>

#include "base/limits.h"
#include "core/edit/edit_closing.h"
#include "core/model/kind_table.h"
#include "image/alpha_rows.h"
#include "image/mask.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "operations/change_pictures.h"
#include "operations/convert_colors.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr DocumentKind kShadowKinds[] = {DocumentKind::MING, DocumentKind::APNG};

constexpr FieldChoice kDirections[] = {{0, "North", "n"},      {1, "Northeast", "ne"}, {2, "East", "e"},
                                       {3, "Southeast", "se"}, {4, "South", "s"},      {5, "Southwest", "sw"},
                                       {6, "West", "w"},       {7, "Northwest", "nw"}};
constexpr int kStepX[] = {0, 1, 1, 1, 0, -1, -1, -1}, kStepY[] = {-1, -1, 0, 1, 1, 1, 0, -1};

constexpr Field kFields[] = {
    {.name = "direction",
     .label = "Direction",
     .type = FieldType::Choice,
     .most = 7,
     .choices = kDirections,
     .initial = 3,
     .setting = &settings::ShadowDirection},
    {.name = "offset", .label = "Offset", .most = 100, .initial = 6, .setting = &settings::ShadowOffset},
    {.name = "opacity", .label = "Opacity", .most = 100, .initial = 50, .setting = &settings::ShadowOpacity},
    {.name = "softness", .label = "Softness", .most = 50, .initial = 4, .setting = &settings::ShadowSoftness},
    {.name = "removeAlpha",
     .label = "Over a color",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "The result has no transparency",
     .setting = &settings::ShadowRemoveAlpha},
    {.name = "background",
     .label = "Color",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .enabledBy = "removeAlpha",
     .initial = 0xFFFFFF,
     .setting = &settings::ShadowBackground},
};

constexpr const char* kBackground[] = {"background"};
constexpr CompoundOption kOptions[] = {{.name = "flatten",
                                        .form = "RRGGBB",
                                        .help = "No transparency: the result lies over this color",
                                        .fields = kBackground,
                                        .alongside = "removeAlpha",
                                        .alongsideValue = 1}};

/// How the canvas grows, and where the shadow lies.
struct Place {
  std::uint32_t left, top, width, height;  ///< of the frame on the new canvas, which has this size
  std::int64_t x, y;                       ///< of the shadow, against the frame
  std::uint32_t softness;
};

Place place_of(const FieldValues& values, const Extent& frame) {
  const auto direction = static_cast<std::size_t>(values.number("direction"));
  const std::int64_t x = values.number("offset") * kStepX[direction],
                     y = values.number("offset") * kStepY[direction], reach = 3 * values.number("softness");
  const auto room = [](std::int64_t pixels) {
    return static_cast<std::uint32_t>(std::max<std::int64_t>(pixels, 0));
  };
  const std::uint32_t left = room(reach - x), top = room(reach - y);
  return {left,
          top,
          frame.width + left + room(reach + x),
          frame.height + top + room(reach + y),
          x,
          y,
          static_cast<std::uint32_t>(values.number("softness"))};
}

/// Pixels of black for each value of a mask.
using Blacks = std::array<std::uint32_t, 256>;

Blacks blacks_of(std::uint32_t opacity) {
  Blacks blacks;
  for (std::uint32_t v = 0; v < 256; ++v) {
    const std::uint8_t pixel[] = {0, 0, 0, static_cast<std::uint8_t>((v * opacity + 50) / 100)};
    std::memcpy(&blacks[v], pixel, sizeof pixel);
  }
  return blacks;
}

void put_black(std::uint8_t* out, const std::uint8_t* mask, std::uint32_t width, const Blacks& blacks) {
  for (std::uint32_t x = 0; x < width; ++x) std::memcpy(out + std::size_t{4} * x, &blacks[mask[x]], 4);
}

/// Where neither the picture nor its shadow is seen, the picture's colors stay.
void keep_hidden_colors(std::uint8_t* out, const std::uint8_t* in, std::uint32_t width) {
  for (const std::uint8_t* end = in + std::size_t{4} * width; in != end; in += 4, out += 4)
    if (in[3] == 0 && out[3] == 0) std::memcpy(out, in, 4);
}

/// The shadow alone, on the new canvas.
Picture shadow_of(const Picture& frame, const FieldValues& values) {
  const Place place = place_of(values, {frame.width(), frame.height()});
  Picture result = create_rows(place.width, place.height, nullptr, 32);
  const EditRows rows(result);
  if (!rows) return {};
  Mask mask(place.width, place.height);
  const Mask alpha = alpha_of(frame);
  for (std::uint32_t y = 0; y < alpha.height; ++y)
    std::copy_n(alpha.row(y), alpha.width,
                mask.row(static_cast<std::uint32_t>(place.top + place.y) + y) + place.left + place.x);
  blur_mask(mask, place.softness);
  const Blacks blacks = blacks_of(static_cast<std::uint32_t>(values.number("opacity")));
  for (std::uint32_t y = 0; y < place.height; ++y) put_black(rows[y], mask.row(y), place.width, blacks);
  return result;
}

/// The frame over its shadow.
Picture with_shadow(const Picture& frame, const Picture& shadow, const FieldValues& values) {
  const Picture picture = frame.bits() == 32 ? frame : PictureToTrueColorAlpha(frame);
  const Place place = place_of(values, {frame.width(), frame.height()});
  Picture result = shadow;
  const EditRows rows(result);
  if (!picture || !rows) return {};
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    std::uint8_t* out = rows[place.top + y] + std::size_t{4} * place.left;
    keep_hidden_colors(out, picture.row(y), picture.width());
    lay_over_black(out, picture.row(y), picture.width());
  }
  if (values.number("removeAlpha") == 0) return result;
  return PictureFlattenAlpha(result, static_cast<Colour>(values.number("background")));
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) {
  return kWholeCanvases | kTrueColor;
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  const Place place = place_of(values, document_size(window.list, window.document));
  const std::int64_t most = kind_row(window.document.kind).mostPixels;
  if (place.width <= most && place.height <= most &&
      std::uint64_t{place.width} * place.height * 4 <= kMaximumPictureBytes)
    return std::nullopt;
  return fault_of("offset", StringId::ResultTooLarge);
}

double growth(const FieldValues& values, const DocumentWindow& window) {
  const Extent canvas = document_size(window.list, window.document);
  const Place place = place_of(values, canvas);
  return std::max(static_cast<double>(place.width) / std::max(canvas.width, 1u),
                  static_cast<double>(place.height) / std::max(canvas.height, 1u));
}

bool run(OperationRun& run) {
  // Most frames throw the shadow of the first one.
  const Picture first = picture_of(run.draft.list.record(frame_entries(run.draft).front()));
  const Picture shared = first ? shadow_of(first, run.values) : Picture();
  const auto change = [&](FrameWork& work) {
    const bool same = shared && same_alpha(first, work.picture);
    work.picture = with_shadow(work.picture, same ? shared : shadow_of(work.picture, run.values), run.values);
    work.offset = {};
    return static_cast<bool>(work.picture);
  };
  if (!change_pictures(run.draft, all_frames(frame_entries(run.draft).size()),
                       string_text(StringId::BuildingCaption), run.host, change))
    return false;
  finish_edit(run.draft, false);
  const bool flat = run.number("removeAlpha") != 0;
  return convert_colors(run.draft, {.colorType = flat ? std::uint8_t{2} : std::uint8_t{6}}, run.host);
}

}  // namespace

constinit const Operation kShadow{
    .parameters =
        {
            .name = "shadow",
            .title = "Shadow",
            .help = "What each frame shows throws a shadow",
            .command = 319,
            .kinds = kShadowKinds,
            .fields = kFields,
            .options = kOptions,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::ShadowedPrefix,
    .batch = 8,
    .batchPrefix = "Shadow_",
    .preview = OperationPreview::Full,
    .needs = needs,
    .growth = growth,
    .run = run,
};

}  // namespace vellum
