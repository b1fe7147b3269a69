// The table of graphic-file modules: how pictures of other formats come in and go out.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "image/picture.h"

namespace vellum {

/// Switches of a graphic file. As text they stand behind the name: "/X", "/Q:75", "/S:2", "/L".
struct GraphicSwitches {
  bool exif_orientation = false;   ///< /X: turn a JPEG by its EXIF orientation
  std::optional<int> quality;      ///< /Q:n, 0 to 100
  std::optional<int> subsampling;  ///< /S:n, 2 = 4:2:0, 1 = 4:2:2, 0 = 4:4:4
  bool lossless = false;           ///< /L
};

/// One module. Functions give null or false for a damaged file, a limit or a failed write, and leave nothing
/// behind.
struct GraphicFileModule {
  std::string_view extension;  ///< lower case, without a dot
  std::string_view name;       ///< for people: "JPEG"
  /// A picture of header and color table alone that describes the file.
  Picture (*GetFileInformation)(const std::filesystem::path&, const GraphicSwitches&);
  Picture (*ReadGraphicFile)(const std::filesystem::path&, const GraphicSwitches&);
  bool (*WriteGraphicFile)(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
};

/// The seven rows, in their order: jpg, bmp, gif, pcx, tga, png, webp.
std::span<const GraphicFileModule> graphic_file_modules();

/// A name as text, parted into the path and the switches behind it. Switches are taken off only when they
/// stand at the very end, what stands before them has a known extension, and the whole is not an existing
/// file.
struct GraphicName {
  std::filesystem::path path;
  GraphicSwitches switches;
};
GraphicName parse_graphic_name(std::string_view name);

/// Index of the row whose extension the name has (without regard to case), or all ones.
inline constexpr std::size_t kNoGraphicFile = static_cast<std::size_t>(-1);
std::size_t GraphicFileType(std::string_view name);

/// Width, height, bits and, when the bits are below 9, the palette. Any output may be null. False on failure.
bool GraphicFileInfo(std::string_view name, std::uint32_t* width, std::uint32_t* height, std::uint32_t* bits,
                     Palette* palette);
/// The picture of a file, null on failure. A ".jpg" is turned by its EXIF orientation while
/// `ImageJpegExifOrientation` is on. `status`, where it is given, is emptied before reading and gets the name
/// on success.
Picture GraphicFileRead(std::string_view name, std::string* status = nullptr);
/// Writes with the wrapper's own switches: JPEG quality 75 and 4:2:0, WebP by `WEBPQualityFactor` and
/// `WEBPLossless`.
bool GraphicFileWrite(std::string_view name, const Picture& picture);

}  // namespace vellum
