// A small picture of a file.
#pragma once

#include <QImage>
#include <filesystem>

namespace vellum {

/// At most `size` pixels on each side, in the shape of the picture. The desktop's shared thumbnails are used
/// where `UseWindowsThumbnailCache` allows it. Null where there is no picture, or one so large that making it
/// would be felt.
QImage file_thumbnail(const std::filesystem::path& path, int size);

}  // namespace vellum
