// Images of a file that nobody has looked at yet: for who shows all of them anyway, so that each is unpacked
// once and not twice.
#pragma once

#include <memory>
#include <vector>

#include "image/stored_image.h"

namespace vellum {

/// What was left open when a file was read. Only `all_sound` tells whether that file would have been opened,
/// and without a word; where it wouldn't, or something was told, the file is opened anew as usual.
struct UncheckedImages {
  std::vector<std::shared_ptr<const StoredImage>> streams;
};

/// Looks at those that nobody has unpacked meanwhile, side by side. Whether each is whole.
bool all_sound(const UncheckedImages& images);

}  // namespace vellum
