// Texts as operations draw them: fields of the font, placeholders, and the picture that is laid on frames.
#pragma once

#include "core/model/document.h"
#include "image/text_mask.h"
#include "operations/field_rows.h"
#include "operations/frames.h"
#include "operations/operation.h"

namespace vellum {

inline constexpr std::int64_t kLeastPoints = 4, kMostPoints = 400;
inline constexpr std::int64_t kLeastSpace = -10, kMostSpace = 50;

// The fields of a font: "font", "size", "bold", "italic", "antialias", "characterSpacing", "lineSpacing".
constexpr Field text_field(const char* label = "Text") {
  return {.name = "text",
          .label = label,
          .type = FieldType::Text,
          .most = static_cast<std::int64_t>(kMostTextCharacters),
          .look = FieldLook::Lines};
}
constexpr Field font_field(const char* name, std::string* setting = nullptr, int state = 0) {
  return {.name = name,
          .label = "Font",
          .type = FieldType::Text,
          .most = 260,
          .look = FieldLook::Suggestions,
          .initialText = "Arial",
          .textSetting = setting,
          .stateId = state};
}
/// For `fit`: fields of fonts offer those that are installed.
void offer_fonts(std::vector<Field>& fields);

/// What the font's fields say; names are those above, with `prefix` in front ("classic", then "classicFont").
TextStyle text_style_of(const FieldValues& values, const std::string& prefix = {});
/// Notes a font that is not installed, once; names that stand for any font of a style are never missing.
void tell_of_font(const TextStyle& style, const DrawnText& drawn, const Host& host);

/// What placeholders of a frame's text become.
struct FrameFacts {
  std::size_t frame = 0, frames = 1;  ///< from 0
  std::uint64_t delay = 0, start = 0;
  std::string file;
};
std::vector<FrameFacts> frame_facts(const DocumentWindow& window);
/// "%n" frame, "%t" frames, "%d" delay and "%s" start in milliseconds, "%f" file name, "%%".
std::string filled_text(std::string_view text, const FrameFacts& facts);
bool has_placeholders(std::string_view text);

/// How a text is colored.
struct TextColors {
  Colour text = 0;
  std::uint32_t outline = 0;  ///< pixels around the letters
  Colour outlineColor = 0;
  bool shadow = false;
  std::uint32_t shadowOffset = 0, shadowSoftness = 0;  ///< pixels, to the right and down
};

/// The text, colored, as a picture of 32 bits, and where its letters stand in it.
struct TextArt {
  Picture picture;  ///< null where there is no ink
  std::uint32_t left = 0, top = 0;
  Extent letters;
};
TextArt text_art(const Mask& letters, const TextColors& colors);

/// A picture of 32 bits of this color, whose alpha is the mask.
Picture colored_mask(const Mask& mask, Colour color);

}  // namespace vellum
