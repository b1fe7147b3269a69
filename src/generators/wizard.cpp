#include "generators/wizard.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "base/parallel.h"
#include "core/build/frame_stream.h"
#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "generators/settings.h"
#include "generators/wizard_frames.h"
#include "image/builtin_palette.h"
#include "image/picture_operations.h"
#include "operations/build_stills.h"
#include "operations/frames.h"

namespace vellum {
namespace {

constexpr FieldChoice kPalettes[] = {{kWizardAsIs, "Use as is", "as-is"},
                                     {kWizardTrueColor, "True color", "true"},
                                     {kWizardMatch, "Match to superpalette", "match"},
                                     {kWizardDither, "Dither to superpalette", "dither"},
                                     {kWizardFirst, "Match to first palette", "first"},
                                     {kWizardPhotorealistic, "Fixed photorealistic", "photorealistic"},
                                     {kWizardDrawn, "Fixed drawn", "drawn"}};

constexpr Field kFields[] = {
    {.name = "delay",
     .label = "Delay",
     .least = 1,
     .most = 32760,
     .tip = "Thousandths of a second that each picture is shown",
     .initial = 100,
     .setting = &settings::NewAnimationWizardDelay},
    {.name = "loop",
     .label = "Loop",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "The animation repeats for ever",
     .initial = 1,
     .setting = &settings::NewAnimationWizardLoop},
    {.name = "palette",
     .label = "Palette",
     .type = FieldType::Choice,
     .choices = kPalettes,
     .tip = "What becomes of the colors of the pictures",
     .setting = &settings::NewAnimationWizardPaletteOption},
    {.name = "preserveTransparency",
     .label = "Preserve transparency",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "What is transparent in the files stays transparent",
     .initial = 1,
     .setting = &settings::WizardPreserveTransparency},
    {.name = "masks",
     .label = "Transparent pixels in frames with other colors (MNG)",
     .type = FieldType::Flag,
     .most = 1,
     .initial = 1},
    {.name = "maskColor",
     .label = "Color of transparent pixels (MNG)",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .tip = "With true color, pixels that really have this color become transparent too",
     .initial = 0x808080,
     .setting = &settings::WizardTransparentMaskColor},
    {.name = "improvePalette",
     .label = "The superpalette gets pure black and white",
     .type = FieldType::Flag,
     .most = 1,
     .initial = 1,
     .setting = &settings::ImproveAnimationWizardPalette},
};

/// The colors of the last three choices. False after a message when the first file can't tell its own.
bool give_colors(WizardPlan& plan, const std::filesystem::path& first, Host& host) {
  if (plan.palette < kWizardFirst) return true;
  if (plan.palette == kWizardFirst) {
    const StillFile file = read_still_file(first, Part::Header);
    if (!file.reading.picture) {
      host.show(StringId::ErrorReadingFile, {}, reading_text(first, file.reading));
      return false;
    }
    plan.given.count = std::min(file.colors, PictureGetPalette(file.reading.picture, plan.given.palette));
    if (plan.given.count > 0) return true;
  }
  constexpr int kOrthogonal256 = 6;
  plan.given.count = BuiltInPalette(&plan.given.palette, nullptr, kOrthogonal256);
  return true;
}

/// The palette of all frames; behind it an entry for what is transparent in some.
GivenColors gathered_colors(const WizardSources& sources, const WizardPlan& plan) {
  const bool mask = sources.any_clear();
  PaletteColors colors = sources.colors.colors(mask ? 255 : 256);
  if (plan.improve) improve_ends(colors);
  GivenColors all{colors.palette, colors.count};
  if (!mask) return all;
  std::uint8_t* entry = &all.palette[3 * all.count++];
  entry[0] = red_of(plan.maskColor);
  entry[1] = green_of(plan.maskColor);
  entry[2] = blue_of(plan.maskColor);
  all.alpha.assign(all.count, 255);
  all.alpha.back() = 0;
  return all;
}

/// In the colors that all frames have, where they are gathered.
WizardFrame finished_frame(WizardFrame frame, const WizardPlan& plan) {
  if (!plan.gathers()) return frame;
  const bool clear = frame.picture && frame.picture.bits() == 32;
  frame.picture = to_colors(frame.picture, plan.given, plan.palette == kWizardDither);
  if (clear) frame.transparency = plan.given.alpha;
  return frame;
}

/// Around pictures that are smaller than the canvas.
std::optional<Colour> ground_of(const WizardPlan& plan) {
  if (plan.palette == kWizardAsIs) return std::nullopt;
  return static_cast<Colour>(settings::DefaultBackgroundColour);
}

/// The frames of the files in their order. Each is asked for once.
class WizardStream {
 public:
  WizardStream(WizardSources sources, const WizardPlan& plan, std::uint32_t delay)
      : sources_(std::move(sources)), plan_(plan), delay_(delay), canvas_{sources_.canvas(), plan.kind} {
    if (plan.gathers()) plan_.given = gathered_colors(sources_, plan);
    canvas_.ground = ground_of(plan);
    alone_ = std::ranges::any_of(sources_.files, [&](const WizardSource& file) { return shows_more(file); });
  }

  FrameStream stream(std::uint32_t plays) {
    return {canvas_.size, sources_.files.size(), plays, [this](std::size_t i) { return at(i); }};
  }
  /// Entries of the palette that all frames have; 0 where each has its own.
  std::uint32_t colors() const { return plan_.given.count; }

 private:
  /// Whether the frame in front of it would be seen.
  bool shows_more(const WizardSource& file) const {
    return file.clear || file.size.width != canvas_.size.width || file.size.height != canvas_.size.height;
  }

  StreamedFrame at(std::size_t i) {
    if (i < first_ || i >= first_ + ready_.size()) make(i);
    WizardFrame frame = std::move(ready_[i - first_]);
    if (!frame.picture) return {};
    // An animated PNG takes a frame away behind it, an MNG in front of the next.
    canvas_.clear = plan_.kind == DocumentKind::MING ? shows_more(sources_.files[i]) : alone_;
    StreamedFrame placed = placed_still(frame.picture, std::move(frame.transparency), i, canvas_);
    placed.delay = delay_;
    return placed;
  }

  void make(std::size_t first) {
    const std::size_t count = std::min(wizard_step(sources_.largest), sources_.files.size() - first);
    first_ = first;
    ready_.assign(count, {});
    parallel_for(count, [&](std::size_t i) { ready_[i] = finished(sources_.files[first + i]); });
  }

  WizardFrame finished(WizardSource& file) const {
    WizardFrame frame{std::exchange(file.picture, {}).picture(), std::move(file.transparency)};
    if (!frame.picture) {
      const StillFile again = read_still_file(file.path);
      const Picture& picture = again.reading.picture;
      if (!picture || picture.width() != file.size.width || picture.height() != file.size.height) return {};
      frame = wizard_frame(again, plan_);
    }
    return finished_frame(std::move(frame), plan_);
  }

  WizardSources sources_;
  WizardPlan plan_;
  std::uint32_t delay_;
  StillCanvas canvas_;
  bool alone_ = false;
  std::size_t first_ = 0;
  std::vector<WizardFrame> ready_;
};

/// The palettes are as long as their colors, and not as the tables of the pictures.
void cut_palettes(DocumentWindow& window, std::uint32_t colors) {
  const std::uint32_t bytes = 3 * colors;
  for (const std::size_t entry : frame_entries(window)) {
    ChunkRecord record = window.list.record(entry);
    if (!(record.flags & CRF_PLTE) || record.image->paletteBytes <= bytes) continue;
    record.image.edit().paletteBytes = bytes;
    chunk_list_put(window.list, entry, record);
  }
  ChunkRecord palette;
  const std::size_t at = chunk_find_first(window.list, tag::PLTE, &palette);
  if (at == kNoEntry || palette.size <= static_cast<std::int32_t>(bytes)) return;
  Palette all;
  chunk_find_palette(window.list, all);
  if (!put_payload(palette, std::span(all).first(bytes))) return;
  palette.description = chunk_description(palette);
  chunk_list_put(window.list, at, palette);
}

}  // namespace

constinit const Parameters kWizard{
    .name = "wizard",
    .title = "Animation Wizard",
    .help = "An animation of picture files, each a frame, with one palette for all or as they are",
    .command = 59,
    .page = "animationwizard",
    .fields = kFields,
};

std::size_t wizard_palettes(DocumentKind kind) {
  if (kind == DocumentKind::WEBP) return kWizardTrueColor + 1;
  return settings::AllowAdvancedPalettes != 0 ? kWizardDrawn + 1 : kWizardDither + 1;
}

WizardShown wizard_shown(const std::vector<std::filesystem::path>& files, const FieldValues& values,
                         DocumentKind kind, Host& host) {
  constexpr std::size_t kMostSampled = 64;
  WizardPlan plan = wizard_plan(values, kind);
  if (files.empty() || !give_colors(plan, files.front(), host)) return {};
  if (plan.gathers()) {
    std::vector<std::filesystem::path> some;
    const std::size_t count = std::min(files.size(), kMostSampled);
    for (std::size_t i = 0; i < count; ++i) some.push_back(files[i * files.size() / count]);
    const auto sources = read_wizard_files(some, plan, host);
    if (!sources) return {};
    plan.given = gathered_colors(*sources, plan);
  }
  return [plan](const std::filesystem::path& path, std::size_t number, const Extent& canvas) {
    const StillFile file = read_still_file(path);
    if (!file.reading.picture) return Picture();
    WizardFrame frame = finished_frame(wizard_frame(file, plan), plan);
    if (!frame.picture) return Picture();
    const StreamedFrame placed = placed_still(frame.picture, std::move(frame.transparency), number,
                                              {canvas, plan.kind, true, ground_of(plan)});
    const Picture shown = placed.picture && placed.picture.bits() < 32
                              ? PictureWithTransparency(placed.picture, placed.transparency)
                              : placed.picture;
    const Picture deep = shown && shown.bits() < 32 ? PictureToTrueColorAlpha(shown) : shown;
    return deep ? PictureExtendCanvas(deep, canvas.width, canvas.height, 0, 0, 0) : Picture();
  };
}

bool build_wizard(const std::vector<std::filesystem::path>& files, const FieldValues& values,
                  DocumentKind kind, DocumentWindow& window, Host& host) try {
  WizardPlan plan = wizard_plan(values, kind);
  if (files.empty() || !give_colors(plan, files.front(), host)) return false;
  auto sources = read_wizard_files(files, plan, host);
  if (!sources) return false;
  const auto caption = plan.palette == kWizardAsIs ? StringId::BuildingCaption : StringId::Remapping;
  WizardStream frames(std::move(*sources), plan, static_cast<std::uint32_t>(values.number("delay")));
  if (build_from_stream(window, frames.stream(values.number("loop") != 0 ? 0 : 1), kind, host, caption)) {
    if (frames.colors() > 0) cut_palettes(window, frames.colors());
    return true;
  }
  if (!host.stopped()) host.show(StringId::ErrorAccessingChunk, {}, host.take_fault());
  return false;
} catch (const std::bad_alloc&) {
  host.show(StringId::MemoryError);
  return false;
}

}  // namespace vellum
