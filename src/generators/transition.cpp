// Transition: images that pass to each other, round and round.
#include <algorithm>
#include <chrono>
#include <new>

#include "base/translation.h"
#include "generators/drawn_frames.h"
#include "generators/generator_rows.h"
#include "generators/settings.h"
#include "generators/transition_show.h"
#include "image/builtin_palette.h"
#include "image/picture_operations.h"
#include "image/superpalette.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

constexpr FieldChoice kPalettes[] = {
    {0, "Black and white"},      {1, "Sixteen color Windows"}, {2, "32-color orthogonal"},
    {3, "64-color orthogonal"},  {4, "128-color orthogonal"},  {5, "216-color safe"},
    {6, "256-color orthogonal"}, {7, "256-color with grey"},   {8, "256 grey levels"}};

constexpr Field number_field(const char* name, const char* label, std::int64_t least, std::int64_t most,
                             std::int64_t initial, int* setting, const char* tip = nullptr) {
  return {.name = name,
          .label = label,
          .least = least,
          .most = most,
          .tip = tip,
          .initial = initial,
          .setting = setting};
}

constexpr Field flag_field(const char* name, const char* label, int* setting, const char* tip) {
  return {.name = name,
          .label = label,
          .type = FieldType::Flag,
          .most = 1,
          .tip = tip,
          .initial = 1,
          .setting = setting};
}

constexpr Field switched(Field field, const char* by) {
  field.enabledBy = by;
  field.enabledAt = 0;
  return field;
}

constexpr Field kFields[] = {
    {.name = "effect",
     .label = "Default transition",
     .type = FieldType::Choice,
     .choices = kTransitionNames,
     .setting = &settings::TransitionType},
    number_field("delay", "Delay", 1, 1000, 10, &settings::TransitionDelay,
                 "Of each frame of an effect, in milliseconds"),
    number_field("pause", "Pause", 0, 1000, 10, &settings::TransitionPause,
                 "How long each image stands, in milliseconds"),
    {.name = "mattColor",
     .label = "Matt color",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .tip = "Around images that are smaller than the largest",
     .initial = 0x808080,
     .setting = &settings::TransitionMattcolour},
    flag_field("trueColor", "True color", &settings::TransitionTruecolour,
               "Without it an MNG is made in the colors of a palette"),
    switched(flag_field("customPalette", "Custom palette", &settings::TransitionCustompalette,
                        "A palette that is made for the frames"),
             "trueColor"),
    switched({.name = "palette",
              .label = "Palette",
              .type = FieldType::Choice,
              .choices = kPalettes,
              .initial = 5,
              .setting = &settings::TransitionPalette},
             "customPalette"),
    switched(flag_field("dither", "Dither", &settings::TransitionDither,
                        "Mixes colors that the palette lacks from those that it has"),
             "trueColor"),
    number_field("sandstormBlockSize", "Sandstorm block size", 100, 10000, 500,
                 &settings::TransitionSandstormBlockSize, "Pixels that come with each frame"),
    number_field("horizontalStep", "Horizontal step", 1, 100, 8, &settings::TransitionHorizontalStep,
                 "Pixels that images move between two frames"),
    number_field("verticalStep", "Vertical step", 1, 100, 8, &settings::TransitionVerticalStep,
                 "Pixels that images move between two frames"),
    number_field("blockSpacing", "Block spacing", 4, 200, 16, &settings::TransitionBlockSpacing),
    number_field("rasterSize", "Raster size", 1, 100, 4, &settings::TransitionRasterSize,
                 "Width of the bands, in pixels"),
    number_field("tileSize", "Tile size", 4, 100, 6, &settings::TransitionTileSize),
    number_field("tileBlockSize", "Tile block size", 10, 5000, 45, &settings::TransitionTileBlockSize,
                 "Tiles that come with each frame"),
    number_field("dissolveStep", "Dissolve step size", 4, 128, 24, &settings::TransitionDissolveStep,
                 "Of 255 that lie between the images"),
    number_field("radarStartAngle", "Radar start angle", 0, 359, 0, &settings::TransitionRadarStartAngle),
    number_field("radarStepAngle", "Radar step angle", 0, 359, 10, &settings::TransitionRadarStepAngle,
                 "With 0 it never comes around, until you stop it"),
    {.name = "seed",
     .label = "Seed",
     .most = 0x7FFFFFFF,
     .special = "By the time",
     .tip = "Of what falls by chance: the same one gives the same frames"},
};

/// What an image has for itself, else what holds for all.
struct ImageValues {
  const FieldValues& common;
  const FieldValues* own;

  std::int64_t number(const char* name) const {
    return own && own->find(name) ? own->number(name) : common.number(name);
  }
};

TransitionImage image_of(const HeldPicture& picture, const ImageValues& values) {
  return {picture, static_cast<std::size_t>(values.number("effect")),
          static_cast<std::uint32_t>(values.number("pause")),
          static_cast<std::uint32_t>(values.number("delay"))};
}

/// One image alone passes to the matt color and back.
std::vector<TransitionImage> images_of(const FieldValues& values, const GeneratorInputs& inputs) {
  std::vector<TransitionImage> images;
  for (std::size_t i = 0; i < inputs.pictures.size(); ++i)
    images.push_back(
        image_of(inputs.pictures[i], {values, i < inputs.own.size() ? &inputs.own[i] : nullptr}));
  if (images.size() == 1) {
    const Picture only = images.front().held.picture();
    const auto matt = static_cast<Colour>(values.number("mattColor"));
    images.push_back(image_of(PictureCreateFilled(only.width(), only.height(), matt), {values, nullptr}));
  }
  return images;
}

TransitionSteps steps_of(const FieldValues& values) {
  const auto number = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  return {.horizontal = number("horizontalStep"),
          .vertical = number("verticalStep"),
          .spacing = number("blockSpacing"),
          .raster = number("rasterSize"),
          .tile = number("tileSize"),
          .tilesAtOnce = number("tileBlockSize"),
          .grainsAtOnce = number("sandstormBlockSize"),
          .dissolve = number("dissolveStep"),
          .radarStart = number("radarStartAngle"),
          .radarStep = number("radarStepAngle")};
}

std::uint32_t seed_of(const FieldValues& values) {
  if (const std::int64_t seed = values.number("seed")) return static_cast<std::uint32_t>(seed);
  return static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch().count() / 1000);
}

/// The palette that the frames get. Throws std::bad_alloc where there is none, unless the user stopped it.
GivenColors colors_for(const FrameStream& stream, const FieldValues& values, const GeneratorInputs& inputs,
                       Host& host) {
  GivenColors colors;
  if (values.number("customPalette") == 0) {
    colors.count = BuiltInPalette(&colors.palette, nullptr, static_cast<int>(values.number("palette")));
    return colors;
  }
  const auto picture = [&](std::size_t i) {
    return inputs.sketch ? inputs.pictures[i].picture() : stream.frame(i).picture;
  };
  const PaletteColors chosen =
      superpalette(inputs.sketch ? inputs.pictures.size() : stream.count, picture, 256, host);
  if (chosen.count == 0 && !host.stopped()) throw std::bad_alloc();
  colors.palette = chosen.palette;
  colors.count = chosen.count;
  return colors;
}

std::optional<FrameStream> in_palette(FrameStream stream, const FieldValues& values,
                                      const GeneratorInputs& inputs, Host& host) {
  const GivenColors colors = colors_for(stream, values, inputs, host);
  if (colors.count == 0) return std::nullopt;
  const bool dither = values.number("dither") != 0;
  stream.frame = [colors, dither, frame = std::move(stream.frame)](std::size_t number) {
    StreamedFrame made = frame(number);
    made.picture = to_colors(made.picture, colors, dither);
    return made;
  };
  return stream;
}

/// What a document can't hold isn't begun. An effect without an end has one picture for all its frames, and
/// is stopped.
bool may_be_begun(Extent canvas, std::uint64_t frames, bool deep) {
  return can_be_held(canvas, frames >= kEndlessFrames ? 1 : frames, deep ? 24 : 8);
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  Extent canvas;
  for (const HeldPicture& held : inputs.pictures) {
    const Picture picture = held.picture();
    canvas.width = std::max(canvas.width, picture.width());
    canvas.height = std::max(canvas.height, picture.height());
  }
  if (!may_be_begun(canvas, 1, true)) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the frames would be too large")});
    return std::nullopt;
  }
  const auto show = std::make_shared<TransitionShow>(images_of(values, inputs), canvas,
                                                     static_cast<Colour>(values.number("mattColor")),
                                                     steps_of(values), seed_of(values));
  FrameStream stream{canvas, static_cast<std::size_t>(show->count()), 0,
                     [show](std::size_t number) { return show->frame(number); }};
  const bool deep = values.number("trueColor") != 0 || inputs.kind != DocumentKind::MING;
  if (!inputs.sketch && !may_be_begun(canvas, show->count(), deep)) {
    host.fail(
        {FaultKind::Limit, 0, -1, -1, translated("so many frames of this size would take too much memory")});
    return std::nullopt;
  }
  if (values.number("trueColor") != 0) return stream;
  if (inputs.kind == DocumentKind::MING) return in_palette(std::move(stream), values, inputs, host);
  host.add_note(string_text(StringId::PaletteTakesMng));
  return stream;
}

/// What only a person in front of a window could end.
const char* settle(FieldValues& values, const DocumentWindow&, const GivenFields&) {
  return values.number("radarStepAngle") == 0 ? translated("a radar step angle of 0 never comes around")
                                              : nullptr;
}

constexpr const char* kOwnFields[] = {"effect", "pause", "delay"};

}  // namespace

constinit const Generator kTransition{
    .parameters =
        {
            .name = "transition",
            .title = "Transition",
            .help = "Images that pass to each other, after the last one to the first",
            .command = 251,
            .page = "transitions",
            .fields = kFields,
            .settle = settle,
        },
    .input = GeneratorInput::Pictures,
    .document = "Transition",
    .listFile = "TransitionImages.txt",
    .ownFields = kOwnFields,
    .failure = StringId::AllocationError,
    .make = make,
};

}  // namespace vellum
