// What a header says of all frames: plays and ticks.
#include <algorithm>

#include "base/byte_order.h"
#include "core/chunks/new_chunk.h"
#include "core/edit/edit_closing.h"
#include "core/edit/insertion.h"
#include "core/model/chunk_description.h"
#include "core/model/kind_table.h"
#include "core/model/loops.h"
#include "core/model/played_frames.h"
#include "operations/manage_frames.h"

namespace vellum {
namespace {

constexpr std::size_t kTermBytes = 10;  // MNG 1.0, "TERM": with a repeat

bool put_record(DocumentWindow& window, std::size_t at, ChunkRecord& record) {
  record.description = chunk_description(record);
  if (!chunk_list_put(window.list, at, record)) return false;
  finish_edit(window, record.tag != tag::acTL && record.tag != tag::WEBH);
  return true;
}

/// The payload as bytes that can be written, at least so many.
std::vector<std::uint8_t> bytes_of(const ChunkRecord& record, std::size_t least) {
  const auto raw = raw_payload(record);
  std::vector<std::uint8_t> bytes(raw.begin(), raw.end());
  if (bytes.size() < least) bytes.resize(least);
  return bytes;
}

bool put_loop_count(DocumentWindow& window, std::size_t at, std::uint32_t plays) {
  ChunkRecord record = window.list.record(at);
  auto bytes = bytes_of(record, 5);
  write_be32(bytes.data() + 1, plays == 0 ? kLoopForEver : plays);
  return put_payload(record, bytes) && put_record(window, at, record);
}

/// TERM: action 3 repeats, 0 shows the last frame; the number of repeats does not count the first play.
bool put_repeats(ChunkRecord& record, std::uint32_t plays) {
  auto bytes = bytes_of(record, plays == 1 ? 1 : kTermBytes);
  bytes[0] = plays == 1 ? 0 : 3;
  if (plays != 1) write_be32(bytes.data() + 6, plays == 0 ? kLoopForEver : plays - 1);
  return put_payload(record, bytes);
}

bool set_mng_plays(DocumentWindow& window, std::uint32_t plays) {
  const std::size_t loop = whole_loop(window.list);
  if (loop != kNoEntry) return put_loop_count(window, loop, plays);
  ChunkRecord record;
  const std::size_t at = chunk_find_first(window.list, tag::TERM, &record);
  if (at != kNoEntry) return put_repeats(record, plays) && put_record(window, at, record);
  if (!new_chunk(window, record, tag::TERM) || !put_repeats(record, plays)) return false;
  Insertion insertion(window, 1);
  const bool placed = insertion.add(record) == Placed::Done;
  insertion.flush();
  if (placed) finish_edit(window, true);
  return placed;
}

}  // namespace

std::uint32_t most_plays(DocumentKind kind) { return kind_row(kind).mostPlays; }

bool set_document_plays(DocumentWindow& window, std::uint32_t plays) {
  const DocumentKind kind = window.document.kind;
  if (plays > most_plays(kind)) return false;
  if (whole_plays(window) == plays) return true;
  if (kind == DocumentKind::MING) return set_mng_plays(window, plays);
  const bool webp = kind == DocumentKind::WEBP;
  ChunkRecord header;
  const std::size_t at = chunk_find_first(window.list, webp ? tag::WEBH : tag::acTL, &header);
  if (at == kNoEntry) return false;
  (webp ? header.webpHeader.loopCount : header.numPlays) = plays;
  return put_record(window, at, header);
}

bool set_ticks(DocumentWindow& window, std::uint32_t ticks, Host& host, std::string& reason) {
  const std::size_t at = chunk_find_first(window.list, tag::MHDR);
  if (at != kNoEntry && window.list.record(at).ticksPerSecond == ticks) return true;
  return set_chunk_field(window, at, "ticksPerSecond", std::to_string(ticks), host, reason);
}

}  // namespace vellum
