// One value of an INI file by its section and key, without loading the rest.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vellum {

/// The text behind "key =" in "[section]" of the configuration file of this run, without blanks and a pair of
/// quotes around it; `fallback` where there is none. Section and key are compared without regard to case.
std::string profile_string(std::string_view section, std::string_view key, std::string_view fallback);

/// The same as a number; 0 for a text that is none.
int profile_int(std::string_view section, std::string_view key, int fallback);

}  // namespace vellum
