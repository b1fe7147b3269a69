#include "configuration/config_file.h"

#include <charconv>
#include <vector>

#include "base/file.h"
#include "base/folder_lock.h"
#include "base/text.h"
#include "base/user_folders.h"
#include "configuration/config_line.h"
#include "configuration/setting_values.h"
#include "configuration/settings.h"
#include "operations/social_sizes.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

/// Some forty times what all settings take.
constexpr std::uint64_t kMaximumConfigBytes = std::uint64_t{1} << 20;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// What this program and the file had in common at the last load or save.
struct Common {
  std::vector<SettingValue> values;  ///< empty: neither has been
  bool there = false;                ///< there was a file
};

Common& common() {
  static Common values;
  return values;
}

fs::path& file_of_run() {
  static fs::path path;
  return path;
}

std::vector<SettingValue> values_to_store() {
  std::vector<SettingValue> values;
  values.reserve(setting_table().size());
  for (const SettingRow& row : setting_table()) values.push_back(stored_value(row));
  return values;
}

std::string header(std::time_t when) {
  std::tm local{};
  localtime_r(&when, &local);
  char time[32] = {};
  asctime_r(&local, time);
  return format_text(
      ";Vellumcraft configuration file\n;Edit this at your own risk\n;%s.%d%c revision %d\n"
      ";Last updated %24.24s\n;\n[%s]\n",
      "Vellumcraft", settings::VersionMajor, static_cast<char>(settings::VersionLetter),
      settings::VersionRevision, time, "Vellumcraft");
}

/// Calls `take(row, value)` for each setting that the text names.
template <class Take>
void for_each_value(std::string_view text, const Take& take) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  while (!text.empty()) {
    const auto parts = split_config_line(take_config_line(text));
    if (!parts) continue;
    const SettingRow* row = find_setting_by_prefix(parts->key);
    if (row) take(*row, read_config_value(*row, parts->value));
  }
}

std::size_t place_of(const SettingRow& row) {
  return static_cast<std::size_t>(&row - setting_table().data());
}

/// What belongs into the file: of settings that this program didn't change since it read the file what stands
/// there now, since another program may have changed it meanwhile.
std::vector<SettingValue> merged_values(const fs::path& path, const std::vector<SettingValue>& own) {
  std::vector<SettingValue> values = own;
  if (common().values.empty()) return values;
  for_each_value(config_read(path), [&](const SettingRow& row, const SettingValue& value) {
    const std::size_t place = place_of(row);
    if (own[place] == common().values[place]) values[place] = value;
  });
  for (const SettingRow& row : setting_table())
    if (is_repeated(row)) values[place_of(row)] = values[place_of(*find_setting(row.name))];
  return values;
}

std::string text_of(const std::vector<SettingValue>& values, std::time_t when) {
  std::string text = header(when);
  for (const SettingRow& row : setting_table())
    if ((row.flags & kUnstored) == 0) text += config_line(row, values[place_of(row)]) + '\n';
  return text;
}

void keep_backups(const fs::path& path) {
  const fs::path backup = backup_path(path);
  std::error_code error;
  if (fs::exists(backup, error)) replace_by_copy(backup, backup_path(backup), error);
  if (fs::exists(path, error)) replace_by_copy(path, backup, error);
}

/// The file of the newest earlier major version beside `path`; empty without one.
fs::path earlier_version(const fs::path& path) {
  constexpr std::string_view kStart = "Vellumcraft ", kEnd = ".ini";
  fs::path newest;
  int newest_version = 0;
  std::error_code error;
  for (const auto& item : fs::directory_iterator(path.parent_path(), error)) {
    const std::string name = item.path().filename().string();
    if (!name.starts_with(kStart) || !name.ends_with(kEnd)) continue;
    const char* const end = name.data() + name.size() - kEnd.size();
    int version = 0;
    const auto [stop, fault] = std::from_chars(name.data() + kStart.size(), end, version);
    if (fault != std::errc{} || stop != end) continue;
    if (version <= newest_version || version >= settings::VersionMajor) continue;
    newest_version = version;
    newest = item.path();
  }
  return newest;
}

}  // namespace

fs::path config_path(std::string_view name) {
  return user_folder("XDG_CONFIG_HOME", ".config") / "Tarnwick" / name;
}

std::string config_read(const fs::path& path) {
  std::string reason;
  const auto content = read_file(path, reason, kMaximumConfigBytes);
  return content ? std::string(content->data(), content->data() + content->size()) : std::string();
}

void config_parse(std::string_view text) {
  for_each_value(text, [](const SettingRow& row, const SettingValue& value) { change_setting(row, value); });
}

std::string config_text(std::time_t when) { return text_of(values_to_store(), when); }

bool config_load(const fs::path& path) {
  std::error_code error;
  const bool there = fs::exists(path, error) || error;
  config_parse(config_read(path));
  common() = {values_to_store(), there};
  return there;
}

bool config_save(const fs::path& path) {
  std::error_code error;
  if (path.has_parent_path()) fs::create_directories(path.parent_path(), error);
  const FolderLock lock(path.parent_path());
  const std::vector<SettingValue> own = values_to_store();
  const std::string text = text_of(merged_values(path, own), std::time(nullptr));
  keep_backups(path);
  SafeFile file(path);
  if (!file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) || !file.commit())
    return false;
  common() = {own, true};
  return true;
}

bool config_changed_since_load() { return !common().there || common().values != values_to_store(); }

void config_open(const fs::path& path) {
  file_of_run() = path.empty() ? config_path(kConfigFileName) : path;
  socialSizesFile = config_path("SocialMediaSizes.txt");
  if (config_load(config_file()) || config_file().filename() != kConfigFileName) return;
  if (const fs::path earlier = earlier_version(config_file()); !earlier.empty())
    config_parse(config_read(earlier));
}

const fs::path& config_file() { return file_of_run(); }

void config_save_changes() {
  if (!config_file().empty() && config_changed_since_load()) config_save(config_file());
}

}  // namespace vellum
