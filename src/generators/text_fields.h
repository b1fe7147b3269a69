// What generators of texts share: fields, checks, the text drawn, one palette where true color is off.
#pragma once

#include "generators/drawn_frames.h"
#include "generators/generator.h"
#include "operations/field_rows.h"
#include "operations/text_art.h"

namespace vellum {

/// The longest text that a setting keeps.
inline constexpr std::int64_t kMostSignText = 260;

constexpr Field sign_text_field(std::string* setting, const char* initial) {
  return {.name = "text",
          .label = "Text",
          .type = FieldType::Text,
          .most = kMostSignText,
          .initialText = initial,
          .textSetting = setting};
}
constexpr Field true_color_field(int state) {
  return {.name = "trueColor",
          .label = "True color",
          .type = FieldType::Flag,
          .most = 1,
          .tip = "Without it an MNG is made in the colors of one palette",
          .initial = 1,
          .stateId = state};
}

/// "Enter the text of your %s." where there is none.
std::optional<FieldFault> check_sign_text(const FieldValues& values, const char* thing);
/// For `fit`.
void offer_sign_fonts(std::vector<Field>& fields, const DocumentWindow&);

/// The text, and a note where its font is not installed. An empty mask, with the reason kept in the host,
/// where there is nothing to see or it would be too large.
DrawnText draw_sign_text(const std::string& text, const TextStyle& style, Host& host);

/// The frames as the field "trueColor" says. Only an MNG takes a palette.
std::optional<FrameStream> true_color_or_palette(DrawnFrames drawn, const FieldValues& values,
                                                 const GeneratorInputs& inputs, Host& host);

}  // namespace vellum
