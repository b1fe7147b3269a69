// The terminal as a Host: messages and warnings on standard error, progress where standard error is a
// terminal.
#pragma once

#include "base/host.h"

namespace vellum::cli {

/// `quiet`: nothing but errors. Questions are answered with Yes: who gives a command means it.
Host terminal_host(bool quiet);

}  // namespace vellum::cli
