// `vellum movie-info`.
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/translation.h"
#include "cli/command.h"
#include "exchange/movie.h"

namespace vellum::cli {
namespace {

struct Given {
  std::string file;
  bool json = false;
};

int run(const Given& given, Host& host) {
  const auto movie = open_movie(given.file, 0, host);
  if (!movie) {
    host.show(StringId::ErrorReadingFile, {}, given.file + ": " + host.take_fault());
    return kFailed;
  }
  const MovieFacts& facts = movie->facts;
  if (given.json) {
    const nlohmann::json told = {
        {"format", facts.format}, {"codec", facts.codec},
        {"width", facts.width},   {"height", facts.height},
        {"turned", facts.turned}, {"seconds", static_cast<double>(facts.duration) / 1e6},
        {"rate", facts.rate},     {"frames", facts.frames},
        {"alpha", facts.alpha},   {"sound", facts.sound}};
    std::printf("%s\n", told.dump(2).c_str());
    return kDone;
  }
  std::printf(translated("Format:   %s, %s\nSize:     %u x %u"), facts.format.c_str(), facts.codec.c_str(),
              facts.width, facts.height);
  if (facts.turned != 0) std::printf(translated(", turned by %d degrees"), facts.turned);
  std::printf(translated("\nTime:     %s ms\nFrames:   %s, %.3f a second\nAlpha:    %s\nSound:    %s\n"),
              grouped(static_cast<std::uint64_t>(std::max<std::int64_t>(facts.duration, 0) / 1000)).c_str(),
              grouped(facts.frames).c_str(), facts.rate, facts.alpha ? "yes" : "no",
              facts.sound ? "yes" : "no");
  return kDone;
}

}  // namespace

Run prepare_movie_info(CLI::App& app) {
  const auto given = std::make_shared<Given>();
  app.add_option("FILE", given->file, "A movie")->required();
  app.add_flag("--json", given->json, "As one object");
  return [given](Host& host) { return run(*given, host); };
}

}  // namespace vellum::cli
