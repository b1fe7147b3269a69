#include "workload.h"

#include <unistd.h>

#include <filesystem>
#include <random>

#include "base/file.h"
#include "core/chunks/new_chunk.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/png_file.h"

namespace vellum::bench {

Picture photograph(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  std::minstd_rand random(7);
  Picture picture = PictureCreate(width, height, nullptr, bits);
  const std::size_t bytes = bits / 8;
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* row = picture.edit_row(y);
    for (std::uint32_t x = 0; x < width; ++x) {
      const unsigned edge = (x / 97 + y / 61) % 7 * 19;
      const unsigned noise = random() >> 8 & 3;
      row[x * bytes] = static_cast<std::uint8_t>(x * 255 / width / 2 + edge + noise);
      row[x * bytes + 1] = static_cast<std::uint8_t>(y * 255 / height / 2 + edge + noise);
      row[x * bytes + 2] = static_cast<std::uint8_t>((x + y) / 32 + edge);
      if (bytes == 4) row[x * bytes + 3] = static_cast<std::uint8_t>(x * y % 5 == 0 ? 128 : 255);
    }
  }
  return picture;
}

std::span<const std::uint8_t> large_still() {
  static const std::vector<std::uint8_t> file = encode_png_picture(photograph(4000, 3000, 24), 6);
  return file;
}

DocumentWindow animation(std::size_t frames) {
  DocumentWindow window;
  window.document.kind = DocumentKind::APNG;
  ChunkRecord record;
  for (const ChunkTag tag : {tag::IHDR, tag::acTL}) {
    new_chunk(window, record, tag);
    chunk_list_append(window.list, window.document, record);
  }
  for (std::size_t i = 0; i < frames; ++i) {
    Picture picture = photograph(640, 480, 32);
    for (std::uint32_t y = 0; y < 100; ++y)
      std::fill_n(picture.edit_row(y + static_cast<std::uint32_t>(i)), 400, static_cast<std::uint8_t>(i));
    NewChunkArgument argument;
    argument.picture = picture.handle();
    new_chunk(window, record, tag::IDAT, argument);
    chunk_list_append(window.list, window.document, record);
  }
  new_chunk(window, record, tag::IEND);
  chunk_list_append(window.list, window.document, record);
  chunk_list_close_change(window.list, window.document);
  return window;
}

std::span<const std::uint8_t> animation_file() {
  static const FileContent file = [] {
    const auto path =
        std::filesystem::temp_directory_path() / ("vellum-bench-" + std::to_string(getpid()) + ".png");
    DocumentWindow window = animation(120);
    Host host;
    settings::PngCompression = 6;
    save_document(window, path, host);
    settings::PngCompression = 9;
    std::string reason;
    const auto bytes = read_file(path, reason, 1u << 30);
    std::filesystem::remove(path);
    return *bytes;
  }();
  return file;
}

DocumentWindow long_list(std::size_t entries) {
  DocumentWindow window;
  window.document.kind = DocumentKind::PING;
  ChunkRecord record;
  new_chunk(window, record, tag::IHDR);
  chunk_list_append(window.list, window.document, record);
  for (std::size_t i = 0; i < entries; ++i) {
    new_chunk(window, record, tag::tEXt);
    chunk_list_append(window.list, window.document, record);
  }
  chunk_list_close_change(window.list, window.document);
  return window;
}

}  // namespace vellum::bench
