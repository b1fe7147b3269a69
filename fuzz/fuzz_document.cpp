// Any bytes at all: they open or are refused with a reason; what opens is walked as a window would, is saved,
// and what was saved opens again with the same images.
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/chunk_description.h"
#include "core/settings.h"
#include "fuzz_readers.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

std::size_t walk(const DocumentWindow& window) {
  std::size_t images = 0;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    check(record.description == chunk_description(record) && record.description.size() <= 260);
    check(window.list.entry(i).height > 0);
    if (!is_image_entry(window.document.kind, record.tag)) continue;
    ++images;
    const Picture picture = picture_of(record);
    check(static_cast<bool>(picture));
    PictureGetPixel(picture, picture.width() - 1, picture.height() - 1);
  }
  return images;
}

/// What a fuzz target feeds.
struct Target {
  std::string_view name;
  ReadDocument read;
  const char* extension;
  std::uint64_t (*pixels)(Input);
  std::uint64_t most_pixels;  ///< larger canvases only make the fuzzer slow
  int animated;               ///< APNGOpen
};

constexpr Target kTargets[] = {
    {"png", read_png, ".png", png_pixels, 1'000'000, 0},
    {"apng", read_png, ".png", png_pixels, 1'000'000, 1},
    {"mng", read_mng, ".mng", mng_pixels, 1'000'000, 1},
    {"webp", read_webp, ".webp", webp_pixels, 20'000, 1},
};

const Target& target() {
  return *std::ranges::find(kTargets, std::string_view(VELLUM_FUZZ_TARGET), &Target::name);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input file(data, size);
  if (target().pixels(file) > target().most_pixels) return -1;
  settings::APNGOpen = target().animated;
  settings::PngCompression = 1;
  Host host;
  DocumentWindow window, again;
  if (!target().read(window, file, host, nullptr)) {
    check(host.has_fault);
    return 0;
  }
  const std::size_t images = walk(window);
  static const std::string path = scratch_file(target().extension);
  if (!save_document(window, path, host)) return 0;
  check(open_document(again, path, host));
  check(walk(again) == images);
  return 0;
}
