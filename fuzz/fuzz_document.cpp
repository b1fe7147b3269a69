// Any bytes at all: they open or are refused with a reason; what opens is walked as a window would, is saved,
// and what was saved opens again with the same images.
#include <unistd.h>
#include <cstdlib>

#include <filesystem>
#include <string>

#include "core/chunk_description.h"
#include "core/open_document.h"
#include "core/read_png.h"
#include "core/save_document.h"
#include "core/settings.h"

using namespace vellum;

namespace {

/// Larger canvases only make the fuzzer slow.
constexpr std::uint64_t kMostPixels = 1'000'000;

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

std::string scratch_file() {
  const char* folder = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/vellum-fuzz-" + std::to_string(getpid()) + ".png";
}

bool is_large(const std::uint8_t* data, std::size_t size) {
  if (size < 24) return false;
  const auto be32 = [&](std::size_t at) {
    return std::uint64_t{data[at]} << 24 | data[at + 1] << 16 | data[at + 2] << 8 | data[at + 3];
  };
  return be32(16) * be32(20) > kMostPixels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (is_large(data, size)) return -1;
  settings::APNGOpen = VELLUM_FUZZ_APNG;
  settings::PngCompression = 1;
  Host host;
  DocumentWindow window, again;
  if (!read_png(window, {data, size}, host)) {
    check(host.has_fault);
    return 0;
  }
  const std::size_t images = walk(window);
  static const std::string path = scratch_file();
  if (!save_document(window, path, host)) return 0;
  check(open_document(again, path, host));
  check(walk(again) == images);
  return 0;
}
