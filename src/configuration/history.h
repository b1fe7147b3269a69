// The lists that lie beside the configuration file: the files of the File menu, and what was typed into
// fields. Newest first, nothing twice.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace vellum {

inline constexpr const char* kFileHistoryName = "FileMenuHistory.txt";

/// A file of the File menu.
struct RecentFile {
  std::string path;
  int position = -1;  ///< -1: none
  bool operator==(const RecentFile&) const = default;
};

/// At most `RememberFileHistoryCount` files; none for 0. Files that are gone stay listed until opening them
/// fails.
std::vector<RecentFile> load_file_history(const std::filesystem::path& file);
/// Silent where the file can't be written.
void save_file_history(const std::filesystem::path& file, const std::vector<RecentFile>& history);
/// Puts a file in front. A path with a line end is not taken: the list has one a line.
void remember_file(std::vector<RecentFile>& history, RecentFile recent);
void forget_file(std::vector<RecentFile>& history, const std::string& path);
/// Changes the list as the file has it now and gives what became of it. What another program remembers at the
/// same moment stays.
std::vector<RecentFile> change_file_history(const std::filesystem::path& file,
                                            const std::function<void(std::vector<RecentFile>&)>& how);

/// What the lines of a history are: single texts, or sets of values that belong together.
/// The colors that were chosen last are 16, whatever the settings say.
enum class HistoryKind { Texts, Values, Colors };

/// The remembered texts, at most `HistoryMaximumCount` (of values `EditListMaximum`); none while
/// `HistoryEnable` is off.
std::vector<std::string> load_history(const std::filesystem::path& file, HistoryKind kind);
/// Leaves the file as it is while `HistoryEnable` is off. Silent where it can't be written.
void save_history(const std::filesystem::path& file, const std::vector<std::string>& history);
/// Puts a text in front; an empty one is not taken.
void remember_text(std::vector<std::string>& history, std::string text, HistoryKind kind);
/// Puts a text in front of those that a file keeps; what another program keeps there at the same moment
/// stays.
void keep_in_history(const std::filesystem::path& file, std::string text, HistoryKind kind);

}  // namespace vellum
