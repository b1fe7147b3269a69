// The configuration file: where it lies, its text, loading and saving.
#pragma once

#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>

namespace vellum {

inline constexpr std::string_view kConfigFileName = "Vellumcraft 15.ini";

/// Full path of a file beside the configuration: in "Tarnwick" under XDG_CONFIG_HOME, else under ~/.config.
std::filesystem::path config_path(std::string_view name);

/// The text of a configuration file; empty where it can't be read.
std::string config_read(const std::filesystem::path& path);

/// Sets the settings that a configuration's text names. Anything may stand in it: what is no setting is
/// passed over.
void config_parse(std::string_view text);

/// The text of the configuration. Values that are set for the run only are left out of it.
std::string config_text(std::time_t when);

/// Reads the file into the settings. Without one they stay as they are; false then.
bool config_load(const std::filesystem::path& path);

/// Keeps the file that stands there as its backup, the backup as a backup of the backup, and writes. Settings
/// that another program has changed in the file since the last load or save stay as they are there, unless
/// they were changed here, too; programs that write at once do so one after the other. False, with the old
/// file untouched, when it can't be written.
bool config_save(const std::filesystem::path& path);

/// Whether the file should be written: a setting differs from what the last load or save left in the file, or
/// there was no file.
bool config_changed_since_load();

// --- the file of a run ---

/// Loads the file, the user's own for an empty path, and makes it the file of this run. Where there is none,
/// but one of an earlier major version lies in its place, that one is read, and left alone.
void config_open(const std::filesystem::path& path);

/// The file of this run; empty before `config_open`.
const std::filesystem::path& config_file();

/// Writes the file of this run, if there is one, where `config_changed_since_load`. A folder that can't be
/// written is no reason to trouble anybody.
void config_save_changes();

}  // namespace vellum
