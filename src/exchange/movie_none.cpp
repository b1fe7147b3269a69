// In place of the movie libraries where they weren't there at build time.
#include "exchange/movie.h"

namespace vellum {

bool movies_built() { return false; }

std::vector<MovieEncoder> movie_encoders() { return {}; }

std::optional<MovieReader> open_movie(const std::filesystem::path&, std::uint32_t, Host& host) {
  host.fail({FaultKind::Misuse, 0, -1, -1, std::string(string_text(StringId::NoMovieLibraries))});
  return std::nullopt;
}

MovieFault write_movie(const FrameStream&, const MovieForm&, const std::filesystem::path&, const Sink&,
                       Host& host, std::string&) {
  host.fail({FaultKind::Misuse, 0, -1, -1, std::string(string_text(StringId::NoMovieLibraries))});
  return MovieFault::Other;
}

}  // namespace vellum
