// The small picture that stands beside a file: 27912 bytes with the magic "THNL", the 32-bit word 512, zeros
// to offset 264, and 96 rows of 96 pixels of red, green and blue, the top row first.
#pragma once

#include <filesystem>

#include "image/picture.h"

namespace vellum {

inline constexpr std::uint32_t kThumbnailSide = 96;

/// "a.png" has "a.THN", hidden ".a.THN".
std::filesystem::path thumbnail_path(const std::filesystem::path& file, bool hidden);

/// 24 bits, 96 x 96: the picture scaled by whole per cent so that it fits, small ones enlarged, in the middle
/// of a ground of `matt`, over which transparent pixels lie. Null for a null picture or without memory.
Picture make_thumbnail(const Picture& picture, Colour matt);

/// Replaces the file. False when it can't be written.
bool write_thumbnail(const std::filesystem::path& path, const Picture& thumbnail);
/// Null for a file that is none, or too short.
Picture read_thumbnail(const std::filesystem::path& path);
/// The one that stands beside a file and is not older than it, by either name; else null.
Picture thumbnail_of(const std::filesystem::path& file);

}  // namespace vellum
