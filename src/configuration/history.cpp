#include "configuration/history.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include "base/file.h"
#include "base/folder_lock.h"
#include "configuration/settings.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMaximumHistoryBytes = std::uint64_t{1} << 20;
constexpr std::size_t kRecentColors = 16;

bool has_line_end(const std::string& text) { return text.find_first_of("\r\n") != std::string::npos; }

std::vector<std::string> read_lines(const fs::path& file) {
  std::string reason;
  const auto content = read_file(file, reason, kMaximumHistoryBytes);
  std::vector<std::string> lines;
  if (!content) return lines;
  std::string line;
  const auto finish = [&] {
    if (!line.empty()) lines.push_back(std::move(line));
    line.clear();
  };
  for (const std::uint8_t byte : std::span<const std::uint8_t>(*content)) {
    if (byte == '\n')
      finish();
    else if (byte != '\r')
      line += static_cast<char>(byte);
  }
  finish();
  return lines;
}

void write_lines(const fs::path& file, const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  std::error_code error;
  fs::create_directories(file.parent_path(), error);
  SafeFile out(file);
  if (out.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()})) out.commit();
}

std::size_t file_limit() {
  return static_cast<std::size_t>(std::clamp(settings::RememberFileHistoryCount, 0, 20));
}

std::size_t text_limit(HistoryKind kind) {
  if (kind == HistoryKind::Colors) return kRecentColors;
  return static_cast<std::size_t>(kind == HistoryKind::Texts
                                      ? std::clamp(settings::HistoryMaximumCount, 4, 64)
                                      : std::clamp(settings::EditListMaximum, 2, 128));
}

template <typename T>
void hold_to(std::vector<T>& history, std::size_t limit) {
  if (history.size() > limit) history.resize(limit);
}

/// A path may hold commas: the last one parts it from the number.
RecentFile recent_file(const std::string& line) {
  const auto comma = line.rfind(',');
  RecentFile recent{line.substr(0, comma), -1};
  if (comma != std::string::npos)
    std::from_chars(line.data() + comma + 1, line.data() + line.size(), recent.position);
  return recent;
}

/// "\n" and "\\" for a line end and a backslash, so that a text of several lines stands on one.
std::string escaped(const std::string& text) {
  std::string line;
  for (const char c : text) {
    if (c == '\n' || c == '\\') line += '\\';
    if (c != '\r') line += c == '\n' ? 'n' : c;
  }
  return line;
}

std::string unescaped(const std::string& line) {
  std::string text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char next = i + 1 < line.size() ? line[i + 1] : '\0';
    const bool escape = line[i] == '\\' && (next == 'n' || next == '\\');
    text += !escape ? line[i] : next == 'n' ? '\n' : '\\';
    if (escape) ++i;
  }
  return text;
}

}  // namespace

std::vector<RecentFile> load_file_history(const fs::path& file) {
  std::vector<RecentFile> history;
  std::unordered_set<std::string> seen = {std::string()};  // a line without a path is none
  for (const std::string& line : read_lines(file)) {
    if (history.size() == file_limit()) break;
    RecentFile recent = recent_file(line);
    if (seen.insert(recent.path).second) history.push_back(std::move(recent));
  }
  return history;
}

void save_file_history(const fs::path& file, const std::vector<RecentFile>& history) {
  std::vector<std::string> lines;
  lines.reserve(history.size());
  for (const RecentFile& recent : history)
    lines.push_back(recent.path + ',' + std::to_string(recent.position));
  write_lines(file, lines);
}

void remember_file(std::vector<RecentFile>& history, RecentFile recent) {
  if (recent.path.empty() || has_line_end(recent.path)) return;
  forget_file(history, recent.path);
  history.insert(history.begin(), std::move(recent));
  hold_to(history, file_limit());
}

void forget_file(std::vector<RecentFile>& history, const std::string& path) {
  std::erase_if(history, [&](const RecentFile& recent) { return recent.path == path; });
}

std::vector<RecentFile> change_file_history(const fs::path& file,
                                            const std::function<void(std::vector<RecentFile>&)>& how) {
  const FolderLock lock(file.parent_path());
  std::vector<RecentFile> history = load_file_history(file);
  how(history);
  save_file_history(file, history);
  return history;
}

std::vector<std::string> load_history(const fs::path& file, HistoryKind kind) {
  std::vector<std::string> history;
  if (settings::HistoryEnable == 0) return history;
  std::unordered_set<std::string> seen;
  for (const std::string& line : read_lines(file)) {
    if (history.size() == text_limit(kind)) break;
    std::string text = unescaped(line);
    if (seen.insert(text).second) history.push_back(std::move(text));
  }
  return history;
}

void save_history(const fs::path& file, const std::vector<std::string>& history) {
  if (settings::HistoryEnable == 0) return;
  std::vector<std::string> lines;
  std::ranges::transform(history, std::back_inserter(lines), escaped);
  write_lines(file, lines);
}

void remember_text(std::vector<std::string>& history, std::string text, HistoryKind kind) {
  if (settings::HistoryEnable == 0 || text.empty()) return;
  std::erase(history, text);
  history.insert(history.begin(), std::move(text));
  hold_to(history, text_limit(kind));
}

void keep_in_history(const fs::path& file, std::string text, HistoryKind kind) {
  const FolderLock lock(file.parent_path());
  auto history = load_history(file, kind);
  remember_text(history, std::move(text), kind);
  save_history(file, history);
}

}  // namespace vellum
