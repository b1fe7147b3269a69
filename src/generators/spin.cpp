// Spin: a picture that turns once around.
#include <algorithm>

#include "base/limits.h"
#include "base/translation.h"
#include "core/edit/picture_fitting.h"
#include "generators/generator_rows.h"
#include "generators/settings.h"
#include "image/picture_operations.h"
#include "image/rotate.h"

namespace vellum {
namespace {

enum Destination { kMaximum = 110, kMinimum = 111, kSource = 112 };

constexpr FieldChoice kDestinations[] = {{kMaximum, "Maximum of frames", "maximum"},
                                         {kMinimum, "Minimum of frames", "minimum"},
                                         {kSource, "Original source frame", "source"}};

constexpr FieldChoice kDirections[] = {{1, "Clockwise"}, {0, "Counterclockwise"}};

constexpr Field kFields[] = {
    {.name = "count",
     .label = "Steps",
     .least = 3,
     .most = 180,
     .initial = 24,
     .setting = &settings::SpinCount},
    {.name = "delay",
     .label = "Delay (1/1000ths of a second)",
     .least = 1,
     .most = 32767,
     .initial = 10,
     .setting = &settings::SpinDelay},
    {.name = "direction",
     .label = "Direction",
     .type = FieldType::Flag,
     .most = 1,
     .choices = kDirections,
     .look = FieldLook::Radio,
     .initial = 1,
     .setting = &settings::SpinDirection},
    {.name = "backColor",
     .label = "Background",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .tip = "What the turned picture doesn't cover",
     .setting = &settings::SpinBackcolour},
    {.name = "frame",
     .label = "Destination rectangle",
     .type = FieldType::Choice,
     .choices = kDestinations,
     .look = FieldLook::Radio,
     .initial = kMaximum,
     .setting = &settings::SpinFrame},
    {.name = "loop",
     .label = "Loop",
     .type = FieldType::Flag,
     .most = 1,
     .initial = 1,
     .setting = &settings::SpinLoop},
};

/// Degrees counterclockwise, whole. Running clockwise no picture stands upright: the first one is turned by
/// one degree.
int angle_of(std::size_t step, std::int64_t count, bool clockwise) {
  const int angle = static_cast<int>(360.0 / static_cast<double>(count) * static_cast<double>(step));
  return clockwise ? 359 - angle : angle;
}

/// A square of the largest or the smallest side of all turned pictures, or the picture's own size.
Extent canvas_of(const Picture& picture, const FieldValues& values) {
  const std::int64_t destination = values.number("frame");
  if (destination == kSource) return {picture.width(), picture.height()};
  std::uint32_t most = 0, least = 0xFFFFFFFF;
  for (std::int64_t i = 0; i < values.number("count"); ++i) {
    const auto [width, height] = rotated_size(
        picture.width(), picture.height(),
        angle_of(static_cast<std::size_t>(i), values.number("count"), values.number("direction") != 0));
    most = std::max({most, width, height});
    least = std::min({least, width, height});
  }
  const std::uint32_t side = destination == kMinimum ? least : most;
  return {side, side};
}

/// The turned picture in the middle of the canvas; odd remainders are truncated toward zero.
Picture centered(const Picture& picture, const Extent& canvas, Colour background) {
  const auto middle = [](std::uint32_t whole, std::uint32_t part) {
    return static_cast<std::int32_t>((std::int64_t{whole} - part) / 2);
  };
  return PictureExtendCanvas(picture, canvas.width, canvas.height, middle(canvas.width, picture.width()),
                             middle(canvas.height, picture.height()), background);
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const Picture source = opaque_true_color(inputs.pictures.front().picture());
  if (!source) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
    return std::nullopt;
  }
  const Extent canvas = canvas_of(source, values);
  if (std::uint64_t{canvas.width} * canvas.height * 4 > kMaximumPictureBytes) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the frames would be too large")});
    return std::nullopt;
  }
  const std::int64_t count = values.number("count"), delay = values.number("delay");
  const bool clockwise = values.number("direction") != 0;
  const auto background = static_cast<Colour>(values.number("backColor"));
  return FrameStream{canvas, static_cast<std::size_t>(count), 0, [=](std::size_t step) {
                       StreamedFrame frame;
                       frame.picture = centered(rotated(source, angle_of(step, count, clockwise), background),
                                                canvas, background);
                       frame.delay = static_cast<std::uint32_t>(delay);
                       return frame;
                     }};
}

}  // namespace

constinit const Generator kSpin{
    .parameters =
        {
            .name = "spin",
            .title = "Spin",
            .help = "A picture that turns once around",
            .command = 252,
            .fields = kFields,
        },
    .input = GeneratorInput::Picture,
    .document = "Spin",
    .loop = "loop",
    .fileSetting = &settings::SpinFile,
    .make = make,
};

}  // namespace vellum
