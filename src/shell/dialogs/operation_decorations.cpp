#include "shell/dialogs/operation_decorations.h"

#include <algorithm>
#include <string_view>

#include "operations/text_art.h"
#include "shell/dialogs/operation_dialog.h"

namespace vellum {
namespace {

struct DecorationRow {
  std::string_view operation;
  void (*decorate)(OperationDialog&) = nullptr;
  std::optional<FieldValues> (*first)(const Operation&, const DocumentWindow&, Services&, QWidget*) = nullptr;
  bool (*last)(OperationChoice&, const DocumentWindow&, Services&) = nullptr;
  bool fillsText = false;  ///< placeholders of its text become words
};
constexpr DecorationRow kDecorations[] = {{"caption", decorate_caption, fields_of_caption, nullptr, true},
                                          {"crop", decorate_crop},
                                          {"frames", decorate_extract, nullptr, ask_for_names},
                                          {"protect", decorate_protect},
                                          {"palette", nullptr, ask_for_palette},
                                          {"overlay", decorate_offsets, nullptr, warn_of_opaque_overlay},
                                          {"underlay", decorate_offsets, nullptr, warn_of_opaque_animation},
                                          {"resize", decorate_resize},
                                          {"text", decorate_offsets, nullptr, nullptr, true},
                                          {"watermark", decorate_anchor}};

/// An empty row for those that have nothing.
DecorationRow decorations_of(const Operation& operation) {
  const auto row = std::ranges::find(kDecorations, operation.parameters.name, &DecorationRow::operation);
  return row == std::end(kDecorations) ? DecorationRow{} : *row;
}

}  // namespace

void decorate_operation(OperationDialog& dialog) {
  if (const auto decorate = decorations_of(dialog.operation()).decorate) decorate(dialog);
}

FieldValues preview_values(const Operation& operation, FieldValues values, const DocumentWindow& window,
                           std::size_t frame) {
  const std::string text = values.text("text");
  if (!decorations_of(operation).fillsText || !has_placeholders(text)) return values;
  const auto facts = frame_facts(window);
  if (frame >= facts.size()) return values;
  std::string words;
  for (const char letter : filled_text(text, facts[frame]))
    words += letter == '%' ? "%%" : std::string(1, letter);
  values.set("text", words);
  return values;
}

std::optional<FieldValues> ask_first(const Operation& operation, const DocumentWindow& window,
                                     Services& services, QWidget* parent) {
  const auto ask = decorations_of(operation).first;
  return ask ? ask(operation, window, services, parent) : FieldValues();
}

bool ask_last(const Operation& operation, OperationChoice& choice, const DocumentWindow& window,
              Services& services) {
  const auto ask = decorations_of(operation).last;
  return !ask || ask(choice, window, services);
}

}  // namespace vellum
