// One picture of any file that holds some.
#pragma once

#include <filesystem>

#include "image/picture.h"

namespace vellum {

/// The picture of a file, of an animation or an MNG its first; null where it can't be read.
Picture first_picture(const std::filesystem::path& file);

}  // namespace vellum
