// The three readers of documents, for targets whose first byte chooses one.
#pragma once

#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "fuzz_support.h"

namespace vellum::fuzz {

using ReadDocument = bool (*)(DocumentWindow&, Input, Host&, std::shared_ptr<const FileContent> owner);

struct Reader {
  ReadDocument read;
  std::uint64_t (*pixels)(Input);
};

inline constexpr Reader kReaders[] = {
    {read_png, png_pixels}, {read_mng, mng_pixels}, {read_webp, webp_pixels}};

}  // namespace vellum::fuzz
