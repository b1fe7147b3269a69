// Any bytes at all as an animated PNG that is exported as SWF, and as the sound beside it: the file that
// comes of it is walked to its last tag, its bitmaps unpack to their sizes, what is shown was defined before,
// and the frames are as many as the header counts.
#include <zlib.h>

#include <fstream>
#include <set>

#include "base/file.h"
#include "core/files/read_png.h"
#include "core/settings.h"
#include "exchange/exporter.h"
#include "exchange/swf_writer.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

constexpr std::uint64_t kMostPixels = 4'000;

/// Unpacked bytes, which are to be that many.
std::vector<std::uint8_t> unpacked(Input packed, std::size_t wanted) {
  std::vector<std::uint8_t> out(wanted + 1);
  uLongf length = out.size();
  check(uncompress(out.data(), &length, packed.data(), packed.size()) == Z_OK && length == wanted);
  out.resize(wanted);
  return out;
}

void walk_bitmap(Input data, std::set<std::uint32_t>& defined) {
  check(data.size() > 8);
  const std::size_t width = read_le16(&data[3]), height = read_le16(&data[5]);
  const bool indexed = data[2] == 3;
  check(width > 0 && height > 0 && (indexed || data[2] == 5));
  if (indexed)
    unpacked(data.subspan(8), 4 * (data[7] + std::size_t{1}) + (width + 3) / 4 * 4 * height);
  else
    unpacked(data.subspan(7), 4 * width * height);
  check(defined.insert(read_le16(data.data())).second);
}

/// The tags' codes are those of SWF 6.
void walk_file(Input file) {
  check(file.size() > 8);
  const std::vector<std::uint8_t> body = unpacked(file.subspan(8), read_le32(&file[4]) - 8);
  std::size_t at = (5 + 4 * (body[0] >> 3) + 7) / 8;
  const std::uint32_t frames = read_le16(&body[at + 2]);
  std::uint32_t shown = 0;
  std::set<std::uint32_t> defined;
  bool ended = false;
  for (at += 4; !ended;) {
    check(at + 2 <= body.size());
    const std::uint32_t code = read_le16(&body[at]) >> 6;
    std::size_t length = read_le16(&body[at]) & 63;
    at += 2;
    if (length == 63) length = read_le32(&body[at]), at += 4;
    check(at + length <= body.size());
    const Input data(&body[at], length);
    at += length;
    if (code == 36) walk_bitmap(data, defined);
    if (code == 2) check(defined.insert(read_le16(data.data())).second);
    if (code == 26) check(defined.contains(read_le16(&data[3])));
    shown += code == 1;
    ended = code == 0;
  }
  check(at == body.size() && shown == frames);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Exporter& exporter = *find_exporter("swf");
  if (size < 3) return -1;
  const bool crush = data[0] & 1, sounds = data[0] & 2;
  const std::size_t cut = std::min<std::size_t>(data[1] << 8 | data[2], size - 3);
  const Input sound(data + 3, cut), file(data + 3 + cut, size - 3 - cut);
  swf_sound(sound, 1);
  if (png_pixels(file) > kMostPixels) return -1;
  settings::APNGOpen = 1;
  Host host;
  DocumentWindow window;
  if (!read_png(window, file, host, nullptr) || !is_animation(window.document.kind)) return 0;
  FieldValues values = initial_values(exporter.parameters.fields);
  values.set("crush", std::int64_t{crush}), values.set("html", std::int64_t{0});
  const std::string path = scratch_file(".swf"), heard = scratch_file(".wav");
  if (sounds) {
    std::ofstream(heard, std::ios::binary).write(reinterpret_cast<const char*>(sound.data()), cut);
    values.set("includeSound", std::int64_t{1}), values.set("soundPath", heard);
  }
  std::size_t told = 0;
  host.message = [&](const Message&) { ++told; };
  if (!export_document(exporter, window, values, path, host)) {
    check(told == 1);
    return 0;
  }
  std::string reason;
  const auto written = read_file(path, reason, 1 << 28);
  check(written.has_value());
  walk_file(*written);
  return 0;
}
