// What a chunk of a PNG or MNG holds, beside the image.
#include <algorithm>

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/translation.h"
#include "core/check/checking.h"
#include "core/chunks/compressed_text.h"
#include "image/inflate.h"

namespace vellum {
namespace {

using Payload = std::span<const std::uint8_t>;

/// What a chunk asks for, where that is short enough to say.
struct AskRow {
  ChunkTag tag;
  const char* asks;
};
constexpr const char* kKeyword =
    "a keyword of 1 to 79 printable characters without blanks at its ends, a NUL, and what belongs behind it";
constexpr AskRow kAsks[] = {
    {tag::tEXt, "a keyword of 1 to 79 printable characters, a NUL, and a text without NULs"},
    {tag::zTXt, kKeyword},
    {tag::iTXt, kKeyword},
    {tag::iCCP, kKeyword},
    {tag::sPLT, "a name, a depth of 8 or 16, and whole entries"},
    {tag::tIME, "month 1 to 12, day 1 to 31, hour to 23, minute to 59, second to 60"},
    {tag::gAMA, "a number above 0"},
    {tag::cHRM, "x + y of at most 1, and a white point"},
    {tag::sRGB, "0 to 3"},
    {tag::sBIT, "a number for each sample, from 1 to its depth"},
    {tag::bKGD, "one color in the samples of the image, or an index of its palette"},
    {tag::tRNS, "one color of an image without alpha, or at most as many values as the palette has entries"},
    {tag::hIST, "a number for each entry of the palette"},
    {tag::pHYs, "a unit of 0 or 1"},
    {tag::oFFs, "a unit of 0 or 1"},
    {tag::sCAL, "a unit of 1 or 2 and two numbers above 0"},
    {tag::pCAL, "a name, an equation of 0 to 3, and as many parameters as are told"},
    {tag::sTER, "0 or 1"},
    {tag::eXIf, "a TIFF header"},
    {tag::TERM, "an action of 0 to 2 alone, or 3 and nine bytes more"},
    {tag::BACK, "6, 7, 9 or 10 bytes"},
    {tag::DEFI, "2, 3, 4, 12 or 28 bytes"},
    {tag::SHOW, "0, 2, 4 or 5 bytes"},
    {tag::MAGN, "0, 2, 4, 5, 7, 9, 11, 13, 15, 17 or 18 bytes"},
};

std::string asks_of(ChunkTag tag) {
  const auto row = std::ranges::find(kAsks, tag, &AskRow::tag);
  return row == std::end(kAsks) ? std::string()
                                : std::string(translated("it asks for ")) + translated(row->asks);
}

/// Whether the packed rest of a chunk is whole; `stream` begins behind the method byte. A profile tells its
/// own length (ICC.1, "Profile header").
bool unpacks(ChunkTag tag, Payload stream) {
  bool over_limit = false;
  const auto content = inflate_text(stream, kMaximumTextBytes, over_limit);
  if (over_limit || !content || tag != tag::iCCP) return over_limit || content;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(content->data());
  return content->size() >= 128 && read_be32(bytes) == content->size();
}

/// Of a zTXt: deflate, the only one that there is.
bool has_known_method(Payload payload) {
  const auto nul = std::ranges::find(payload, std::uint8_t{0});
  return payload.end() - nul > 1 && nul[1] == 0;
}

/// Where the packed part of a payload begins; nothing where none is.
std::optional<std::size_t> packed_at(ChunkTag tag, Payload payload) {
  const auto nul = static_cast<std::size_t>(std::ranges::find(payload, std::uint8_t{0}) - payload.begin());
  if (tag != tag::iTXt) return nul + 2;
  if (payload[nul + 1] == 0) return std::nullopt;
  std::size_t at = nul + 3;
  for (int texts = 0; texts < 2; ++texts)
    at = static_cast<std::size_t>(
             std::find(payload.begin() + static_cast<std::ptrdiff_t>(at), payload.end(), 0) -
             payload.begin()) +
         1;
  return at;
}

void check_packed(Checking& checking, const StreamChunk& chunk) {
  if (chunk.tag == tag::zTXt && !has_known_method(chunk.data))
    checking.find(RuleId::Payload_invalid, chunk, translated("the compression method is not 0"));
  else if (!packed_is_whole(chunk.tag, chunk.data))
    checking.find(RuleId::Packed_damaged, chunk);
}

}  // namespace

DocumentKind judging_kind(DocumentKind file, ChunkTag tag) {
  const bool mng = file == DocumentKind::MING && chunk_row(tag, DocumentKind::MING);
  return mng ? DocumentKind::MING : DocumentKind::APNG;
}

bool packed_is_whole(ChunkTag tag, Payload payload) {
  if (tag != tag::zTXt && tag != tag::iTXt && tag != tag::iCCP) return true;
  if (tag == tag::zTXt && !has_known_method(payload)) return false;
  const auto at = packed_at(tag, payload);
  return !at || (*at <= payload.size() && unpacks(tag, payload.subspan(*at)));
}

void check_payload(Checking& checking, const StreamChunk& chunk, const PngContext& context) {
  const ChunkRow* row = chunk_row(chunk.tag, judging_kind(checking.kind, chunk.tag));
  if (!row) {
    if (is_valid_tag(chunk.tag))
      checking.find(is_ancillary(chunk.tag) ? RuleId::Chunk_unknown : RuleId::Critical_unknown, chunk);
  } else if (chunk.data.size() < row->shortest || chunk.data.size() > row->longest) {
    checking.find(RuleId::Payload_length, chunk, std::to_string(chunk.data.size()) + translated(" bytes"));
  } else if (row->check && !row->check(chunk.data, context)) {
    checking.find(RuleId::Payload_invalid, chunk, asks_of(chunk.tag));
  } else {
    check_packed(checking, chunk);
  }
}

}  // namespace vellum
