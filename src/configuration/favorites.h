// Favorites: galleries of files, each a text file beside the configuration.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum {

struct FavoritesGallery {
  std::string name;
  std::vector<std::string> paths;
};

inline constexpr std::string_view kFavoritesExtension = ".pngfav";

/// The folder of the galleries.
std::filesystem::path favorites_folder();

/// The paths of a gallery's text, none twice; nothing where its first line is another one.
std::optional<std::vector<std::string>> parse_favorites(std::string_view text);
std::string favorites_text(const std::vector<std::string>& paths);

/// All galleries that can be read, by name.
std::vector<FavoritesGallery> load_favorites(const std::filesystem::path& folder);
/// The one of this name; an empty one where there is none.
FavoritesGallery load_favorites_gallery(const std::filesystem::path& folder, const std::string& name);
/// False with the reason where it can't be written.
bool store_favorites(const std::filesystem::path& folder, const FavoritesGallery& gallery,
                     std::string& reason);
std::filesystem::path favorites_file(const std::filesystem::path& folder, const std::string& name);

/// Whether a gallery can have this name: one part of a path, not hidden.
bool is_gallery_name(std::string_view name);
/// As paths stand in galleries: absolute. Empty for one that can't stand in a line.
std::string favorite_path(const std::filesystem::path& file);
/// False where it is there already, or is no path.
bool add_favorite(FavoritesGallery& gallery, const std::filesystem::path& file);
/// False where it isn't there.
bool remove_favorite(FavoritesGallery& gallery, const std::filesystem::path& file);

}  // namespace vellum
