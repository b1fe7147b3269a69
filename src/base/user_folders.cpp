#include "base/user_folders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace vellum {
namespace {

namespace fs = std::filesystem;

bool is_absolute(const char* path) { return path && path[0] == '/'; }

fs::path home_folder() {
  if (const char* home = std::getenv("HOME"); is_absolute(home)) return home;
  const passwd* user = getpwuid(getuid());
  return user && is_absolute(user->pw_dir) ? user->pw_dir : "/tmp";
}

}  // namespace

fs::path user_folder(const char* variable, std::string_view usual) {
  const char* named = std::getenv(variable);
  return is_absolute(named) ? fs::path(named) : home_folder() / usual;
}

}  // namespace vellum
