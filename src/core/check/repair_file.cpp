#include "core/check/repair_file.h"

#include <algorithm>
#include <iterator>

#include "base/byte_order.h"
#include "base/crc.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/check_file.h"
#include "core/check/repairing.h"

namespace vellum {
namespace {

using Bytes = std::span<const std::uint8_t>;
constexpr std::size_t kAround = 12;  ///< length, type and check value of a chunk

bool is_known(ChunkTag tag) {
  return chunk_row(tag, DocumentKind::APNG) || chunk_row(tag, DocumentKind::MING) || begins_opaque_image(tag);
}

/// Whether a whole chunk lies at `at`; with the right check value where `sure`.
bool is_chunk(Bytes file, std::size_t at, bool sure) {
  if (file.size() - at < kAround) return false;
  const std::uint32_t length = read_be32(&file[at]);
  const ChunkTag tag = read_be32(&file[at + 4]);
  if (length > file.size() - at - kAround || !(is_known(tag) || is_valid_tag(tag))) return false;
  return !sure || read_be32(&file[at + 8 + length]) == chunk_crc(tag, file.subspan(at + 8, length));
}

/// Where the next chunk begins that is known and whole; the end of the file where none does.
std::size_t next_chunk(Bytes file, std::size_t from) {
  for (std::size_t at = from; at + kAround <= file.size(); ++at)
    if (is_known(read_be32(&file[at + 4])) && is_chunk(file, at, true)) return at;
  return file.size();
}

/// The chunk at `at`, whatever its length says, and where the next one begins.
std::size_t take_damaged(Bytes file, std::size_t at, FoundChunk& chunk, std::vector<std::string>& given_up) {
  const std::size_t next = next_chunk(file, at + 1);
  // Without a length nobody knows whether a check value stands at the end.
  const std::size_t end = next < file.size() && next >= at + kAround ? next - 4 : next;
  if (end >= at + 8 && is_known(read_be32(&file[at + 4]))) {
    chunk = {read_be32(&file[at + 4]), file.subspan(at + 8, end - at - 8), at};
    // What an image lacks is told of the image.
    if (chunk.tag != tag::IDAT && chunk.tag != tag::fdAT)
      given_up.push_back(translated("The length of ") + chunk_name(chunk) +
                         " was wrong; what follows up to the next chunk was taken.");
  } else {
    given_up.push_back(grouped(next - at) + translated(" bytes at ") + std::to_string(at) +
                       translated(" are no chunk."));
  }
  return next;
}

std::size_t first_header(Bytes file) {
  for (std::size_t at = 0; at + 8 <= std::min<std::size_t>(file.size(), 256); ++at) {
    const ChunkTag tag = read_be32(&file[at + 4]);
    if (tag == tag::IHDR || tag == tag::MHDR) return at;
  }
  return file.size();
}

void repair_png(std::span<const FoundChunk> chunks, RepairedFile& result) {
  result.kind = DocumentKind::PING;
  const auto is_frame = [](const FoundChunk& chunk) { return chunk.tag == tag::fcTL; };
  if (std::ranges::any_of(chunks, is_frame)) result.kind = DocumentKind::APNG;
  Payload out(kPngSignature.begin(), kPngSignature.end());
  std::uint32_t none = 0;
  if (repair_png_stream(chunks, result.kind, none, out, result.given_up)) result.bytes = std::move(out);
}

}  // namespace

std::string chunk_name(const FoundChunk& chunk) {
  return tag_letters(chunk.tag) + translated(" at ") + std::to_string(chunk.offset);
}

std::vector<FoundChunk> find_chunks(Bytes file, ChunkTag end, std::vector<std::string>& given_up) {
  std::vector<FoundChunk> chunks;
  std::size_t at = first_header(file);
  while (at < file.size()) {
    FoundChunk chunk;
    const bool whole = is_chunk(file, at, false);
    const std::size_t behind = whole ? at + kAround + read_be32(&file[at]) : at;
    // A wrong check value alone is a damaged payload; with no chunk behind it the length is what is wrong.
    if (whole && (is_chunk(file, at, true) || behind == file.size() || is_chunk(file, behind, false))) {
      chunk = {read_be32(&file[at + 4]), file.subspan(at + 8, behind - at - kAround), at};
      at = behind;
    } else {
      at = take_damaged(file, at, chunk, given_up);
    }
    if (chunk.tag != 0) chunks.push_back(chunk);
    if (chunk.tag == end) break;
  }
  return chunks;
}

namespace {

RepairedFile repaired_once(Bytes file) {
  RepairedFile result;
  FileCheck check = check_file(file);
  const bool wrong = check.count(Severity::Error) != 0;
  std::erase_if(check.findings, [](const Finding& finding) { return !rule(finding.rule).repaired(); });
  result.mended = std::move(check.findings);
  if (!wrong && result.mended.empty() && check.kind != DocumentKind::None) {
    result.kind = check.kind;
    result.bytes.assign(file.begin(), file.end());
    return result;
  }
  const std::string_view head(reinterpret_cast<const char*>(file.data()),
                              std::min<std::size_t>(file.size(), 16));
  if (head.starts_with("RIFF") || head.find("WEBP") != std::string_view::npos) {
    repair_webp(file, result);
    return result;
  }
  const std::size_t first = first_header(file);
  if (first == file.size()) {
    result.given_up.push_back(translated("There is no header."));
    return result;
  }
  const bool mng = read_be32(&file[first + 4]) == tag::MHDR;
  const auto chunks = find_chunks(file, mng ? tag::MEND : tag::IEND, result.given_up);
  if (mng)
    repair_mng(chunks, result);
  else
    repair_png(chunks, result);
  return result;
}

}  // namespace

RepairedFile repair_file(Bytes file) {
  RepairedFile result = repaired_once(file);
  // Some faults come to light behind a repair: an image that was found makes the palette longer, and the
  // histogram has too few numbers then.
  constexpr int kMostTimes = 3;
  for (int i = 1; i < kMostTimes && !result.mended.empty() && !result.bytes.empty(); ++i) {
    RepairedFile again = repaired_once(result.bytes);
    if (again.mended.empty() || again.bytes.empty()) break;
    result.bytes = std::move(again.bytes);
    std::ranges::move(again.mended, std::back_inserter(result.mended));
    std::ranges::move(again.given_up, std::back_inserter(result.given_up));
  }
  return result;
}

}  // namespace vellum
