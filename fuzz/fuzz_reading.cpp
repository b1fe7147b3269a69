// Any bytes at all as the payload of any tag, named by the first four, and as a palette file: they are
// decoded without a fault, and what is damaged says so once, at the end.
#include "base/byte_order.h"
#include "core/chunks/chunk_reading.h"
#include "fuzz_support.h"
#include "image/palette_file.h"

using namespace vellum;
using namespace vellum::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  if (const auto colors = parse_palette(bytes)) check(colors->count >= 1 && colors->count <= 256);
  if (size < 4) return -1;
  const ChunkTag tag = read_be32(data);
  if (!has_chunk_reading(tag, DocumentKind::MING)) return -1;
  const auto lines = chunk_reading(tag, bytes.subspan(4), DocumentKind::MING);
  check(lines.size() < 100'000);
  for (std::size_t i = 0; i + 1 < lines.size(); ++i)
    check(!lines[i].name.empty() || !lines[i].value.starts_with("a damaged "));
  return 0;
}
