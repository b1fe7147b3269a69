// What a file has beside its bytes: owner, group, permissions, extended attributes, further names.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vellum {

/// Gives the open file what the one at `like` has (`status` is its own). What can't be given is told, as
/// sentences for people. False, with errno set, when the permissions can't be set.
bool take_attributes(int descriptor, const std::filesystem::path& like, const struct stat& status,
                     std::vector<std::string>& told);

}  // namespace vellum
