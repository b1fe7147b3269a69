// Adjust: levels, hue, saturation and lightness, sharpness, inversion.
#include <algorithm>
#include <array>
#include <cmath>

#include "core/edit/edit_closing.h"
#include "image/hue_shift.h"
#include "image/picture_rows.h"
#include "operations/change_pictures.h"
#include "operations/operation_rows.h"
#include "operations/recoloring.h"

namespace vellum {
namespace {

enum Channel { kAll, kRed, kGreen, kBlue, kAlpha };

constexpr FieldChoice kChannels[] = {
    {kAll, "All"}, {kRed, "Red"}, {kGreen, "Green"}, {kBlue, "Blue"}, {kAlpha, "Alpha"}};

constexpr Field level(const char* name, const char* label, std::int64_t least, std::int64_t most,
                      std::int64_t initial, int id) {
  return {.name = name, .label = label, .least = least, .most = most, .initial = initial, .stateId = id};
}

constexpr Field manual(Field field) {
  field.enabledBy = "auto";
  field.enabledAt = 0;
  return field;
}

constexpr Field kFields[] = {
    {.name = "channel",
     .label = "Channel",
     .type = FieldType::Choice,
     .most = kAlpha,
     .choices = kChannels,
     .stateId = 1},
    {.name = "auto",
     .label = "Shadows and highlights from the pictures",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "Leaves half a per cent of the darkest and of the lightest values aside",
     .stateId = 2},
    manual(level("shadows", "Shadows", 0, 253, 0, 3)),
    manual(level("highlights", "Highlights", 2, 255, 255, 4)),
    {.name = "midtone",
     .label = "Midtone",
     .type = FieldType::Real,
     .leastReal = 0.1,
     .mostReal = 9.99,
     .decimals = 2,
     .initialReal = 1,
     .stateId = 5},
    level("outputLow", "Output, low", 0, 255, 0, 6),
    level("outputHigh", "Output, high", 0, 255, 255, 7),
    level("hue", "Hue", -180, 180, 0, 8),
    level("saturation", "Saturation", -100, 100, 0, 9),
    level("lightness", "Lightness", -100, 100, 0, 10),
    level("sharpen", "Sharpen", -10, 10, 0, 11),
    {.name = "invert", .label = "Invert", .type = FieldType::Flag, .most = 1, .stateId = 12},
};

/// Halves go up, also those that a sum of shares comes a little below.
std::uint8_t rounded(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value + 1e-9), 0L, 255L));
}

struct Levels {
  double shadows, highlights, midtone, low, high;

  Curve curve() const {
    Curve curve{};
    for (int v = 0; v < 256; ++v) {
      const double share = std::clamp((v - shadows) / (highlights - shadows), 0.0, 1.0);
      curve[static_cast<std::size_t>(v)] = rounded(low + (high - low) * std::pow(share, 1 / midtone));
    }
    return curve;
  }
};

struct Adjustment {
  Channel channel;
  Curve levels;
  HueShift shift;
  int sharpen;
  bool invert, levelsChange;

  bool changes_hsl() const {
    return channel != kAlpha && (shift.hue != 0 || shift.saturation != 0 || shift.lightness != 0);
  }
  /// Whether it is for a byte of a pixel: blue, green, red, alpha.
  bool takes(unsigned byte) const {
    return byte == 3 ? channel == kAlpha
                     : channel == kAll || channel == (byte == 2   ? kRed
                                                      : byte == 1 ? kGreen
                                                                  : kBlue);
  }
};

Picture with_curve(const Picture& picture, const Adjustment& adjustment, const Curve& curve) {
  std::array<const Curve*, 4> curves{};
  for (unsigned byte = 0; byte < 4; ++byte)
    if (adjustment.takes(byte)) curves[byte] = &curve;
  return with_curves(picture, curves);
}

constexpr Curve kInverted = [] {
  Curve curve{};
  for (std::size_t v = 0; v < curve.size(); ++v) curve[v] = static_cast<std::uint8_t>(255 - v);
  return curve;
}();

void shift_hues(Picture& picture, const Adjustment& adjustment) {
  const EditRows rows(picture);
  for (std::uint32_t y = 0; rows && y < picture.height(); ++y)
    shift_row(rows[y], picture.width(), picture.bits() / 8, adjustment.shift);
}

/// v + k / 10 * (v - mean of the 3 x 3 around it), rounded; beyond the edges lie the pixels of the edge.
Picture sharpened(const Picture& picture, const Adjustment& adjustment) {
  Picture result = picture;
  const EditRows rows(result);
  if (!rows) return {};
  const unsigned size = picture.bits() / 8;
  const std::uint32_t last_x = picture.width() - 1, last_y = picture.height() - 1;
  const auto value = [&](int v, int sum) {
    const int scaled = 90 * v + adjustment.sharpen * (9 * v - sum);
    return static_cast<std::uint8_t>(std::clamp((scaled + (scaled < 0 ? -45 : 45)) / 90, 0, 255));
  };
  for (std::uint32_t y = 0; y <= last_y; ++y) {
    const std::uint8_t* around[] = {picture.row(y == 0 ? 0 : y - 1), picture.row(y),
                                    picture.row(std::min(y + 1, last_y))};
    for (std::uint32_t x = 0; x <= last_x; ++x)
      for (unsigned byte = 0; byte < size; ++byte) {
        if (!adjustment.takes(byte)) continue;
        int sum = 0;
        for (const std::uint8_t* row : around)
          for (const std::uint32_t column : {x == 0 ? 0 : x - 1, x, std::min(x + 1, last_x)})
            sum += row[column * size + byte];
        rows[y][x * size + byte] = value(around[1][x * size + byte], sum);
      }
  }
  return result;
}

Picture recolored(const Picture& picture, const Adjustment& adjustment) {
  return with_changed_colors(picture, [&](std::uint8_t* color) {
    const auto change = [&](const Curve& curve) {
      for (unsigned byte = 0; byte < 3; ++byte)
        if (adjustment.takes(byte)) color[byte] = curve[color[byte]];
    };
    change(adjustment.levels);
    if (adjustment.changes_hsl()) shift_color(color, adjustment.shift);
    if (adjustment.invert) change(kInverted);
  });
}

bool change_picture(Picture& picture, const Adjustment& adjustment) {
  if (picture.bits() <= 8) {
    picture = recolored(picture, adjustment);
    return static_cast<bool>(picture);
  }
  if (adjustment.levelsChange) picture = with_curve(picture, adjustment, adjustment.levels);
  if (picture && adjustment.changes_hsl()) shift_hues(picture, adjustment);
  if (picture && adjustment.sharpen != 0) picture = sharpened(picture, adjustment);
  if (picture && adjustment.invert) picture = with_curve(picture, adjustment, kInverted);
  return static_cast<bool>(picture);
}

using Histogram = std::array<std::uint64_t, 256>;

void count_values(const Picture& picture, const Adjustment& adjustment, Histogram& histogram) {
  if (picture.bits() <= 8) {
    Histogram indexes{};
    for (std::uint32_t y = 0; y < picture.height(); ++y)
      for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                         [&](std::size_t, const std::uint8_t* run, std::size_t count) {
                           for (std::size_t i = 0; i < count; ++i) ++indexes[run[i]];
                         });
    for (std::uint32_t i = 0; i < picture.colours(); ++i)
      for (unsigned byte = 0; byte < 3; ++byte)
        if (adjustment.takes(byte)) histogram[picture.table()[4 * i + byte]] += indexes[i];
    return;
  }
  const unsigned size = picture.bits() / 8;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t i = 0; i < size * picture.width(); ++i)
      if (adjustment.takes(i % size)) ++histogram[picture.row(y)[i]];
}

/// The values between which all but half a per cent at each end lie, at least two apart.
void set_automatic_levels(const OperationRun& run, const Adjustment& adjustment, Levels& levels) {
  Histogram histogram{};
  const auto entries = frame_entries(run.draft);
  for (const std::size_t frame : run.frames)
    count_values(picture_of(run.draft.list.record(entries[frame])), adjustment, histogram);
  std::uint64_t all = 0;
  for (const std::uint64_t count : histogram) all += count;
  if (all == 0) return;
  const auto tail = [&](int from, int step) {
    std::uint64_t seen = 0;
    int at = from;
    while ((seen += histogram[static_cast<std::size_t>(at)]) * 200 <= all) at += step;
    return at;
  };
  const int low = std::min(tail(0, 1), 253), high = std::max(tail(255, -1), low + 2);
  levels.shadows = low;
  levels.highlights = high;
}

unsigned needs(const DocumentWindow& window, const FieldValues& values, const FrameList& frames) {
  return values.number("sharpen") != 0 ? unsigned{kTrueColor} : needs_of_recoloring(window, frames);
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  const std::int64_t least = values.number("shadows") + 2;
  if (values.number("auto") != 0 || values.number("highlights") >= least) return std::nullopt;
  return fault_of("highlights", StringId::WholeRange, {"Highlights", std::to_string(least), "255"});
}

bool run(OperationRun& run) {
  Levels levels{static_cast<double>(run.number("shadows")), static_cast<double>(run.number("highlights")),
                run.values.real("midtone"), static_cast<double>(run.number("outputLow")),
                static_cast<double>(run.number("outputHigh"))};
  Adjustment adjustment{.channel = static_cast<Channel>(run.number("channel")),
                        .levels = {},
                        .shift = {static_cast<double>(run.number("hue")) / 360,
                                  static_cast<double>(run.number("saturation")) / 100,
                                  static_cast<double>(run.number("lightness")) / 100},
                        .sharpen = static_cast<int>(run.number("sharpen")),
                        .invert = run.number("invert") != 0,
                        .levelsChange = true};
  if (!free_color_key(run.draft, run.host)) return false;
  if (run.number("auto") != 0) set_automatic_levels(run, adjustment, levels);
  adjustment.levels = levels.curve();
  adjustment.levelsChange =
      !std::ranges::all_of(adjustment.levels, [i = 0](std::uint8_t v) mutable { return v == i++; });
  if (!adjustment.levelsChange && !adjustment.changes_hsl() && adjustment.sharpen == 0 && !adjustment.invert)
    return true;
  const bool changed =
      change_pictures(run.draft, run.frames, string_text(StringId::BuildingCaption), run.host,
                      [&](FrameWork& work) { return change_picture(work.picture, adjustment); });
  if (!changed) return false;
  follow_palettes(run.draft);
  finish_edit(run.draft, false);
  return true;
}

}  // namespace

constinit const Operation kAdjust{
    .parameters =
        {
            .name = "adjust",
            .title = "Adjust",
            .help = "Levels, hue, saturation, lightness, sharpness; inverted colors",
            .command = 330,
            .kinds = kAnimatedKinds,
            .stateFile = "AdjustState.txt",
            .history = "EditAdjustHistory.txt",
            .fields = kFields,
            .check = check,
        },
    .scoped = true,
    .preview = OperationPreview::Full,
    .needs = needs,
    .run = run,
};

}  // namespace vellum
