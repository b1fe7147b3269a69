// `vellum thumbnail`: what file managers call for a small picture of a file.
#include <sys/resource.h>

#include "cli/command.h"
#include "core/files/open_document.h"
#include "generators/generator.h"
#include "operations/build_stills.h"

namespace vellum::cli {
namespace {

constexpr std::uint32_t kUsualSide = 256, kMostSide = 4096;
/// Files come here that nobody has looked at: one that asks for more is without a thumbnail.
constexpr rlim_t kMostMemory = rlim_t{2} << 30;

struct Given {
  std::string in, out;
  std::uint32_t side = kUsualSide;
};

int run(const Given& given, Host& host) try {
  const rlimit most{kMostMemory, kMostMemory};
  setrlimit(RLIMIT_AS, &most);
  DocumentWindow window;
  Host quiet;
  const bool opened = open_document(window, given.in, quiet);
  const Picture shown = first_shown(opened ? &window : nullptr, given.in, given.side);
  if (!shown) return host.show(StringId::ErrorReadingFile, {}, given.in), kFailed;
  const auto& png = graphic_file_modules()[GraphicFileType("a.png")];
  if (png.WriteGraphicFile(given.out, {}, reduced_to_fit(shown, given.side))) return kDone;
  return host.show(StringId::ErrorWritingFile, {}, given.out), kFailed;
} catch (const std::bad_alloc&) {
  return host.show(StringId::MemoryError), kFailed;
}

}  // namespace

Run prepare_thumbnail(CLI::App& app) {
  const auto given = std::make_shared<Given>();
  app.add_option("IN", given->in, "A document or a picture")->required();
  app.add_option("OUT", given->out, "The PNG to write")->required();
  app.add_option("--size", given->side, "Pixels of its longer side at most")
      ->check(CLI::Range(1u, kMostSide))
      ->capture_default_str();
  return [given](Host& host) { return run(*given, host); };
}

}  // namespace vellum::cli
