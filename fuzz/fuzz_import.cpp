// Any bytes at all as a file of another format: what is read becomes a document that is saved and opens again
// with the same images; what isn't leaves nothing.
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "exchange/gif_reader.h"
#include "exchange/importer.h"
#include "fuzz_support.h"
#include "operations/frames.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

/// Larger pictures only make the fuzzer slow.
bool is_small(Input bytes) {
  constexpr std::uint64_t kMostPixels = 1'000'000;
  const auto file = read_gif(bytes);
  if (!file) return bytes.size() < kMostPixels;
  std::uint64_t pixels = std::uint64_t{file->width} * file->height;
  for (const GifFrame& frame : file->frames) pixels += std::uint64_t{frame.width} * frame.height;
  return pixels < kMostPixels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input bytes(data, size);
  const Importer& importer = *find_importer("import-" VELLUM_FUZZ_TARGET);
  if (!importer.recognizes(bytes) || !is_small(bytes)) return -1;
  settings::PngCompression = 1;
  Host host;
  DocumentWindow window, again;
  if (!import_bytes(importer, window, "a", bytes, initial_values(importer.parameters.fields), host)) {
    check(window.list.size() == 0);
    return 0;
  }
  const std::string path = scratch_file(kind_row(window.document.kind).extensions.front().data());
  if (!save_document(window, path, host)) return 0;
  check(open_document(again, path, host));
  check(frame_entries(again).size() == frame_entries(window).size());
  return 0;
}
