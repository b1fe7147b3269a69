// The reading of camera data (PNG standard, third edition, "eXIf").
#include <libexif/exif-data.h>

#include <memory>

#include "core/chunks/payload_reader.h"

#include "base/translation.h"

namespace vellum {
namespace {

struct ReleaseExif {
  void operator()(ExifData* data) const { exif_data_unref(data); }
};

constexpr std::string_view kMarker("Exif\0\0",
                                   6);  // what a JPEG has in front of the same data; the library wants it
constexpr std::size_t kLeastExif = 8;   // TIFF 6.0: byte order, 42, offset of the first directory

bool begins_as_tiff(std::span<const std::uint8_t> payload) {
  if (payload.size() < kLeastExif) return false;
  const std::string_view mark(reinterpret_cast<const char*>(payload.data()), 4);
  const bool little = mark == std::string_view("II*\0", 4);
  if (!little && mark != std::string_view("MM\0*", 4)) return false;
  const std::uint32_t directory = little ? read_le32(&payload[4]) : read_be32(&payload[4]);
  return directory >= kLeastExif && std::uint64_t{directory} + 2 <= payload.size();
}

std::unique_ptr<ExifData, ReleaseExif> parse(std::span<const std::uint8_t> payload) {
  std::vector<std::uint8_t> bytes(kMarker.begin(), kMarker.end());
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  std::unique_ptr<ExifData, ReleaseExif> data(exif_data_new());
  if (!data) return data;
  for (const ExifDataOption option :
       {EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION})
    exif_data_unset_option(data.get(), option);
  exif_data_load_data(data.get(), bytes.data(), static_cast<unsigned>(bytes.size()));
  return data;
}

void entry_line(ExifEntry* entry, void* reader) {
  const char* name = exif_tag_get_name_in_ifd(entry->tag, exif_entry_get_ifd(entry));
  char value[512] = {};
  exif_entry_get_value(entry, value, sizeof value);
  static_cast<PayloadReader*>(reader)->line(
      name ? std::string(name) : format_text(translated("Tag 0x%04X"), static_cast<unsigned>(entry->tag)),
      value);
}

}  // namespace

void read_exif(PayloadReader& p) {
  auto payload = p.bytes(p.left());
  // Some writers of WebP put it there as well.
  if (std::string_view(reinterpret_cast<const char*>(payload.data()), payload.size()).starts_with(kMarker))
    payload = payload.subspan(kMarker.size());
  if (!begins_as_tiff(payload)) return p.set_damaged();
  const auto data = parse(payload);
  if (!data) return p.set_damaged();
  p.line("Byte order", payload[0] == 'I' ? "little-endian" : "big-endian");
  for (ExifContent* directory : data->ifd) exif_content_foreach_entry(directory, entry_line, &p);
}

}  // namespace vellum
