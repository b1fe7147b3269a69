#include "image/text_mask.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "image/drawing_library.h"

namespace vellum {
namespace {

constexpr double kDotsPerInch = 96;
constexpr int kTile = 8192;              // pixels of a surface in either direction; cairo ends at 32767
constexpr double kMostSide = 1'500'000;  // pixels: lengths of the layout have 31 bits and 1024 to a pixel
constexpr int kRoom = 2;                 // around the ink that is foretold, for what smoothing adds

struct Free {
  void operator()(void* object) const { g_object_unref(object); }
  void operator()(cairo_t* object) const { cairo_destroy(object); }
  void operator()(cairo_surface_t* object) const { cairo_surface_destroy(object); }
  void operator()(PangoFontDescription* object) const { pango_font_description_free(object); }
  void operator()(PangoAttrList* object) const { pango_attr_list_unref(object); }
  void operator()(char* object) const { g_free(object); }
};
template <class T>
using Held = std::unique_ptr<T, Free>;

/// Fonts may not be shared by threads.
PangoFontMap* font_map() {
  thread_local const Held<PangoFontMap> map = [] {
    Held<PangoFontMap> made(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(made.get()), kDotsPerInch);
    return made;
  }();
  return map.get();
}

/// Neither screen nor desktop has a say: no hinting, grey edges.
Held<PangoContext> make_context() {
  Held<PangoContext> context(pango_font_map_create_context(font_map()));
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  pango_cairo_context_set_font_options(context.get(), options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context.get(), FALSE);
  pango_context_set_language(context.get(), pango_language_from_string("en"));
  return context;
}

Held<PangoFontDescription> description_of(const TextStyle& style) {
  Held<PangoFontDescription> font(pango_font_description_new());
  pango_font_description_set_family(font.get(), style.family.empty() ? "Sans" : style.family.c_str());
  pango_font_description_set_size(font.get(), static_cast<int>(std::lround(style.points * PANGO_SCALE)));
  pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_style(font.get(), style.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  return font;
}

/// Letter space, and no ink from byte `end` on: alpha 0 stands for "not said", 1 of 65535 leaves nothing.
void add_attributes(PangoLayout* layout, const TextStyle& style, std::size_t end, std::size_t length) {
  const Held<PangoAttrList> list(pango_attr_list_new());
  if (style.letterSpace != 0)
    pango_attr_list_insert(list.get(), pango_attr_letter_spacing_new(style.letterSpace * PANGO_SCALE));
  if (end < length) {
    PangoAttribute* hidden = pango_attr_foreground_alpha_new(1);
    hidden->start_index = static_cast<guint>(end);
    hidden->end_index = static_cast<guint>(length);
    pango_attr_list_insert(list.get(), hidden);
  }
  pango_layout_set_attributes(layout, list.get());
}

Held<PangoLayout> lay_out(PangoContext* context, const std::string& text, const TextStyle& style) {
  Held<PangoLayout> layout(pango_layout_new(context));
  pango_layout_set_font_description(layout.get(), description_of(style).get());
  pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
  pango_layout_set_spacing(layout.get(), style.lineSpace * PANGO_SCALE);
  pango_layout_set_alignment(layout.get(), style.lines == TextLines::Left     ? PANGO_ALIGN_LEFT
                                           : style.lines == TextLines::Center ? PANGO_ALIGN_CENTER
                                                                              : PANGO_ALIGN_RIGHT);
  if (style.wrap > 0) {
    pango_layout_set_width(layout.get(),
                           static_cast<int>(std::min<double>(style.wrap, kMostSide)) * PANGO_SCALE);
    pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  }
  return layout;
}

/// Whether a line ends where no word does.
bool breaks_words(PangoLayout* layout) {
  int count = 0;
  const PangoLogAttr* attributes = pango_layout_get_log_attrs_readonly(layout, &count);
  const char* text = pango_layout_get_text(layout);
  glong at = 0;
  int index = 0;
  for (const GSList* item = pango_layout_get_lines_readonly(layout); item && item->next; item = item->next) {
    const int next = static_cast<const PangoLayoutLine*>(item->next->data)->start_index;
    at += g_utf8_pointer_to_offset(text + index, text + next);
    index = next;
    if (at < count && !attributes[at].is_line_break) return true;
  }
  return false;
}

/// The lines that reach into rows of the layout, drawn.
void draw_lines(cairo_t* cairo, PangoLayout* layout, int top, int bottom) {
  PangoLayoutIter* at = pango_layout_get_iter(layout);
  do {
    PangoRectangle ink;
    pango_layout_iter_get_line_extents(at, &ink, nullptr);
    pango_extents_to_pixels(&ink, nullptr);
    if (ink.y - kRoom >= bottom || ink.y + ink.height + kRoom <= top) continue;
    PangoRectangle logical;
    pango_layout_iter_get_line_extents(at, nullptr, &logical);
    cairo_move_to(cairo, 1.0 * logical.x / PANGO_SCALE,
                  1.0 * pango_layout_iter_get_baseline(at) / PANGO_SCALE);
    pango_cairo_show_layout_line(cairo, pango_layout_iter_get_line_readonly(at));
  } while (pango_layout_iter_next_line(at));
  pango_layout_iter_free(at);
}

/// One part of the mask; cairo draws on surfaces of a limited size alone.
bool draw_tile(PangoLayout* layout, const PangoRectangle& ink, int left, int top, Mask& mask) {
  const int width = std::min(kTile, static_cast<int>(mask.width) - left),
            height = std::min(kTile, static_cast<int>(mask.height) - top);
  const Held<cairo_surface_t> surface(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
  const Held<cairo_t> cairo(cairo_create(surface.get()));
  cairo_translate(cairo.get(), -ink.x - left, -ink.y - top);
  cairo_set_source_rgba(cairo.get(), 0, 0, 0, 1);
  draw_lines(cairo.get(), layout, ink.y + top, ink.y + top + height);
  cairo_surface_flush(surface.get());
  if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) return false;
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
  const unsigned char* rows = cairo_image_surface_get_data(surface.get());
  for (int y = 0; y < height; ++y)
    std::memcpy(mask.row(static_cast<std::uint32_t>(top + y)) + left,
                rows + stride * static_cast<unsigned>(y), static_cast<std::size_t>(width));
  return true;
}

bool draw_tiles(PangoLayout* layout, const PangoRectangle& ink, Mask& mask) {
  for (int top = 0; top < static_cast<int>(mask.height); top += kTile)
    for (int left = 0; left < static_cast<int>(mask.width); left += kTile)
      if (!draw_tile(layout, ink, left, top, mask)) return false;
  return true;
}

/// The rectangle that has ink: left and top, and behind right and bottom. Empty where there is none.
struct Ink {
  std::uint32_t left, top, right = 0, bottom = 0;
};

Ink ink_of(const Mask& mask) {
  Ink ink{mask.width, mask.height};
  for (std::uint32_t y = 0; y < mask.height; ++y) {
    const std::uint8_t *row = mask.row(y), *end = row + mask.width;
    const auto some = [](std::uint8_t value) { return value != 0; };
    const std::uint8_t* first = std::find_if(row, end, some);
    if (first == end) continue;
    const auto last =
        std::find_if(std::make_reverse_iterator(end), std::make_reverse_iterator(first), some).base();
    ink.left = std::min(ink.left, static_cast<std::uint32_t>(first - row));
    ink.right = std::max(ink.right, static_cast<std::uint32_t>(last - row));
    ink.top = std::min(ink.top, y);
    ink.bottom = y + 1;
  }
  return ink;
}

Mask framed(const Mask& mask, const Ink& ink, std::uint32_t gutter) {
  Mask result(ink.right - ink.left + 2 * gutter, ink.bottom - ink.top + 2 * gutter);
  for (std::uint32_t y = ink.top; y < ink.bottom; ++y)
    std::memcpy(result.row(gutter + y - ink.top) + gutter, mask.row(y) + ink.left, ink.right - ink.left);
  return result;
}

void harden(Mask& mask) {
  for (std::uint8_t& value : mask.values) value = value >= 128 ? 255 : 0;
}

std::string family_of(PangoContext* context, const TextStyle& style) {
  const Held<PangoFont> font(pango_font_map_load_font(font_map(), context, description_of(style).get()));
  if (!font) return {};
  const Held<PangoFontDescription> description(pango_font_describe(font.get()));
  const char* family = pango_font_description_get_family(description.get());
  return family ? family : "";
}

/// UTF-8 without faults and without zeros, which would end it.
std::string clean(std::string_view text) {
  std::string without(text);
  std::erase(without, '\0');
  std::erase(without, '\r');
  const Held<char> valid(g_utf8_make_valid(without.data(), static_cast<gssize>(without.size())));
  return valid.get();
}

/// Whether a byte of UTF-8 is the first one of a character.
bool begins_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

constexpr std::size_t kLongWord = 500, kWordPart = 8;  // characters

/// Breaking an endless word takes time by the square of its length: it gets places to break at.
std::string with_breaks(const std::string& text, bool& broken) {
  std::string result, word;
  const auto add_word = [&] {
    if (count_characters(word) > kLongWord) {
      broken = true;
      std::string parts;
      std::size_t characters = 0;
      for (const char c : word) {
        if (begins_character(c) && characters++ % kWordPart == 0)
          parts += "\xE2\x80\x8B";  // a space without width
        parts += c;
      }
      word = std::move(parts);
    }
    result += word;
    word.clear();
  };
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\n' || c == '\t';
    if (blank) add_word();
    (blank ? result : word) += c;
  }
  add_word();
  return result;
}

/// The character behind the one that begins here, in a text without faults.
const char* next_character(const char* at) {
  do ++at;
  while (!begins_character(*at));
  return at;
}

/// Bytes of the first `count` characters.
std::size_t bytes_of(const std::string& text, std::size_t count) {
  if (count >= text.size()) return text.size();
  const char* at = text.data();
  for (; count > 0 && *at; --count) at = next_character(at);
  return static_cast<std::size_t>(at - text.data());
}

/// The longest line may be wider than a layout can say.
bool may_be_laid_out(const std::string& text, const TextStyle& style) {
  std::size_t longest = 0, lines = 1, length = 0;
  for (const char c : text) {
    length = c == '\n' ? 0 : length + 1;
    lines += c == '\n';
    longest = std::max(longest, length);
  }
  const double em = style.points * kDotsPerInch / 72;
  const double letter = 1.5 * em + std::max(style.letterSpace, 0),
               line = 2 * em + std::max(style.lineSpace, 0);
  if (style.wrap == 0)
    return static_cast<double>(longest) * letter <= kMostSide &&
           static_cast<double>(lines) * line <= kMostSide;
  const double wrapped = static_cast<double>(text.size()) * letter / style.wrap + static_cast<double>(lines);
  return std::min(wrapped, static_cast<double>(text.size()) + 1) * line <= kMostSide;
}

}  // namespace

std::size_t count_characters(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, begins_character));
}

DrawnText draw_text(std::string_view text, const TextStyle& style, std::size_t shown) {
  DrawnText drawn;
  std::string characters = clean(text);
  const Held<PangoContext> context = make_context();
  drawn.family = family_of(context.get(), style);
  drawn.large = count_characters(characters) > kMostTextCharacters || !may_be_laid_out(characters, style);
  if (drawn.large) return drawn;
  if (style.wrap > 0) characters = with_breaks(characters, drawn.broken);
  const Held<PangoLayout> layout = lay_out(context.get(), characters, style);
  add_attributes(layout.get(), style, characters.size(), characters.size());
  drawn.broken = drawn.broken || (style.wrap > 0 && breaks_words(layout.get()));
  PangoRectangle ink;
  pango_layout_get_pixel_extents(layout.get(), &ink, nullptr);
  if (ink.width <= 0 || ink.height <= 0) return drawn;
  ink = {ink.x - kRoom, ink.y - kRoom, ink.width + 2 * kRoom, ink.height + 2 * kRoom};
  const auto side = [&](int pixels) {
    return std::uint64_t{style.gutter} * 2 + static_cast<unsigned>(pixels);
  };
  drawn.large = side(ink.width) * side(ink.height) > kMostMaskBytes;
  if (drawn.large) return drawn;
  Mask whole(static_cast<std::uint32_t>(ink.width), static_cast<std::uint32_t>(ink.height));
  if (!draw_tiles(layout.get(), ink, whole)) return drawn;
  if (!style.smooth) harden(whole);
  const Ink tight = ink_of(whole);
  if (tight.right == 0) return drawn;
  if (const std::size_t end = bytes_of(characters, shown); end < characters.size()) {
    add_attributes(layout.get(), style, end, characters.size());
    if (!draw_tiles(layout.get(), ink, whole)) return drawn;
    if (!style.smooth) harden(whole);
  }
  drawn.mask = framed(whole, tight, style.gutter);
  drawn.left = ink.x + static_cast<std::int32_t>(tight.left);
  return drawn;
}

std::vector<CharacterPlace> character_places(std::string_view text, const TextStyle& style) {
  const std::string characters = clean(text);
  if (count_characters(characters) > kMostTextCharacters || !may_be_laid_out(characters, style)) return {};
  const Held<PangoContext> context = make_context();
  const Held<PangoLayout> layout = lay_out(context.get(), characters, style);
  add_attributes(layout.get(), style, characters.size(), characters.size());
  std::vector<CharacterPlace> places;
  for (const char* at = characters.c_str(); *at; at = next_character(at)) {
    PangoRectangle place;
    pango_layout_index_to_pos(layout.get(), static_cast<int>(at - characters.c_str()), &place);
    const double from = 1.0 * place.x / PANGO_SCALE, to = 1.0 * (place.x + place.width) / PANGO_SCALE;
    places.push_back({std::min(from, to), std::max(from, to)});
  }
  return places;
}

std::vector<std::string> font_families() {
  PangoFontFamily** families = nullptr;
  int count = 0;
  pango_font_map_list_families(font_map(), &families, &count);
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) names.emplace_back(pango_font_family_get_name(families[i]));
  g_free(families);
  std::ranges::sort(names);
  return names;
}

Mask grown_mask(const Mask& mask, std::uint32_t radius) {
  Mask result(mask.width + 2 * radius, mask.height + 2 * radius);
  const auto reach = static_cast<std::int64_t>(radius);
  for (std::int64_t dy = -reach; dy <= reach; ++dy) {
    const auto half =
        static_cast<std::uint32_t>(std::lround(std::sqrt(static_cast<double>(reach * reach - dy * dy))));
    for (std::uint32_t y = 0; y < mask.height; ++y) {
      const std::uint8_t* in = mask.row(y);
      std::uint8_t* out = result.row(static_cast<std::uint32_t>(y + reach + dy)) + radius - half;
      for (std::uint32_t x = 0; x < mask.width; ++x)
        if (in[x] != 0)
          for (std::uint32_t i = 0; i <= 2 * half; ++i) out[x + i] = std::max(out[x + i], in[x]);
    }
  }
  return result;
}

}  // namespace vellum
