#include <optional>

#include "base/translation.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/words.h"
#include "core/edit/new_document.h"
#include "core/files/save_document.h"

namespace vellum::cli {
namespace {

const std::map<std::string, unsigned> kColors = {
    {"grey", 0}, {"color", 2}, {"palette", 3}, {"grey-alpha", 4}, {"color-alpha", 6}};

struct NewOptions {
  std::string out, size;
  DocumentKind kind = DocumentKind::None;
  unsigned colorType = 2;
  unsigned bits = 8;
  std::uint32_t plays = 0;
};

/// "WxH"; false for anything else.
bool parse_size(const std::string& text, NewDocument& parameters) {
  unsigned width = 0, height = 0;
  int used = 0;
  if (std::sscanf(text.c_str(), "%7ux%7u%n", &width, &height, &used) != 2) return false;
  parameters.width = width;
  parameters.height = height;
  return static_cast<std::size_t>(used) == text.size() && width > 0 && height > 0;
}

bool wrong_usage(const char* reason) {
  std::fprintf(stderr, "vellum: %s\n", reason);
  return false;
}

bool take_options(const NewOptions& options, NewDocument& parameters) {
  parameters = default_new_document(options.kind);
  parameters.colorType = static_cast<std::uint8_t>(options.colorType);
  parameters.bitDepth = static_cast<std::uint8_t>(options.bits);
  parameters.plays = options.plays;
  if (!options.size.empty() && !parse_size(options.size, parameters))
    return wrong_usage(translated("--size is not WxH"));
  if (const char* fault = new_document_fault(parameters)) return wrong_usage(fault);
  return name_fits_kind(options.out, options.kind);
}

/// All kinds but MNG need an image to be a file.
int run_new(const NewOptions& options, Host& host) {
  NewDocument parameters;
  if (!take_options(options, parameters)) return kWrongUsage;
  DocumentWindow window;
  if (!new_document(window, parameters)) return kFailed;
  if (options.kind != DocumentKind::MING && !add_blank_image(window)) {
    host.show(StringId::AllocationError);
    return kFailed;
  }
  return save_document(window, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_new(CLI::App& app) {
  const auto options = std::make_shared<NewOptions>();
  app.add_option("OUT", options->out, "The file to write")->required();
  app.add_option("--kind", options->kind, "The kind of the file")
      ->required()
      ->transform(one_of(kKinds, "png|apng|mng|webp"));
  app.add_option("--size", options->size, "Width and height in pixels")->type_name("WxH");
  app.add_option("--color", options->colorType, "Color type of a PNG or animated PNG")
      ->transform(one_of(kColors, "grey|color|palette|grey-alpha|color-alpha"));
  app.add_option("--bits", options->bits, "Bits of a sample, 1 to 16")->check(CLI::Range(1, 16));
  app.add_option("--plays", options->plays, "Plays of an animation, 0 for ever");
  return [options](Host& host) { return run_new(*options, host); };
}

}  // namespace vellum::cli
