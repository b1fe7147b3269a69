// How a form over the fields of a row is kept in the state file of its dialog.
#pragma once

#include "operations/parameters.h"
#include "shell/forms/dialog_state.h"
#include "shell/forms/form.h"

namespace vellum {

/// Gives the controls of a form the names by which the state file and tests find them: that of the field, and
/// for radio buttons a number behind it.
void name_controls(Form& form);

/// The lines of the state file, one for each field that has a number there.
std::vector<DialogStateRow> state_rows(const Parameters& parameters);

}  // namespace vellum
