// Text: drawn on every frame, standing or moving.
#include <algorithm>
#include <cmath>

#include "core/edit/edit_closing.h"
#include "core/model/playing_rules.h"
#include "image/lay.h"
#include "operations/change_pictures.h"
#include "operations/field_rows.h"
#include "operations/frame_range.h"
#include "operations/operation_rows.h"
#include "operations/places.h"
#include "operations/recoloring.h"
#include "operations/text_art.h"
#include "playback/compositor.h"

namespace vellum {
namespace {

enum Motion { kStill, kScrollLeft, kScrollRight, kScrollUp, kScrollDown, kTypeOn, kFadeIn, kFadeInAndOut };

constexpr FieldChoice kMotions[] = {{kStill, "Still", "still"},
                                    {kScrollLeft, "Scroll left", "scroll-left"},
                                    {kScrollRight, "Scroll right", "scroll-right"},
                                    {kScrollUp, "Scroll up", "scroll-up"},
                                    {kScrollDown, "Scroll down", "scroll-down"},
                                    {kTypeOn, "Type on", "type-on"},
                                    {kFadeIn, "Fade in", "fade-in"},
                                    {kFadeInAndOut, "Fade in and out", "fade-in-and-out"}};
constexpr FieldChoice kLines[] = {{0, "Left", "left"}, {1, "Center", "center"}, {2, "Right", "right"}};

constexpr Field kFields[] = {
    kept(text_field(), 1),
    font_field("font", nullptr, 2),
    whole_field("size", "Size", kLeastPoints, kMostPoints, 24, nullptr, 3),
    flag_field("bold", "Bold", 0, nullptr, 0, 4),
    flag_field("italic", "Italic", 0, nullptr, 0, 5),
    flag_field("antialias", "Smooth edges", 1, nullptr, 0, 6),
    whole_field("characterSpacing", "Character spacing", kLeastSpace, kMostSpace, 0, nullptr, 7),
    whole_field("lineSpacing", "Line spacing", kLeastSpace, kMostSpace, 0, nullptr, 8),
    kept({.name = "lines", .label = "Lines", .type = FieldType::Choice, .most = 2, .choices = kLines}, 9),
    color_field("color", "Color", 0xFFFFFF, nullptr, 10),
    on_page(flag_field("outline", "Outline", 0, nullptr, 0, 11), "Look"),
    on_page(enabled_by(whole_field("outlineWidth", "Width of the outline", 1, 8, 1, nullptr, 12), "outline"),
            "Look"),
    on_page(enabled_by(color_field("outlineColor", "Color of the outline", 0, nullptr, 13), "outline"),
            "Look"),
    on_page(flag_field("shadow", "Shadow", 0, nullptr, 0, 14), "Look"),
    on_page(enabled_by(whole_field("shadowOffset", "Offset of the shadow", 0, 20, 2, nullptr, 15), "shadow"),
            "Look"),
    on_page(
        enabled_by(whole_field("shadowSoftness", "Softness of the shadow", 0, 20, 2, nullptr, 16), "shadow"),
        "Look"),
    on_page(whole_field("opacity", "Opacity", 0, 100, 100, nullptr, 17), "Look"),
    on_page(kept(place_field(kBottomPlace), 18), "Place"),
    on_page(kept(distance_field("offsetX", "To the right"), 19), "Place"),
    on_page(kept(distance_field("offsetY", "Down"), 20), "Place"),
    on_page(whole_field("margin", "Margin", 0, 500, 8, nullptr, 21), "Place"),
    on_page(kept({.name = "motion",
                  .label = "Motion",
                  .type = FieldType::Choice,
                  .most = kFadeInAndOut,
                  .choices = kMotions},
                 22),
            "Place"),
    on_page(first_frame_field(), "Place"),
    on_page(last_frame_field(), "Place"),
};

constexpr const char *kOffset[] = {"offsetX", "offsetY"}, *kOutline[] = {"outlineWidth"};
constexpr CompoundOption kOptions[] = {
    {.name = "offset", .form = "DX,DY", .help = "How far from its place, in pixels", .fields = kOffset},
    {.name = "outline",
     .form = "N",
     .help = "An outline of so many pixels",
     .fields = kOutline,
     .alongside = "outline",
     .alongsideValue = 1}};

void fit(std::vector<Field>& fields, const DocumentWindow& window) {
  offer_fonts(fields);
  fit_frame_range(fields, window);
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  if (values.text("text").empty()) return fault_of("text", StringId::EnterText);
  return check_frame_range(values, window);
}

TextStyle style_of(const FieldValues& values) {
  TextStyle style = text_style_of(values);
  style.lines = static_cast<TextLines>(values.number("lines"));
  return style;
}

TextColors colors_of(const FieldValues& values) {
  const auto pixels = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  return {static_cast<Colour>(values.number("color")),
          values.number("outline") != 0 ? pixels("outlineWidth") : 0,
          static_cast<Colour>(values.number("outlineColor")),
          values.number("shadow") != 0,
          pixels("shadowOffset"),
          pixels("shadowSoftness")};
}

/// Where in a run of frames one of them is.
struct Moment {
  std::size_t index, count;
};

std::uint32_t opacity_at(const FieldValues& values, Moment moment) {
  const auto full = static_cast<std::uint64_t>(values.number("opacity"));
  std::uint64_t step = 1, steps = 1;
  if (values.number("motion") == kFadeIn) step = moment.index + 1, steps = moment.count;
  if (values.number("motion") == kFadeInAndOut)
    step = std::min(moment.index + 1, moment.count - moment.index), steps = (moment.count + 1) / 2;
  return static_cast<std::uint32_t>((full * step + steps / 2) / steps);
}

/// Left and top of the letters. What scrolls runs from just outside to just outside.
FrameOffset letters_at(const FieldValues& values, const Extent& canvas, const TextArt& art, Moment moment) {
  const std::int64_t at = values.number("at"), margin = values.number("margin");
  std::int64_t x = place_in(at % 3, canvas.width, art.letters.width, margin) + values.number("offsetX"),
               y = place_in(at / 3, canvas.height, art.letters.height, margin) + values.number("offsetY");
  const double way =
      moment.count < 2 ? 0.5 : static_cast<double>(moment.index) / static_cast<double>(moment.count - 1);
  const auto between = [&](double from, double to) {
    return static_cast<std::int64_t>(std::floor(from + (to - from) * way + 0.5));
  };
  const double out_x = -1.0 * (art.picture.width() - art.left),
               out_y = -1.0 * (art.picture.height() - art.top), in_x = canvas.width + 1.0 * art.left,
               in_y = canvas.height + 1.0 * art.top;
  const std::int64_t motion = values.number("motion");
  if (motion == kScrollLeft) x = between(in_x, out_x);
  if (motion == kScrollRight) x = between(out_x, in_x);
  if (motion == kScrollUp) y = between(in_y, out_y);
  if (motion == kScrollDown) y = between(out_y, in_y);
  return {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)};
}

/// The text of one moment, drawn.
TextArt art_at(const FieldValues& values, const FrameFacts& facts, Moment moment,
               DrawnText* drawn = nullptr) {
  const std::string text = filled_text(values.text("text"), facts);
  std::size_t shown = kMostTextCharacters;
  if (values.number("motion") == kTypeOn) shown = count_characters(text) * (moment.index + 1) / moment.count;
  DrawnText made = draw_text(text, style_of(values), shown);
  TextArt art = text_art(made.mask, colors_of(values));
  if (drawn) *drawn = std::move(made);
  return art;
}

/// Whether all moments have one picture.
bool is_same_always(const FieldValues& values) {
  return values.number("motion") != kTypeOn && !has_placeholders(values.text("text"));
}

bool draw_on(Picture& picture, FrameOffset offset, const Extent& canvas, const FieldValues& values,
             const TextArt& art, Moment moment) {
  if (!art.picture) return true;
  const FrameOffset at = letters_at(values, canvas, art, moment);
  return lay_picture(picture, std::int64_t{at.x} - art.left - offset.x,
                     std::int64_t{at.y} - art.top - offset.y, art.picture, opacity_at(values, moment));
}

/// Whether a frame alone says what is seen in the rectangle.
bool rules(const ChunkRecord& record, DocumentKind kind, const PictureRect& rect) {
  const Picture picture = picture_of(record);
  const FrameOffset offset = GetFrameOffset(record, kind);
  if (!picture || offset.x > rect.left || offset.y > rect.top ||
      std::int64_t{offset.x} + picture.width() < rect.right ||
      std::int64_t{offset.y} + picture.height() < rect.bottom)
    return false;
  return !frame_manner(record, kind).over || (picture.bits() == 24 && image_transparency(record).empty());
}

/// Frames keep their own pictures where each of them covers the place of a text that stands still: then
/// nothing of it can stay where it isn't wanted.
bool stays_in_frames(const DocumentWindow& window, const FieldValues& values) {
  const std::int64_t motion = values.number("motion");
  if (has_placeholders(values.text("text")) || (motion >= kScrollLeft && motion <= kScrollDown)) return false;
  const DocumentKind kind = window.document.kind;
  const Extent canvas = document_size(window.list, window.document);
  const TextArt art = art_at(values, {}, {0, 1});
  if (!art.picture) return true;
  const FrameOffset at = letters_at(values, canvas, art, {0, 1});
  const auto held = [](std::int64_t value, std::uint32_t most) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, 0, most));
  };
  const std::int64_t left = std::int64_t{at.x} - art.left, top = std::int64_t{at.y} - art.top;
  const PictureRect rect{held(left, canvas.width), held(top, canvas.height),
                         held(left + art.picture.width(), canvas.width),
                         held(top + art.picture.height(), canvas.height)};
  const bool keyed = kind == DocumentKind::APNG && !document_transparency(window.list).empty();
  return !keyed && std::ranges::all_of(frame_entries(window), [&](std::size_t entry) {
    return rules(window.list.record(entry), kind, rect);
  });
}

unsigned needs(const DocumentWindow& window, const FieldValues& values, const FrameList&) {
  return kTrueColor | (stays_in_frames(window, values) ? 0u : kWholeCanvases);
}

bool run(OperationRun& run) {
  if (!free_color_key(run.draft, run.host)) return false;
  const FrameList frames = frames_in_range(run.values, run.frames);
  const auto facts = frame_facts(run.draft);
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  DrawnText drawn;
  const TextArt shared = art_at(run.values, facts.empty() ? FrameFacts() : facts.front(), {0, 1}, &drawn);
  if (drawn.large) return run.refuse(StringId::TextTooLarge);
  tell_of_font(style_of(run.values), drawn, run.host);
  const bool same = is_same_always(run.values);
  const auto change = [&](FrameWork& work) {
    const bool kept_aside = work.frame == kDefaultImageWork;
    const auto at = kept_aside ? frames.begin() : std::ranges::lower_bound(frames, work.frame);
    if (at == frames.end()) return true;
    const Moment moment{static_cast<std::size_t>(at - frames.begin()), frames.size()};
    const TextArt art = same ? shared : art_at(run.values, facts[*at], moment);
    return draw_on(work.picture, work.offset, canvas, run.values, art, moment);
  };
  if (!change_pictures(run.draft, frames, string_text(StringId::BuildingCaption), run.host, change))
    return false;
  finish_edit(run.draft, false);
  return true;
}

Picture preview_shown(Compositor& playing, std::uint32_t frame, const FieldValues& values, bool) {
  const ShownFrame shown = playing.frame(frame);
  Picture picture = shown.picture;
  const FrameList frames = frames_in_range(values, all_frames(playing.frames()));
  const auto at = std::ranges::find(frames, std::size_t{frame});
  if (!picture || at == frames.end()) return picture;
  const Moment moment{static_cast<std::size_t>(at - frames.begin()), frames.size()};
  const FrameFacts facts{frame, playing.frames(), shown.delay, shown.start, {}};
  draw_on(picture, {}, {picture.width(), picture.height()}, values, art_at(values, facts, moment), moment);
  return picture;
}

}  // namespace

constinit const Operation kText{
    .parameters =
        {
            .name = "text",
            .title = "Text overlay",
            .help = "Text on every frame, standing or moving",
            .command = 326,
            .kinds = kAnimatedKinds,
            .stateFile = "TextOverlayState.txt",
            .texts = "EditTextHistory.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::TextOverlayPrefix,
    .batch = 9,
    .batchPrefix = "TextOverlay_",
    .scoped = true,
    .preview = OperationPreview::Full,
    .needs = needs,
    .previewShown = preview_shown,
    .run = run,
};

}  // namespace vellum
