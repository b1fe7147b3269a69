// The galleries of favorites as the desktop holds them: read once, written after each change.
#pragma once

#include "configuration/favorites.h"

namespace vellum {

/// All galleries by name; the one that new favorites go to is among them once it has some.
const std::vector<FavoritesGallery>& favorite_galleries();
/// Reads them anew, as other programs may have changed them.
void reload_favorites();
/// Whether some gallery has the file.
bool is_favorite(const std::filesystem::path& file);

/// Each is false with the reason where the gallery can't be written.
bool pin_favorite(const std::filesystem::path& file, std::string& reason);
/// Out of all galleries.
bool unpin_favorite(const std::filesystem::path& file, std::string& reason);
/// Writes a gallery in place of the one of its name.
bool put_gallery(const FavoritesGallery& gallery, std::string& reason);

}  // namespace vellum
