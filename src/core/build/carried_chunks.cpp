#include "core/build/carried_chunks.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/limits.h"
#include "core/chunks/chunk_table.h"
#include "image/deflate.h"
#include "image/inflate.h"

namespace vellum {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Payload = std::optional<std::vector<std::uint8_t>>;

constexpr std::string_view kProfileHead("ICC Profile\0\0", 13);  // name, NUL, method
constexpr std::string_view kXmpHead("XML:com.adobe.xmp\0\0\0\0\0", 22);
constexpr std::string_view kExifMark("Exif\0\0", 6);  // some writers put it in front of the TIFF header
constexpr int kLevel = 9;

std::string_view as_text(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }
Bytes as_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Payload copy(Bytes bytes) { return Payload(std::in_place, bytes.begin(), bytes.end()); }

Payload joined(std::string_view head, Bytes rest) {
  Payload payload = copy(as_bytes(head));
  payload->insert(payload->end(), rest.begin(), rest.end());
  return payload;
}

Payload inflated(Bytes stream) {
  bool over_limit = false;
  const auto content = inflate_text(stream, kMaximumTextBytes, over_limit);
  return content ? copy(as_bytes(*content)) : Payload();
}

/// The color space in the profile's header (ICC.1, "Profile header").
bool is_for_rgb(Bytes profile) { return profile.size() >= 128 && as_text(profile.subspan(16, 4)) == "RGB "; }

/// The profile of an iCCP, unpacked.
Payload profile_of(Bytes chunk) {
  const auto nul = as_text(chunk).find('\0');
  return nul == std::string_view::npos || chunk.size() < nul + 2 ? Payload()
                                                                 : inflated(chunk.subspan(nul + 2));
}

Payload profile_to_webp(Bytes chunk) {
  Payload profile = profile_of(chunk);
  return profile && is_for_rgb(*profile) ? profile : Payload();
}

Payload profile_to_png(Bytes chunk) {
  return is_for_rgb(chunk) ? joined(kProfileHead, deflate_bytes(chunk, kLevel)) : Payload();
}

Payload profile_along(Bytes chunk) { return profile_to_webp(chunk) ? copy(chunk) : Payload(); }

Payload exif_to_png(Bytes chunk) {
  return copy(as_text(chunk).starts_with(kExifMark) ? chunk.subspan(kExifMark.size()) : chunk);
}

Payload xmp_to_png(Bytes chunk) { return joined(kXmpHead, chunk); }

/// The text of an iTXt of that keyword, byte for byte.
Payload xmp_to_webp(Bytes chunk) {
  const std::string_view text = as_text(chunk);
  const std::size_t flags = kXmpHead.find('\0') + 1;
  if (!text.starts_with(kXmpHead.substr(0, flags)) || chunk.size() < flags + 2) return {};
  const auto language = text.find('\0', flags + 2);
  const auto translated =
      language == std::string_view::npos ? std::string_view::npos : text.find('\0', language + 1);
  if (translated == std::string_view::npos) return {};
  const Bytes content = chunk.subspan(translated + 1);
  return chunk[flags] == 0 ? copy(content) : inflated(content);
}

/// What a chunk becomes, in a WebP and in the other kinds; a null function: it has no place there.
struct CarriedRow {
  ChunkTag from;
  ChunkTag webp;
  Payload (*to_webp)(Bytes);
  ChunkTag png;
  Payload (*to_png)(Bytes);
};

constexpr CarriedRow kCarried[] = {
    {tag::tEXt, 0, nullptr, tag::tEXt, copy},
    {tag::zTXt, 0, nullptr, tag::zTXt, copy},
    {tag::iTXt, tag::XMP, xmp_to_webp, tag::iTXt, copy},
    {tag::tIME, 0, nullptr, tag::tIME, copy},
    {tag::iCCP, tag::ICCP, profile_to_webp, tag::iCCP, profile_along},
    {tag::eXIf, tag::EXIF, copy, tag::eXIf, copy},
    {tag::ICCP, tag::ICCP, copy, tag::iCCP, profile_to_png},
    {tag::EXIF, tag::EXIF, copy, tag::eXIf, exif_to_png},
    {tag::XMP, tag::XMP, copy, tag::iTXt, xmp_to_png},
};

const CarriedRow* row_of(ChunkTag tag) {
  const auto row = std::ranges::find(kCarried, tag, &CarriedRow::from);
  return row == std::end(kCarried) ? nullptr : row;
}

}  // namespace

bool tells_of_document(ChunkTag tag) { return row_of(tag) != nullptr; }

std::optional<ChunkRecord> carried_chunk(const ChunkRecord& record, DocumentKind kind) {
  const CarriedRow* row = row_of(record.tag);
  if (!row) return std::nullopt;
  const bool webp = kind == DocumentKind::WEBP;
  const ChunkTag to = webp ? row->webp : row->png;
  const auto convert = webp ? row->to_webp : row->to_png;
  const bool held = chunk_row(to, kind) || (kind == DocumentKind::MING && serves_all_images(to));
  if (!convert || !held) return std::nullopt;
  const auto payload = convert(raw_payload(record));
  if (!payload) return std::nullopt;
  ChunkRecord carried = record;
  carried.owner = nullptr;
  carried.tag = to;
  // A record that goes along as it is keeps its block: that of a zTXt is not what its size tells.
  if (to != record.tag && !put_payload(carried, *payload)) return std::nullopt;
  return carried;
}

}  // namespace vellum
