// What single operations have in their dialogs beside fields and a preview.
#pragma once

#include <QWidget>
#include <optional>

#include "operations/operation.h"
#include "shell/services/services.h"

namespace vellum {

class OperationDialog;
struct OperationChoice;

/// Adds what the operation of the dialog has of its own; most have nothing.
void decorate_operation(OperationDialog& dialog);

/// Values that are asked for in dialogs of their own in front of that of the operation, which then doesn't
/// show their fields. Nothing when the user cancelled.
std::optional<FieldValues> ask_first(const Operation& operation, const DocumentWindow& window,
                                     Services& services, QWidget* parent);

/// The same behind it, for what depends on the choice. False when the user cancelled.
bool ask_last(const Operation& operation, OperationChoice& choice, const DocumentWindow& window,
              Services& services);

/// The values with which a frame is previewed: a text with placeholders says what it will say there.
FieldValues preview_values(const Operation& operation, FieldValues values, const DocumentWindow& window,
                           std::size_t frame);

// One for each operation that has something.
void decorate_anchor(OperationDialog& dialog);
void decorate_offsets(OperationDialog& dialog);
void decorate_strip(OperationDialog& dialog);
void decorate_caption(OperationDialog& dialog);
void decorate_crop(OperationDialog& dialog);
void decorate_extract(OperationDialog& dialog);
void decorate_protect(OperationDialog& dialog);
void decorate_resize(OperationDialog& dialog);
std::optional<FieldValues> ask_for_palette(const Operation& operation, const DocumentWindow& window,
                                           Services& services, QWidget* parent);
std::optional<FieldValues> fields_of_caption(const Operation& operation, const DocumentWindow& window,
                                             Services& services, QWidget* parent);
bool warn_of_opaque_overlay(OperationChoice& choice, const DocumentWindow& window, Services& services);
bool warn_of_opaque_animation(OperationChoice& choice, const DocumentWindow& window, Services& services);
bool ask_for_names(OperationChoice& choice, const DocumentWindow& window, Services& services);

}  // namespace vellum
