#include "operations/text_art.h"

#include <algorithm>
#include <cctype>

#include "base/text.h"
#include "core/model/frame_values.h"
#include "image/lay.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Names that any installed font of the style may stand for.
constexpr const char* kStyles[] = {"", "sans", "sans-serif", "serif", "mono", "monospace", "system-ui"};

bool same_family(std::string_view a, std::string_view b) { return equal_ignoring_case(a, b); }

std::span<const FieldChoice> installed_fonts() {
  static const std::vector<std::string> names = font_families();
  static const std::vector<FieldChoice> choices = [] {
    std::vector<FieldChoice> made;
    for (const std::string& name : names) made.push_back({0, name.c_str()});
    return made;
  }();
  return choices;
}

/// Room at each side for outline and shadow.
std::uint32_t room_of(const TextColors& colors) {
  const std::uint32_t shade = colors.shadow ? colors.shadowOffset + 3 * colors.shadowSoftness : 0;
  return colors.outline + shade;
}

Mask moved(const Mask& mask, std::uint32_t room) {
  Mask result(mask.width + 2 * room, mask.height + 2 * room);
  for (std::uint32_t y = 0; y < mask.height; ++y)
    std::copy_n(mask.row(y), mask.width, result.row(room + y) + room);
  return result;
}

}  // namespace

void offer_fonts(std::vector<Field>& fields) {
  for (Field& field : fields)
    if (field.look == FieldLook::Suggestions) field.choices = installed_fonts();
}

TextStyle text_style_of(const FieldValues& values, const std::string& prefix) {
  const auto name = [&](std::string field) {
    if (!prefix.empty()) field[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(field[0])));
    return prefix + field;
  };
  TextStyle style;
  style.family = values.text(name("font"));
  style.points = static_cast<double>(values.number(name("size")));
  style.bold = values.number(name("bold")) != 0;
  style.italic = values.number(name("italic")) != 0;
  const FieldValue* smooth = values.find(name("antialias"));
  style.smooth = !smooth || values.number(name("antialias")) != 0;
  style.letterSpace = static_cast<std::int32_t>(values.number(name("characterSpacing")));
  style.lineSpace = static_cast<std::int32_t>(values.number(name("lineSpacing")));
  return style;
}

void tell_of_font(const TextStyle& style, const DrawnText& drawn, const Host& host) {
  const auto wanted = [&](const char* name) { return same_family(style.family, name); };
  if (std::ranges::any_of(kStyles, wanted) || same_family(style.family, drawn.family)) return;
  host.add_note(filled(StringId::FontReplaced, {style.family, drawn.family}));
}

std::vector<FrameFacts> frame_facts(const DocumentWindow& window) {
  const auto entries = frame_entries(window);
  const std::uint32_t ticks = ticks_per_second(window.list);
  std::vector<FrameFacts> facts(entries.size());
  std::uint64_t start = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const std::uint64_t delay = frame_delay_ms(window.list.record(entries[i]), window.document.kind, ticks);
    facts[i] = {i, entries.size(), delay, start, window.document.fileName.filename().string()};
    start += delay;
  }
  return facts;
}

bool has_placeholders(std::string_view text) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i)
    if (text[i] == '%' && std::string_view("ntdsf").find(text[++i]) != std::string_view::npos) return true;
  return false;
}

std::string filled_text(std::string_view text, const FrameFacts& facts) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char letter = text[i] == '%' && i + 1 < text.size() ? text[i + 1] : '\0';
    const std::size_t before = result.size();
    if (letter == 'n') result += std::to_string(facts.frame + 1);
    if (letter == 't') result += std::to_string(facts.frames);
    if (letter == 'd') result += std::to_string(facts.delay);
    if (letter == 's') result += std::to_string(facts.start);
    if (letter == 'f') result += facts.file;
    if (letter == '%') result += '%';
    // Another letter means nothing: the sign stays.
    if (result.size() == before && letter != 'f')
      result += text[i];
    else
      ++i;
  }
  return result;
}

Picture colored_mask(const Mask& mask, Colour color) {
  Picture picture = PictureCreateAlpha(mask.width, mask.height);
  const EditRows rows(picture);
  if (!rows) return {};
  for (std::uint32_t y = 0; y < mask.height; ++y) {
    std::uint8_t* out = rows[y];
    const std::uint8_t* in = mask.row(y);
    for (std::uint32_t x = 0; x < mask.width; ++x, out += 4) {
      out[0] = blue_of(color), out[1] = green_of(color), out[2] = red_of(color);
      out[3] = in[x];
    }
  }
  return picture;
}

TextArt text_art(const Mask& letters, const TextColors& colors) {
  TextArt art;
  if (letters.values.empty()) return art;
  const std::uint32_t room = room_of(colors);
  art.left = art.top = room;
  art.letters = {letters.width, letters.height};
  Mask outer = colors.outline > 0 ? grown_mask(letters, colors.outline) : letters;
  art.picture = PictureCreateAlpha(letters.width + 2 * room, letters.height + 2 * room);
  if (!art.picture) return art;
  if (colors.shadow) {
    Mask shade = moved(outer, 3 * colors.shadowSoftness);
    blur_mask(shade, colors.shadowSoftness);
    // Outline and softness reach to the room's edge where the shadow is not moved.
    lay_picture(art.picture, 2 * std::int64_t{colors.shadowOffset}, 2 * std::int64_t{colors.shadowOffset},
                colored_mask(shade, 0));
  }
  if (colors.outline > 0)
    lay_picture(art.picture, room - colors.outline, room - colors.outline,
                colored_mask(outer, colors.outlineColor));
  lay_picture(art.picture, room, room, colored_mask(letters, colors.text));
  return art;
}

}  // namespace vellum
