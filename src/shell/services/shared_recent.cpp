#include "shell/services/shared_recent.h"

#include <glib.h>

#include <memory>
#include <string>

#include "core/model/kind_table.h"

namespace vellum {
namespace {

struct Free {
  void operator()(void* text) const { g_free(text); }
  void operator()(GBookmarkFile* list) const { g_bookmark_file_free(list); }
};
using Text = std::unique_ptr<char, Free>;

/// By the name alone, as the list wants one.
const char* type_of(const std::filesystem::path& file) {
  if (has_extension_of(file, DocumentKind::MING)) return "video/x-mng";
  if (has_extension_of(file, DocumentKind::WEBP)) return "image/webp";
  return file.extension() == ".apng" ? "image/apng" : "image/png";
}

}  // namespace

// The place and the form are those of the desktop bookmarks of freedesktop.org.
void share_recent_file(const std::filesystem::path& file) {
  const Text address(g_filename_to_uri(std::filesystem::absolute(file).c_str(), nullptr, nullptr));
  const std::filesystem::path list = std::filesystem::path(g_get_user_data_dir()) / "recently-used.xbel";
  const std::unique_ptr<GBookmarkFile, Free> recent(g_bookmark_file_new());
  std::error_code error;
  // One that can't be read is not replaced.
  if (!address || (std::filesystem::exists(list, error) &&
                   !g_bookmark_file_load_from_file(recent.get(), list.c_str(), nullptr)))
    return;
  g_bookmark_file_set_mime_type(recent.get(), address.get(), type_of(file));
  g_bookmark_file_add_application(recent.get(), address.get(), "vellumcraft", "vellumcraft %u");
  g_bookmark_file_add_group(recent.get(), address.get(), "Graphics");
  g_bookmark_file_to_file(recent.get(), list.c_str(), nullptr);
}

}  // namespace vellum
