// The three readers of documents, for targets whose first byte chooses one.
#pragma once

#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/settings.h"
#include "fuzz_support.h"
#include "image/settings.h"

namespace vellum::fuzz {

using ReadDocument = bool (*)(DocumentWindow&, Input, Host&, std::shared_ptr<const FileContent> owner);

struct Reader {
  ReadDocument read;
  std::uint64_t (*pixels)(Input);
};

inline constexpr Reader kReaders[] = {
    {read_png, png_pixels}, {read_mng, mng_pixels}, {read_webp, webp_pixels}};

/// Reads a document whose canvas and images have at most so many pixels: larger ones only make the fuzzer
/// slow.
inline bool read_small_document(const Reader& reader, Input file, std::uint64_t most_pixels,
                                DocumentWindow& window, Host& host) {
  if (reader.pixels(file) > most_pixels) return false;
  settings::APNGOpen = 1;
  settings::PngCompression = 1;
  if (!reader.read(window, file, host, nullptr)) return false;
  const Extent canvas = document_size(window.list, window.document);
  return std::uint64_t{canvas.width} * canvas.height <= most_pixels;
}

}  // namespace vellum::fuzz
