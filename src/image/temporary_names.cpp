#include "image/temporary_names.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/text.h"
#include "base/user_folders.h"

namespace vellum {
namespace {

constexpr int kLastNumber = 99'999;

void make_private_folder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder.parent_path(), error);
  mkdir(folder.c_str(), 0700);  // what is wrong here shows when a file is made in it
}

/// Creates the file, or finds that the name is taken.
bool is_taken(const std::filesystem::path& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) return errno == EEXIST;
  close(descriptor);
  return false;
}

}  // namespace

std::filesystem::path TempFolderPath(std::string_view name) {
  const std::filesystem::path folder = user_folder("XDG_CACHE_HOME", ".cache") / "Tarnwick" / "temp";
  make_private_folder(folder);
  return folder / name;
}

std::filesystem::path ProgramFolderPath(std::string_view name) {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / name;
}

std::filesystem::path NextTempName(std::string_view stem, std::string_view extension, int start) {
  const std::filesystem::path folder = TempFolderPath("");
  std::filesystem::path path;
  for (int number = start, tries = 0; tries < kLastNumber; ++number, ++tries) {
    const std::string name =
        "Temp" + std::string(stem) + format_text("_%05d", number) + std::string(extension);
    path = folder / name;
    if (!is_taken(path)) break;
  }
  return path;
}

}  // namespace vellum
