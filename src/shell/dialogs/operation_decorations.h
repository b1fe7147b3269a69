// What single operations have in their dialogs beside fields and a preview.
#pragma once

#include <QString>

namespace vellum {

class OperationDialog;

/// Adds what the operation of the dialog has of its own; most have nothing.
void decorate_operation(OperationDialog& dialog);

}  // namespace vellum
