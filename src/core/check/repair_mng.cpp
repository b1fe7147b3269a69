// An MNG made right: its images one by one, its loops closed, its header's counts (MNG 1.0).
#include <algorithm>
#include <set>
#include <utility>

#include "base/byte_order.h"
#include "base/host.h"
#include "base/translation.h"
#include "core/check/checking.h"
#include "core/check/repairing.h"
#include "core/chunks/chunk_policy.h"
#include "core/chunks/mng_counts.h"
#include "core/files/read_mng.h"

namespace vellum {
namespace {

constexpr std::size_t kHeaderBytes = 28;
constexpr std::size_t kHeaderAt = 8 + 8;  ///< the payload of MHDR in the file

struct MngRepair {
  RepairedFile& result;
  Payload out{kMngSignature.begin(), kMngSignature.end()};
  std::vector<std::uint8_t> loops{};  ///< levels that are open
  std::set<ChunkTag> seen{};
  std::uint32_t globalPalette = 0;  ///< entries
  std::size_t globalPaletteAt = 0;  ///< its chunk in `out`
  std::size_t images = 0;

  void lose(const FoundChunk& chunk, const char* why) {
    result.given_up.push_back(chunk_name(chunk) + ": " + why);
  }

  bool keeps_loop(const FoundChunk& chunk, std::span<const std::uint8_t> payload) {
    if (chunk.tag == tag::LOOP) loops.push_back(payload[0]);
    if (chunk.tag != tag::ENDL) return true;
    const auto begin = std::find(loops.rbegin(), loops.rend(), payload[0]);
    if (begin == loops.rend()) {
      lose(chunk, translated("no loop begins that it could end."));
      return false;
    }
    // Those inside it are ended before it.
    while (loops.back() != payload[0]) end_loop();
    loops.pop_back();
    return true;
  }
  void end_loop() {
    const std::uint8_t level[] = {loops.back()};
    append_chunk(out, tag::ENDL, level);
    loops.pop_back();
  }

  void take(const FoundChunk& chunk) {
    if (chunk.tag == tag::IDAT || chunk.tag == tag::IEND)
      return lose(chunk, translated("it belongs to no image."));
    if (stands_once(chunk.tag, DocumentKind::MING) && !seen.insert(chunk.tag).second)
      return lose(chunk, translated("there is one already."));
    Payload payload(chunk.data.begin(), chunk.data.end());
    if (chunk.tag == tag::PLTE) {
      globalPalette = static_cast<std::uint32_t>(payload.size() / 3);
      globalPaletteAt = out.size();
    } else if (!is_valid_tag(chunk.tag)) {
      return lose(chunk, translated("no chunk has such a name."));
    } else if (!payload.empty() || !serves_all_images(chunk.tag)) {
      const DocumentKind kind = judging_kind(DocumentKind::MING, chunk.tag);
      mend_chunk(chunk.tag, payload, kOutsideImages, kind);
      if (!is_valid_chunk(chunk.tag, payload, kOutsideImages, kind) || !packed_is_whole(chunk.tag, payload))
        return lose(chunk, translated("its content is not valid."));
    }
    if (keeps_loop(chunk, payload)) append_chunk(out, chunk.tag, payload);
  }

  /// Black entries behind those of the palette that images inherit.
  void lengthen_global_palette(std::uint32_t entries) {
    constexpr std::size_t kHead = 8, kAround = 12;
    const auto begin = out.begin() + static_cast<std::ptrdiff_t>(globalPaletteAt);
    const std::size_t length = read_be32(&*begin);
    const auto end = begin + static_cast<std::ptrdiff_t>(kAround + length);
    Payload colors(begin + kHead, begin + static_cast<std::ptrdiff_t>(kHead + length));
    colors.resize(std::size_t{3} * entries);
    const Payload behind(end, out.end());
    out.resize(globalPaletteAt);
    append_chunk(out, tag::PLTE, colors);
    out.insert(out.end(), behind.begin(), behind.end());
    globalPalette = entries;
  }

  /// From an IHDR to its IEND, or to where the next image begins. Where the next chunk is.
  std::size_t take_image(std::span<const FoundChunk> chunks, std::size_t at) {
    std::size_t end = at + 1;
    while (end < chunks.size() && chunks[end].tag != tag::IEND && chunks[end].tag != tag::IHDR &&
           chunks[end].tag != tag::MEND)
      ++end;
    std::uint32_t needed = globalPalette;
    if (repair_png_stream(chunks.subspan(at, end - at), DocumentKind::MING, needed, out, result.given_up))
      ++images;
    if (needed > globalPalette) lengthen_global_palette(needed);
    return end < chunks.size() && chunks[end].tag == tag::IEND ? end + 1 : end;
  }

  /// JNG and delta images stay as they are.
  std::size_t take_opaque(std::span<const FoundChunk> chunks, std::size_t at) {
    for (; at < chunks.size() && chunks[at].tag != tag::MEND; ++at) {
      append_chunk(out, chunks[at].tag, chunks[at].data);
      if (chunks[at].tag == tag::IEND) return at + 1;
    }
    append_chunk(out, tag::IEND, {});
    return at;
  }

  void walk(std::span<const FoundChunk> chunks) {
    bool terminationSeen = false;
    for (std::size_t at = 1; at < chunks.size() && chunks[at].tag != tag::MEND;) {
      if (chunks[at].tag == tag::IHDR) {
        at = take_image(chunks, at);
      } else if (begins_opaque_image(chunks[at].tag)) {
        at = take_opaque(chunks, at);
      } else {
        // The first one stands in front already.
        const bool first = chunks[at].tag == tag::TERM && !std::exchange(terminationSeen, true);
        if (chunks[at].tag == tag::MHDR)
          lose(chunks[at], translated("there is one already."));
        else if (!first)
          take(chunks[at]);
        ++at;
      }
    }
  }

  /// Counts that are told become what is there.
  void count() {
    DocumentWindow window;
    Host nobody;
    if (!read_mng(window, out, nobody, nullptr)) return;
    const MngCounts counts = count_mng(window);
    const std::pair<std::size_t, std::uint32_t> fields[] = {
        {12, counts.layers}, {16, counts.frames}, {20, counts.playTime}};
    Payload header(out.begin() + kHeaderAt, out.begin() + kHeaderAt + kHeaderBytes);
    for (const auto& [at, counted] : fields)
      if (read_be32(&header[at]) != 0 && read_be32(&header[at]) < kMngForEver)
        write_be32(&header[at], counted);
    Payload head(kMngSignature.begin(), kMngSignature.end());
    append_chunk(head, tag::MHDR, header);
    std::ranges::copy(head, out.begin());
  }
};

}  // namespace

void repair_mng(std::span<const FoundChunk> chunks, RepairedFile& result) {
  result.kind = DocumentKind::MING;
  MngRepair repair{result};
  if (chunks.front().tag != tag::MHDR || chunks.front().data.size() < kHeaderBytes) {
    result.given_up.emplace_back(translated("The header of the file can't be."));
    return;
  }
  append_chunk(repair.out, tag::MHDR, chunks.front().data.first(kHeaderBytes));
  if (const auto term = std::ranges::find(chunks, tag::TERM, &FoundChunk::tag); term != chunks.end())
    repair.take(*term);
  repair.walk(chunks);
  while (!repair.loops.empty()) repair.end_loop();
  append_chunk(repair.out, tag::MEND, {});
  if (repair.images == 0) return;
  repair.count();
  result.bytes = std::move(repair.out);
}

}  // namespace vellum
