#include "generators/text_fields.h"

#include <algorithm>

#include "base/text.h"
#include "base/translation.h"

namespace vellum {

std::optional<FieldFault> check_sign_text(const FieldValues& values, const char* thing) {
  if (!trimmed(values.text("text")).empty()) return std::nullopt;
  return fault_of("text", StringId::EnterTextOfYour, {thing});
}

void offer_sign_fonts(std::vector<Field>& fields, const DocumentWindow&) { offer_fonts(fields); }

DrawnText draw_sign_text(const std::string& text, const TextStyle& style, Host& host) {
  DrawnText drawn = draw_text(text, style);
  if (drawn.large)
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the text would be too large for a picture")});
  tell_of_font(style, drawn, host);
  return drawn;
}

std::optional<FrameStream> true_color_or_palette(DrawnFrames drawn, const FieldValues& values,
                                                 const GeneratorInputs& inputs, Host& host) {
  if (values.number("trueColor") != 0) return stream_of(std::move(drawn), inputs.kind, host);
  if (inputs.kind != DocumentKind::MING) {
    host.add_note(string_text(StringId::PaletteTakesMng));
    return stream_of(std::move(drawn), inputs.kind, host);
  }
  const GivenColors colors = gathered_colors(drawn, 256, inputs.sketch, host);
  if (colors.count == 0) return std::nullopt;
  return stream_of(std::move(drawn), inputs.kind, host, colors);
}

}  // namespace vellum
