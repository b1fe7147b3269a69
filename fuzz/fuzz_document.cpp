// Any bytes at all: they open or are refused with a reason; what opens is walked as a window would, is saved,
// and what was saved opens again with the same images.
#include <unistd.h>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "base/byte_order.h"
#include "core/files/open_document.h"
#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/files/save_document.h"
#include "core/model/chunk_description.h"
#include "core/settings.h"
#include "image/webp_service.h"

using namespace vellum;

namespace {

using Input = std::span<const std::uint8_t>;

void check(bool condition) {
  if (!condition) std::abort();
}

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

std::string scratch_file(const char* extension) {
  const char* folder = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/vellum-fuzz-" + std::to_string(getpid()) + extension;
}

/// Pixels that the header of a PNG promises.
std::uint64_t png_pixels(Input file) {
  if (file.size() < 24) return 0;
  return std::uint64_t{read_be32(&file[16])} * read_be32(&file[20]);
}

/// The same for an MNG, over all images.
std::uint64_t mng_pixels(Input file) {
  std::uint64_t pixels = 0;
  static constexpr std::string_view kHeader = "IHDR";
  for (auto at = file.begin();
       (at = std::search(at, file.end(), kHeader.begin(), kHeader.end())) != file.end(); ++at)
    if (file.end() - at >= 12) pixels += std::uint64_t{read_be32(&at[4])} * read_be32(&at[8]);
  return pixels;
}

/// The same for a WebP, over all frames.
std::uint64_t webp_pixels(Input file) {
  const auto info = WEBPGetInfoEx(file);
  if (!info) return 0;
  std::uint64_t frames = 1;
  static constexpr std::string_view kFrame = "ANMF";
  for (auto at = file.begin(); (at = std::search(at, file.end(), kFrame.begin(), kFrame.end())) != file.end();
       ++at)
    ++frames;
  return std::uint64_t{info->width} * info->height * frames;
}

/// What a fuzz target feeds.
struct Target {
  std::string_view name;
  bool (*read)(DocumentWindow&, Input, Host&);
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
  if (!target().read(window, file, host)) {
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
