// What a new document is made from, as fields: for forms.
#pragma once

#include "base/fields.h"
#include "core/edit/new_document.h"

namespace vellum {

/// The fields of a kind, with its ranges. "bitDepth" offers the depths of true color at first.
std::vector<Field> new_document_fields(DocumentKind kind);
FieldValues new_document_values(const NewDocument& parameters);
/// The parameters with the values of the fields that their kind has.
NewDocument new_document_of(const FieldValues& values, NewDocument parameters);

/// The values of a new document's header are what the next one begins with.
void keep_new_document(const NewDocument& parameters);

}  // namespace vellum
