// An MNG (MNG 1.0): its chunks, its loops, its images, and what its header counts.
#include <algorithm>
#include <set>

#include "base/byte_order.h"
#include "base/host.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/checking.h"
#include "core/chunks/mng_counts.h"
#include "core/files/read_mng.h"

namespace vellum {
namespace {

struct MngLook {
  Checking& checking;
  std::uint32_t globalPalette = 0;          ///< entries
  const StreamChunk* image = nullptr;       ///< the IHDR of an image that is open
  bool opaque = false;                      ///< inside a JNG or delta image
  std::vector<const StreamChunk*> loops{};  ///< that are open
  std::set<ChunkTag> seen{};                ///< between images

  std::uint8_t level(const StreamChunk& chunk) const { return chunk.data.empty() ? 0 : chunk.data[0]; }

  void look_at_header(const StreamChunk& chunk) {
    if (chunk.tag != tag::MHDR) return checking.find(RuleId::Header_missing, chunk);
    if (chunk.data.size() < 28)
      return checking.find(RuleId::Payload_length, chunk,
                           std::to_string(chunk.data.size()) + translated(" bytes"));
    if (read_be32(&chunk.data[0]) == 0 || read_be32(&chunk.data[4]) == 0)
      checking.find(RuleId::Mng_canvas_empty, chunk);
    const auto images = std::ranges::count_if(
        checking.chunks, [](const StreamChunk& c) { return c.tag == tag::IHDR || c.tag == tag::JHDR; });
    if (read_be32(&chunk.data[8]) == 0 && images > 1) checking.find(RuleId::Mng_clock_stands, chunk);
  }

  void open(const StreamChunk& chunk) {
    if (image) checking.find(RuleId::Image_nested, chunk);
    image = &chunk;
  }
  void close(const StreamChunk& chunk) {
    if (!image) return checking.find(RuleId::Image_end_alone, chunk);
    check_png_image(checking, {image, &chunk + 1}, globalPalette);
    image = nullptr;
  }

  void begin_loop(const StreamChunk& chunk) {
    if (!loops.empty() && level(chunk) <= level(*loops.back()))
      checking.find(RuleId::Loop_level, chunk,
                    format_text(translated("level %u inside level %u"), level(chunk), level(*loops.back())));
    loops.push_back(&chunk);
  }
  /// The end closes the innermost loop of its level, and those inside it are never ended.
  void end_loop(const StreamChunk& chunk) {
    const auto begin = std::find_if(loops.rbegin(), loops.rend(),
                                    [&](const StreamChunk* loop) { return level(*loop) == level(chunk); });
    if (begin == loops.rend()) return checking.find(RuleId::Loop_end_alone, chunk);
    for (auto open = loops.rbegin(); open != begin; ++open) checking.find(RuleId::Loop_open, **open);
    loops.erase(begin.base() - 1, loops.end());
  }

  void look_between_images(const StreamChunk& chunk) {
    if (chunk.tag == tag::IDAT) return checking.find(RuleId::Data_outside_image, chunk);
    if (chunk.tag == tag::PLTE) {
      globalPalette = static_cast<std::uint32_t>(chunk.data.size() / 3);
      return;
    }
    if (chunk.tag == tag::TERM && &chunk != &checking.chunks[1])
      checking.find(RuleId::Termination_late, chunk);
    // One inside an image is that image's alone.
    if (stands_once(chunk.tag, DocumentKind::MING) && !seen.insert(chunk.tag).second)
      checking.find(RuleId::Second_of_its_kind, chunk);
    // What serves all images behind it is taken back by an empty one.
    if (!(serves_all_images(chunk.tag) && chunk.data.empty())) check_payload(checking, chunk, kOutsideImages);
  }

  void look_at(const StreamChunk& chunk) {
    if (opaque) {
      opaque = chunk.tag != tag::IEND;
    } else if (chunk.tag == tag::IHDR) {
      open(chunk);
    } else if (chunk.tag == tag::IEND) {
      close(chunk);
    } else if (chunk.tag == tag::MEND) {
      if (image) checking.find(RuleId::Image_not_ended, *image);
    } else if (!image && begins_opaque_image(chunk.tag)) {
      opaque = true;
      checking.find(RuleId::Image_not_checked, chunk);
    } else if (!image) {
      look_between_images(chunk);
      if (chunk.tag == tag::LOOP && chunk.data.size() >= 5) begin_loop(chunk);
      if (chunk.tag == tag::ENDL) end_loop(chunk);
    }
  }

  void walk() {
    if (checking.chunks.empty()) return checking.find(RuleId::Header_missing);
    look_at_header(checking.chunks.front());
    for (const StreamChunk& chunk : checking.chunks) look_at(chunk);
    for (const StreamChunk* open : loops) checking.find(RuleId::Loop_open, *open);
  }
};

/// Counts can only be told of what can be read.
void look_at_counts(Checking& checking, std::span<const std::uint8_t> file) {
  const StreamChunk& header = checking.chunks.front();
  DocumentWindow window;
  Host nobody;
  if (header.data.size() < 28 || !read_mng(window, file, nobody, nullptr)) return;
  const MngCounts counts = count_mng(window);
  const struct {
    const char* name;
    std::size_t at;
    std::uint32_t counted;
  } rows[] = {{"frames", 16, counts.frames}, {"layers", 12, counts.layers}, {"ticks", 20, counts.playTime}};
  for (const auto& row : rows) {
    const std::uint32_t told = read_be32(&header.data[row.at]);
    // From 2^31 - 1 on a count means that nobody knows, or that there is no end.
    if (told != 0 && told < kMngForEver && told != row.counted)
      checking.find(
          RuleId::Mng_count_wrong, header,
          format_text(translated("%u %s told, %u counted"), told, translated(row.name), row.counted));
  }
}

}  // namespace

void check_mng(Checking& checking, std::span<const std::uint8_t> file) {
  checking.kind = DocumentKind::MING;
  check_frames(checking, file, tag::MEND);
  MngLook look{checking};
  look.walk();
  if (!checking.chunks.empty() && checking.chunks.back().tag == tag::MEND) look_at_counts(checking, file);
}

}  // namespace vellum
