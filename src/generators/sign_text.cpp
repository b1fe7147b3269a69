#include "generators/sign_text.h"

#include <algorithm>
#include <optional>
#include <span>

#include "base/fields.h"
#include "base/text.h"

namespace vellum {

extern const std::span<const std::uint8_t> embedded_glyphs;

namespace {

constexpr std::string_view kColors[kSignColors] = {"black", "blue",  "cyan",   "green",  "magenta",
                                                   "red",   "white", "yellow", "default"};
constexpr std::size_t kGlyphBytes = 2 * kLetterHeight, kGlyphs = 96;
constexpr std::size_t kMostTold = 8;  // characters that a note names

/// U+00C0 to U+00FF without their accents.
constexpr std::string_view kPlain = "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTsaaaaaaaceeeeiiiidnooooo/ouuuuyty";

/// The character at `at`, which moves behind it: its number, or nothing for wrong bytes.
std::optional<char32_t> next_character(std::string_view text, std::size_t& at) {
  const auto first = static_cast<unsigned char>(text[at++]);
  if (first < 0x80) return first;
  const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : -1;
  if (more < 0) return std::nullopt;
  char32_t number = first & (0x3F >> more);
  for (int i = 0; i < more; ++i, ++at) {
    if (at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80) return std::nullopt;
    number = number << 6 | (static_cast<unsigned char>(text[at]) & 0x3F);
  }
  return number;
}

/// The letter for a character, 0 where there is none.
char letter_for(char32_t character) {
  if (character >= 0x20 && character < 0x20 + kGlyphs) return static_cast<char>(character);
  if (character == '\t' || character == 0xA0) return ' ';
  if (character >= 0xC0 && character <= 0xFF) return kPlain[character - 0xC0];
  if (character == 0x2018 || character == 0x2019) return '\'';
  if (character >= 0x201C && character <= 0x201E) return '"';
  if (character >= 0x2010 && character <= 0x2015) return '-';
  return 0;
}

/// The word between braces at `at`; empty where nothing closes them.
std::string_view word_at(std::string_view text, std::size_t at) {
  const std::size_t end = text.find('}', at);
  return end == std::string_view::npos || text[at] != '{' ? std::string_view()
                                                          : text.substr(at + 1, end - at - 1);
}

}  // namespace

SignText read_sign_text(std::string_view text, SignColor first, bool lines) {
  SignText sign;
  SignColor color = first;
  for (std::size_t at = 0; at < text.size();) {
    const std::string_view word = word_at(text, at);
    const auto named =
        std::ranges::find_if(kColors, [&](std::string_view name) { return equal_ignoring_case(name, word); });
    if (named != std::end(kColors)) {
      color = static_cast<SignColor>(named - std::begin(kColors));
      if (color == SignColor::Default) color = first;
      at += word.size() + 2;
    } else if (equal_ignoring_case(word, "pause")) {
      sign.pauses.push_back(sign.letters.size());
      at += word.size() + 2;
    } else if (text.substr(at).starts_with("{{")) {
      sign.letters.push_back({'{', color});
      at += 2;
    } else if (text[at] == '\n' || (lines && text.substr(at).starts_with("\\n"))) {
      sign.letters.push_back({lines ? '\n' : ' ', color});
      at += text[at] == '\n' ? 1 : 2;
    } else {
      const std::size_t begin = at;
      const auto character = next_character(text, at);
      const char letter = character ? letter_for(*character) : '\0';
      if (letter == 0 && character != U'\r') sign.missing += text.substr(begin, at - begin);
      if (character != U'\r') sign.letters.push_back({letter != 0 ? letter : '?', color});
    }
  }
  return sign;
}

void tell_of_letters(const SignText& text, const Host& host) {
  if (text.missing.empty()) return;
  std::size_t end = 0;
  for (std::size_t i = 0; i < kMostTold && end < text.missing.size(); ++i) next_character(text.missing, end);
  host.add_note(filled(StringId::LettersMissing, {text.missing.substr(0, end)}));
}

void put_letter(DotGrid& grid, std::int64_t x, std::int64_t y, SignLetter letter, bool narrow) {
  if (letter.code < ' ') return;
  const auto glyph =
      embedded_glyphs.subspan(static_cast<std::size_t>(letter.code - ' ') * kGlyphBytes, kGlyphBytes);
  for (std::uint32_t row = 0; row < kLetterHeight; ++row)
    for (std::uint32_t column = 0; column < 8; ++column)
      if (glyph[2 * row + (narrow ? 1 : 0)] >> (7 - column) & 1)
        grid.set(x + column, y + row, static_cast<std::uint8_t>(static_cast<unsigned>(letter.color) + 1));
}

std::vector<SignLine> sign_lines(const std::vector<SignLetter>& letters, std::size_t columns,
                                 const std::vector<std::size_t>& breaks) {
  std::vector<SignLine> lines;
  std::size_t begin = 0, blank = 0;  // behind the last blank of the line, 0 without
  const auto end_at = [&](std::size_t end, std::size_t next) {
    lines.push_back({begin, end});
    begin = next;
    blank = 0;
  };
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (i > begin && std::ranges::binary_search(breaks, i)) end_at(i, i);
    if (letters[i].code == '\n') {
      end_at(i, i + 1);
      continue;
    }
    if (i - begin == columns) {
      if (letters[i].code == ' ') {
        end_at(i, i + 1);
        continue;
      }
      const std::size_t next = blank != 0 ? blank : i;
      end_at(blank != 0 ? blank - 1 : i, next);
    }
    if (letters[i].code == ' ') blank = i + 1;
  }
  if (begin < letters.size() || lines.empty()) end_at(letters.size(), letters.size());
  return lines;
}

}  // namespace vellum
