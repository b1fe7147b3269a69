#include "configuration/favorites.h"

#include <algorithm>
#include <set>

#include "base/file.h"
#include "base/text.h"
#include "configuration/config_file.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

bool stands_in_a_line(std::string_view path) {
  return path.find_first_of(std::string_view("\n\r\0", 3)) == std::string_view::npos;
}

constexpr std::string_view kFirstLine = ";Vellumcraft favorites gallery", kMark = "\xEF\xBB\xBF";
constexpr std::uint64_t kMostBytes = std::uint64_t{16} << 20;
constexpr std::size_t kMostPaths = 100'000, kMostName = 200;

std::optional<std::vector<std::string>> read_gallery(const fs::path& file) {
  std::string reason;
  const auto bytes = read_file(file, reason, kMostBytes);
  if (!bytes) return std::nullopt;
  return parse_favorites({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

}  // namespace

fs::path favorites_folder() { return config_path("Favorites"); }

std::optional<std::vector<std::string>> parse_favorites(std::string_view text) {
  if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
  std::vector<std::string> paths;
  std::set<std::string_view> known;
  bool first = true;
  while (!text.empty()) {
    const std::string_view line = take_line(text);
    if (first && trimmed(line) != kFirstLine) return std::nullopt;
    const bool is_path = !line.empty() && line.front() != ';' && stands_in_a_line(line);
    if (!first && is_path && paths.size() < kMostPaths && known.insert(line).second) paths.emplace_back(line);
    first = false;
  }
  return first ? std::nullopt : std::optional(paths);
}

std::string favorites_text(const std::vector<std::string>& paths) {
  std::string text = std::string(kFirstLine) + '\n';
  for (const std::string& path : paths) text += path + '\n';
  return text;
}

std::vector<FavoritesGallery> load_favorites(const fs::path& folder) {
  std::vector<FavoritesGallery> galleries;
  std::error_code error;
  for (fs::directory_iterator file(folder, error), end; !error && file != end; file.increment(error)) {
    if (file->path().extension() != kFavoritesExtension) continue;
    if (auto paths = read_gallery(file->path()))
      galleries.push_back({file->path().stem().string(), std::move(*paths)});
  }
  std::ranges::sort(galleries, {}, &FavoritesGallery::name);
  return galleries;
}

FavoritesGallery load_favorites_gallery(const fs::path& folder, const std::string& name) {
  return {name, read_gallery(favorites_file(folder, name)).value_or(std::vector<std::string>())};
}

bool store_favorites(const fs::path& folder, const FavoritesGallery& gallery, std::string& reason) {
  std::error_code error;
  fs::create_directories(folder, error);
  SafeFile file(favorites_file(folder, gallery.name));
  const std::string text = favorites_text(gallery.paths);
  if (file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) && file.commit())
    return true;
  reason = file.reason();
  return false;
}

fs::path favorites_file(const fs::path& folder, const std::string& name) {
  return folder / (name + std::string(kFavoritesExtension));
}

bool is_gallery_name(std::string_view name) {
  return !name.empty() && name.size() <= kMostName && name.front() != '.' && trimmed(name) == name &&
         std::ranges::none_of(name, [](unsigned char c) { return c < ' ' || c == '/' || c == 0x7F; });
}

std::string favorite_path(const fs::path& file) {
  std::error_code error;
  std::string path = fs::absolute(file, error).lexically_normal().string();
  return !error && stands_in_a_line(path) ? path : std::string();
}

bool add_favorite(FavoritesGallery& gallery, const fs::path& file) {
  std::string path = favorite_path(file);
  if (path.empty() || std::ranges::count(gallery.paths, path) > 0) return false;
  gallery.paths.push_back(std::move(path));
  return true;
}

bool remove_favorite(FavoritesGallery& gallery, const fs::path& file) {
  return std::erase(gallery.paths, favorite_path(file)) + std::erase(gallery.paths, file.string()) > 0;
}

}  // namespace vellum
