#include "stored_file.h"

#include <unistd.h>

#include "base/byte_order.h"
#include "base/file.h"
#include "core/model/tags.h"
#include "image/chunk_stream.h"
#include "image/png_encode.h"
#include "image/png_header.h"

namespace vellum::bench {
namespace fs = std::filesystem;
namespace {

struct Scratch {
  fs::path path = fs::temp_directory_path() / ("vellum_bench_stored." + std::to_string(getpid()));
  Scratch() { fs::create_directories(path); }
  ~Scratch() { fs::remove_all(path); }
};

}  // namespace

const fs::path& scratch() {
  static const Scratch folder;
  return folder.path;
}

fs::path stored_file(std::uint32_t count, std::uint32_t width, std::uint32_t height) {
  const fs::path path = scratch() / (std::to_string(count) + ".png");
  if (fs::exists(path)) return path;
  PngHeader header;
  header.width = width;
  header.height = height;
  std::vector<std::vector<std::uint8_t>> streams;
  for (std::uint32_t i = 0; i < 4; ++i) {
    Picture picture = PictureCreateFilled(width, height, make_colour(40 * i, 90, 200));
    for (std::uint32_t k = 0; k < 3000; ++k)
      PicturePutPixel(picture, k * 131 % width, k * (i + 7) % height, k * 0x030507);
    streams.push_back(png_encode(header, picture, 6));
  }
  SafeFile file(path);
  const Sink sink = file_sink(file);
  sink.write(kPngSignature);
  write_chunk(sink, tag::IHDR, png_header_payload(header));
  std::uint8_t control[26] = {};
  write_be32(control, count);
  write_chunk(sink, tag::acTL, std::span(control, 8));
  constexpr std::string_view kText{"Comment\0text", 12};
  write_chunk(sink, tag::tEXt, std::span(reinterpret_cast<const std::uint8_t*>(kText.data()), kText.size()));
  std::uint32_t sequence = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::ranges::fill(control, std::uint8_t{0});
    write_be32(control, sequence++);
    write_be32(control + 4, width);
    write_be32(control + 8, height);
    control[21] = control[23] = 100;
    write_chunk(sink, tag::fcTL, control);
    std::vector<std::uint8_t> data(i == 0 ? 0 : 4);
    if (i != 0) write_be32(data.data(), sequence++);
    data.insert(data.end(), streams[i % 4].begin(), streams[i % 4].end());
    write_chunk(sink, i == 0 ? tag::IDAT : tag::fdAT, data);
  }
  write_chunk(sink, tag::IEND, {});
  sink.finish();
  return path;
}

}  // namespace vellum::bench
