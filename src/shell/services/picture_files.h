// Picture files that become images of a document.
#pragma once

#include <filesystem>
#include <vector>

#include "image/picture.h"
#include "shell/services/services.h"

namespace vellum {

/// The pictures of the files, in their order; of an animation its first frame. A file that can't be read is
/// asked about: Yes passes it over, No ends the reading there.
std::vector<Picture> read_picture_files(const std::vector<std::filesystem::path>& files, Host& host);

/// Asks for a picture file to write; a name without a known extension gets that of a PNG. Empty when the user
/// cancelled.
std::optional<std::filesystem::path> choose_picture_file(Services& services, const QString& title,
                                                         const std::string& name);
/// Writes it in the format of its extension. False, after a message, when that fails.
bool write_picture_file(const std::filesystem::path& path, const Picture& picture, Host& host);

}  // namespace vellum
