#include "shell/services/favorite_files.h"

#include <algorithm>
#include <unordered_set>

#include "configuration/shell_settings.h"

namespace vellum {
namespace {

struct Held {
  std::vector<FavoritesGallery> galleries;
  std::unordered_set<std::string> paths;
  bool known = false;
};

Held& held() {
  static Held one;
  return one;
}

void count_paths() {
  held().paths.clear();
  for (const FavoritesGallery& gallery : held().galleries)
    held().paths.insert(gallery.paths.begin(), gallery.paths.end());
}

}  // namespace

void reload_favorites() {
  held().galleries = load_favorites(favorites_folder());
  held().known = true;
  count_paths();
}

const std::vector<FavoritesGallery>& favorite_galleries() {
  if (!held().known) reload_favorites();
  return held().galleries;
}

bool is_favorite(const std::filesystem::path& file) {
  favorite_galleries();
  return held().paths.contains(favorite_path(file));
}

bool put_gallery(const FavoritesGallery& gallery, std::string& reason) {
  favorite_galleries();
  if (!store_favorites(favorites_folder(), gallery, reason)) return false;
  auto& all = held().galleries;
  const auto place = std::ranges::find(all, gallery.name, &FavoritesGallery::name);
  place != all.end() ? void(*place = gallery) : all.push_back(gallery);
  std::ranges::sort(all, {}, &FavoritesGallery::name);
  count_paths();
  return true;
}

bool pin_favorite(const std::filesystem::path& file, std::string& reason) {
  const std::string name = is_gallery_name(settings::FavoritesDefaultPin) ? settings::FavoritesDefaultPin
                                                                          : std::string("Favorites");
  FavoritesGallery gallery = load_favorites_gallery(favorites_folder(), name);
  return !add_favorite(gallery, file) || put_gallery(gallery, reason);
}

bool unpin_favorite(const std::filesystem::path& file, std::string& reason) {
  for (FavoritesGallery gallery : std::vector(favorite_galleries()))
    if (remove_favorite(gallery, file) && !put_gallery(gallery, reason)) return false;
  return true;
}

}  // namespace vellum
