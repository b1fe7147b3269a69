// The versions of the libraries that read and write pictures.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace vellum {

/// Name and version of each; of the one that runs where the library tells, else of its headers.
std::vector<std::pair<std::string, std::string>> library_versions();

}  // namespace vellum
