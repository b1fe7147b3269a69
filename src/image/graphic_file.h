// The table of graphic-file modules: how pictures of other formats come in and go out.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/file.h"
#include "base/host.h"
#include "image/picture.h"

namespace vellum {

/// Switches of a graphic file. As text they stand behind the name: "/X", "/Q:75", "/S:2", "/L".
struct GraphicSwitches {
  bool exif_orientation = false;     ///< /X: turn a JPEG by its EXIF orientation
  std::optional<int> quality{};      ///< /Q:n, 0 to 100
  std::optional<int> subsampling{};  ///< /S:n, 2 = 4:2:0, 1 = 4:2:2, 0 = 4:4:4
  bool lossless = false;             ///< /L
  /// Where not 0, somebody wants a smaller picture: a JPEG may be decoded to a half, a quarter or an eighth,
  /// as long as both sides keep that many pixels. Not a switch that a name can have.
  std::uint32_t enough = 0;
  /// Where it is given, what keeps the file that is decoded: the picture of a PNG then has its stream for its
  /// source. Not a switch of a name either.
  std::shared_ptr<const FileContent> owner = nullptr;
};

/// Why a file gives no picture.
enum class GraphicFault {
  None,
  Missing,      ///< it can't be opened or read
  UnknownKind,  ///< none of the modules knows its content
  Damaged,
  TooLarge,  ///< a limit of base/limits.h, memory, or far more pixels than its bytes can mean
};

struct GraphicFileModule;

/// What reading a picture file gave.
struct GraphicReading {
  Picture picture;                          ///< null: see `fault`
  GraphicFault fault = GraphicFault::None;  ///< of a null picture
  std::string told;  ///< why there is no picture, or what is missing of one; a sentence part in English
  const GraphicFileModule* module = nullptr;  ///< that knows the content
};

/// What a decoder is asked for: a picture of header and color table alone, or all of it.
enum class Part { Header, Whole };

/// One module.
struct GraphicFileModule {
  std::string_view extension;  ///< lower case, without a dot
  std::string_view name;       ///< for people: "JPEG"
  /// Whether a file begins like one of this kind.
  bool (*recognizes)(std::span<const std::uint8_t> file);
  /// From memory. A picture of which a part can be shown is given with what is missing, the rest of it zero.
  GraphicReading (*decode)(std::span<const std::uint8_t> file, Part, const GraphicSwitches&);
  /// False for a failed write, of which nothing stays behind.
  bool (*WriteGraphicFile)(const std::filesystem::path&, const GraphicSwitches&, const Picture&);
};

/// The seven rows, in their order: jpg, bmp, gif, pcx, tga, png, webp. Files are read by what they hold; the
/// extension of a name chooses the writer.
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

/// The module that knows a file's content, whatever the name says; null: none does.
const GraphicFileModule* graphic_module_of(std::span<const std::uint8_t> file);

/// The picture of a file, or its header and color table alone. A JPEG is turned by its EXIF orientation while
/// `ImageJpegExifOrientation` is on. `enough`: see GraphicSwitches.
GraphicReading read_graphic_file(std::string_view name, Part part = Part::Whole, std::uint32_t enough = 0);
/// The same of bytes that are read already.
GraphicReading read_graphic_bytes(std::span<const std::uint8_t> file, Part part = Part::Whole,
                                  const GraphicSwitches& switches = {});

/// "a.jpg: JPEG: 3 of 40 rows are missing"; the name's last part alone where nothing is told.
std::string reading_text(const std::filesystem::path& path, const GraphicReading& reading);

/// Tells a person: what is missing of a picture is a note, and why there is none is shown. Its picture.
Picture told_reading(const std::filesystem::path& path, const GraphicReading& reading, Host& host);
/// Asks whether a file without a picture is passed over; where nobody can be asked it is.
bool passes_over(const std::filesystem::path& path, const GraphicReading& reading, Host& host);
/// The picture of a file that is read for it, told in the same way.
Picture read_picture_file(const std::filesystem::path& path, Host& host, std::uint32_t enough = 0);

/// Width, height, bits and, when the bits are below 9, the palette. Any output may be null. False on failure.
bool GraphicFileInfo(std::string_view name, std::uint32_t* width, std::uint32_t* height, std::uint32_t* bits,
                     Palette* palette);
/// As read_graphic_file, null on failure. `status`, where it is given, is emptied before reading and gets the
/// name on success.
Picture GraphicFileRead(std::string_view name, std::string* status = nullptr);
/// Writes with the wrapper's own switches: JPEG quality 75 and 4:2:0, WebP by `WEBPQualityFactor` and
/// `WEBPLossless`.
bool GraphicFileWrite(std::string_view name, const Picture& picture);

}  // namespace vellum
