// LED sign: a text of glowing dots that runs, types itself or flashes.
#include <cmath>

#include "generators/generator_rows.h"
#include "generators/mixed_colors.h"
#include "generators/settings.h"
#include "generators/sign_text.h"
#include "generators/text_fields.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

enum LedEffect { kScrollLeft, kScrollRight, kScrollUp, kScrollDown, kType, kFlash, kStill };
constexpr FieldChoice kEffects[] = {{kScrollLeft, "Scroll left"},
                                    {kScrollRight, "Scroll right"},
                                    {kScrollUp, "Scroll up"},
                                    {kScrollDown, "Scroll down"},
                                    {kType, "Type"},
                                    {kFlash, "Flash"},
                                    {kStill, "Still"}};

constexpr const char* kSign = "Sign";
constexpr const char* kColors = "Colors";
constexpr std::int64_t kBorder = 2;  // dots
constexpr std::uint32_t kMostColors = 16;

constexpr Field led(const char* name, const char* label, std::int64_t initial, int* setting) {
  return on_page(color_field(name, label, initial, setting), kColors);
}

constexpr Field kFields[] = {
    sign_text_field(&settings::LEDText, "Your text here"),
    {.name = "effect",
     .label = "Effect",
     .type = FieldType::Choice,
     .choices = kEffects,
     .setting = &settings::LEDEffect},
    whole_field("delay", "Delay", 1, 32767, 60, &settings::LEDSignDelay),
    whole_field("pause", "Pause", 0, 32767, 1000, &settings::LEDSignPause),
    whole_field("jumpby", "Dots a frame", 1, 16, 1, &settings::LEDSignJumpby),
    flag_field("smoothScroll", "Smooth scrolling", 0, &settings::LEDSmoothScroll),
    flag_field("loop", "Loop", 1, &settings::LEDLoop),
    on_page(whole_field("characters", "Visible characters", 4, 64, 16, &settings::LEDSignCharacters), kSign),
    on_page(flag_field("fitFrame", "As wide as the text", 0, &settings::LEDFitFrame), kSign),
    on_page(flag_field("compact", "Narrow letters", 0, &settings::LEDCompact), kSign),
    on_page(flag_field("signCompact", "Small dots", 0, &settings::LEDSignCompact), kSign),
    on_page(flag_field("darkPixels", "Dots that are off show", 1, &settings::LEDSignDarkPixels), kSign),
    enabled_by(led("darkPixelColor", "Dots that are off", 0x404040, &settings::LEDDarkPixelColor),
               "darkPixels"),
    led("colorBlack", "Black and casing", 0, &settings::LEDColorBlack),
    led("colorBlue", "Blue", 0xFF0000, &settings::LEDColorBlue),
    led("colorCyan", "Cyan", 0xFFFF00, &settings::LEDColorCyan),
    led("colorGreen", "Green", 0x00FF00, &settings::LEDColorGreen),
    led("colorMagenta", "Magenta", 0xFF00FF, &settings::LEDColorMagenta),
    led("colorRed", "Red", 0x0000FF, &settings::LEDColorRed),
    led("colorWhite", "White", 0xFFFFFF, &settings::LEDColorWhite),
    led("colorYellow", "Yellow", 0x00FFFF, &settings::LEDColorYellow),
};
constexpr const char* kColorFields[] = {"colorBlack",   "colorBlue", "colorCyan",  "colorGreen",
                                        "colorMagenta", "colorRed",  "colorWhite", "colorYellow"};

// ---------------------------------------------------------------------------------------------------------
// what is lit

/// A frame: the sign at a place of its way, or the mean of that place and the next.
struct LedStep {
  std::int64_t at = 0;  ///< dots that were moved, or letters that are shown
  std::size_t page = 0;
  std::int64_t delay = 0;
  std::int64_t next = -1;  ///< the other place of a mean
};

struct LedSign {
  SignText text;
  std::int64_t effect = 0;
  bool narrow = false;
  std::uint32_t columns = 0;      ///< visible dots
  std::vector<SignLine> lines{};  ///< what is on the sign at a time, or what scrolls by
  DotGrid strip{};                ///< all of what scrolls
  std::vector<LedStep> steps{};

  std::uint32_t cell() const { return narrow ? kNarrowLetter : kWideLetter; }
  std::int64_t width_of(const SignLine& line) const {
    return static_cast<std::int64_t>(line.length() * cell());
  }
  void put_line(DotGrid& grid, std::int64_t x, std::int64_t y, const SignLine& line,
                std::size_t shown) const {
    for (std::size_t i = 0; i < std::min(shown, line.length()); ++i)
      put_letter(grid, x + static_cast<std::int64_t>(i * cell()), y, text.letters[line.begin + i], narrow);
  }
  /// In the middle, by whole dots and without the gap behind the last letter.
  std::int64_t middle(const SignLine& line) const { return (columns - width_of(line) + 1) / 2; }
  DotGrid grid(std::int64_t at, std::size_t page) const;
};

/// Whether the lines on the strip of what scrolls stand in the opposite order: down, the first one comes
/// first.
std::int64_t line_top(const LedSign& sign, std::size_t line) {
  const std::size_t count = sign.lines.size();
  return static_cast<std::int64_t>((sign.effect == kScrollDown ? count - 1 - line : line) * kLetterHeight);
}

DotGrid LedSign::grid(std::int64_t at, std::size_t page) const {
  DotGrid shown(columns, kLetterHeight);
  if (effect >= kType) {
    const SignLine& line = lines[page];
    const auto letters = static_cast<std::size_t>(at);
    const std::int64_t typed = static_cast<std::int64_t>(letters * cell());
    const std::int64_t left = effect != kType             ? middle(line)
                              : width_of(line) <= columns ? 0
                                                          : std::min<std::int64_t>(0, columns - typed);
    put_line(shown, left, 0, line, letters);
    return shown;
  }
  for (std::int64_t y = 0; y < kLetterHeight; ++y)
    for (std::int64_t x = 0; x < columns; ++x) {
      const std::int64_t from_x = effect == kScrollLeft    ? x - columns + at
                                  : effect == kScrollRight ? x + strip.width - at
                                                           : x;
      const std::int64_t from_y = effect == kScrollUp     ? y - kLetterHeight + at
                                  : effect == kScrollDown ? y + strip.height - at
                                                          : y;
      shown.set(x, y, strip.at(from_x, from_y));
    }
  return shown;
}

/// Where a pause holds what scrolls: the letters since the last one in the middle, or their end just in.
std::int64_t place_of_pause(const LedSign& sign, std::size_t from, std::size_t to) {
  if (sign.effect >= kScrollUp) {
    std::size_t line = 0;
    while (line + 1 < sign.lines.size() && sign.lines[line].end < to) ++line;
    const std::int64_t top = line_top(sign, line);
    return sign.effect == kScrollUp ? top + kLetterHeight : sign.strip.height - top;
  }
  const auto left = static_cast<std::int64_t>(from * sign.cell()),
             right = static_cast<std::int64_t>(to * sign.cell());
  const bool fits = right - left <= sign.columns;
  const std::int64_t middle = (sign.columns - (right - left) + 1) / 2;
  if (sign.effect == kScrollLeft) return fits ? left + sign.columns - middle : right;
  return fits ? middle + sign.strip.width - left : sign.strip.width - left;
}

void scroll(LedSign& sign, const FieldValues& values) {
  const std::int64_t jump = values.number("jumpby"), delay = values.number("delay");
  const bool loop = values.number("loop") != 0, smooth = values.number("smoothScroll") != 0;
  const std::int64_t way =
      sign.effect >= kScrollUp ? sign.strip.height + kLetterHeight : sign.strip.width + sign.columns;
  const std::int64_t count = (way + jump - 1) / jump;
  std::vector<std::int64_t> delays(static_cast<std::size_t>(count + 1),
                                   smooth ? std::max<std::int64_t>(1, delay / 2) : delay);
  std::size_t from = 0;
  for (const std::size_t to : sign.text.pauses) {
    const std::int64_t step = (place_of_pause(sign, from, to) + jump / 2) / jump;
    if (values.number("pause") != 0 && to > from)
      delays[static_cast<std::size_t>(std::clamp<std::int64_t>(step, 0, count))] = values.number("pause");
    from = to;
  }
  // Played for ever, the first frame is what would come behind the last.
  for (std::int64_t i = 0; i < count + (loop ? 0 : 1); ++i) {
    sign.steps.push_back({i * jump, 0, delays[static_cast<std::size_t>(i)]});
    if (smooth && (loop || i < count))
      sign.steps.push_back({i * jump, 0, std::max<std::int64_t>(1, delay - delay / 2), (i + 1) * jump});
  }
}

void type(LedSign& sign, const FieldValues& values) {
  const std::int64_t delay = values.number("delay"),
                     pause = values.number("pause") != 0 ? values.number("pause") : delay;
  const std::size_t letters = sign.text.letters.size();
  for (std::size_t i = 1; i <= letters; ++i) {
    const bool rests = i == letters || std::ranges::binary_search(sign.text.pauses, i);
    sign.steps.push_back({static_cast<std::int64_t>(i), 0, rests ? pause : delay});
  }
}

/// Page by page; a pause in the text ends one.
void show_pages(LedSign& sign, const FieldValues& values) {
  const std::int64_t pause = values.number("pause") != 0 ? values.number("pause") : values.number("delay");
  for (std::size_t page = 0; page < sign.lines.size(); ++page) {
    sign.steps.push_back({static_cast<std::int64_t>(sign.lines[page].length()), page, pause});
    if (sign.effect == kFlash) sign.steps.push_back({0, page, pause});
  }
}

LedSign sign_of(const FieldValues& values) {
  LedSign sign{.text = read_sign_text(values.text("text"), SignColor::Red, false)};
  sign.effect = values.number("effect");
  sign.narrow = values.number("compact") != 0;
  const auto characters = static_cast<std::size_t>(values.number("characters"));
  const bool fits = values.number("fitFrame") != 0 && sign.effect >= kType;
  const SignLine all{0, sign.text.letters.size()};
  const std::size_t most =
      fits || sign.effect <= kScrollRight || sign.effect == kType ? sign.text.letters.size() + 1 : characters;
  const bool pages = sign.effect == kFlash || sign.effect == kStill;
  sign.lines =
      sign.effect <= kScrollRight || sign.effect == kType
          ? std::vector{all}
          : sign_lines(sign.text.letters, most, pages ? sign.text.pauses : std::vector<std::size_t>());
  std::int64_t widest = sign.cell();
  for (const SignLine& line : sign.lines) widest = std::max(widest, sign.width_of(line));
  sign.columns =
      static_cast<std::uint32_t>(fits ? widest : static_cast<std::int64_t>(characters * sign.cell()));
  if (sign.effect <= kScrollDown) {
    const bool upright = sign.effect >= kScrollUp;
    sign.strip = DotGrid(upright ? sign.columns : static_cast<std::uint32_t>(widest),
                         static_cast<std::uint32_t>(sign.lines.size()) * kLetterHeight);
    for (std::size_t i = 0; i < sign.lines.size(); ++i)
      sign.put_line(sign.strip, upright ? sign.middle(sign.lines[i]) : 0, line_top(sign, i), sign.lines[i],
                    all.end);
    scroll(sign, values);
  } else if (sign.effect == kType) {
    type(sign, values);
  } else {
    show_pages(sign, values);
  }
  return sign;
}

// ---------------------------------------------------------------------------------------------------------
// how it looks

/// The colors of dots: of each that is off or lit, and of the means of two; at most 16 in all. What doesn't
/// find its own takes the nearest.
struct LedColors {
  Colour states[kSignColors + 1];
  Colour casing;
  std::vector<Colour> all;

  LedColors(const FieldValues& values, const LedSign& sign) {
    const auto color = [&](const char* name) { return static_cast<Colour>(values.number(name)); };
    casing = color("colorBlack");
    states[0] = values.number("darkPixels") != 0 ? color("darkPixelColor") : casing;
    for (std::size_t i = 0; i < std::size(kColorFields); ++i) states[i + 1] = color(kColorFields[i]);
    states[kSignColors] = states[1 + static_cast<std::size_t>(SignColor::Red)];
    std::vector<std::size_t> used = {0};
    for (const SignLetter& letter : sign.text.letters)
      if (const std::size_t dot = static_cast<std::size_t>(letter.color) + 1; !std::ranges::count(used, dot))
        used.push_back(dot);
    add(casing);
    for (const std::size_t dot : used) add(states[dot]);
    for (const std::size_t dot : used) add(corner(states[dot]));
    if (values.number("smoothScroll") == 0) return;
    for (const std::size_t a : used)
      for (const std::size_t b : used)
        add(mixed(states[a], states[b], 0.5)), add(corner(mixed(states[a], states[b], 0.5)));
  }
  Colour corner(Colour dot) const { return mixed(casing, dot, 0.5); }
  void add(Colour color) {
    if (all.size() < kMostColors && !std::ranges::count(all, color)) all.push_back(color);
  }
  Colour nearest(Colour wanted) const {
    const auto away = [&](Colour color) {
      const int r = red_of(color) - red_of(wanted), g = green_of(color) - green_of(wanted),
                b = blue_of(color) - blue_of(wanted);
      return r * r + g * g + b * b;
    };
    return *std::ranges::min_element(all, {}, away);
  }
  GivenColors palette() const {
    GivenColors colors{.count = static_cast<std::uint32_t>(all.size())};
    for (std::size_t i = 0; i < all.size(); ++i) {
      std::uint8_t* entry = colors.palette.data() + 3 * i;
      entry[0] = red_of(all[i]), entry[1] = green_of(all[i]), entry[2] = blue_of(all[i]);
    }
    return colors;
  }
};

/// A dot of pitch - 1 pixels; large ones have round corners.
void put_dot(const EditRows& rows, std::int64_t x, std::int64_t y, std::int64_t pitch, Colour color,
             Colour corner) {
  const std::int64_t size = pitch - 1;
  for (std::int64_t i = 0; i < size; ++i) {
    std::uint8_t* out = rows[static_cast<std::size_t>(y + i)] + 3 * x;
    for (std::int64_t j = 0; j < size; ++j, out += 3) {
      const bool rim = size > 2 && (i == 0 || i == size - 1) && (j == 0 || j == size - 1);
      const Colour put = rim ? corner : color;
      out[0] = blue_of(put), out[1] = green_of(put), out[2] = red_of(put);
    }
  }
}

struct LedPainter {
  LedSign sign;
  LedColors colors;
  std::int64_t pitch;
  Extent canvas;
  /// Of a dot and, in a mean, of the one that follows it: its color and that of its corners.
  Colour inside[kSignColors + 1][kSignColors + 1], rim[kSignColors + 1][kSignColors + 1];

  LedPainter(const FieldValues& values)
      : sign(sign_of(values)), colors(values, sign), pitch(values.number("signCompact") != 0 ? 3 : 5) {
    canvas = {static_cast<std::uint32_t>((sign.columns + 2 * kBorder) * pitch),
              static_cast<std::uint32_t>((kLetterHeight + 2 * kBorder) * pitch)};
    for (std::size_t a = 0; a <= kSignColors; ++a)
      for (std::size_t b = 0; b <= kSignColors; ++b) {
        const Colour mean = a == b ? colors.states[a] : mixed(colors.states[a], colors.states[b], 0.5);
        inside[a][b] = colors.nearest(mean);
        rim[a][b] = colors.nearest(colors.corner(mean));
      }
  }
  Picture operator()(std::size_t frame) const {
    const LedStep& step = sign.steps[frame];
    const DotGrid grid = sign.grid(step.at, step.page),
                  next = step.next < 0 ? grid : sign.grid(step.next, step.page);
    Picture picture = PictureCreateFilled(canvas.width, canvas.height, colors.casing);
    const EditRows rows(picture);
    if (!rows) return {};
    // The gap between dots lies right of and below each: half of it shifts them to the middle.
    for (std::int64_t y = 0; y < grid.height; ++y)
      for (std::int64_t x = 0; x < grid.width; ++x) {
        const std::uint8_t a = grid.at(x, y), b = next.at(x, y);
        put_dot(rows, (x + kBorder) * pitch, (y + kBorder) * pitch, pitch, inside[a][b], rim[a][b]);
      }
    return picture;
  }
};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (auto fault = check_sign_text(values, "sign")) return fault;
  if (!read_sign_text(values.text("text"), SignColor::Red, false).letters.empty()) return std::nullopt;
  return fault_of("text", StringId::EnterTextOfYour, {"sign"});
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const auto painter = std::make_shared<const LedPainter>(values);
  tell_of_letters(painter->sign.text, host);
  return stream_of(
      {painter->canvas, painter->sign.steps.size(), false,
       [painter](std::size_t frame) { return (*painter)(frame); },
       [painter](std::size_t frame) { return static_cast<std::uint32_t>(painter->sign.steps[frame].delay); }},
      inputs.kind, host, painter->colors.palette());
}

}  // namespace

constinit const Generator kLedSign{
    .parameters =
        {
            .name = "led",
            .title = "LED sign",
            .help = "A text of glowing dots that runs, types itself or flashes",
            .command = 253,
            .page = "ledsign",
            .texts = "EditLedHistory.txt",
            .fields = kFields,
            .check = check,
        },
    .document = "Sign",
    .loop = "loop",
    .failure = StringId::AllocationError,
    .make = make,
};

}  // namespace vellum
