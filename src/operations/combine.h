// Combine: the frames of several files, one after the other, as one animation.
#pragma once

#include "base/host.h"
#include "operations/parameters.h"

namespace vellum {

/// The command, its fields and their settings.
extern const Parameters kCombine;

/// Makes an empty window an animation of this kind of the files, documents or pictures of other formats, in
/// their order: on a canvas as large as the largest of them, on the background color, or on nothing where one
/// of them has transparency. Delays stay; stills are shown for `DefaultDelay`. False after a message, or a
/// stop; nothing is then left of it.
bool combine_files(DocumentWindow& window, const std::vector<std::string>& files, const FieldValues& values,
                   DocumentKind kind, Host& host);

}  // namespace vellum
