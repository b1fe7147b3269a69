// Status panel: dark letters of dots on a lit ground, with their shadow.
#include <algorithm>

#include "generators/generator_rows.h"
#include "generators/settings.h"
#include "generators/sign_text.h"
#include "generators/text_fields.h"
#include "image/lay.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

enum PanelEffect { kType, kLineByLine, kScrollUp, kScrollLeft, kFlash, kStill };
constexpr FieldChoice kEffects[] = {{kType, "Type"},          {kLineByLine, "Line by line"},
                                    {kScrollUp, "Scroll up"}, {kScrollLeft, "Scroll left"},
                                    {kFlash, "Flash"},        {kStill, "Still"}};

constexpr const char* kShadow = "Shadow";
constexpr const char* kColors = "Colors";
constexpr std::int64_t kPitch = 3, kBorder = 4;  // pixels of a dot; dots around the letters
constexpr std::size_t kMostLines = 16;
constexpr std::int64_t kAcross = 2;    // dots that a frame of Scroll left moves; Scroll up moves one
constexpr int kBlinks = 4;             // frames of a cursor at rest
constexpr std::uint8_t kBetween = 96;  // coverage of the gap between dots

constexpr Field ink(const char* name, const char* label, std::int64_t initial, int* setting) {
  return on_page(color_field(name, label, initial, setting), kColors);
}
constexpr Field of_shadow(Field field) { return on_page(enabled_by(field, "softShadow"), kShadow); }

constexpr Field kFields[] = {
    sign_text_field(&settings::DisplaySignText, "Status: ready"),
    {.name = "effect",
     .label = "Effect",
     .type = FieldType::Choice,
     .choices = kEffects,
     .setting = &settings::DisplaySignEffect},
    whole_field("columns", "Columns", 4, 80, 20, &settings::DisplaySignColumns),
    flag_field("fitToText", "As wide as the text", 0, &settings::DisplaySignFitToText),
    whole_field("delay", "Delay", 1, 32767, 100, &settings::DisplaySignDelay),
    whole_field("pause", "Pause", 0, 32767, 1500, &settings::DisplaySignPause),
    only_for(flag_field("showCursor", "Cursor", 1, &settings::DisplaySignShowCursor), "effect", kType),
    flag_field("loop", "Loop", 1, &settings::DisplaySignLoop),
    on_page(flag_field("softShadow", "Shadow of the dots", 1, &settings::DisplaySignSoftShadow), kShadow),
    of_shadow(whole_field("shadowOffset", "Offset", 0, 8, 2, &settings::DisplaySignShadowOffset)),
    of_shadow(whole_field("shadowSoft", "Softness", 0, 8, 1, &settings::DisplaySignShadowSoft)),
    of_shadow(whole_field("shadowDensity", "Density in %", 0, 100, 40, &settings::DisplaySignShadowDensity)),
    ink("colorBack", "Ground", 0x86AD9E, &settings::DisplaySignColorBack),
    ink("colorDefault", "Letters", 0, &settings::DisplaySignColorDefault),
    ink("colorBlue", "Blue", 0xFF0000, &settings::DisplaySignColorBlue),
    ink("colorCyan", "Cyan", 0xFFFF00, &settings::DisplaySignColorCyan),
    ink("colorGreen", "Green", 0x00FF00, &settings::DisplaySignColorGreen),
    ink("colorMagenta", "Magenta", 0xFF00FF, &settings::DisplaySignColorMagenta),
    ink("colorRed", "Red", 0x0000FF, &settings::DisplaySignColorRed),
    ink("colorWhite", "White", 0xFFFFFF, &settings::DisplaySignColorWhite),
    ink("colorYellow", "Yellow", 0x00FFFF, &settings::DisplaySignColorYellow),
};
/// By the number of a color; black has no field of its own.
constexpr const char* kColorFields[kSignColors] = {nullptr,      "colorBlue",    "colorCyan",
                                                   "colorGreen", "colorMagenta", "colorRed",
                                                   "colorWhite", "colorYellow",  "colorDefault"};

// ---------------------------------------------------------------------------------------------------------
// what is seen

struct PanelStep {
  std::size_t page = 0, letters = 0;  ///< letters and line ends of the page that are shown
  std::int64_t x = 0, y = 0;          ///< dots that the page is moved by
  bool cursor = false;
  std::int64_t delay = 0;
};

struct Panel {
  SignText text;
  std::vector<SignLine> lines{};
  std::size_t columns = 0, rows = 0;  ///< letters
  std::size_t onPage = 0;             ///< lines
  std::vector<PanelStep> steps{};

  std::size_t pages() const { return (lines.size() + onPage - 1) / onPage; }
  std::span<const SignLine> page(std::size_t number) const {
    return std::span(lines).subspan(number * onPage, std::min(onPage, lines.size() - number * onPage));
  }
  DotGrid grid(const PanelStep& step) const;
};

constexpr std::int64_t kCellWidth = kNarrowLetter, kCellHeight = kLetterHeight;
constexpr SignLetter kCursor{'_', SignColor::Default};

DotGrid Panel::grid(const PanelStep& step) const {
  DotGrid grid(static_cast<std::uint32_t>(columns) * kNarrowLetter,
               static_cast<std::uint32_t>(rows) * kLetterHeight);
  std::size_t left = step.letters;
  std::int64_t y = step.y, cursor_x = 0, cursor_y = 0;
  for (const SignLine& line : page(step.page)) {
    const std::size_t shown = std::min(left, line.length());
    for (std::size_t i = 0; i < shown; ++i)
      put_letter(grid, step.x + static_cast<std::int64_t>(i) * kCellWidth, y, text.letters[line.begin + i],
                 true);
    // Behind the last letter of a full line there is no place.
    cursor_x = static_cast<std::int64_t>(std::min(shown, columns - 1)) * kCellWidth, cursor_y = y;
    left -= shown;
    if (left == 0) break;
    y += kCellHeight;
  }
  if (step.cursor) put_letter(grid, cursor_x, cursor_y, kCursor, true);
  return grid;
}

std::size_t letters_on(const Panel& panel, std::size_t page) {
  std::size_t letters = 0;
  for (const SignLine& line : panel.page(page)) letters += line.length();
  return letters;
}

/// Whether the text pauses behind so many letters of a page.
bool pauses_behind(const Panel& panel, std::size_t page, std::size_t letters) {
  for (const SignLine& line : panel.page(page)) {
    if (letters <= line.length()) return std::ranges::binary_search(panel.text.pauses, line.begin + letters);
    letters -= line.length();
  }
  return false;
}

struct PanelTimes {
  std::int64_t delay, pause;
  bool cursor;
};

void type(Panel& panel, std::size_t page, const PanelTimes& times) {
  const std::size_t letters = letters_on(panel, page);
  for (std::size_t i = 1; i <= letters; ++i) {
    const bool rests = (i == letters && !times.cursor) || pauses_behind(panel, page, i);
    panel.steps.push_back({page, i, 0, 0, times.cursor, rests ? times.pause : times.delay});
  }
  for (int blink = 0; blink < kBlinks && times.cursor; ++blink)
    panel.steps.push_back(
        {page, letters, 0, 0, blink % 2 == 0, std::max<std::int64_t>(1, times.pause / kBlinks)});
}

void line_by_line(Panel& panel, std::size_t page, const PanelTimes& times) {
  std::size_t letters = 0;
  const auto lines = panel.page(page);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    letters += lines[i].length();
    const bool rests = i + 1 == lines.size() || pauses_behind(panel, page, letters);
    panel.steps.push_back({page, letters, 0, 0, false, rests ? times.pause : times.delay});
  }
}

/// From just outside to just outside; the first frame is what comes behind the last.
void scroll(Panel& panel, std::size_t page, const PanelTimes& times, bool up) {
  const auto lines = static_cast<std::int64_t>(panel.page(page).size());
  const std::int64_t room = up ? static_cast<std::int64_t>(panel.rows) * kCellHeight
                               : static_cast<std::int64_t>(panel.columns) * kCellWidth;
  std::int64_t length = lines * kCellHeight;
  if (!up) {
    length = 0;
    for (const SignLine& line : panel.page(page))
      length = std::max(length, static_cast<std::int64_t>(line.length()) * kCellWidth);
  }
  const std::int64_t step = up ? 1 : kAcross, count = (room + length + step - 1) / step;
  // All of it stands in the middle of its way for the pause.
  const std::int64_t rest = room / step;
  for (std::int64_t i = 0; i < count; ++i) {
    const std::int64_t at = room - i * step;
    panel.steps.push_back({page, letters_on(panel, page), up ? 0 : at, up ? at : 0, false,
                           i == rest ? times.pause : times.delay});
  }
}

void show(Panel& panel, std::size_t page, const PanelTimes& times, bool flashes) {
  panel.steps.push_back({page, letters_on(panel, page), 0, 0, false, times.pause});
  if (flashes) panel.steps.push_back({page, 0, 0, 0, false, times.pause});
}

Panel panel_of(const FieldValues& values) {
  Panel panel{.text = read_sign_text(values.text("text"), SignColor::Default, true)};
  panel.columns = static_cast<std::size_t>(values.number("columns"));
  const std::int64_t effect = values.number("effect");
  const bool pages = effect == kFlash || effect == kStill;
  panel.lines =
      sign_lines(panel.text.letters, panel.columns, pages ? panel.text.pauses : std::vector<std::size_t>());
  if (values.number("fitToText") != 0) {
    panel.columns = 1;
    for (const SignLine& line : panel.lines) panel.columns = std::max(panel.columns, line.length());
    // A cursor has its place behind the last letter.
    if (effect == kType && values.number("showCursor") != 0) ++panel.columns;
  }
  panel.onPage = effect == kScrollUp ? panel.lines.size() : kMostLines;
  panel.rows = std::min(panel.lines.size(), kMostLines);
  const std::int64_t delay = values.number("delay");
  const PanelTimes times{delay, values.number("pause") != 0 ? values.number("pause") : delay,
                         values.number("showCursor") != 0};
  for (std::size_t page = 0; page < panel.pages(); ++page) {
    if (effect == kType) type(panel, page, times);
    if (effect == kLineByLine) line_by_line(panel, page, times);
    if (effect == kScrollUp || effect == kScrollLeft) scroll(panel, page, times, effect == kScrollUp);
    if (pages) show(panel, page, times, effect == kFlash);
  }
  return panel;
}

// ---------------------------------------------------------------------------------------------------------
// how it looks

/// The dots of one color, or of all.
Mask dots_mask(const DotGrid& grid, Extent canvas, std::uint8_t color) {
  Mask mask(canvas.width, canvas.height);
  for (std::uint32_t y = 0; y < grid.height; ++y)
    for (std::uint32_t x = 0; x < grid.width; ++x) {
      const std::uint8_t dot = grid.at(x, y);
      if (dot == 0 || (color != 0 && dot != color)) continue;
      for (std::int64_t i = 0; i < kPitch; ++i) {
        std::uint8_t* out =
            mask.row(static_cast<std::uint32_t>((y + kBorder) * kPitch + i)) + (x + kBorder) * kPitch;
        for (std::int64_t j = 0; j < kPitch; ++j)
          out[j] = i + 1 == kPitch || j + 1 == kPitch ? kBetween : 255;
      }
    }
  return mask;
}

struct PanelPainter {
  Panel panel;
  Extent canvas;
  Colour colors[kSignColors + 1];
  Colour ground;
  bool shadowed;
  std::uint32_t offset, soft, density;
  std::vector<std::uint8_t> used{};

  explicit PanelPainter(const FieldValues& values)
      : panel(panel_of(values)),
        canvas{static_cast<std::uint32_t>(
                   (static_cast<std::int64_t>(panel.columns) * kCellWidth + 2 * kBorder) * kPitch),
               static_cast<std::uint32_t>(
                   (static_cast<std::int64_t>(panel.rows) * kCellHeight + 2 * kBorder) * kPitch)},
        ground(static_cast<Colour>(values.number("colorBack"))),
        shadowed(values.number("softShadow") != 0),
        offset(static_cast<std::uint32_t>(values.number("shadowOffset"))),
        soft(static_cast<std::uint32_t>(values.number("shadowSoft"))),
        density(static_cast<std::uint32_t>(values.number("shadowDensity"))) {
    for (std::size_t i = 0; i < kSignColors; ++i)
      colors[i + 1] = kColorFields[i] ? static_cast<Colour>(values.number(kColorFields[i])) : 0;
    const auto use = [&](SignColor color) {
      const auto dot = static_cast<std::uint8_t>(static_cast<unsigned>(color) + 1);
      if (!std::ranges::count(used, dot)) used.push_back(dot);
    };
    for (const SignLetter& letter : panel.text.letters) use(letter.color);
    use(SignColor::Default);
  }
  Picture operator()(std::size_t frame) const {
    const DotGrid grid = panel.grid(panel.steps[frame]);
    Picture picture = PictureCreateFilled(canvas.width, canvas.height, ground);
    if (!picture) return {};
    if (shadowed) {
      Mask shade = dots_mask(grid, canvas, 0);
      blur_mask(shade, soft);
      lay_mask(picture, offset, offset, shade, 0, density);
    }
    for (const std::uint8_t dot : used) lay_mask(picture, 0, 0, dots_mask(grid, canvas, dot), colors[dot]);
    return picture;
  }
};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (auto fault = check_sign_text(values, "panel")) return fault;
  const auto letters = read_sign_text(values.text("text"), SignColor::Default, true).letters;
  if (std::ranges::any_of(letters, [](const SignLetter& letter) { return letter.code != '\n'; }))
    return std::nullopt;
  return fault_of("text", StringId::EnterTextOfYour, {"panel"});
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const auto painter = std::make_shared<const PanelPainter>(values);
  tell_of_letters(painter->panel.text, host);
  return stream_of({painter->canvas, painter->panel.steps.size(), false,
                    [painter](std::size_t frame) { return (*painter)(frame); },
                    [painter](std::size_t frame) {
                      return static_cast<std::uint32_t>(painter->panel.steps[frame].delay);
                    }},
                   inputs.kind, host);
}

}  // namespace

constinit const Generator kStatusPanel{
    .parameters =
        {
            .name = "panel",
            .title = "Status panel",
            .help = "Dark letters of dots on a lit ground",
            .command = 271,
            .page = "statuspanel",
            .texts = "EditPanelHistory.txt",
            .fields = kFields,
            .check = check,
        },
    .document = "Panel",
    .loop = "loop",
    .failure = StringId::AllocationError,
    .make = make,
};

}  // namespace vellum
