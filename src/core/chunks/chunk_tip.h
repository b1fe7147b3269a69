// What a list tells of an entry that the pointer rests on.
#pragma once

#include <string>

#include "core/model/document.h"

namespace vellum {

/// UTF-8, at most 12 lines of at most 80 characters.
std::string chunk_tip(const DocumentWindow& window, std::size_t index);

/// What the editor of an entry says below its fields: the other end of a loop, what the program does with the
/// chunk. Empty where there is nothing to say.
std::string chunk_note(const DocumentWindow& window, std::size_t index);

}  // namespace vellum
