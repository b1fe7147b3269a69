// `vellum resize`: a still or each frame of an animation.
#include "operations/resize_animation.h"

#include <algorithm>

#include "base/limits.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "operations/frames.h"

namespace vellum::cli {
namespace {

struct ResizeOptions {
  std::string in, out, size, percent;
  std::optional<std::uint32_t> width, height;
  double blur = 1;
  bool plain = false;  ///< without anti-aliasing
  bool keepPalette = false;
};

constexpr double kMostPercent = 1000;

/// "P" or "P,Q".
std::optional<std::pair<double, double>> percent_pair(const std::string& text) {
  std::array<double, 2> values{};
  std::size_t count = 0;
  for (const char *at = text.data(), *end = at + text.size(); count < 2; ++at) {
    const auto [next, error] = std::from_chars(at, end, values[count]);
    if (error != std::errc() || !(values[count] > 0) || values[count] > kMostPercent) return std::nullopt;
    ++count;
    if ((at = next) == end) return std::pair(values[0], values[count - 1]);
    if (*at != ',') return std::nullopt;
  }
  return std::nullopt;
}

/// The canvas that the options ask for; false when they contradict each other.
bool take_canvas(const ResizeOptions& options, const Extent& canvas, ResizeAnimation& resize) {
  const bool sides = options.width || options.height;
  if (!options.size.empty() + !options.percent.empty() + sides != 1)
    return wrong_usage("give one of --size, --percent, or --width and --height");
  if (!options.size.empty()) {
    const auto size = number_pair(options.size, 'x', 1, kMaximumDimension);
    if (!size)
      return wrong_usage("--size is not WxH with sides from 1 to " + std::to_string(kMaximumDimension));
    resize.width = static_cast<std::uint32_t>(size->first);
    resize.height = static_cast<std::uint32_t>(size->second);
  } else if (!options.percent.empty()) {
    const auto percent = percent_pair(options.percent);
    if (!percent) return wrong_usage("--percent is not P or P,Q above 0 and at most 1000");
    resize.width = scaled_side(canvas.width, percent->first);
    resize.height = scaled_side(canvas.height, percent->second);
  } else {
    resize.width =
        options.width ? *options.width : proportional_side(*options.height, canvas.height, canvas.width);
    resize.height =
        options.height ? *options.height : proportional_side(*options.width, canvas.width, canvas.height);
  }
  return true;
}

std::map<std::string, ResampleFilter> filter_names() {
  std::map<std::string, ResampleFilter> names;
  int number = 0;
  for (const ResampleFilterRow& row : resample_filter_table()) names[row.name] = resample_filter_of(number++);
  return names;
}

int run_resize(const ResizeOptions& options, ResampleFilter filter, Host& host) {
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  if (!name_fits_kind(options.out, window.document.kind)) return kWrongUsage;
  ResizeAnimation resize{.filter = options.plain ? ResampleFilter::Point : filter,
                         .blur = options.blur,
                         .keepPalette = options.keepPalette};
  if (!take_canvas(options, document_size(window.list, window.document), resize)) return kWrongUsage;
  if (frame_entries(window).empty()) {
    host.show(StringId::NoImagesHere);
    return kFailed;
  }
  if (!resize_animation(window, resize, host)) {
    host.show(StringId::NotResized, {}, host.take_fault());
    return kFailed;
  }
  return save_document(window, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_resize(CLI::App& app) {
  struct Parsed {
    ResizeOptions options;
    ResampleFilter filter = ResampleFilter::Automatic;
  };
  const auto parsed = std::make_shared<Parsed>();
  ResizeOptions& options = parsed->options;
  app.add_option("IN", options.in, "The file to read")->required();
  app.add_option("OUT", options.out, "The file to write")->required();
  app.add_option("--size", options.size, "The new size in pixels")->type_name("WxH");
  const CLI::Range side(1u, kMaximumDimension);
  app.add_option("--width", options.width, "The new width; the height follows where it isn't given")
      ->check(side);
  app.add_option("--height", options.height, "The new height; the width follows where it isn't given")
      ->check(side);
  app.add_option("--percent", options.percent, "Per cent of the width and, where it differs, of the height")
      ->type_name("P[,Q]");
  static const auto names = filter_names();
  std::string list;
  for (const ResampleFilterRow& row : resample_filter_table())
    list += (list.empty() ? "" : "|") + std::string(row.name);
  app.add_option("--filter", parsed->filter,
                 "How pixels are weighted; Automatic is Mitchell or, made smaller, Lanczos")
      ->transform(CLI::CheckedTransformer(names, CLI::ignore_case).description(list));
  app.add_option("--blur", options.blur, "Above 1 blurs, below 1 sharpens")
      ->check(CLI::Range(0.01, 100.0))
      ->capture_default_str();
  app.add_flag("--no-antialias", options.plain, "Each pixel is that of the nearest one; as --filter Point");
  app.add_flag("--keep-palette", options.keepPalette, "Images with a palette keep it");
  return [parsed](Host& host) { return run_resize(parsed->options, parsed->filter, host); };
}

}  // namespace vellum::cli
