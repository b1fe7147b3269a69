// The form that asks for the first parameters of a new document.
#pragma once

#include <QWidget>
#include <optional>

#include "core/edit/new_document.h"
#include "shell/services/services.h"

namespace vellum {

/// Nothing when the user cancelled. OK keeps size and interlacing in the settings.
std::optional<NewDocument> ask_for_new_document(QWidget* parent, DocumentKind kind, Host& host);

}  // namespace vellum
