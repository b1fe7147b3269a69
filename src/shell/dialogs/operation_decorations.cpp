#include "shell/dialogs/operation_decorations.h"

#include <string_view>

#include "shell/dialogs/operation_dialog.h"

namespace vellum {
namespace {

struct DecorationRow {
  std::string_view operation;
  void (*decorate)(OperationDialog&);
};

struct QuestionRow {
  std::string_view operation;
  std::optional<FieldValues> (*ask)(const Operation&, const DocumentWindow&, Services&, QWidget*);
};
constexpr QuestionRow kQuestions[] = {{"palette", ask_for_palette}};

constexpr DecorationRow kDecorations[] = {{"crop", decorate_crop}, {"resize", decorate_resize}};

}  // namespace

void decorate_operation(OperationDialog& dialog) {
  for (const DecorationRow& row : kDecorations)
    if (row.operation == dialog.operation().parameters.name) row.decorate(dialog);
}

std::optional<FieldValues> ask_first(const Operation& operation, const DocumentWindow& window,
                                     Services& services, QWidget* parent) {
  for (const QuestionRow& row : kQuestions)
    if (row.operation == operation.parameters.name) return row.ask(operation, window, services, parent);
  return FieldValues();
}

}  // namespace vellum
