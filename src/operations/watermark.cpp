// Watermark: a text, flat or embossed, or the marks of a picture that only holds a place, in every frame.
#include <algorithm>
#include <cmath>
#include <ctime>

#include "base/crc.h"
#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/edit/edit_closing.h"
#include "core/model/playing_rules.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "operations/change_pictures.h"
#include "operations/operation_rows.h"
#include "operations/places.h"
#include "operations/recoloring.h"
#include "operations/settings.h"
#include "operations/text_art.h"

namespace vellum {
namespace {

enum Appended { kName = 1, kDate = 2, kTime = 4, kToday = 8 };
enum Marks { kBorder = 1, kCross = 2, kWords = 4 };

constexpr const char *kTextPage = "Text", *kEdgesPage = "Edges", *kMarksPage = "Position only";

constexpr Field as_text(Field field, const char* page = kTextPage) {
  return on_page(enabled_by(field, "positionOnly", 0), page);
}
constexpr Field as_marks(Field field) { return on_page(enabled_by(field, "positionOnly", 1), kMarksPage); }
constexpr Field appended(const char* name, const char* label, int bit) {
  return as_text(flag_field(name, label, 0, &settings::WatermarkFileDateFlags, bit));
}

constexpr Field kFields[] = {
    on_page(flag_field("positionOnly", "For position only", 0, &settings::PosOnlyWatermark), kTextPage),
    on_page(whole_field("opacity", "Opacity", 1, 100, 50, &settings::PosOnlyOpacity), kTextPage),
    as_text(text_field()),
    as_text(font_field("font", &settings::WatermarkFontName)),
    as_text(whole_field("size", "Size", kLeastPoints, kMostPoints, 24, &settings::WatermarkFontSize)),
    as_text(flag_field("bold", "Bold", 1, &settings::WatermarkFontBold)),
    as_text(flag_field("italic", "Italic", 0, &settings::WatermarkFontItal)),
    as_text(flag_field("antialias", "Smooth edges", 1, &settings::WatermarkAntialias)),
    as_text(whole_field("characterSpacing", "Character spacing", kLeastSpace, kMostSpace, 0,
                        &settings::WatermarkCharspace)),
    as_text(whole_field("lineSpacing", "Line spacing", kLeastSpace, kMostSpace, 0,
                        &settings::WatermarkLinespace)),
    as_text({.name = "at",
             .label = "Place",
             .type = FieldType::Choice,
             .most = 8,
             .choices = kPlaces,
             .initial = 8,
             .setting = &settings::WatermarkJust}),
    as_text(whole_field("margin", "Margin", 0, 500, 8, &settings::WatermarkGutter)),
    as_text(color_field("color", "Color", 0xFFFFFF, &settings::WatermarkTextColor)),
    appended("fileName", "File name", kName),
    appended("fileDate", "File date", kDate),
    appended("fileTime", "File time", kTime),
    appended("today", "Today's date", kToday),
    as_text(flag_field("crc", "CRC-32 of the file", 0, &settings::WatermarkCRC)),
    as_text(flag_field("outline", "Outline", 0, &settings::WatermarkKeylineUse), kEdgesPage),
    on_page(
        enabled_by(color_field("outlineColor", "Color of the outline", 0, &settings::WatermarkKeylineColor),
                   "outline"),
        kEdgesPage),
    as_text(whole_field("highlight", "Light edge", 0, 100, 0, &settings::WatermarkHighlight), kEdgesPage),
    as_text(whole_field("shadow", "Dark edge", 0, 100, 0, &settings::WatermarkShadow), kEdgesPage),
    as_text(whole_field("noLightAbove", "No light edge above", 0, 255, 224,
                        &settings::WatermarkAdjust01Highlight),
            kEdgesPage),
    as_text(whole_field("noDarkBelow", "No dark edge below", 0, 255, 32, &settings::WatermarkAdjust01Shadow),
            kEdgesPage),
    as_marks({.name = "words",
              .label = "Words",
              .type = FieldType::Text,
              .most = 260,
              .initialText = "For position only",
              .textSetting = &settings::PosOnlyText}),
    as_marks(font_field("marksFont", &settings::PosOnlyFontName)),
    as_marks(whole_field("marksSize", "Size", kLeastPoints, kMostPoints, 36, &settings::PosOnlySize)),
    as_marks(flag_field("marksBold", "Bold", 1, &settings::PosOnlyBold)),
    as_marks(flag_field("marksItalic", "Italic", 0, &settings::PosOnlyItal)),
    as_marks(color_field("black", "Dark color", 0, &settings::PosOnlyBlack)),
    as_marks(color_field("white", "Light color", 0xFFFFFF, &settings::PosOnlyWhite)),
    as_marks(flag_field("border", "Border", 1, &settings::PosOnlyFlags, kBorder)),
    as_marks(flag_field("cross", "Cross", 1, &settings::PosOnlyFlags, kCross)),
    as_marks(flag_field("showWords", "Words in the middle", 1, &settings::PosOnlyFlags, kWords)),
    as_marks(flag_field("roundEnds", "Round ends of lines", 1, &settings::PosOnlyRoundLineCaps)),
};

void fit(std::vector<Field>& fields, const DocumentWindow&) { offer_fonts(fields); }

bool appends(const FieldValues& values) {
  return std::ranges::any_of(
      std::initializer_list<const char*>{"fileName", "fileDate", "fileTime", "today", "crc"},
      [&](const char* name) { return values.number(name) != 0; });
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (values.number("positionOnly") != 0 || !values.text("text").empty() || appends(values))
    return std::nullopt;
  return fault_of("text", StringId::EnterText);
}

/// "2026-11-22", or "07:15" of a time.
std::string clock_text(std::time_t time, const char* form) {
  std::tm parts{};
  localtime_r(&time, &parts);
  char text[32] = {};
  std::strftime(text, sizeof text, form, &parts);
  return text;
}

std::optional<std::time_t> time_of_file(const std::filesystem::path& path) {
  std::error_code error;
  const auto time = std::filesystem::last_write_time(path, error);
  if (error) return std::nullopt;
  return std::chrono::system_clock::to_time_t(std::chrono::file_clock::to_sys(time));
}

/// The text and what is appended, a blank between. What a document without a file lacks is left out.
std::string whole_text(const FieldValues& values, const DocumentWindow& window) {
  std::string text = values.text("text");
  const auto append = [&](const std::string& more) {
    if (!more.empty()) text += (text.empty() ? "" : " ") + more;
  };
  const std::filesystem::path& path = window.document.fileName;
  const auto time = time_of_file(path);
  if (values.number("fileName") != 0) append(path.filename().string());
  if (values.number("fileDate") != 0 && time) append(clock_text(*time, "%Y-%m-%d"));
  if (values.number("fileTime") != 0 && time) append(clock_text(*time, "%H:%M"));
  if (values.number("today") != 0) append(clock_text(std::time(nullptr), "%Y-%m-%d"));
  std::string reason;
  if (values.number("crc") != 0)
    if (const auto bytes = read_file(path, reason, kMaximumFileBytes))
      append(format_text("%08X", crc32_of(*bytes)));
  return text;
}

// ---------------------------------------------------------------------------------------------------------
// position only

/// The coverage of lines of this width: of the rectangle's edges, and of both its diagonals.
struct Lines {
  double width, height;
  bool border, cross, round;

  double from_diagonal(double x, double y) const {
    const double length = std::hypot(width, height);
    // Without round ends a line is cut square, beyond its corner nothing is seen of it either way.
    const double along = (x * width + y * height) / length;
    if (!round && (along < 0 || along > length)) return 1e9;
    const double held = std::clamp(along, 0.0, length);
    return std::hypot(x - held * width / length, y - held * height / length);
  }
  double distance(double x, double y) const {
    double nearest = 1e9;
    if (border) nearest = std::min({x, y, width - x, height - y}) - 1.5;
    if (border) nearest = std::abs(nearest);
    if (cross) nearest = std::min({nearest, from_diagonal(x, y), from_diagonal(width - x, y)});
    return nearest;
  }
};

void put_color(std::uint8_t* out, Colour color, double coverage) {
  const auto alpha = static_cast<std::uint32_t>(std::lround(std::clamp(coverage, 0.0, 1.0) * 255));
  if (alpha == 0) return;
  const std::uint8_t values[] = {blue_of(color), green_of(color), red_of(color)};
  lay_straight(out, values, alpha);
}

/// Lines of 3 pixels in the light color with one of 1 pixel in the dark color in them; the words have an
/// outline in the light color.
Picture position_marks(const FieldValues& values, const Extent& canvas, DrawnText& drawn) {
  Picture marks = PictureCreateAlpha(canvas.width, canvas.height);
  const EditRows rows(marks);
  if (!rows) return {};
  const auto black = static_cast<Colour>(values.number("black")),
             white = static_cast<Colour>(values.number("white"));
  const Lines lines{1.0 * canvas.width, 1.0 * canvas.height, values.number("border") != 0,
                    values.number("cross") != 0, values.number("roundEnds") != 0};
  for_each_row(canvas.height, std::size_t{canvas.width} * 40, [&](std::uint32_t y) {
    for (std::uint32_t x = 0; x < canvas.width; ++x) {
      const double away = lines.distance(x + 0.5, y + 0.5);
      put_color(rows[y] + 4 * std::size_t{x}, white, 2.0 - away);
      put_color(rows[y] + 4 * std::size_t{x}, black, 1.0 - away);
    }
  });
  if (values.number("showWords") == 0) return marks;
  TextStyle style;
  style.family = values.text("marksFont");
  style.points = static_cast<double>(values.number("marksSize"));
  style.bold = values.number("marksBold") != 0;
  style.italic = values.number("marksItalic") != 0;
  drawn = draw_text(values.text("words"), style);
  const TextArt art = text_art(drawn.mask, {black, 1, white, false, 0, 0});
  if (art.picture)
    lay_picture(marks, (std::int64_t{canvas.width} - art.picture.width()) / 2,
                (std::int64_t{canvas.height} - art.picture.height()) / 2, art.picture);
  return marks;
}

// ---------------------------------------------------------------------------------------------------------
// text

/// What is laid on each frame: a picture, or the edges of letters whose body stays clear.
struct Mark {
  Picture picture, light, dark;
  std::int64_t left = 0, top = 0;  ///< on the canvas
  std::uint32_t opacity = 100, lightOpacity = 0, darkOpacity = 0;
  std::uint8_t noLightAbove = 255, noDarkBelow = 0;
};

/// The mask moved by one pixel, without what the letters cover; one pixel larger at each side.
Mask edge_mask(const Mask& letters, int by) {
  Mask edge(letters.width + 2, letters.height + 2);
  for (std::uint32_t y = 0; y < edge.height; ++y)
    for (std::uint32_t x = 0; x < edge.width; ++x) {
      const auto at = [&](std::int64_t column, std::int64_t row) {
        const bool inside = column >= 0 && row >= 0 && column < letters.width && row < letters.height;
        return inside ? letters.row(static_cast<std::uint32_t>(row))[column] : std::uint8_t{0};
      };
      const int moved = at(std::int64_t{x} - 1 - by, std::int64_t{y} - 1 - by),
                body = at(std::int64_t{x} - 1, std::int64_t{y} - 1);
      edge.row(y)[x] = static_cast<std::uint8_t>(std::max(moved - body, 0));
    }
  return edge;
}

Mark text_mark(const FieldValues& values, const Extent& canvas, const DrawnText& drawn) {
  Mark mark;
  if (drawn.mask.values.empty()) return mark;
  const auto number = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  mark.lightOpacity = number("highlight") * number("opacity") / 100;
  mark.darkOpacity = number("shadow") * number("opacity") / 100;
  mark.opacity = number("opacity");
  mark.noLightAbove = static_cast<std::uint8_t>(number("noLightAbove"));
  mark.noDarkBelow = static_cast<std::uint8_t>(number("noDarkBelow"));
  const bool embossed = number("highlight") > 0 || number("shadow") > 0;
  std::int64_t room = 1;
  if (embossed) {
    mark.light = colored_mask(edge_mask(drawn.mask, -1), 0xFFFFFF);
    mark.dark = colored_mask(edge_mask(drawn.mask, 1), 0);
  } else {
    const TextArt art =
        text_art(drawn.mask, {number("color"), number("outline"), number("outlineColor"), false, 0, 0});
    mark.picture = art.picture;
    room = art.left;
  }
  const std::int64_t at = values.number("at"), margin = values.number("margin");
  mark.left = place_in(at % 3, canvas.width, drawn.mask.width, margin) - room;
  mark.top = place_in(at / 3, canvas.height, drawn.mask.height, margin) - room;
  return mark;
}

/// The part of an edge that the picture's grey below it lets be.
template <class Seen>
Picture seen_part(const Picture& edge, const Picture& below, std::int64_t x, std::int64_t y,
                  const Seen& seen) {
  Picture part = PictureDuplicate(edge);
  const EditRows rows(part);
  if (!rows) return {};
  const std::size_t bytes = below.bits() / 8;
  for (std::uint32_t row = 0; row < part.height(); ++row) {
    const std::int64_t py = y + row;
    if (py < 0 || py >= below.height()) continue;
    const std::uint8_t* ground = below.row(static_cast<std::uint32_t>(py));
    for (std::uint32_t column = 0; column < part.width(); ++column) {
      std::uint8_t& alpha = rows[row][4 * std::size_t{column} + 3];
      const std::int64_t px = x + column;
      if (alpha == 0 || px < 0 || px >= below.width()) continue;
      const std::uint8_t* pixel = ground + bytes * static_cast<std::size_t>(px);
      if (!seen(grey_of(pixel[2], pixel[1], pixel[0]))) alpha = 0;
    }
  }
  return part;
}

bool put_mark(Picture& picture, FrameOffset offset, const Mark& mark, Lay how) {
  const std::int64_t x = mark.left - offset.x, y = mark.top - offset.y;
  if (mark.picture) return lay_picture(picture, x, y, mark.picture, mark.opacity, how);
  if (!mark.light) return true;
  const Picture light = seen_part(mark.light, picture, x, y,
                                  [&](std::uint8_t grey) { return grey <= mark.noLightAbove; }),
                dark = seen_part(mark.dark, picture, x, y,
                                 [&](std::uint8_t grey) { return grey >= mark.noDarkBelow; });
  return light && dark && lay_picture(picture, x, y, light, mark.lightOpacity, how) &&
         lay_picture(picture, x, y, dark, mark.darkOpacity, how);
}

/// How a frame takes the mark: where an earlier one shows through, that one has it already.
std::vector<Lay> manners_of(const DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  std::vector<Lay> manners;
  bool empty = true;
  for (const std::size_t entry : frame_entries(window)) {
    const FrameManner manner = frame_manner(window.list.record(entry), kind);
    manners.push_back(manner.over && !manner.clears && !empty ? Lay::Atop : Lay::Over);
    empty = manner.dispose == 1;
  }
  return manners;
}

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) { return kTrueColor; }

bool run(OperationRun& run) {
  if (!free_color_key(run.draft, run.host)) return false;
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  Mark mark;
  DrawnText drawn;
  TextStyle style = text_style_of(run.values);
  if (run.number("positionOnly") != 0) {
    style.family = run.values.text("marksFont");
    mark.picture = position_marks(run.values, canvas, drawn);
    mark.opacity = static_cast<std::uint32_t>(run.number("opacity"));
    if (!mark.picture) return run.host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
  } else {
    const std::int64_t column = run.number("at") % 3;
    style.lines = static_cast<TextLines>(column);
    drawn = draw_text(whole_text(run.values, run.draft), style);
    mark = text_mark(run.values, canvas, drawn);
  }
  if (drawn.large) return run.refuse(StringId::TextTooLarge);
  if (!drawn.family.empty()) tell_of_font(style, drawn, run.host);
  const auto manners = manners_of(run.draft);
  const auto change = [&](FrameWork& work) {
    const Lay how = work.frame == kDefaultImageWork ? Lay::Over : manners[work.frame];
    return put_mark(work.picture, work.offset, mark, how);
  };
  if (!change_pictures(run.draft, all_frames(frame_entries(run.draft).size()),
                       string_text(StringId::BuildingCaption), run.host, change))
    return false;
  finish_edit(run.draft, false);
  return true;
}

}  // namespace

constinit const Operation kWatermark{
    .parameters =
        {
            .name = "watermark",
            .title = "Watermark",
            .help = "A text in every frame, or marks that say for position only",
            .command = 327,
            .kinds = kAnimatedKinds,
            .texts = "EditWatermarkHistory.txt",
            .fields = kFields,
            .fit = fit,
            .check = check,
        },
    .question = StringId::WatermarkWarning,
    .asks = &settings::WarnWatermark,
    .result = OperationResult::NewWindow,
    .prefix = StringId::WatermarkedPrefix,
    .preview = OperationPreview::Full,
    .needs = needs,
    .run = run,
};

}  // namespace vellum
