// What several targets share: a condition that must hold, a scratch file, and how many pixels a file
// promises.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>

#include "base/byte_order.h"
#include "image/webp_service.h"

namespace vellum::fuzz {

using Input = std::span<const std::uint8_t>;

inline void check(bool condition) {
  if (!condition) std::abort();
}

inline std::string scratch_file(const char* extension) {
  const char* folder = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/vellum-fuzz-" + std::to_string(getpid()) + extension;
}

/// Pixels that the header of a PNG promises.
inline std::uint64_t png_pixels(Input file) {
  if (file.size() < 24) return 0;
  return std::uint64_t{read_be32(&file[16])} * read_be32(&file[20]);
}

/// The same for an MNG, over all images.
inline std::uint64_t mng_pixels(Input file) {
  std::uint64_t pixels = 0;
  static constexpr std::string_view kHeader = "IHDR";
  for (auto at = file.begin();
       (at = std::search(at, file.end(), kHeader.begin(), kHeader.end())) != file.end(); ++at)
    if (file.end() - at >= 12) pixels += std::uint64_t{read_be32(&at[4])} * read_be32(&at[8]);
  return pixels;
}

/// The same for a WebP, over all frames.
inline std::uint64_t webp_pixels(Input file) {
  const auto info = WEBPGetInfoEx(file);
  if (!info) return 0;
  std::uint64_t frames = 1;
  static constexpr std::string_view kFrame = "ANMF";
  for (auto at = file.begin(); (at = std::search(at, file.end(), kFrame.begin(), kFrame.end())) != file.end();
       ++at)
    ++frames;
  return std::uint64_t{info->width} * info->height * frames;
}

}  // namespace vellum::fuzz
