// Recompression: every image is packed by the best of many ways, and its record keeps that.
#include <algorithm>

#include "base/file.h"
#include "base/parallel.h"
#include "core/files/png_writing.h"
#include "core/files/save_document.h"
#include "image/png_form.h"
#include "image/png_smallest.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

/// How often the slow packer goes over each piece: more for less, nothing where it would take minutes.
int slow_iterations(std::uint64_t bytes) {
  constexpr std::uint64_t kMega = std::uint64_t{1} << 20;
  return bytes <= kMega / 2 ? 15 : bytes <= 2 * kMega ? 5 : bytes <= 6 * kMega ? 1 : 0;
}

/// Lets the writer tell in which form each image goes out: its records then keep empty streams.
bool learn_forms(DocumentWindow& draft) {
  SaveOptions options = save_options();
  options.keepStreams = true;
  options.encode = [](const PngHeader&, const Picture&, auto) { return std::vector<std::uint8_t>(1); };
  std::uint64_t bytes = 0;
  Host silent;
  return write_document(draft, draft.document.kind, counting_sink(bytes), options, silent) ==
         WriteResult::Done;
}

void forget_streams(DocumentWindow& draft) {
  ChunkRecord record;
  for (const std::size_t entry : frame_entries(draft)) {
    if (!draft.list.record(entry).stored) continue;
    chunk_list_get(draft.list, entry, record);
    record.stored.reset();
    chunk_list_put(draft.list, entry, record);
  }
}

/// Indexes of two bits, and grey with alpha, where all images allow that: what the writers of animations take
/// from kept streams alone.
void narrow_forms(std::vector<KeptStream>& streams) {
  if (std::ranges::find(streams, nullptr) != streams.end()) return;
  const auto all = [&](const auto& holds) {
    return std::ranges::all_of(streams,
                               [&](const KeptStream& s) { return holds(Picture(s->picture), s->header); });
  };
  const auto put = [&](std::uint8_t type, std::uint8_t depth) {
    for (KeptStream& stream : streams) {
      StoredStream narrow{stream->picture, stream->header, {}};
      narrow.header.colorType = type;
      narrow.header.bitDepth = depth;
      stream = std::make_shared<const StoredStream>(std::move(narrow));
    }
  };
  if (all([](const Picture& picture, const PngHeader& header) {
        return header.colorType == 3 && header.bitDepth == 4 && largest_index(picture) < 4;
      }))
    put(3, 2);
  if (all([](const Picture& picture, const PngHeader& header) {
        return header.colorType == 6 && header.bitDepth == 8 && picture_content(picture).grey;
      }))
    put(4, 8);
}

}  // namespace

bool recompress_pass(Supercompression& work) {
  const auto entries = frame_entries(work.draft);
  if (work.draft.document.kind == DocumentKind::WEBP || !learn_forms(work.draft)) return true;
  const Progress progress(work.host, string_text(StringId::Recompressing));
  work.say(StringId::RecompressBegins);
  std::uint64_t bytes = 0;
  std::vector<KeptStream> streams;
  for (const std::size_t entry : entries) {
    streams.push_back(work.draft.list.record(entry).stored);
    if (streams.back()) bytes += png_filtered_bytes(streams.back()->header);
  }
  forget_streams(work.draft);
  if (work.passes & kDeepPass) narrow_forms(streams);
  const int iterations = work.passes & kDeepPass ? slow_iterations(bytes) : 0;
  std::size_t packed = 0;
  const std::size_t at_once = parallel_width();
  for (std::size_t first = 0; first < streams.size(); first += at_once) {
    if (work.host.stopped()) return false;
    const std::size_t count = std::min(at_once, streams.size() - first);
    parallel_for(count, [&](std::size_t k) {
      KeptStream& stream = streams[first + k];
      if (!stream) return;
      StoredStream made{stream->picture, stream->header, {}};
      made.bytes = png_encode_smallest(made.header, Picture(made.picture), std::nullopt, iterations);
      stream = made.bytes.empty() ? nullptr : std::make_shared<const StoredStream>(std::move(made));
    });
    for (std::size_t k = first; k < first + count; ++k) {
      if (!streams[k]) continue;
      keep_stream(work.draft.list, entries[k], streams[k]);
      ++packed;
    }
    progress.step(first + count, streams.size());
  }
  work.say(StringId::ImagesPacked, {std::to_string(packed)});
  return true;
}

}  // namespace vellum
