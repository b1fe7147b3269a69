#include "image/palette_file.h"

#include <charconv>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/text.h"

namespace vellum {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint64_t kMaximumPaletteFile = std::uint64_t{1} << 20;
constexpr std::size_t kPaletteBytes = 768;

// Where a CMP file has its parts: a magic of 8 bytes, a description, the tag, its number, the bytes of the
// colors, and the colors. The program's own resources are laid out one byte later, and end early.
constexpr std::string_view kCmpMagic = "TARNRSRC", kCmpTag = "CMAP";
constexpr std::size_t kCmpTagAt = 75, kCmpNumberAt = 79, kCmpCountAt = 83, kCmpColors = 87,
                      kResourceColors = 88;

std::string_view as_text(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

std::optional<PaletteColors> table_of(Bytes table, std::uint32_t count) {
  PaletteColors colors;
  std::copy_n(table.begin(), std::min(table.size(), kPaletteBytes), colors.palette.begin());
  colors.count = count;
  std::fill(colors.palette.begin() + 3 * static_cast<std::ptrdiff_t>(count), colors.palette.end(),
            std::uint8_t{0});
  return colors;
}

std::optional<PaletteColors> parse_cmp(Bytes file) {
  if (file.size() <= kResourceColors || as_text(file).substr(kCmpTagAt, kCmpTag.size()) != kCmpTag)
    return std::nullopt;
  const std::size_t colors = file.size() == kCmpColors + kPaletteBytes ? kCmpColors : kResourceColors;
  const std::uint32_t stated = read_le16(&file[kCmpCountAt]);
  const bool whole = stated < 3 || stated > kPaletteBytes || stated % 3 != 0;
  return table_of(file.subspan(colors), whole ? 256 : stated / 3);
}

std::optional<PaletteColors> parse_table(Bytes file) {
  if (file.size() == kPaletteBytes) return table_of(file, 256);
  if (file.size() != kPaletteBytes + 4) return std::nullopt;
  const std::uint32_t count = read_be16(&file[kPaletteBytes]);
  return table_of(file, count == 0 || count > 256 ? 256 : count);
}

/// Cuts the next line off; any line end will do.
std::string_view next_line(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return trimmed(line);
}

/// Three numbers from 0 to 255 that begin a line.
bool parse_color(std::string_view line, std::uint8_t (&color)[3]) {
  for (std::uint8_t& channel : color) {
    line = trimmed(line);
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), channel);
    if (error != std::errc()) return false;
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
  }
  return line.empty() || line[0] == ' ' || line[0] == '\t';
}

std::optional<PaletteColors> colors_of_lines(std::string_view text) {
  PaletteColors colors;
  std::uint8_t color[3];
  while (!text.empty()) {
    if (!parse_color(next_line(text), color)) continue;
    colors.cut = colors.count == 256;
    if (colors.cut) break;
    std::copy_n(color, 3, colors.palette.begin() + 3 * static_cast<std::ptrdiff_t>(colors.count++));
  }
  if (colors.count == 0) return std::nullopt;
  return colors;
}

std::optional<PaletteColors> parse_jasc(Bytes file) {
  const std::string_view text = as_text(file);
  if (!text.starts_with("JASC-PAL")) return std::nullopt;
  return colors_of_lines(text);
}

std::optional<PaletteColors> parse_gimp(Bytes file) {
  const std::string_view text = as_text(file);
  if (!text.starts_with("GIMP Palette")) return std::nullopt;
  return colors_of_lines(text);
}

using Parser = std::optional<PaletteColors> (*)(Bytes);
constexpr Parser kParsers[] = {parse_cmp, parse_jasc, parse_gimp, parse_table};

std::vector<std::uint8_t> cmp_bytes(const PaletteColors& colors) {
  std::vector<std::uint8_t> file(kCmpColors + kPaletteBytes);
  const std::string head = std::string(kCmpMagic) + std::to_string(colors.count) + " colour palette";
  std::ranges::copy(head, file.begin());
  std::ranges::copy(kCmpTag, file.begin() + kCmpTagAt);
  write_le32(&file[kCmpNumberAt], 1);
  write_le32(&file[kCmpCountAt], 3 * colors.count);
  std::copy_n(colors.palette.begin(), 3 * std::size_t{colors.count}, file.begin() + kCmpColors);
  return file;
}

std::vector<std::uint8_t> jasc_bytes(const PaletteColors& colors) {
  std::string text = "JASC-PAL\r\n0100\r\n" + std::to_string(colors.count) + "\r\n";
  for (std::size_t i = 0; i < colors.count; ++i) {
    const std::uint8_t* c = &colors.palette[3 * i];
    text += format_text("%u %u %u\r\n", c[0], c[1], c[2]);
  }
  return {text.begin(), text.end()};
}

std::vector<std::uint8_t> gimp_bytes(const PaletteColors& colors) {
  std::string text = "GIMP Palette\nName: Vellumcraft\nColumns: 16\n#\n";
  for (std::size_t i = 0; i < colors.count; ++i) {
    const std::uint8_t* c = &colors.palette[3 * i];
    text += format_text("%3u %3u %3u\n", c[0], c[1], c[2]);
  }
  return {text.begin(), text.end()};
}

constexpr PaletteForm kForms[] = {{"cmp", "CMP palette", cmp_bytes},
                                  {"gpl", "GIMP palette", gimp_bytes},
                                  {"pal", "JASC palette", jasc_bytes}};

}  // namespace

std::optional<PaletteColors> parse_palette(Bytes file) {
  for (const Parser parse : kParsers)
    if (auto colors = parse(file)) return colors;
  return std::nullopt;
}

std::optional<PaletteColors> read_palette_file(const std::filesystem::path& path, std::string& reason) {
  reason.clear();
  const auto file = read_file(path, reason, kMaximumPaletteFile);
  return file ? parse_palette(*file) : std::nullopt;
}

std::span<const PaletteForm> palette_forms() { return kForms; }

const PaletteForm& palette_form_of(const std::filesystem::path& path) {
  const std::string extension = lower_case(path.extension().string());
  for (const PaletteForm& form : kForms)
    if (extension.size() > 1 && extension.substr(1) == form.extension) return form;
  return kForms[0];
}

bool write_palette_file(const std::filesystem::path& path, const PaletteColors& colors, std::string& reason) {
  SafeFile file(path);
  const bool written = file.write(palette_form_of(path).bytes(colors)) && file.commit();
  if (!written) reason = file.reason();
  return written;
}

}  // namespace vellum
