// Picture files that become images of a document.
#pragma once

#include <filesystem>
#include <vector>

#include "base/host.h"
#include "image/picture.h"

namespace vellum {

/// The pictures of the files, in their order; of an animation its first frame. A file that can't be read is
/// asked about: Yes passes it over, No ends the reading there.
std::vector<Picture> read_picture_files(const std::vector<std::filesystem::path>& files, Host& host);

/// The picture of a file, of an animation or an MNG its first; null where it can't be read.
Picture first_picture(const std::filesystem::path& file);

}  // namespace vellum
