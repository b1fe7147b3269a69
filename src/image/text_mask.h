// Text drawn as a mask: shaped, in any script, without a screen. The same fonts give the same bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "image/mask.h"

namespace vellum {

enum class TextLines : std::uint8_t { Left, Center, Right };

struct TextStyle {
  std::string family = "Sans";
  double points = 24;  ///< of 96 / 72 pixels each
  bool bold = false, italic = false;
  bool smooth = true;                           ///< off: coverage from half on is whole, the rest none
  std::int32_t letterSpace = 0, lineSpace = 0;  ///< pixels behind each glyph, and between lines
  TextLines lines = TextLines::Left;  ///< where a line shorter than the others stands; in a text that runs
                                      ///< from right to left, left and right change places
  std::uint32_t gutter = 0;           ///< pixels around the ink
  std::uint32_t wrap = 0;             ///< pixels; lines that are longer break at words; 0: none do
};

inline constexpr std::size_t kMostTextCharacters = 100'000;
inline constexpr std::uint64_t kMostMaskBytes = std::uint64_t{256} << 20;

/// What became of a text.
struct DrawnText {
  Mask mask;            ///< the ink, tight, and the gutter around it; empty where the text has no ink
  std::string family;   ///< the one that the font has
  bool large = false;   ///< nothing is drawn: it would be beyond `kMostMaskBytes`, or has too many characters
  bool broken = false;  ///< a word was longer than `wrap` and was broken in its middle
  std::int32_t left = 0;  ///< of the ink, from where the text begins
};

/// Draws a text in UTF-8; wrong bytes become replacement characters. Lines end at "\n". May be called by
/// several threads. `shown`: the characters that have ink; the others keep their places, so that the mask is
/// as large as that of the whole text.
DrawnText draw_text(std::string_view text, const TextStyle& style, std::size_t shown = kMostTextCharacters);

/// Where each character of a text without `wrap` stands: left and right of what it takes of its line, in
/// pixels from where the text begins. A character that is part of another has no width.
struct CharacterPlace {
  double left = 0, right = 0;
};
std::vector<CharacterPlace> character_places(std::string_view text, const TextStyle& style);

/// The families that are installed, by name.
std::vector<std::string> font_families();

/// The number of characters in a text.
std::size_t count_characters(std::string_view text);

/// The mask grown by a disc of `radius` pixels, which it is larger by at each side.
Mask grown_mask(const Mask& mask, std::uint32_t radius);

}  // namespace vellum
