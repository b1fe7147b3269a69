#include "image/deflate_slowly.h"

#include <libdeflate.h>
#include <zopfli/deflate.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "base/byte_order.h"

namespace vellum {
namespace {

/// Bytes that are looked at together; those of a piece may repeat what stands in the one in front of it.
constexpr std::size_t kPiece = std::size_t{1} << 20;
constexpr int kBestBlocks = 2;  ///< the library chooses the kind of each block

/// The library's growing array.
struct Growing {
  unsigned char* bytes = nullptr;
  std::size_t size = 0;
  unsigned char bits = 0;  ///< used of the last byte
  Growing() = default;
  Growing(const Growing&) = delete;
  Growing& operator=(const Growing&) = delete;
  ~Growing() { std::free(bytes); }
};

}  // namespace

std::vector<std::uint8_t> deflate_slowly(std::span<const std::uint8_t> bytes, int iterations) {
  ZopfliOptions options;
  ZopfliInitOptions(&options);
  options.numiterations = std::max(iterations, 1);
  Growing out;
  std::size_t at = 0;
  do {
    const std::size_t end = std::min(bytes.size(), at + kPiece);
    ZopfliDeflatePart(&options, kBestBlocks, end == bytes.size(), bytes.data(), at, end, &out.bits,
                      &out.bytes, &out.size);
    at = end;
  } while (at < bytes.size());
  // RFC 1950: a window of 32 KiB, the slowest class.
  std::vector<std::uint8_t> stream = {0x78, 0xDA};
  stream.insert(stream.end(), out.bytes, out.bytes + out.size);
  std::uint8_t check[4];
  write_be32(check, libdeflate_adler32(1, bytes.data(), bytes.size()));
  stream.insert(stream.end(), std::begin(check), std::end(check));
  return stream;
}

}  // namespace vellum
