// A WebP: the RIFF form, the extended header, frames, and whether their images decode (WebP container).
#include <algorithm>
#include <set>

#include "base/byte_order.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/checking.h"
#include "core/check/webp_parts.h"
#include "image/webp_partial.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

using namespace webp;

std::string size_text(std::uint64_t width, std::uint64_t height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

/// The chunks of a RIFF list that begins at `offset` of the file.
std::vector<StreamChunk> riff_chunks(Checking& checking, std::span<const std::uint8_t> bytes,
                                     std::uint64_t offset, std::uint32_t number) {
  std::vector<StreamChunk> chunks;
  std::size_t at = 0;
  while (bytes.size() - at >= kChunkHead) {
    const std::size_t size = read_le32(&bytes[at + 4]);
    if (size > bytes.size() - at - kChunkHead) break;
    const std::size_t end = at + kChunkHead + size;
    chunks.push_back({read_be32(&bytes[at]), bytes.subspan(at + kChunkHead, size), 0, offset + at});
    if (size % 2 != 0 && end < bytes.size() && bytes[end] != 0)
      checking.add({RuleId::Padding_not_zero, chunks.back().tag, number, offset + at, {}});
    at = std::min(bytes.size(), end + size % 2);
  }
  if (at < bytes.size()) {
    const ChunkTag tag = bytes.size() - at < 4 ? 0 : read_be32(&bytes[at]);
    checking.add({RuleId::Chunk_cut, tag, number, offset + at, {}});
  }
  return chunks;
}

struct WebpLook {
  Checking& checking;
  std::uint64_t width = 0, height = 0;  ///< of the canvas
  WebpBudget budget;
  std::uint8_t flags = 0;
  bool extended = false, animationSeen = false, imageSeen = false, metadataSeen = false, hasAlpha = false;
  std::size_t frames = 0;
  std::set<ChunkTag> seen{};

  void look_at_extended(const StreamChunk& chunk) {
    if (&chunk != &checking.chunks.front()) checking.find(RuleId::Webp_header_not_first, chunk);
    if (chunk.data.size() != 10)
      checking.find(RuleId::Webp_header_length, chunk,
                    std::to_string(chunk.data.size()) + translated(" bytes"));
    if (chunk.data.size() < 10) return;
    extended = true;
    flags = chunk.data[0];
    width = std::uint64_t{read_le24(&chunk.data[4])} + 1;
    height = std::uint64_t{read_le24(&chunk.data[7])} + 1;
    if ((flags & 0xC1) != 0 || read_le24(&chunk.data[1]) != 0)
      checking.find(RuleId::Webp_reserved_bits, chunk);
    if (width * height > 0xFFFFFFFF)
      checking.find(RuleId::Webp_canvas_too_large, chunk, size_text(width, height));
  }

  void look_at_animation(const StreamChunk& chunk) {
    animationSeen = true;
    if (chunk.data.size() != 6)
      checking.find(RuleId::Webp_animation_length, chunk,
                    std::to_string(chunk.data.size()) + translated(" bytes"));
    if (imageSeen) checking.find(RuleId::Webp_order, chunk);
  }

  /// An image of these parts, at most an ALPH and what holds the colors.
  void look_at_image(const StreamChunk& at, std::span<const WebpChunk> parts, std::uint64_t told_width,
                     std::uint64_t told_height) {
    const auto info = WEBPGetInfoEx(webp_still(parts.last(1)));
    if (!info) return checking.find(RuleId::Webp_image_damaged, at);
    hasAlpha |= info->hasAlpha || parts.size() > 1;
    if (told_width != 0 && (info->width != told_width || info->height != told_height))
      return checking.find(RuleId::Webp_image_size, at,
                           size_text(info->width, info->height) + translated(" in place of ") +
                               size_text(told_width, told_height));
    if (!budget.allows(info->width, info->height)) return checking.find(RuleId::Image_too_large, at);
    if (!WEBPDecodeBGRA(webp_still(parts))) checking.find(RuleId::Webp_image_damaged, at);
  }

  void look_at_parts(const StreamChunk& at, const std::vector<StreamChunk>& chunks, std::uint64_t told_width,
                     std::uint64_t told_height) {
    std::vector<WebpChunk> parts;
    for (const StreamChunk& chunk : chunks) {
      if (!is_part(chunk.tag)) {
        if (frames > 0 && parts.empty())
          checking.find(RuleId::Webp_order, at, translated("an unknown chunk in front of the image"));
        continue;
      }
      if (!parts.empty() && parts.back().tag != kAlpha)
        checking.find(RuleId::Webp_second_image, at);
      else
        parts.push_back({chunk.tag, chunk.data});
    }
    if (parts.empty() || parts.back().tag == kAlpha) return checking.find(RuleId::Webp_no_image, at);
    if (parts.size() > 1 && parts.back().tag == kLossless) {
      checking.find(RuleId::Webp_alpha_unwanted, at);
      parts.erase(parts.begin(), parts.end() - 1);
    }
    look_at_image(at, parts, told_width, told_height);
  }

  void look_at_frame(const StreamChunk& chunk) {
    imageSeen = true;
    ++frames;
    if (metadataSeen) checking.find(RuleId::Webp_order, chunk, translated("a frame behind the metadata"));
    if (extended && !(flags & 0x02)) checking.find(RuleId::Webp_frames_not_animated, chunk);
    if (!animationSeen && frames == 1) checking.find(RuleId::Webp_animation_missing, chunk);
    if (chunk.data.size() < kFrameHead) return checking.find(RuleId::Webp_frame_length, chunk);
    const std::uint64_t x = 2 * std::uint64_t{read_le24(&chunk.data[0])},
                        y = 2 * std::uint64_t{read_le24(&chunk.data[3])};
    const std::uint64_t own_width = read_le24(&chunk.data[6]) + 1, own_height = read_le24(&chunk.data[9]) + 1;
    if ((chunk.data[15] & 0xFC) != 0) checking.find(RuleId::Webp_reserved_bits, chunk);
    if (extended && (x + own_width > width || y + own_height > height))
      checking.find(RuleId::Webp_frame_outside, chunk,
                    size_text(own_width, own_height) + translated(" at ") + std::to_string(x) + ", " +
                        std::to_string(y) + translated(" on ") + size_text(width, height));
    const auto inner =
        riff_chunks(checking, chunk.data.subspan(kFrameHead), chunk.offset + kChunkHead + kFrameHead,
                    static_cast<std::uint32_t>(&chunk - checking.chunks.data() + 1));
    look_at_parts(chunk, inner, own_width, own_height);
  }

  void look_at_metadata(const StreamChunk& chunk) {
    if (chunk.tag == tag::ICCP && (imageSeen || animationSeen)) checking.find(RuleId::Webp_order, chunk);
    if (chunk.tag == tag::ICCP) return;
    metadataSeen = true;
    if (!imageSeen) checking.find(RuleId::Webp_order, chunk);
  }

  void look_at(const StreamChunk& chunk) {
    const bool known = chunk.tag == kExtended || chunk.tag == kAnimation ||
                       place_of(chunk.tag, DocumentKind::WEBP) != ChunkPlace::Anywhere ||
                       chunk.tag == tag::EXIF || chunk.tag == tag::XMP;
    if (known && !seen.insert(chunk.tag).second) return checking.find(RuleId::Second_of_its_kind, chunk);
    if (chunk.tag == kExtended) return look_at_extended(chunk);
    if (chunk.tag == kAnimation) return look_at_animation(chunk);
    if (chunk.tag == kFrame) return look_at_frame(chunk);
    if (chunk.tag == tag::ICCP || chunk.tag == tag::EXIF || chunk.tag == tag::XMP)
      return look_at_metadata(chunk);
    if (is_part(chunk.tag)) {
      if (metadataSeen && !imageSeen)
        checking.find(RuleId::Webp_order, chunk, translated("the image behind the metadata"));
      imageSeen = true;
    } else {
      checking.find(RuleId::Chunk_unknown, chunk);
    }
  }

  void look_at_flags() {
    const StreamChunk& header = checking.chunks.front();
    const struct {
      std::uint8_t flag;
      const char* name;
      bool there;
      bool needed;  ///< only a flag that is missing is wrong
    } rows[] = {{0x20, "color profile", seen.contains(tag::ICCP), false},
                {0x10, "alpha", hasAlpha, true},
                {0x08, "EXIF", seen.contains(tag::EXIF), false},
                {0x04, "XMP", seen.contains(tag::XMP), false},
                {0x02, "animation", frames > 0 || animationSeen, false}};
    for (const auto& row : rows)
      if (row.there ? !(flags & row.flag) : !row.needed && (flags & row.flag))
        checking.find(RuleId::Webp_flag_wrong, header, translated(row.name));
  }

  void walk() {
    for (const StreamChunk& chunk : checking.chunks) look_at(chunk);
    if (!imageSeen) return checking.find(RuleId::Webp_no_image);
    if (frames == 0) look_at_parts(first_image(), checking.chunks, width, height);
    if (extended) return look_at_flags();
    if (seen.size() > 0 || frames > 0 || checking.chunks.front().tag == kAlpha)
      checking.find(RuleId::Webp_extended_missing);
  }
  const StreamChunk& first_image() const {
    return *std::ranges::find_if(checking.chunks,
                                 [](const StreamChunk& chunk) { return is_part(chunk.tag); });
  }
};

/// The form's head: what of the file belongs to it.
std::span<const std::uint8_t> look_at_form(Checking& checking, std::span<const std::uint8_t> file) {
  const std::uint64_t told = read_le32(&file[4]), there = file.size() - 8;
  if (told % 2 != 0) checking.find(RuleId::Riff_size_odd, std::to_string(told));
  if (told > there)
    checking.find(RuleId::Riff_size_wrong,
                  grouped(told) + translated(" bytes told, ") + grouped(there) + translated(" there"));
  else if (told + told % 2 < there)
    checking.add({RuleId::Bytes_behind_end, 0, 0, 8 + told, grouped(there - told) + translated(" bytes")});
  return file.first(static_cast<std::size_t>(8 + std::max<std::uint64_t>(4, std::min(told, there))));
}

}  // namespace

void check_webp(Checking& checking, std::span<const std::uint8_t> file) {
  constexpr std::string_view kWebp = "WEBP";
  if (file.size() < kFormHead || !std::ranges::equal(file.subspan(8, 4), kWebp))
    return checking.find(RuleId::Unknown_format, translated("a RIFF file that is no WebP"));
  checking.kind = DocumentKind::WEBP;
  const auto form = look_at_form(checking, file);
  checking.chunks = riff_chunks(checking, form.subspan(kFormHead), kFormHead, 0);
  if (checking.chunks.empty()) return checking.find(RuleId::Webp_no_image);
  WebpLook look{.checking = checking, .budget = {file.size()}};
  look.walk();
}

}  // namespace vellum
