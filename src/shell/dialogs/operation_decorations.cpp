#include "shell/dialogs/operation_decorations.h"

#include <algorithm>
#include <string_view>

#include "shell/dialogs/operation_dialog.h"

namespace vellum {
namespace {

struct DecorationRow {
  std::string_view operation;
  void (*decorate)(OperationDialog&) = nullptr;
  std::optional<FieldValues> (*first)(const Operation&, const DocumentWindow&, Services&, QWidget*) = nullptr;
  bool (*last)(OperationChoice&, const DocumentWindow&, Services&) = nullptr;
};
constexpr DecorationRow kDecorations[] = {{"caption", decorate_caption, fields_of_caption},
                                          {"crop", decorate_crop},
                                          {"frames", decorate_extract, nullptr, ask_for_names},
                                          {"palette", nullptr, ask_for_palette},
                                          {"overlay", nullptr, nullptr, warn_of_opaque_overlay},
                                          {"underlay", nullptr, nullptr, warn_of_opaque_animation},
                                          {"resize", decorate_resize}};

/// An empty row for those that have nothing.
DecorationRow decorations_of(const Operation& operation) {
  const auto row = std::ranges::find(kDecorations, operation.parameters.name, &DecorationRow::operation);
  return row == std::end(kDecorations) ? DecorationRow{} : *row;
}

}  // namespace

void decorate_operation(OperationDialog& dialog) {
  if (const auto decorate = decorations_of(dialog.operation()).decorate) decorate(dialog);
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
