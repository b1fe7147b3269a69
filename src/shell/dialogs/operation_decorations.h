// What single operations have in their dialogs beside fields and a preview.
#pragma once

namespace vellum {

class OperationDialog;

/// Adds what the operation of the dialog has of its own; most have nothing.
void decorate_operation(OperationDialog& dialog);

// One for each operation that has something.
void decorate_crop(OperationDialog& dialog);
void decorate_resize(OperationDialog& dialog);

}  // namespace vellum
