// Social media: the animation on a ground of its own, in a size that a destination wants.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/edit/edit_closing.h"
#include "core/edit/picture_fitting.h"
#include "core/files/save_options.h"
#include "core/model/kind_table.h"
#include "image/lay.h"
#include "image/mask.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/resample.h"
#include "operations/animation_properties.h"
#include "operations/change_pictures.h"
#include "operations/changed_parts.h"
#include "operations/convert_colors.h"
#include "operations/cover.h"
#include "operations/field_rows.h"
#include "operations/one_picture.h"
#include "operations/operation_rows.h"
#include "operations/recoloring.h"
#include "operations/reconstruct.h"
#include "operations/settings.h"
#include "operations/social_sizes.h"
#include "operations/text_art.h"

namespace vellum {
namespace {

enum Process { kColor, kGradient, kBlurred, kAverage };
constexpr FieldChoice kProcesses[] = {{kColor, "Color", "color"},
                                      {kGradient, "Gradient", "gradient"},
                                      {kBlurred, "Blurred image", "blurred"},
                                      {kAverage, "Image average", "average"}};
enum GradientType { kLinear, kRadial, kByAngle };
constexpr FieldChoice kGradients[] = {
    {kLinear, "Linear", "linear"}, {kRadial, "Radial", "radial"}, {kByAngle, "Angle", "angle"}};

constexpr const char *kGround = "Background", *kImage = "Image";

constexpr Field ground(Field field, Process process) {
  return on_page(enabled_by(field, "process", process), kGround);
}
constexpr Field choice(const char* name, const char* label, std::span<const FieldChoice> choices,
                       std::int64_t initial, int& setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Choice,
          .most = static_cast<std::int64_t>(choices.size()) - 1,
          .choices = choices,
          .initial = initial,
          .setting = &setting};
}

constexpr Field kFields[] = {
    {.name = "destination",
     .label = "Destination",
     .type = FieldType::Choice,
     .most = kOwnSize,
     .choices = kSocialDestinations,
     .setting = &settings::SocialMediaDestination},
    enabled_by(whole_field("width", "Width", 1, std::int64_t{kMostSocialSide}, 640), "destination", kOwnSize),
    enabled_by(whole_field("height", "Height", 1, std::int64_t{kMostSocialSide}, 480), "destination",
               kOwnSize),
    on_page(choice("process", "Background", kProcesses, kBlurred, settings::SocialMediaProcess), kGround),
    on_page(color_field("color1", "Color", 0xFFFFFF, &settings::SocialMediaColor1), kGround),
    ground(color_field("color2", "Second color", 0x808080, &settings::SocialMediaColor2), kGradient),
    ground(choice("gradient", "Gradient", kGradients, kLinear, settings::SocialMediaGradientType), kGradient),
    ground(whole_field("gradientAngle", "Angle", 0, 359, 90, &settings::SocialMediaGradientAngle), kGradient),
    ground(whole_field("gradientX", "Center across", 0, 100, 50, &settings::SocialMediaGradientX), kGradient),
    ground(whole_field("gradientY", "Center down", 0, 100, 50, &settings::SocialMediaGradientY), kGradient),
    ground(whole_field("blur", "Blur", 0, 100, 24, &settings::SocialMediaBlur), kBlurred),
    on_page(whole_field("hue", "Hue", -180, 180, 0, &settings::SocialMediaHSBHue), kGround),
    on_page(whole_field("saturation", "Saturation", -100, 100, 0, &settings::SocialMediaHSBSat), kGround),
    on_page(whole_field("brightness", "Brightness", -100, 100, 0, &settings::SocialMediaHSBBri), kGround),
    on_page(whole_field("size", "Size (per cent)", 10, 100, 90, &settings::SocialMediaFrameSize), kImage),
    on_page(whole_field("margin", "Margin", 0, 500, 40, &settings::SocialMediaFrameMargin), kImage),
    on_page(whole_field("across", "Place across", 0, 100, 50, &settings::SocialMediaHorzPos), kImage),
    on_page(whole_field("down", "Place down", 0, 100, 50, &settings::SocialMediaVertPos), kImage),
    on_page(flag_field("keyline", "Keyline", 0, &settings::SocialMediaKeylineEnable), kImage),
    on_page(enabled_by(whole_field("keylineSize", "Width of the keyline", 1, 50, 2,
                                   &settings::SocialMediaKeylineSize),
                       "keyline"),
            kImage),
    on_page(
        enabled_by(color_field("keylineColor", "Color of the keyline", 0, &settings::SocialMediaKeylineColor),
                   "keyline"),
        kImage),
    on_page(flag_field("shadow", "Shadow", 1, &settings::SocialMediaShadowEnable), kImage),
    on_page(
        enabled_by(color_field("shadowColor", "Color of the shadow", 0, &settings::SocialMediaShadowColor),
                   "shadow"),
        kImage),
    on_page(enabled_by(whole_field("shadowOffset", "Offset of the shadow", 0, 100, 8,
                                   &settings::SocialMediaShadowOffset),
                       "shadow"),
            kImage),
    on_page(enabled_by(whole_field("shadowOpacity", "Opacity of the shadow", 0, 100, 50,
                                   &settings::SocialMediaShadowOpacity),
                       "shadow"),
            kImage),
    on_page(enabled_by(whole_field("shadowSoftness", "Softness of the shadow", 0, 50, 12,
                                   &settings::SocialMediaShadowSoftness),
                       "shadow"),
            kImage),
};

constexpr const char* kSides[] = {"width", "height"};
constexpr CompoundOption kOptions[] = {{.name = "to",
                                        .form = "WxH",
                                        .help = "A size of your own",
                                        .fields = kSides,
                                        .parting = 'x',
                                        .alongside = "destination",
                                        .alongsideValue = kOwnSize}};

void fit(std::vector<Field>& fields, const DocumentWindow&) {
  fields.front().choices = social_destinations();
  fields.front().most = static_cast<std::int64_t>(fields.front().choices.size()) - 1;
}

Extent size_of(const FieldValues& values, const Extent& canvas) {
  const std::int64_t destination = values.number("destination");
  if (destination == kOwnSize)
    return {static_cast<std::uint32_t>(values.number("width")),
            static_cast<std::uint32_t>(values.number("height"))};
  const auto size = social_size(destination);
  return size ? Extent{size->width, size->height} : canvas;
}

std::string note(const FieldValues&, const DocumentWindow&) { return social_sizes_fault(); }

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  const Extent size = size_of(values, document_size(window.list, window.document));
  const std::int64_t most = kind_row(window.document.kind).mostPixels;
  if (size.width <= most && size.height <= most && canvases_fit(frame_entries(window).size(), size))
    return std::nullopt;
  return fault_of("destination", StringId::ResultTooLarge);
}

// ---------------------------------------------------------------------------------------------------------
// the ground

/// How far from the first color to the second a pixel is, 0 to 1.
double gradient_at(const FieldValues& values, const Extent& size, double x, double y) {
  const double dx = x - size.width * static_cast<double>(values.number("gradientX")) / 100,
               dy = y - size.height * static_cast<double>(values.number("gradientY")) / 100;
  const double turn = static_cast<double>(values.number("gradientAngle")) * std::numbers::pi / 180;
  const double length = std::hypot(size.width, size.height) / 2;
  if (values.number("gradient") == kRadial) return std::min(std::hypot(dx, dy) / length, 1.0);
  if (values.number("gradient") == kByAngle) {
    const double share = (std::atan2(dy, dx) - turn) / (2 * std::numbers::pi);
    return share - std::floor(share);
  }
  const double reach = (std::abs(size.width * std::cos(turn)) + std::abs(size.height * std::sin(turn))) / 2;
  return std::clamp(0.5 + (dx * std::cos(turn) + dy * std::sin(turn)) / (2 * reach), 0.0, 1.0);
}

Picture gradient(const FieldValues& values, const Extent& size) {
  Picture picture = PictureCreate(size.width, size.height, nullptr, 24);
  const EditRows rows(picture);
  if (!rows) return {};
  const auto first = static_cast<Colour>(values.number("color1")),
             second = static_cast<Colour>(values.number("color2"));
  const std::uint8_t from[] = {blue_of(first), green_of(first), red_of(first)},
                     to[] = {blue_of(second), green_of(second), red_of(second)};
  for_each_row(size.height, std::size_t{size.width} * 30, [&](std::uint32_t y) {
    for (std::uint32_t x = 0; x < size.width; ++x) {
      const double share = gradient_at(values, size, x + 0.5, y + 0.5);
      for (int c = 0; c < 3; ++c)
        rows[y][3 * std::size_t{x} + static_cast<std::size_t>(c)] =
            static_cast<std::uint8_t>(std::lround(from[c] + (to[c] - from[c]) * share));
    }
  });
  return picture;
}

void blur_picture(Picture& picture, std::uint32_t radius) {
  const EditRows rows(picture);
  for (std::size_t c = 0; rows && c < 3; ++c) {
    Mask plane(picture.width(), picture.height());
    for (std::uint32_t y = 0; y < plane.height; ++y)
      for (std::uint32_t x = 0; x < plane.width; ++x) plane.row(y)[x] = rows[y][3 * std::size_t{x} + c];
    blur_mask(plane, radius);
    for (std::uint32_t y = 0; y < plane.height; ++y)
      for (std::uint32_t x = 0; x < plane.width; ++x) rows[y][3 * std::size_t{x} + c] = plane.row(y)[x];
  }
}

/// Blurred where more than is needed is there, so that nothing of the edges comes in.
Picture blurred(const Picture& image, const Extent& size, std::uint32_t radius) {
  const std::uint32_t room = 3 * radius;
  Picture large = covering(image, {size.width + 2 * room, size.height + 2 * room});
  if (!large) return {};
  blur_picture(large, radius);
  const auto edge = static_cast<std::int32_t>(room);
  return PictureCrop(large, {edge, edge, edge + static_cast<std::int32_t>(size.width),
                             edge + static_cast<std::int32_t>(size.height)});
}

Colour average_of(const Picture& image) {
  std::uint64_t sums[3] = {};
  for (std::uint32_t y = 0; y < image.height(); ++y) {
    const std::uint8_t* pixel = image.row(y);
    for (std::uint32_t x = 0; x < image.width(); ++x, pixel += 3)
      for (std::size_t c = 0; c < 3; ++c) sums[c] += pixel[c];
  }
  const std::uint64_t count = std::uint64_t{image.width()} * image.height();
  const auto mean = [&](int c) { return static_cast<std::uint32_t>((sums[c] + count / 2) / count); };
  return make_colour(mean(2), mean(1), mean(0));
}

Picture adjusted_ground(const Picture& picture, const FieldValues& values, Host& host) {
  const std::int64_t hue = values.number("hue"), saturation = values.number("saturation"),
                     brightness = values.number("brightness");
  if (!picture || (hue == 0 && saturation == 0 && brightness == 0)) return picture;
  FieldValues wanted = initial_values(kAdjust.parameters.fields);
  wanted.set("hue", hue);
  wanted.set("saturation", saturation);
  wanted.set("lightness", brightness);
  return operate_on_picture(
      kAdjust, picture, [&](const DocumentWindow&) { return std::optional(wanted); }, host);
}

/// `image`: what the first frame shows, opaque.
Picture make_ground(const FieldValues& values, const Picture& image, const Extent& size, Host& host) {
  Picture ground;
  switch (values.number("process")) {
    case kGradient:
      ground = gradient(values, size);
      break;
    case kBlurred:
      ground = blurred(image, size, static_cast<std::uint32_t>(values.number("blur")));
      break;
    default:
      ground = PictureCreateFilled(size.width, size.height,
                                   values.number("process") == kAverage
                                       ? average_of(image)
                                       : static_cast<Colour>(values.number("color1")));
  }
  return adjusted_ground(ground, values, host);
}

// ---------------------------------------------------------------------------------------------------------
// the image

struct Place {
  std::int64_t x, y;
  std::uint32_t width, height;
};

Place place_of(const FieldValues& values, const Extent& image, const Extent& size) {
  const std::int64_t margin = values.number("margin"), percent = values.number("size");
  const auto room = [&](std::uint32_t side) { return std::max<std::int64_t>(side - 2 * margin, 1); };
  const double scale = std::min(room(size.width) * static_cast<double>(percent) / 100 / image.width,
                                room(size.height) * static_cast<double>(percent) / 100 / image.height);
  const auto side = [&](std::uint32_t length) {
    return std::max(1u, static_cast<std::uint32_t>(std::lround(length * scale)));
  };
  Place place{0, 0, side(image.width), side(image.height)};
  const auto at = [&](std::uint32_t whole, std::uint32_t part, std::int64_t share) {
    return (std::int64_t{whole} - room(whole)) / 2 + (room(whole) - std::int64_t{part}) * share / 100;
  };
  place.x = at(size.width, place.width, values.number("across"));
  place.y = at(size.height, place.height, values.number("down"));
  return place;
}

/// `image`: in the size of its place; one that is opaque may be null.
bool put_shadow(Picture& ground, const FieldValues& values, const Place& place, const Picture& image) {
  if (values.number("shadow") == 0) return true;
  const auto softness = static_cast<std::uint32_t>(values.number("shadowSoftness"));
  const std::uint32_t reach = 3 * softness;
  Mask mask = image ? alpha_of(image, reach) : Mask(place.width + 2 * reach, place.height + 2 * reach);
  for (std::uint32_t y = 0; !image && y < place.height; ++y)
    std::fill_n(mask.row(reach + y) + reach, place.width, std::uint8_t{255});
  blur_mask(mask, softness);
  const std::int64_t away = values.number("shadowOffset") - std::int64_t{reach};
  return lay_picture(ground, place.x + away, place.y + away,
                     colored_mask(mask, static_cast<Colour>(values.number("shadowColor"))),
                     static_cast<std::uint32_t>(values.number("shadowOpacity")));
}

void put_keyline(Picture& ground, const FieldValues& values, const Place& place) {
  if (values.number("keyline") == 0) return;
  const auto line = static_cast<std::int32_t>(values.number("keylineSize"));
  PictureFrameRect(
      ground, static_cast<std::int32_t>(place.x) - line, static_cast<std::int32_t>(place.y) - line,
      static_cast<std::int32_t>(place.width) + 2 * line, static_cast<std::int32_t>(place.height) + 2 * line,
      static_cast<Colour>(values.number("keylineColor")), line);
}

/// What frames differ in: the part of the canvas that the image and its shadow may touch.
struct Stage {
  Picture ground;  ///< of the whole canvas
  Picture part;    ///< of it, where frames differ
  std::int32_t x = 0, y = 0;
  Place place{};  ///< of the image on the canvas
  bool clear = false;
  Picture image,
      shaded;  ///< where frames throw shadows of their own: the first image, the part with its shadow

  Place here() const { return {place.x - x, place.y - y, place.width, place.height}; }
  Picture image_of(const Picture& frame) const {
    return PictureResample(frame, place.width, place.height, ResampleFilter::Automatic);
  }
  /// Most images have the outline of the first one.
  bool throw_first_shadow(const Picture& frame, const FieldValues& values) {
    image = image_of(frame);
    shaded = part;
    return image && put_shadow(shaded, values, here(), image);
  }
  /// The part with an image on it; null when memory is exhausted.
  Picture shown(const Picture& frame, const FieldValues& values) const {
    const Picture own = image_of(frame);
    // What is opaque is all of the part.
    if (own && !clear && own.width() == part.width() && own.height() == part.height()) return own;
    const bool known = clear && own && same_alpha(own, image);
    Picture result = known ? shaded : part;
    if (!own || (clear && !known && !put_shadow(result, values, here(), own))) return {};
    return lay_picture(result, here().x, here().y, own) ? result : Picture();
  }
  Picture canvas(const Picture& changed) const {
    Picture result = ground;
    PictureBlit(result, x, y, changed, 0, 0, static_cast<std::int32_t>(changed.width()),
                static_cast<std::int32_t>(changed.height()));
    return result;
  }
};

/// Where the shadow may be: in a square around its place.
std::int64_t shadow_reach(const FieldValues& values) {
  return values.number("shadow") == 0
             ? 0
             : values.number("shadowOffset") + 3 * values.number("shadowSoftness") + 1;
}

Stage stage_of(const Picture& ground, const FieldValues& values, const Place& place, bool clear) {
  Stage stage;
  stage.ground = ground;
  stage.place = place;
  stage.clear = clear;
  const std::int64_t reach = clear ? shadow_reach(values) : 0;
  const auto held = [](std::int64_t at, std::uint32_t most) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(at, 0, most));
  };
  const std::uint32_t width = ground.width(), height = ground.height();
  const PictureRect rect{
      held(place.x - reach, width - 1), held(place.y - reach, height - 1),
      std::max(held(place.x + place.width + reach, width), held(place.x - reach, width - 1) + 1),
      std::max(held(place.y + place.height + reach, height), held(place.y - reach, height - 1) + 1)};
  stage.x = rect.left;
  stage.y = rect.top;
  stage.part = PictureCrop(ground, rect);
  return stage;
}

/// The first frame becomes a canvas, later ones the part in which they differ from the one in front. A WebP
/// has canvases, as it is cut when it is written.
bool cut_to_changes(OperationRun& run, const Stage& stage) {
  const bool webp = run.draft.document.kind == DocumentKind::WEBP;
  std::vector<ChunkHandle> parts;
  for (const std::size_t entry : frame_entries(run.draft))
    parts.push_back(picture_of(run.draft.list.record(entry)).handle());
  return change_pictures(run.draft, all_frames(parts.size()), string_text(StringId::BuildingCaption),
                         run.host, [&](FrameWork& work) {
                           work.offset = {};
                           if (webp || work.frame == 0 || work.frame == kDefaultImageWork) {
                             work.picture = stage.canvas(work.picture);
                             return static_cast<bool>(work.picture);
                           }
                           const FrameLayer part =
                               changed_part(Picture(parts[work.frame - 1]), Picture(parts[work.frame]));
                           work.picture = part.picture;
                           work.offset = {part.offset.x + stage.x, part.offset.y + stage.y};
                           set_frame_dispose(work.record, run.draft.document.kind, 0);
                           return static_cast<bool>(part.picture);
                         });
}

void tell_of_size(OperationRun& run) {
  if (const std::string fault = social_sizes_fault(); !fault.empty()) run.host.add_note(fault);
  const auto size = social_size(run.number("destination"));
  const std::uint64_t most = size ? size->most : 0;
  if (most == 0) return;
  const auto bytes = size_when_written(run.draft, save_options(), run.host);
  if (bytes && *bytes > most)
    run.host.add_note(filled(StringId::LargerThanAccepted,
                             {grouped(*bytes) + translated(" bytes"), grouped(most) + translated(" bytes")}));
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) {
  return kWholeCanvases | kTrueColor;
}

bool run(OperationRun& run) {
  if (!free_color_key(run.draft, run.host)) return false;
  const DocumentKind kind = run.draft.document.kind;
  const Extent canvas = document_size(run.draft.list, run.draft.document), size = size_of(run.values, canvas);
  const auto entries = frame_entries(run.draft);
  const Picture first = picture_of(run.draft.list.record(entries.front()));
  const Colour background = document_background(run.draft.list, run.draft.document);
  const Picture opaque = first ? PictureFlatten(first, background) : Picture();
  if (!opaque) return false;
  Picture ground = make_ground(run.values, opaque, size, run.host);
  if (!ground) return run.host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
  const Place place = place_of(run.values, canvas, size);
  const bool clear = has_transparency(run.draft);
  if (!clear && !put_shadow(ground, run.values, place, {})) return false;
  put_keyline(ground, run.values, place);
  Stage stage = stage_of(ground, run.values, place, clear);
  if (!stage.part || (clear && !stage.throw_first_shadow(first, run.values)))
    return run.host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
  const auto change = [&](FrameWork& work) {
    work.picture = stage.shown(clear ? work.picture : opaque_true_color(work.picture), run.values);
    work.offset = {};
    set_frame_dispose(work.record, kind, 0);
    return static_cast<bool>(work.picture);
  };
  if (!change_pictures(run.draft, all_frames(entries.size()), string_text(StringId::BuildingCaption),
                       run.host, change) ||
      !cut_to_changes(run, stage))
    return false;
  finish_edit(run.draft, false);
  if (!convert_colors(run.draft, {.colorType = 2}, run.host)) return false;
  tell_of_size(run);
  return true;
}

}  // namespace

constinit const Operation kSocial{
    .parameters =
        {
            .name = "social",
            .title = "Social media",
            .help = "On a ground of its own, in a size that a destination wants",
            .command = 274,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .check = check,
            .note = note,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::SocialMediaPrefix,
    .preview = OperationPreview::Full,
    .needs = needs,
    .run = run,
};

}  // namespace vellum
