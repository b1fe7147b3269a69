// Titles and credits: frames with a text in front of an animation and behind it.
#include <algorithm>
#include <cmath>
#include <fstream>

#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/edit/edit_closing.h"
#include "core/edit/frame_layer.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "operations/changed_parts.h"
#include "operations/operation_rows.h"
#include "operations/reconstruct.h"
#include "operations/text_art.h"
#include "playback/compositor.h"

namespace vellum {
namespace {

enum Effect { kStill, kFade, kRoll, kCrawl };
constexpr FieldChoice kEffects[] = {{kStill, "Still"},
                                    {kFade, "Fade in and out", "fade"},
                                    {kRoll, "Roll up", "roll"},
                                    {kCrawl, "Crawl left", "crawl"}};
enum Ground { kColorGround, kFrameGround };
constexpr FieldChoice kGrounds[] = {{kColorGround, "Color"},
                                    {kFrameGround, "First or last frame, darkened", "frame"}};
constexpr FieldChoice kLines[] = {{0, "Left", "left"}, {1, "Center", "center"}, {2, "Right", "right"}};

constexpr const char* kLook = "Look";
constexpr const char* kMotion = "Motion";
constexpr std::uint64_t kMostCreditsBytes = std::uint64_t{1} << 20;

constexpr Field choice(const char* name, const char* label, std::span<const FieldChoice> choices,
                       std::int64_t initial, int state) {
  return {.name = name,
          .label = label,
          .type = FieldType::Choice,
          .choices = choices,
          .initial = initial,
          .stateId = state};
}

constexpr Field font(const char* name, const char* label, int state) {
  Field field = font_field(name, nullptr, state);
  field.label = label;
  return field;
}

constexpr Field kFields[] = {
    flag_field("showTitle", "Title", 1, nullptr, 0, 1),
    enabled_by({.name = "title",
                .label = "Text of the title",
                .type = FieldType::Text,
                .most = kMostTextCharacters,
                .look = FieldLook::Lines,
                .stateId = 2},
               "showTitle"),
    flag_field("showCredits", "Credits", 1, nullptr, 0, 3),
    enabled_by({.name = "creditsText",
                .label = "Text of the credits",
                .type = FieldType::Text,
                .most = kMostTextCharacters,
                .look = FieldLook::Lines,
                .tip = "Lines that begin with # are large",
                .stateId = 4},
               "showCredits"),
    enabled_by({.name = "credits",
                .label = "Credits from a file",
                .type = FieldType::Text,
                .most = 4096,
                .look = FieldLook::Path,
                .tip = "Where no text of the credits is given"},
               "showCredits"),
    on_page(font("largeFont", "Large font", 5), kLook),
    on_page(whole_field("largeSize", "Large size", kLeastPoints, kMostPoints, 28, nullptr, 6), kLook),
    on_page(font("smallFont", "Small font", 7), kLook),
    on_page(whole_field("smallSize", "Small size", kLeastPoints, kMostPoints, 16, nullptr, 8), kLook),
    on_page(choice("lines", "Lines", kLines, 1, 9), kLook),
    on_page(color_field("color", "Color of the text", 0xFFFFFF, nullptr, 10), kLook),
    on_page(flag_field("shadow", "Shadow", 1, nullptr, 0, 11), kLook),
    on_page(choice("ground", "Background", kGrounds, kColorGround, 12), kLook),
    on_page(enabled_by(color_field("backColor", "Background color", 0, nullptr, 13), "ground", kColorGround),
            kLook),
    on_page(enabled_by(whole_field("darken", "Darker by %", 0, 100, 60, nullptr, 14), "ground", kFrameGround),
            kLook),
    on_page(choice("titleEffect", "Effect of the title", kEffects, kFade, 15), kMotion),
    on_page(choice("creditsEffect", "Effect of the credits", kEffects, kRoll, 16), kMotion),
    on_page(whole_field("steps", "Frames of a movement", 1, 200, 24, nullptr, 17), kMotion),
    on_page(whole_field("delay", "Delay", 1, 32767, 60, nullptr, 18), kMotion),
    on_page(whole_field("pause", "Pause", 0, 32767, 2000, nullptr, 19), kMotion),
};

constexpr const char* kBothEffects[] = {"titleEffect", "creditsEffect"};
constexpr CompoundOption kOptions[] = {{.name = "effect",
                                        .form = "NAME",
                                        .help = "Of title and credits: still, fade, roll, crawl",
                                        .fields = kBothEffects,
                                        .lastServesRest = true}};

void fit(std::vector<Field>& fields, const DocumentWindow&) { offer_fonts(fields); }

bool has_title(const FieldValues& values) {
  return values.number("showTitle") != 0 && !trimmed(values.text("title")).empty();
}
bool has_credits(const FieldValues& values) {
  return values.number("showCredits") != 0 &&
         (!trimmed(values.text("creditsText")).empty() || !values.text("credits").empty());
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (values.number("showTitle") == 0 && values.number("showCredits") == 0)
    return fault_of("showTitle", StringId::ChooseTitleOrCredits);
  if (has_title(values) || has_credits(values)) return std::nullopt;
  return fault_of(values.number("showTitle") != 0 ? "title" : "creditsText", StringId::EnterTitleOrCredits);
}

// ---------------------------------------------------------------------------------------------------------
// the text

/// Lines of one size that stand together.
struct Block {
  std::string text;
  bool large = false;
};

/// A title is large; of credits lines with "#" in front are, which lose it.
std::vector<Block> blocks_of(const std::string& text, bool title) {
  if (title) return {{text, true}};
  std::vector<Block> blocks;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    std::string line = text.substr(at, end - at);
    const bool large = line.starts_with('#');
    if (large) line = std::string(trimmed(std::string_view(line).substr(1)));
    if (blocks.empty() || blocks.back().large != large)
      blocks.push_back({std::move(line), large});
    else
      blocks.back().text += "\n" + line;
    at = end + 1;
  }
  return blocks;
}

struct Lettering {
  Mask mask;
  bool large = false, broken = false;
};

/// The blocks below each other. `wrap`: pixels, 0 for none.
Lettering lettering_of(const FieldValues& values, const std::vector<Block>& blocks, std::uint32_t wrap,
                       const Host& host) {
  Lettering all;
  std::vector<Mask> masks;
  std::vector<std::uint32_t> gaps;
  Extent size;
  for (const Block& block : blocks) {
    TextStyle style{.family = values.text(block.large ? "largeFont" : "smallFont"),
                    .points = static_cast<double>(values.number(block.large ? "largeSize" : "smallSize"))};
    style.bold = block.large;
    style.lines = static_cast<TextLines>(values.number("lines"));
    style.wrap = wrap;
    DrawnText drawn = draw_text(block.text, style);
    tell_of_font(style, drawn, host);
    all.large = all.large || drawn.large;
    all.broken = all.broken || drawn.broken;
    const auto gap = static_cast<std::uint32_t>(std::lround(style.points * 0.8));
    gaps.push_back(size.height == 0 ? 0 : gap);
    size.width = std::max(size.width, drawn.mask.width);
    size.height += gaps.back() + drawn.mask.height;
    masks.push_back(std::move(drawn.mask));
  }
  all.large = all.large || std::uint64_t{size.width} * size.height > kMostMaskBytes;
  if (all.large) return all;
  all.mask = Mask(size.width, size.height);
  std::uint32_t top = 0;
  for (std::size_t i = 0; i < masks.size(); ++i) {
    top += gaps[i];
    const auto left = static_cast<std::uint32_t>((size.width - masks[i].width) * values.number("lines") / 2);
    for (std::uint32_t y = 0; y < masks[i].height; ++y)
      std::copy_n(masks[i].row(y), masks[i].width, all.mask.row(top + y) + left);
    top += masks[i].height;
  }
  return all;
}

// ---------------------------------------------------------------------------------------------------------
// its frames

struct Part {
  TextArt art;
  Picture ground;
  std::int64_t effect = kStill, steps = 1;

  std::size_t count() const { return static_cast<std::size_t>(effect == kStill ? 1 : 2 * steps); }
  /// Where all of it is seen, and stays for the pause.
  std::size_t rest() const { return static_cast<std::size_t>(effect == kStill ? 0 : steps - 1); }
  Picture frame(std::size_t number) const;
};

/// The text comes until the frame at rest, and goes behind it.
Picture Part::frame(std::size_t number) const {
  Picture picture = ground;
  if (!art.picture) return picture;
  const Extent canvas{picture.width(), picture.height()};
  const auto step = static_cast<double>(number) + 1, all = static_cast<double>(steps);
  const double come = effect == kStill ? 1 : std::min(1.0, step / all),
               gone = effect == kStill ? 0 : std::max(0.0, step / all - 1);
  const auto middle = [](std::uint32_t room, std::uint32_t length) {
    return (static_cast<double>(room) - length) / 2;
  };
  double x = middle(canvas.width, art.letters.width), y = middle(canvas.height, art.letters.height);
  std::uint32_t percent = 100;
  if (effect == kFade) percent = static_cast<std::uint32_t>(std::lround(100 * std::min(come, 1 - gone)));
  // From just outside to just outside: what is larger than the canvas passes at one speed.
  const auto pass = [&](double& at, std::uint32_t room, std::uint32_t length, std::uint32_t before) {
    const double in = room + static_cast<double>(before), out = -static_cast<double>(length) - before;
    if (length > room)
      at = in + (out - in) * step / (2 * all);
    else
      at = gone > 0 ? at + (out - at) * gone : in + (at - in) * come;
  };
  if (effect == kRoll) pass(y, canvas.height, art.letters.height, art.top);
  if (effect == kCrawl) pass(x, canvas.width, art.letters.width, art.left);
  const auto whole = [](double at) { return static_cast<std::int64_t>(std::floor(at + 0.5)); };
  return lay_picture(picture, whole(x) - art.left, whole(y) - art.top, art.picture, percent) ? picture
                                                                                             : Picture();
}

/// Opaque, in the depth of the document's frames.
Picture ground_of(const FieldValues& values, const Extent& canvas, const Picture& shown, std::uint32_t bits) {
  const auto color = static_cast<Colour>(values.number("backColor"));
  Picture ground =
      PictureCreateFilled(canvas.width, canvas.height, values.number("ground") == kColorGround ? color : 0);
  if (ground && values.number("ground") == kFrameGround)
    lay_picture(ground, 0, 0, shown, static_cast<std::uint32_t>(100 - values.number("darken")));
  return bits == 32 && ground ? PictureToTrueColorAlpha(ground) : ground;
}

/// What a document needs to know of title or credits. Nothing after the reason was told.
struct Making {
  const FieldValues& values;
  Extent canvas;
  std::uint32_t bits = 24;
  Host& host;
  StringId refused{};

  std::optional<Part> part(bool title, const std::string& text, const Picture& shown) {
    Part made;
    made.effect = values.number(title ? "titleEffect" : "creditsEffect");
    made.steps = values.number("steps");
    const std::uint32_t margin = std::min(canvas.width / 16, 40u);
    const std::uint32_t wrap = made.effect == kCrawl ? 0 : std::max(canvas.width - 2 * margin, 1u);
    const Lettering drawn = lettering_of(values, blocks_of(text, title), wrap, host);
    if (drawn.broken) host.add_note(string_text(StringId::LineTooWide));
    if (drawn.large || drawn.mask.values.empty()) {
      refused = drawn.large ? StringId::TextTooLarge : StringId::TextNotDrawn;
      return std::nullopt;
    }
    const bool shadow = values.number("shadow") != 0;
    made.art = text_art(drawn.mask, {.text = static_cast<Colour>(values.number("color")),
                                     .shadow = shadow,
                                     .shadowOffset = 2,
                                     .shadowSoftness = 1});
    made.ground = ground_of(values, canvas, shown, bits);
    if (!made.art.picture || !made.ground) throw std::bad_alloc();
    return made;
  }
};

/// The text of the credits, which a file may have.
std::optional<std::string> credits_of(const FieldValues& values) {
  std::string text = values.text("creditsText");
  if (trimmed(text).empty()) {
    std::error_code none;
    const std::filesystem::path path = values.text("credits");
    if (!std::filesystem::is_regular_file(path, none) ||
        std::filesystem::file_size(path, none) > kMostCreditsBytes)
      return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(file), {});
    if (!file) return std::nullopt;
  }
  std::erase(text, '\r');
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

/// A frame of the text: behind the first one what changes, where the kind can.
FrameLayer layer_of(const Picture& before, const Picture& picture, DocumentKind kind, bool whole) {
  if (before && !whole && kind != DocumentKind::WEBP) return changed_part(before, picture);
  FrameLayer layer;
  layer.picture = picture;
  return layer;
}

std::vector<std::shared_ptr<const ChunkRecord>> records_of(const Part& part, OperationRun& run, bool cleared,
                                                           const Progress& progress) {
  const DocumentKind kind = run.draft.document.kind;
  std::vector<std::shared_ptr<const ChunkRecord>> records;
  Picture before;
  for (std::size_t i = 0; i < part.count(); ++i) {
    if (run.host.stopped()) return {};
    // What comes behind the last one may let something through: all of it goes.
    const bool leaves = cleared && i + 1 == part.count();
    const Picture picture = part.frame(i);
    FrameLayer layer = picture ? layer_of(before, picture, kind, leaves) : FrameLayer();
    before = picture;
    const bool rests = i == part.rest() && run.number("pause") != 0;
    layer.delay = static_cast<std::uint32_t>(run.number(rests ? "pause" : "delay"));
    if (leaves && kind == DocumentKind::APNG) layer.dispose = 1;
    const auto record = std::make_shared<ChunkRecord>();
    if (!layer.picture || !frame_record_of(run.draft, layer, *record)) return {};
    records.push_back(record);
    progress.step(i + 1, part.count());
  }
  return records;
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) {
  return kWholeCanvases | kTrueColor;
}

/// The parts that the values want: in front, and behind.
struct Parts {
  std::optional<Part> title, credits;
};

bool make_parts(OperationRun& run, Parts& parts) {
  const auto entries = frame_entries(run.draft);
  const auto picture = [&](std::size_t entry) { return picture_of(run.draft.list.record(entry)); };
  const Picture first = picture(entries.front()), last = picture(entries.back());
  if (!first || !last)
    return run.host.fail({FaultKind::Damaged, 0, -1, -1, translated("a frame has lost its picture")});
  Making making{run.values, document_size(run.draft.list, run.draft.document), first.bits() == 32 ? 32u : 24u,
                run.host};
  if (has_title(run.values) && !(parts.title = making.part(true, run.values.text("title"), first)))
    return run.refuse(making.refused);
  if (!has_credits(run.values)) return true;
  const auto text = credits_of(run.values);
  if (!text || trimmed(*text).empty()) {
    const std::string name = std::filesystem::path(run.values.text("credits")).filename().string();
    const StringId id = StringId::NoTextFile;
    if (run.host.message) run.host.message({id, {}, filled(id, {name}), {}, nullptr});
    run.told = true;
    return false;
  }
  parts.credits = making.part(false, *text, last);
  return parts.credits || run.refuse(making.refused);
}

bool run(OperationRun& run) {
  Parts parts;
  if (!make_parts(run, parts)) return false;
  const auto entries = frame_entries(run.draft);
  const std::size_t more =
      (parts.title ? parts.title->count() : 0) + (parts.credits ? parts.credits->count() : 0);
  if (run.draft.list.size() + more > kMaximumEntries ||
      !canvases_fit(entries.size() + more, document_size(run.draft.list, run.draft.document)))
    return run.refuse(StringId::ResultTooLarge);
  const Progress progress(run.host, string_text(StringId::BuildingCaption));
  const bool cleared = has_transparency(run.draft);
  for (const auto& [part, place] :
       {std::pair(&parts.credits, entries.back() + 1), std::pair(&parts.title, entries.front())}) {
    if (!*part) continue;
    const auto records = records_of(**part, run, cleared, progress);
    if (records.empty()) return false;
    run.draft.list.insert(place, records);
  }
  finish_edit(run.draft, true);
  return true;
}

/// The first frame shows the title at rest, the last one the credits.
Picture preview_shown(Compositor& playing, std::uint32_t frame, const FieldValues& values, bool) {
  const Picture shown = playing.frame(frame).picture;
  const bool title = frame == 0 && has_title(values);
  if (!shown || (!title && !(frame + 1 == playing.frames() && has_credits(values)))) return shown;
  Host nobody;
  Making making{values, {shown.width(), shown.height()}, shown.bits(), nobody};
  const auto text = title ? values.text("title") : credits_of(values).value_or(std::string());
  const auto part = trimmed(text).empty() ? std::nullopt : making.part(title, text, shown);
  return part ? part->frame(part->rest()) : shown;
}

}  // namespace

constinit const Operation kTitles{
    .parameters =
        {
            .name = "titles",
            .title = "Titles and Credits",
            .help = "Frames with a text in front of an animation and behind it",
            .command = 329,
            .kinds = kAnimatedKinds,
            .stateFile = "TitlesState.txt",
            .texts = "EditTitlesHistory.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::TitledPrefix,
    .preview = OperationPreview::Full,
    .needs = needs,
    .previewShown = preview_shown,
    .run = run,
};

}  // namespace vellum
