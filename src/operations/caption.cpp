// Caption: a text in a strip below, above or inside of the animation, in two forms.
#include <algorithm>

#include "base/limits.h"
#include "core/edit/edit_closing.h"
#include "core/model/first_frame.h"
#include "core/model/whole_canvases.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "operations/change_pictures.h"
#include "operations/operation_rows.h"
#include "operations/recoloring.h"
#include "operations/settings.h"
#include "operations/text_art.h"

namespace vellum {
namespace {

enum CaptionFlag {
  kBold = 1,
  kItalic = 2,
  kSmooth = 4,
  kAbove = 8,
  kInside = 16,
  kSides = 96,
  kFirst = 128,
  kClear = 256
};

constexpr FieldChoice kSideChoices[] = {
    {0, "Center", "center"}, {32, "Left", "left"}, {64, "Right", "right"}};
constexpr FieldChoice kClassicSides[] = {{0, "Left", "left"}, {1, "Center", "center"}, {2, "Right", "right"}};

constexpr Field newer(Field field) { return enabled_by(field, "classic", 0); }
constexpr Field older(Field field) { return enabled_by(field, "classic", 1); }
constexpr Field bit(const char* name, const char* label, std::int64_t initial, int bits) {
  return newer(flag_field(name, label, initial, &settings::AnnotateExFlags, bits));
}

constexpr Field kFields[] = {
    text_field(),
    flag_field("classic", "The classic form", 0, &settings::ClassicCaptionWindow),
    newer(font_field("font", &settings::AnnotateExFontName)),
    newer(whole_field("size", "Size", kLeastPoints, kMostPoints, 14, &settings::AnnotateExPointSizeFont)),
    bit("bold", "Bold", 0, kBold),
    bit("italic", "Italic", 0, kItalic),
    bit("antialias", "Smooth edges", 1, kSmooth),
    newer(color_field("color", "Color", 0, &settings::AnnotateExForeground)),
    newer(color_field("background", "Background", 0xFFFFFF, &settings::AnnotateExBackground)),
    newer(whole_field("padding", "Padding", 0, 200, 8, &settings::AnnotateExPadding)),
    newer(whole_field("border", "Width of the border", 0, 50, 0, &settings::AnnotateExBorderFrameSize)),
    newer(color_field("borderColor", "Color of the border", 0x808080, &settings::AnnotateExFrame)),
    newer({.name = "side",
           .label = "Lines",
           .type = FieldType::Choice,
           .most = 64,
           .choices = kSideChoices,
           .setting = &settings::AnnotateExFlags,
           .settingBits = kSides}),
    bit("above", "Above the image", 0, kAbove),
    bit("inside", "Inside the image", 0, kInside),
    enabled_by(flag_field("clear", "No background", 0, &settings::AnnotateExFlags, kClear), "inside"),
    bit("firstOnly", "In the first frame only", 0, kFirst),
    older(font_field("classicFont", &settings::CaptionFontName)),
    older(whole_field("classicSize", "Size", kLeastPoints, kMostPoints, 14, &settings::CaptionSize)),
    older(flag_field("classicBold", "Bold", 0, &settings::CaptionBold)),
    older(flag_field("classicItalic", "Italic", 0, &settings::CaptionItal)),
    older(flag_field("classicAntialias", "Smooth edges", 1, &settings::CaptionAntialias)),
    older(whole_field("classicCharacterSpacing", "Character spacing", kLeastSpace, kMostSpace, 0,
                      &settings::CaptionCharspacing)),
    older(whole_field("classicLineSpacing", "Line spacing", kLeastSpace, kMostSpace, 0,
                      &settings::CaptionLinespacing)),
    older({.name = "classicLines",
           .label = "Lines",
           .type = FieldType::Choice,
           .most = 2,
           .choices = kClassicSides,
           .initial = 1,
           .setting = &settings::CaptionJustification}),
    older(whole_field("classicGutter", "Margin", 0, 100, 6, &settings::CaptionGutter)),
    older(color_field("classicColor", "Color", 0, &settings::CaptionBlack)),
    older(color_field("classicBackground", "Background", 0xFFFFFF, &settings::CaptionWhite)),
};

/// What either form says.
struct Form {
  TextStyle style;
  Colour color, background, borderColor;
  std::uint32_t padding, border;
  bool above, inside, clear, firstOnly;
};

Form form_of(const FieldValues& values, const DocumentWindow& window) {
  const auto on = [&](const char* name) { return values.number(name) != 0; };
  const auto pixels = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  const auto opaque = [&](const char* name) { return static_cast<Colour>(values.number(name)) | 0xFF000000; };
  if (on("classic")) {
    Form form{text_style_of(values, "classic"),
              opaque("classicColor"),
              opaque("classicBackground"),
              0,
              pixels("classicGutter"),
              0,
              false,
              false,
              false,
              false};
    form.style.lines = static_cast<TextLines>(values.number("classicLines"));
    return form;
  }
  const bool inside = on("inside");
  Form form{text_style_of(values), opaque("color"),
            opaque("background"),  opaque("borderColor"),
            pixels("padding"),     pixels("border"),
            on("above"),           inside,
            inside && on("clear"), on("firstOnly") && first_frame_stays(window)};
  const std::int64_t side = values.number("side");
  form.style.lines = side == 32 ? TextLines::Left : side == 64 ? TextLines::Right : TextLines::Center;
  return form;
}

void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  offer_fonts(fields);
  if (first_frame_stays(window)) return;
  const auto only = std::ranges::find(fields, std::string_view("firstOnly"), &Field::name);
  only->locked = true;
  only->setting = nullptr;
  only->tip = "Later frames of this animation begin with an empty canvas";
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (values.text("text").empty()) return fault_of("text", StringId::EnterCaption);
  return std::nullopt;
}

unsigned needs(const DocumentWindow& window, const FieldValues& values, const FrameList&) {
  return kTrueColor | (form_of(values, window).firstOnly ? 0u : kWholeCanvases);
}

std::string longest_word(const std::string& text) {
  std::string longest;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of(" \n\t", at), text.size());
    if (end - at > longest.size()) longest = text.substr(at, end - at);
    at = end + 1;
  }
  return longest;
}

/// Lines break at words, and a word that is wider than the strip makes all letters smaller.
DrawnText fitted_text(const std::string& text, TextStyle style, std::uint32_t width) {
  style.wrap = std::max(width, 1u);
  // The longest word is tried first, since it costs little.
  const std::string word = longest_word(text);
  if (count_characters(word) > width) style.points = kLeastPoints;
  while (style.points > kLeastPoints && draw_text(word, style).broken) style.points -= 1;
  DrawnText drawn = draw_text(text, style);
  while (drawn.broken && style.points > kLeastPoints) {
    style.points -= 1;
    drawn = draw_text(text, style);
  }
  return drawn;
}

std::uint32_t edge_of(const Form& form) { return form.padding + form.border; }

/// The strip: on no ground where there is no background.
Picture strip_of(const Mask& letters, const Form& form, std::uint32_t width, std::uint32_t height) {
  Picture strip = PictureCreateAlpha(width, height);
  if (!strip) return strip;
  const auto wide = static_cast<std::int32_t>(width), high = static_cast<std::int32_t>(height);
  if (!form.clear) PictureFillRect(strip, 0, 0, wide, high, form.background);
  if (form.border > 0)
    PictureFrameRect(strip, 0, 0, wide, high, form.borderColor, static_cast<std::int32_t>(form.border));
  if (letters.values.empty()) return strip;
  const std::int64_t edge = edge_of(form), free = std::int64_t{width} - letters.width;
  const std::int64_t x = form.style.lines == TextLines::Left     ? edge
                         : form.style.lines == TextLines::Center ? free / 2
                                                                 : free - edge;
  lay_picture(strip, x, edge, colored_mask(letters, form.color));
  return strip;
}

/// The strips of all frames, of one height: one where all are the same.
struct Strips {
  std::vector<Mask> letters;
  std::uint32_t height = 0;
  bool large = false;

  const Mask& of(std::size_t frame) const { return letters[std::min(frame, letters.size() - 1)]; }
};

Strips draw_strips(OperationRun& run, const Form& form, std::uint32_t width) {
  const auto facts = frame_facts(run.draft);
  const std::string& text = run.values.text("text");
  const std::uint32_t room = width > 2 * edge_of(form) ? width - 2 * edge_of(form) : 1;
  Strips strips;
  strips.letters.resize(has_placeholders(text) && !form.firstOnly ? facts.size() : 1);
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < strips.letters.size() && !run.host.stopped(); ++i) {
    DrawnText drawn = fitted_text(filled_text(text, facts[i]), form.style, room);
    if (i == 0) tell_of_font(form.style, drawn, run.host);
    bytes += drawn.mask.values.size();
    strips.large = strips.large || drawn.large || bytes > kMaximumPictureBytes;
    if (strips.large) return strips;
    strips.height = std::max(strips.height, drawn.mask.height);
    strips.letters[i] = std::move(drawn.mask);
  }
  strips.height += 2 * edge_of(form);
  return strips;
}

bool run(OperationRun& run) {
  if (!free_color_key(run.draft, run.host)) return false;
  const DocumentKind kind = run.draft.document.kind;
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  const Form form = form_of(run.values, run.draft);
  const Strips strips = draw_strips(run, form, canvas.width);
  if (run.host.stopped()) return false;
  if (strips.large) return run.refuse(StringId::TextTooLarge);
  const std::uint32_t height = std::max(strips.height, 1u);
  const Extent larger{canvas.width, canvas.height + (form.inside ? 0 : height)};
  if (!canvas_fits(larger, kind)) return run.refuse(StringId::ResultTooLarge);
  const std::int32_t down = form.above && !form.inside ? static_cast<std::int32_t>(height) : 0;
  const std::int64_t top = form.above ? 0 : std::int64_t{larger.height} - height;
  const Picture shared =
      strips.letters.size() == 1 ? strip_of(strips.of(0), form, canvas.width, height) : Picture();
  const auto change = [&](FrameWork& work) {
    if (form.firstOnly && work.frame != 0 && work.frame != kDefaultImageWork) {
      work.offset.y += down;
      return true;
    }
    work.picture =
        PictureExtendCanvas(work.picture, larger.width, larger.height, work.offset.x, work.offset.y + down,
                            frame_surroundings(run.draft.list, work.picture));
    work.offset = {};
    if (form.firstOnly) set_frame_dispose(work.record, kind, 0);
    const std::size_t frame = work.frame == kDefaultImageWork ? 0 : work.frame;
    const Picture strip = shared ? shared : strip_of(strips.of(frame), form, canvas.width, height);
    return work.picture && strip && lay_picture(work.picture, 0, top, strip);
  };
  if (!change_pictures(run.draft, all_frames(frame_entries(run.draft).size()),
                       string_text(StringId::BuildingCaption), run.host, change))
    return false;
  finish_edit(run.draft, false);
  return true;
}

double growth(const FieldValues&, const DocumentWindow&) { return 1.2; }

}  // namespace

constinit const Operation kCaption{
    .parameters =
        {
            .name = "caption",
            .title = "Caption",
            .help = "A text in a strip below, above or inside of the animation",
            .command = 328,
            .kinds = kAnimatedKinds,
            .texts = "EditCaptionHistory.txt",
            .fields = kFields,
            .fit = fit,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::CaptionedPrefix,
    .batch = 0,
    .batchPrefix = "Caption_",
    .preview = OperationPreview::Full,
    .needs = needs,
    .growth = growth,
    .run = run,
};

}  // namespace vellum
