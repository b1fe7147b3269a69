#include "image/graphic_file.h"

#include <charconv>

#include "base/text.h"
#include "base/translation.h"
#include "image/codecs.h"
#include "image/settings.h"

namespace vellum {
namespace {

constexpr std::array<GraphicFileModule, 7> kModules = {{
    {"jpg", "JPEG", is_jpg, decode_jpg, JPGWriteGraphicFile},
    {"bmp", "Windows Bitmap", is_bmp, decode_bmp, BMPWriteGraphicFile},
    {"gif", "GIF", is_gif, decode_gif, GIFWriteGraphicFile},
    {"pcx", "PC Paintbrush", is_pcx, decode_pcx, PCXWriteGraphicFile},
    {"tga", "Truevision Targa", is_tga, decode_tga, TGAWriteGraphicFile},
    {"png", "PNG", is_png, decode_png, PNGWriteGraphicFile},
    {"webp", "WebP", is_webp, decode_webp, WEBPWriteGraphicFile},
}};

/// The row of a path without switches.
std::size_t row_of(std::string_view path) {
  const std::string_view file = path.substr(path.rfind('/') + 1);
  const std::size_t dot = file.rfind('.');
  if (dot == std::string_view::npos) return kNoGraphicFile;
  const auto row = std::ranges::find_if(kModules, [&](const GraphicFileModule& module) {
    return equal_ignoring_case(module.extension, file.substr(dot + 1));
  });
  return row == kModules.end() ? kNoGraphicFile : static_cast<std::size_t>(row - kModules.begin());
}

/// The digits of "Q:75"; nothing when there are none or something else stands behind them.
std::optional<int> number_behind(std::string_view text) {
  const std::string_view digits = text.substr(2);
  if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() ? value : 100;  // more than any range reaches
}

/// One switch without its stroke. `/V` (verbose) is known and changes nothing.
bool read_switch(std::string_view text, GraphicSwitches& switches) {
  if (text == "X") return switches.exif_orientation = true;
  if (text == "L") return switches.lossless = true;
  if (text == "V") return true;
  if (!text.starts_with("Q:") && !text.starts_with("S:")) return false;
  const auto number = number_behind(text);
  (text[0] == 'Q' ? switches.quality : switches.subsampling) = number;
  return number.has_value();
}

/// The module of a name, or null.
const GraphicFileModule* module_of(const GraphicName& name) {
  const std::size_t row = row_of(name.path.native());
  return row == kNoGraphicFile ? nullptr : &kModules[row];
}

bool is_row(const GraphicFileModule* module, std::string_view extension) {
  return module->extension == extension;
}

/// The picture of a file and what describes it turn the same way.
GraphicSwitches reading_switches(const GraphicFileModule* module, GraphicSwitches switches) {
  if (is_row(module, "jpg") && settings::ImageJpegExifOrientation != 0) switches.exif_orientation = true;
  return switches;
}

GraphicSwitches writing_switches(const GraphicFileModule* module, GraphicSwitches switches) {
  if (is_row(module, "jpg")) {
    switches.quality = switches.quality.value_or(75);
    switches.subsampling = switches.subsampling.value_or(2);
  }
  if (is_row(module, "webp")) {
    switches.quality = switches.quality.value_or(settings::WEBPQualityFactor);
    switches.lossless = switches.lossless || settings::WEBPLossless != 0;
  }
  return switches;
}

}  // namespace

std::span<const GraphicFileModule> graphic_file_modules() { return kModules; }

GraphicName parse_graphic_name(std::string_view name) {
  // The switches are the longest run of them at the end; a later one wins over the same one before it.
  std::vector<std::string_view> found;
  std::string_view rest = name;
  GraphicSwitches ignored;
  for (std::size_t stroke = rest.rfind('/'); stroke != std::string_view::npos && stroke > 0;
       stroke = rest.rfind('/')) {
    if (!read_switch(rest.substr(stroke + 1), ignored)) break;
    found.push_back(rest.substr(stroke + 1));
    rest = rest.substr(0, stroke);
  }
  std::error_code error;
  if (found.empty() || row_of(rest) == kNoGraphicFile || std::filesystem::exists(name, error))
    return {name, {}};
  GraphicName result{rest, {}};
  for (auto text = found.rbegin(); text != found.rend(); ++text) read_switch(*text, result.switches);
  return result;
}

std::size_t GraphicFileType(std::string_view name) { return row_of(parse_graphic_name(name).path.native()); }

const GraphicFileModule* graphic_module_of(std::span<const std::uint8_t> file) {
  const auto row =
      std::ranges::find_if(kModules, [&](const auto& module) { return module.recognizes(file); });
  return row == kModules.end() ? nullptr : &*row;
}

GraphicReading read_graphic_bytes(std::span<const std::uint8_t> file, Part part,
                                  const GraphicSwitches& switches) try {
  const GraphicFileModule* module = graphic_module_of(file);
  if (!module)
    return {
        {}, GraphicFault::UnknownKind, translated("the content is no picture of a kind that can be read")};
  GraphicReading reading = module->decode(file, part, reading_switches(module, switches));
  reading.module = module;
  if (!reading.picture && reading.fault == GraphicFault::None) reading.fault = GraphicFault::Damaged;
  if (!reading.picture && reading.told.empty()) reading.told = translated("the file is damaged");
  if (!reading.picture || !reading.told.empty())
    reading.told = std::string(module->name) + ": " + reading.told;
  return reading;
} catch (const std::bad_alloc&) {
  return {{}, GraphicFault::TooLarge, translated("memory is exhausted")};
}

GraphicReading read_graphic_file(std::string_view name, Part part, std::uint32_t enough) try {
  GraphicName parsed = parse_graphic_name(name);
  parsed.switches.enough = enough;
  std::string reason;
  const auto file = read_file(parsed.path, reason, kMaximumFileBytes);
  if (!file) return {{}, GraphicFault::Missing, reason};
  return read_graphic_bytes(*file, part, parsed.switches);
} catch (const std::bad_alloc&) {
  return {{}, GraphicFault::TooLarge, translated("memory is exhausted")};
}

std::string reading_text(const std::filesystem::path& path, const GraphicReading& reading) {
  return path.filename().string() + (reading.told.empty() ? "" : ": " + reading.told);
}

Picture told_reading(const std::filesystem::path& path, const GraphicReading& reading, Host& host) {
  const std::string text = reading_text(path, reading);
  if (reading.fault == GraphicFault::Damaged)
    host.show(StringId::FileCorrupted, StringId::ErrorReadingFile, text);
  else if (!reading.picture)
    host.show(StringId::ErrorReadingFile, {}, text);
  else if (!reading.told.empty())
    host.add_note(text);
  return reading.picture;
}

bool passes_over(const std::filesystem::path& path, const GraphicReading& reading, Host& host) {
  if (!host.ask) return true;
  const auto id = StringId::CorruptedGraphicQuestion;
  return host.ask({id, {}, std::string(string_text(id)), reading_text(path, reading), nullptr}, false) ==
         Answer::Yes;
}

Picture read_picture_file(const std::filesystem::path& path, Host& host, std::uint32_t enough) {
  return told_reading(path, read_graphic_file(path.string(), Part::Whole, enough), host);
}

bool GraphicFileInfo(std::string_view name, std::uint32_t* width, std::uint32_t* height, std::uint32_t* bits,
                     Palette* palette) {
  return PictureInfo(read_graphic_file(name, Part::Header).picture, width, height, bits, palette);
}

Picture GraphicFileRead(std::string_view name, std::string* status) {
  if (status) status->clear();
  Picture picture = read_graphic_file(name).picture;
  if (picture && status) *status = name;
  return picture;
}

bool GraphicFileWrite(std::string_view name, const Picture& picture) {
  const GraphicName parsed = parse_graphic_name(name);
  const GraphicFileModule* module = module_of(parsed);
  return module && module->WriteGraphicFile(parsed.path, writing_switches(module, parsed.switches), picture);
}

}  // namespace vellum
