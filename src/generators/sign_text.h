// Texts of dots, as signs and panels show them: markup, letters, lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/host.h"

namespace vellum {

/// Colors by the words of the markup.
enum class SignColor : std::uint8_t { Black, Blue, Cyan, Green, Magenta, Red, White, Yellow, Default };
inline constexpr std::size_t kSignColors = 9;

inline constexpr std::uint32_t kLetterHeight = 10, kWideLetter = 8, kNarrowLetter = 6;  ///< dots with the gap

struct SignLetter {
  char code;  ///< of ASCII, from the blank on; '\n' ends a line
  SignColor color;
};

struct SignText {
  std::vector<SignLetter> letters;
  std::vector<std::size_t> pauses;  ///< letters in front of each
  std::string missing;              ///< characters of the text that have no letter
};

/// Reads "{red}" and the other colors, "{pause}" and "{{"; what is no markup stays as it stands. Letters with
/// accents lose them. `lines`: "\n" ends a line; otherwise it is a blank.
SignText read_sign_text(std::string_view text, SignColor first, bool lines);
/// Notes the characters that there is no letter for.
void tell_of_letters(const SignText& text, const Host& host);

/// Dots: 0 is off, else the number of a color plus 1.
struct DotGrid {
  std::uint32_t width = 0, height = 0;
  std::vector<std::uint8_t> dots;

  DotGrid() = default;
  DotGrid(std::uint32_t wide, std::uint32_t high)
      : width(wide), height(high), dots(std::size_t{wide} * high) {}
  std::uint8_t at(std::int64_t x, std::int64_t y) const {
    const bool inside = x >= 0 && y >= 0 && x < width && y < height;
    return inside ? dots[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)] : 0;
  }
  void set(std::int64_t x, std::int64_t y, std::uint8_t dot) {
    if (x >= 0 && y >= 0 && x < width && y < height)
      dots[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)] = dot;
  }
};

void put_letter(DotGrid& grid, std::int64_t x, std::int64_t y, SignLetter letter, bool narrow);

/// Letters from `begin` to in front of `end`, on one line.
struct SignLine {
  std::size_t begin, end;
  std::size_t length() const { return end - begin; }
};
/// Lines of at most `columns` letters, broken at blanks where there are some; `breaks` are numbers of letters
/// in front of which a line ends in any case, in their order.
std::vector<SignLine> sign_lines(const std::vector<SignLetter>& letters, std::size_t columns,
                                 const std::vector<std::size_t>& breaks = {});

}  // namespace vellum
