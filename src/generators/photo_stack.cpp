// Photo stack: photographs that come one after the other and lie down on each other.
#include <chrono>
#include <cmath>
#include <cstring>
#include <mutex>
#include <numbers>

#include "base/translation.h"
#include "generators/drawn_frames.h"
#include "generators/generator_rows.h"
#include "generators/mixed_colors.h"
#include "generators/random15.h"
#include "generators/settings.h"
#include "image/drawing_library.h"
#include "image/graphic_file.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "image/resample.h"
#include "image/shapes.h"
#include "image/text_mask.h"
#include "operations/cover.h"
#include "operations/field_rows.h"

namespace vellum {
namespace {

enum Ground { kColorGround, kPictureGround, kNoGround };
constexpr FieldChoice kGrounds[] = {
    {kColorGround, "Color"}, {kPictureGround, "Picture"}, {kNoGround, "Transparent"}};
enum Coming { kFlyIn, kFadeIn, kDrop };
constexpr FieldChoice kWays[] = {{kFlyIn, "Fly in"}, {kFadeIn, "Fade in"}, {kDrop, "Drop"}};

constexpr const char* kMotion = "Motion";
constexpr std::uint32_t kShadowPercent = 45;
constexpr double kDropScale = 1.7;
constexpr std::int64_t kMargin = 12;  // pixels around the stack

constexpr Field kFields[] = {
    whole_field("size", "Longer side of a photo", 32, 1024, 200, nullptr, 1),
    whole_field("edge", "Edge", 0, 64, 8, nullptr, 2),
    whole_field("bottomEdge", "Edge below", 0, 128, 24, nullptr, 3),
    color_field("mattFrameColor", "Color of the edge", 0xFFFFFF, &settings::PhotostackMattFrameColor),
    flag_field("captions", "Names of the files", 0, nullptr, 0, 4),
    kept({.name = "ground", .label = "Background", .type = FieldType::Choice, .choices = kGrounds}, 5),
    enabled_by(color_field("backColor", "Background color", 0x808080, nullptr, 6), "ground", kColorGround),
    kept(enabled_by({.name = "backPicture",
                     .label = "Background picture",
                     .type = FieldType::Text,
                     .most = 4096,
                     .look = FieldLook::Path},
                    "ground", kPictureGround),
         7),
    on_page(whole_field("turn", "Greatest turn", 0, 45, 12, nullptr, 8), kMotion),
    on_page(whole_field("scatter", "Scatter", 0, 200, 30, nullptr, 9), kMotion),
    on_page(kept({.name = "way", .label = "They come", .type = FieldType::Choice, .choices = kWays}, 10),
            kMotion),
    on_page(whole_field("steps", "Frames a photo", 1, 60, 8, nullptr, 11), kMotion),
    on_page(whole_field("delay", "Delay", 1, 32767, 60, nullptr, 12), kMotion),
    on_page(whole_field("pause", "Pause", 0, 32767, 1000, nullptr, 13), kMotion),
    on_page(flag_field("shadow", "Shadow", 1, nullptr, 0, 14), kMotion),
    on_page(enabled_by(whole_field("shadowOffset", "Offset of the shadow", 0, 32, 3, nullptr, 15), "shadow"),
            kMotion),
    on_page(
        enabled_by(whole_field("shadowSoftness", "Softness of the shadow", 0, 32, 3, nullptr, 16), "shadow"),
        kMotion),
    on_page(kept({.name = "seed",
                  .label = "Seed",
                  .most = 0x7FFFFFFF,
                  .special = "By the time",
                  .tip = "Of turns and places: the same one gives the same stack"},
                 17),
            kMotion),
};

/// Where a photograph comes to lie, and from where.
struct PhotoPlace {
  Extent photo;         ///< without its edge
  double turn = 0;      ///< radians, clockwise
  double x = 0, y = 0;  ///< of its middle, on the canvas
  double from = 0;      ///< the direction that it flies in from
};

struct CardSize {
  double width, height;

  CardSize(const PhotoPlace& place, const FieldValues& values)
      : width(place.photo.width + 2.0 * static_cast<double>(values.number("edge"))),
        height(place.photo.height +
               static_cast<double>(values.number("edge") + values.number("bottomEdge"))) {}
  double turned_width(double turn) const {
    return width * std::abs(std::cos(turn)) + height * std::abs(std::sin(turn));
  }
  double turned_height(double turn) const {
    return width * std::abs(std::sin(turn)) + height * std::abs(std::cos(turn));
  }
};

Extent photo_size(const Picture& picture, std::int64_t side) {
  const double scale = static_cast<double>(side) / std::max(picture.width(), picture.height());
  const auto scaled = [&](std::uint32_t length) {
    return std::max(1u, static_cast<std::uint32_t>(std::lround(length * scale)));
  };
  return {scaled(picture.width()), scaled(picture.height())};
}

/// A photograph with its edge, turned, on its shadow.
struct Card {
  Picture picture;                    ///< 32 bits
  double middle_x = 0, middle_y = 0;  ///< of the photograph in it
};

/// As Cairo has it.
cairo_surface_t* surface_of(const Picture& picture) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(picture.width()),
                                                        static_cast<int>(picture.height()));
  if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) return surface;
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
  std::uint8_t* data = cairo_image_surface_get_data(surface);
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* in = picture.row(y);
    for (std::uint32_t x = 0; x < picture.width(); ++x, in += 3) {
      const std::uint32_t pixel = in[0] | in[1] << 8 | in[2] << 16;
      std::memcpy(data + y * stride + 4 * std::size_t{x}, &pixel, 4);
    }
  }
  cairo_surface_mark_dirty(surface);
  return surface;
}

/// The name in the edge below, as large as there is room for it.
void put_caption(Picture& card, const std::string& name, const FieldValues& values,
                 std::uint32_t photo_bottom) {
  const double room = static_cast<double>(values.number("bottomEdge")) * 0.5;
  if (room < 6 || name.empty()) return;
  TextStyle style{.family = "Sans", .points = room * 72 / 96};
  Mask text = draw_text(name, style).mask;
  const double most = card.width() * 0.9;
  if (text.width > most) {
    style.points *= most / text.width;
    text = draw_text(name, style).mask;
  }
  const auto matt = static_cast<Colour>(values.number("mattFrameColor"));
  const bool light = red_of(matt) * 2 + green_of(matt) * 5 + blue_of(matt) > 1024;
  lay_mask(card, (std::int64_t{card.width()} - text.width) / 2,
           photo_bottom + (std::int64_t{card.height()} - photo_bottom - text.height) / 2, text,
           light ? 0x404040 : 0xE0E0E0);
}

/// What lies in the middle of a turned card.
Picture flat_card(const Picture& photo, const std::string& name, const PhotoPlace& place,
                  const FieldValues& values) {
  const auto edge = values.number("edge"), below = values.number("bottomEdge");
  const auto matt = static_cast<Colour>(values.number("mattFrameColor"));
  const Picture opaque = PictureFlatten(photo.bits() < 24 ? PictureToTrueColor(photo) : photo, matt);
  const Picture scaled =
      PictureResample(opaque, place.photo.width, place.photo.height, ResampleFilter::Automatic);
  Picture card = PictureCreateFilled(place.photo.width + static_cast<std::uint32_t>(2 * edge),
                                     place.photo.height + static_cast<std::uint32_t>(edge + below), matt);
  if (!scaled || !card || !lay_picture(card, edge, edge, scaled)) return {};
  if (values.number("captions") != 0)
    put_caption(card, name, values, place.photo.height + static_cast<std::uint32_t>(edge));
  return card;
}

/// The higher a card is, the farther its shadow.
Card on_shadow(const Card& card, double height, const FieldValues& values) {
  const Picture& picture = card.picture;
  const auto softness = static_cast<std::uint32_t>(values.number("shadowSoftness"));
  const std::uint32_t reach = 3 * softness;
  Mask shadow(picture.width() + 2 * reach, picture.height() + 2 * reach);
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* in = picture.row(y);
    std::uint8_t* out = shadow.row(y + reach) + reach;
    for (std::uint32_t x = 0; x < picture.width(); ++x) out[x] = in[4 * std::size_t{x} + 3];
  }
  blur_mask(shadow, softness);
  const double offset = static_cast<double>(values.number("shadowOffset")) * (1 + 6 * (height - 1));
  const std::int64_t away = std::llround(offset) - std::int64_t{reach},
                     room = std::max<std::int64_t>(0, -away);
  const auto side = [&](std::uint32_t card_side, std::uint32_t shadow_side) {
    return static_cast<std::uint32_t>(room + std::max<std::int64_t>(card_side, away + shadow_side));
  };
  Card both{PictureCreateAlpha(side(picture.width(), shadow.width), side(picture.height(), shadow.height)),
            card.middle_x + static_cast<double>(room), card.middle_y + static_cast<double>(room)};
  if (!both.picture || !lay_mask(both.picture, room + away, room + away, shadow, 0, kShadowPercent) ||
      !lay_picture(both.picture, room, room, picture))
    return {};
  return both;
}

Card turned_card(const Picture& flat, double turn, double scale, const FieldValues& values) {
  const double wide = flat.width() * scale, high = flat.height() * scale;
  const double cosine = std::abs(std::cos(turn)), sine = std::abs(std::sin(turn));
  const auto width = static_cast<std::uint32_t>(std::ceil(wide * cosine + high * sine)) + 2,
             height = static_cast<std::uint32_t>(std::ceil(wide * sine + high * cosine)) + 2;
  Card card;
  card.picture = drawn_shapes(
      width, height,
      [&](cairo_t* cairo) {
        cairo_surface_t* source = surface_of(flat);
        cairo_translate(cairo, width / 2.0, height / 2.0);
        cairo_rotate(cairo, turn);
        cairo_scale(cairo, scale, scale);
        cairo_translate(cairo, flat.width() / -2.0, flat.height() / -2.0);
        cairo_set_source_surface(cairo, source, 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_BILINEAR);
        cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_PAD);
        cairo_rectangle(cairo, 0, 0, flat.width(), flat.height());
        cairo_fill(cairo);
        cairo_surface_destroy(source);
      },
      1);
  card.middle_x = width / 2.0, card.middle_y = height / 2.0;
  return card.picture && values.number("shadow") != 0 ? on_shadow(card, scale, values) : card;
}

// ---------------------------------------------------------------------------------------------------------
// the stack

/// Frames in their order cost one photograph each time that one has come to lie; a step back begins anew.
class PhotoStack {
 public:
  PhotoStack(const FieldValues& values, const GeneratorInputs& inputs, std::uint32_t seed)
      : values_(values), photos_(inputs.pictures), names_(inputs.names), random_(seed) {
    for (const HeldPicture& held : photos_) places_.push_back(place_for(held.picture()));
    measure();
  }

  Extent canvas() const { return canvas_; }
  std::size_t count() const { return photos_.size() * steps(); }
  std::uint32_t delay(std::size_t frame) const {
    const bool lies = frame % steps() + 1 == steps() && values_.number("pause") != 0;
    return static_cast<std::uint32_t>(values_.number(lies ? "pause" : "delay"));
  }
  void stand_on(const Picture& ground) { ground_ = ground; }

  Picture frame(std::size_t number) {
    const std::lock_guard lock(mutex_);
    const std::size_t photo = number / steps();
    if (!stack_ || photo < photo_) {
      stack_ = ground_;
      photo_ = 0;
      flat_ = {};
    }
    for (; photo_ < photo; ++photo_) {
      if (!load()) return {};
      put(stack_, 1);
      flat_ = {};
    }
    if (!load()) return {};
    Picture made = stack_;
    put(made, static_cast<double>(number % steps() + 1) / static_cast<double>(steps()));
    return made;
  }

 private:
  std::size_t steps() const { return static_cast<std::size_t>(values_.number("steps")); }
  /// -1 to 1.
  double chance() { return random_.next() / 16383.5 - 1; }

  PhotoPlace place_for(const Picture& picture) {
    PhotoPlace place{photo_size(picture, values_.number("size"))};
    place.turn = chance() * static_cast<double>(values_.number("turn")) * std::numbers::pi / 180;
    place.x = chance() * static_cast<double>(values_.number("scatter"));
    place.y = chance() * static_cast<double>(values_.number("scatter"));
    place.from = chance() * std::numbers::pi;
    return place;
  }
  /// The canvas around all that comes to lie.
  void measure() {
    double left = 0, top = 0, right = 0, bottom = 0;
    const bool shadowed = values_.number("shadow") != 0;
    const double away = shadowed ? static_cast<double>(values_.number("shadowOffset")) : 0,
                 soft = shadowed ? 3.0 * static_cast<double>(values_.number("shadowSoftness")) : 0;
    for (const PhotoPlace& place : places_) {
      const CardSize card(place, values_);
      const double across = card.turned_width(place.turn) / 2, along = card.turned_height(place.turn) / 2;
      left = std::min(left, place.x - across - std::max(0.0, soft - away));
      top = std::min(top, place.y - along - std::max(0.0, soft - away));
      right = std::max(right, place.x + across + soft + away);
      bottom = std::max(bottom, place.y + along + soft + away);
    }
    canvas_ = {static_cast<std::uint32_t>(std::ceil(right - left) + 2 * kMargin),
               static_cast<std::uint32_t>(std::ceil(bottom - top) + 2 * kMargin)};
    for (PhotoPlace& place : places_) place.x += kMargin - left, place.y += kMargin - top;
  }
  bool load() {
    if (flat_) return true;
    const Picture photo = photos_[photo_].picture();
    if (!photo) return false;
    const Picture small = reduced_to_fit(photo, static_cast<std::uint32_t>(values_.number("size")));
    const std::string name = photo_ < names_.size() ? names_[photo_] : std::string();
    if (small) flat_ = flat_card(small, name, places_[photo_], values_);
    if (flat_) card_ = turned_card(flat_, places_[photo_].turn, 1, values_);
    return flat_ && card_.picture;
  }
  /// Lays the photograph down, or as far as it has come by then.
  void put(Picture& picture, double share) const {
    const PhotoPlace& place = places_[photo_];
    const double left = std::pow(1 - share, 3);  // of its way: fast at first
    const std::int64_t way = values_.number("way");
    double x = place.x, y = place.y;
    std::uint32_t percent = 100;
    if (way == kFlyIn) {
      const CardSize card(place, values_);
      const double far = std::hypot(canvas_.width, canvas_.height) / 2 + std::hypot(card.width, card.height);
      x += std::cos(place.from) * far * left;
      y += std::sin(place.from) * far * left;
    } else {
      percent =
          static_cast<std::uint32_t>(std::lround(100 * (way == kDrop ? std::min(1.0, 1.5 * share) : share)));
    }
    if (way == kDrop && share < 1) {
      const double scale = 1 + (kDropScale - 1) * left;
      lay_card(picture, turned_card(flat_, place.turn, scale, values_), x, y, percent);
    } else {
      lay_card(picture, card_, x, y, percent);
    }
  }
  void lay_card(Picture& picture, const Card& card, double x, double y, std::uint32_t percent) const {
    lay_picture(picture, std::llround(x - card.middle_x), std::llround(y - card.middle_y), card.picture,
                percent);
  }

  FieldValues values_;
  std::vector<HeldPicture> photos_;
  std::vector<std::string> names_;
  Random15 random_;
  std::vector<PhotoPlace> places_;
  Extent canvas_;
  Picture ground_;

  std::mutex mutex_;
  std::size_t photo_ = 0;  ///< that comes
  Picture stack_;          ///< below it
  Picture flat_;           ///< the card of that photograph, as it is and turned
  Card card_;
};

std::uint32_t seed_of(const FieldValues& values) {
  if (const std::int64_t seed = values.number("seed")) return static_cast<std::uint32_t>(seed);
  return static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch().count() / 1000);
}

Picture ground_of(const FieldValues& values, Extent canvas, Host& host) {
  const std::int64_t ground = values.number("ground");
  if (ground == kNoGround) return PictureCreateAlpha(canvas.width, canvas.height);
  const auto color = static_cast<Colour>(values.number("backColor"));
  if (ground == kColorGround) return PictureCreateFilled(canvas.width, canvas.height, color);
  const Picture picture = read_picture_file(values.text("backPicture"), host);
  if (!picture) return {};
  return covering(PictureFlatten(picture.bits() < 24 ? PictureToTrueColor(picture) : picture, color), canvas);
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (values.number("ground") == kPictureGround && values.text("backPicture").empty())
    return fault_of("backPicture", StringId::ChooseAFile);
  return std::nullopt;
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const auto stack = std::make_shared<PhotoStack>(values, inputs, seed_of(values));
  if (!can_be_held(stack->canvas(), 4, 32)) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the stack would be too large")});
    return std::nullopt;
  }
  const Picture ground = ground_of(values, stack->canvas(), host);
  if (!ground) return std::nullopt;
  stack->stand_on(ground);
  return stream_of({stack->canvas(), stack->count(), values.number("ground") == kNoGround,
                    [stack](std::size_t frame) { return stack->frame(frame); },
                    [stack](std::size_t frame) { return stack->delay(frame); }},
                   inputs.kind, host);
}

std::uint32_t useful(const FieldValues& values) { return static_cast<std::uint32_t>(values.number("size")); }

}  // namespace

constinit const Generator kPhotoStack{
    .parameters =
        {
            .name = "photostack",
            .title = "Photo stack",
            .help = "Photographs that come one after the other and lie down on each other",
            .command = 273,
            .stateFile = "PhotoStackState.txt",
            .fields = kFields,
            .check = check,
        },
    .input = GeneratorInput::Pictures,
    .document = "PhotoStack",
    .listFile = "PhotoStackImages.txt",
    .useful = useful,
    .failure = StringId::AllocationError,
    .make = make,
};

}  // namespace vellum
