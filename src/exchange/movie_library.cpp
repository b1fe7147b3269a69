#include "exchange/movie_library.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>

namespace vellum {
namespace {

#define VELLUM_FILE_OF(library, version) "lib" library ".so." AV_STRINGIFY(version)

/// Together they bring the others. What was compiled against is what is loaded: records of theirs have other
/// fields in other versions.
constexpr const char* kFiles[] = {VELLUM_FILE_OF("avformat", LIBAVFORMAT_VERSION_MAJOR),
                                  VELLUM_FILE_OF("swresample", LIBSWRESAMPLE_VERSION_MAJOR),
                                  VELLUM_FILE_OF("swscale", LIBSWSCALE_VERSION_MAJOR)};

using Libraries = std::array<void*, std::size(kFiles)>;

const Libraries& libraries() {
  static const Libraries loaded = [] {
    Libraries all{};
    std::ranges::transform(kFiles, all.begin(), [](const char* file) { return dlopen(file, RTLD_NOW); });
    return all;
  }();
  return loaded;
}

}  // namespace

bool load_movie_libraries() {
  return std::ranges::all_of(libraries(), [](void* library) { return library != nullptr; });
}

bool load_movie_libraries(Host& host) {
  if (load_movie_libraries()) return true;
  host.fail({FaultKind::Misuse, 0, -1, -1, std::string(string_text(StringId::NoMovieLibraries))});
  return false;
}

void* movie_function(const char* name) {
  for (void* library : libraries())
    if (void* function = library ? dlsym(library, name) : nullptr) return function;
  return nullptr;
}

}  // namespace vellum
