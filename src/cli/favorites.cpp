// `vellum favorites`.
#include "configuration/favorites.h"

#include "base/translation.h"
#include "cli/command.h"
#include "cli/frame_options.h"
#include "cli/words.h"
#include "configuration/shell_settings.h"

namespace vellum::cli {
namespace {

enum class Action { List, Add, Remove };

struct Given {
  Action action = Action::List;
  std::string gallery;
  std::vector<std::string> files;
};

int list(const Given& given) {
  for (const FavoritesGallery& gallery : load_favorites(favorites_folder())) {
    if (given.gallery.empty()) std::printf("%s\t%zu\n", gallery.name.c_str(), gallery.paths.size());
    if (given.gallery != gallery.name) continue;
    for (const std::string& path : gallery.paths) std::printf("%s\n", path.c_str());
    return kDone;
  }
  if (given.gallery.empty()) return kDone;
  return wrong_usage(std::string(string_text(StringId::NoSuchGallery))), kFailed;
}

int run(const Given& given, Host& host) {
  if (given.action == Action::List) return list(given);
  if (!is_gallery_name(given.gallery))
    return wrong_usage(std::string(string_text(StringId::NoGalleryName))), kWrongUsage;
  if (given.files.empty()) return wrong_usage(translated("which files?")), kWrongUsage;
  FavoritesGallery gallery = load_favorites_gallery(favorites_folder(), given.gallery);
  bool all = true;
  for (const std::string& file : given.files) {
    const bool is_there = given.action == Action::Remove || std::filesystem::exists(file);
    if (!is_there) host.show(StringId::ErrorReadingFile, {}, file);
    all = all && is_there;
    if (is_there && given.action == Action::Add) add_favorite(gallery, file);
    if (given.action == Action::Remove) all = remove_favorite(gallery, file) && all;
  }
  std::string reason;
  if (!store_favorites(favorites_folder(), gallery, reason)) {
    host.show(StringId::ErrorWritingFile, {}, reason);
    return kFailed;
  }
  return all ? kDone : kFailed;
}

}  // namespace

Run prepare_favorites(CLI::App& app) {
  const auto given = std::make_shared<Given>();
  const std::map<std::string, Action> actions = {
      {"list", Action::List}, {"add", Action::Add}, {"remove", Action::Remove}};
  app.add_option("ACTION", given->action, "list, add or remove")
      ->required()
      ->transform(one_of(actions, "list|add|remove"));
  app.add_option("GALLERY", given->gallery, "The gallery; list without one shows all with their counts");
  app.add_option("FILE", given->files, "The files");
  return [given](Host& host) { return run(*given, host); };
}

}  // namespace vellum::cli
