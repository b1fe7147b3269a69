#include "exchange/movie_library.h"

namespace vellum {
namespace {

#define VELLUM_FILE_OF(library, version) "lib" library ".so." AV_STRINGIFY(version)

/// Together they bring the others. What was compiled against is what is loaded: records of theirs have other
/// fields in other versions.
constexpr const char* kFiles[] = {VELLUM_FILE_OF("avformat", LIBAVFORMAT_VERSION_MAJOR),
                                  VELLUM_FILE_OF("swresample", LIBSWRESAMPLE_VERSION_MAJOR),
                                  VELLUM_FILE_OF("swscale", LIBSWSCALE_VERSION_MAJOR)};

const LateLibraries& libraries() {
  static const LateLibraries loaded(kFiles);
  return loaded;
}

}  // namespace

bool load_movie_libraries() { return libraries().complete(); }

bool load_movie_libraries(Host& host) {
  if (load_movie_libraries()) return true;
  host.fail({FaultKind::Misuse, 0, -1, -1, std::string(string_text(StringId::NoMovieLibraries))});
  return false;
}

void* movie_function(const char* name) { return libraries().find(name); }

}  // namespace vellum
