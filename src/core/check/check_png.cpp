// A PNG stream: order and number of its chunks, and its image.
#include <algorithm>
#include <set>

#include "base/byte_order.h"
#include "base/translation.h"
#include "core/check/checking.h"

namespace vellum {
namespace {

struct PngLook {
  Checking& checking;
  ChunkSpan chunks;
  PngHeader header{};
  PngContext context{};
  bool headerSeen = false, paletteComes = false, paletteSeen = false, imageSeen = false, imageEnded = false;
  std::set<ChunkTag> seen{};
  std::vector<std::span<const std::uint8_t>> data{};
  const StreamChunk* image = nullptr;

  /// Whether the header says what an image is.
  bool look_at_header() {
    const StreamChunk& first = chunks.front();
    if (first.tag != tag::IHDR) {
      checking.find(RuleId::Header_missing, first);
      return false;
    }
    if (first.data.size() != 13) {
      checking.find(RuleId::Payload_length, first, std::to_string(first.data.size()) + translated(" bytes"));
      return false;
    }
    header = parse_png_header(first.data.first<13>());
    const char* fault = png_header_fault(header);
    if (fault) checking.find(RuleId::Header_invalid, first, fault);
    headerSeen = !fault;
    if (headerSeen) context = {header.bitDepth, header.colorType, context.paletteEntries};
    return !fault;
  }

  void look_at_place(const StreamChunk& chunk) {
    const ChunkPlace place = place_of(chunk.tag, DocumentKind::APNG);
    const bool before_image = place == ChunkPlace::BeforePalette || place == ChunkPlace::AtPalette ||
                              place == ChunkPlace::BehindPalette || place == ChunkPlace::BeforeImage;
    if (before_image && imageSeen)
      checking.find(RuleId::Behind_image, chunk);
    else if (place == ChunkPlace::BeforePalette && paletteSeen)
      checking.find(RuleId::Behind_palette, chunk);
    else if (place == ChunkPlace::BehindPalette && paletteComes && !paletteSeen)
      checking.find(RuleId::Before_palette, chunk);
    if (stands_once(chunk.tag, DocumentKind::APNG) && !seen.insert(chunk.tag).second)
      checking.find(RuleId::Second_of_its_kind, chunk);
  }

  void look_at_palette(const StreamChunk& chunk) {
    const std::size_t entries = chunk.data.size() / 3;
    const bool global = checking.kind == DocumentKind::MING && chunk.data.empty();
    if (context.colorType == 0 || context.colorType == 4)
      checking.find(RuleId::Palette_unwanted, chunk);
    else if (!global && (chunk.data.size() % 3 != 0 || entries < 1 || entries > 256))
      checking.find(RuleId::Palette_length, chunk, std::to_string(chunk.data.size()) + translated(" bytes"));
    else if (context.colorType == 3 && entries > 1u << context.bitDepth)
      checking.find(RuleId::Palette_too_long, chunk, std::to_string(entries) + translated(" entries"));
    paletteSeen = true;
  }

  void look_at_data(const StreamChunk& chunk) {
    if (imageEnded) checking.find(RuleId::Image_split, chunk);
    imageEnded = false;
    if (!imageSeen && context.colorType == 3 && !paletteSeen && context.paletteEntries == 0)
      checking.find(RuleId::Palette_missing, chunk);
    if (!imageSeen) image = &chunk;
    imageSeen = true;
    data.push_back(chunk.data);
  }

  void look_at_chunk(const StreamChunk& chunk) {
    look_at_place(chunk);
    if (chunk.tag == tag::IDAT) return look_at_data(chunk);
    imageEnded = imageSeen;
    if (chunk.tag == tag::PLTE) return look_at_palette(chunk);
    // The parts of an animation are looked at together.
    if (chunk.tag == tag::fcTL || chunk.tag == tag::fdAT) return;
    // What depends on a header that isn't there can't be told.
    if (headerSeen || place_of(chunk.tag, DocumentKind::APNG) == ChunkPlace::Anywhere)
      check_payload(checking, chunk, context);
  }

  void look_at_image() {
    if (!image) return checking.find(RuleId::Image_missing, chunks.back());
    check_image_data(checking, *image, header, data, context.paletteEntries);
  }
};

}  // namespace

void check_png_image(Checking& checking, ChunkSpan chunks, std::uint32_t inherited) {
  if (chunks.empty()) return checking.find(RuleId::Header_missing);
  PngLook look{checking, chunks};
  look.context.paletteEntries = inherited;
  if (const auto palette = std::ranges::find(chunks, tag::PLTE, &StreamChunk::tag); palette != chunks.end()) {
    look.paletteComes = true;
    if (!palette->data.empty())
      look.context.paletteEntries =
          static_cast<std::uint32_t>(std::min<std::size_t>(palette->data.size() / 3, 256));
  }
  const bool good = look.look_at_header();
  if (chunks.front().tag == tag::IHDR) look.seen.insert(tag::IHDR);
  for (const StreamChunk& chunk : chunks.subspan(chunks.front().tag == tag::IHDR ? 1 : 0))
    look.look_at_chunk(chunk);
  if (look.seen.contains(tag::sRGB) && look.seen.contains(tag::iCCP))
    checking.find(RuleId::Two_profiles, chunks.front());
  if (!good) return;
  look.look_at_image();
  if (checking.kind != DocumentKind::MING)
    check_frames_of_apng(checking, chunks, look.header, look.context.paletteEntries);
}

}  // namespace vellum
