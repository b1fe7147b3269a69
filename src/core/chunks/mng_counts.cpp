#include "core/chunks/mng_counts.h"

#include <algorithm>

#include "core/model/playing_rules.h"

namespace vellum {
namespace {

std::uint64_t capped(std::uint64_t ticks) { return std::min<std::uint64_t>(ticks, kMngForEver); }

/// A loop that is open while the list is walked.
struct OpenLoop {
  std::uint64_t count;
  std::uint64_t ticks = 0;  ///< of one turn
};

std::uint32_t count_play_time(const ChunkList& list) {
  std::vector<OpenLoop> loops = {{1}};
  const auto close = [&loops] {
    const OpenLoop inner = loops.back();
    loops.pop_back();
    const bool endless = inner.count >= kMngForEver && inner.ticks > 0;
    loops.back().ticks = capped(loops.back().ticks + (endless ? kMngForEver : inner.ticks * inner.count));
  };
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (record.tag == tag::LOOP) loops.push_back({payload_be32(record, 1)});
    if (record.tag == tag::ENDL && loops.size() > 1) close();
    if (record.tag == tag::PNGI) loops.back().ticks = capped(loops.back().ticks + delay_ticks(record));
  }
  while (loops.size() > 1) close();
  return static_cast<std::uint32_t>(loops.back().ticks);
}

std::uint32_t profile_of_image(const ChunkRecord& record) {
  std::uint32_t profile = 0;
  if (record.flags & (CRF_FRAM | CRF_DEFI)) profile |= kSimpleFeatures;
  if (record.colorType == 4 || record.colorType == 6) profile |= kInternalTransparency | kSemiTransparency;
  if (record.flags & CRF_TRNS) profile |= kInternalTransparency;
  if (record.flags & CRF_TRNS && record.colorType == 3) profile |= kSemiTransparency;
  if (record.flags & CRF_DEFI && record.image->defiBlock.objectId != 0) profile |= kStoredObjects;
  return profile;
}

struct FeatureRow {
  ChunkTag tag;
  std::uint32_t bits;
};

/// Chunks that a decoder of the very low complexity need not know.
constexpr FeatureRow kFeatures[] = {
    {tag::BACK, kSimpleFeatures},
    {tag::FRAM, kSimpleFeatures},
    {tag::DEFI, kSimpleFeatures},
    {tag::TERM, kSimpleFeatures},
    {tag::LOOP, kSimpleFeatures | kComplexFeatures},
    {tag::MOVE, kSimpleFeatures | kComplexFeatures | kStoredObjects},
    {tag::SHOW, kSimpleFeatures | kComplexFeatures | kStoredObjects},
    {make_tag("CLON"), kSimpleFeatures | kComplexFeatures | kStoredObjects},
    {make_tag("PAST"), kSimpleFeatures | kComplexFeatures | kStoredObjects},
    {make_tag("BASI"), kSimpleFeatures | kComplexFeatures | kStoredObjects},
    {make_tag("SAVE"), kSimpleFeatures | kComplexFeatures},
    {make_tag("SEEK"), kSimpleFeatures | kComplexFeatures},
    {make_tag("MAGN"), kSimpleFeatures | kComplexFeatures},
    {make_tag("JHDR"), kJng | kInternalTransparency | kSemiTransparency},
    {make_tag("DHDR"), kSimpleFeatures | kComplexFeatures | kDeltaPng | kStoredObjects},
};

}  // namespace

MngCounts count_mng(const DocumentWindow& window) {
  MngCounts counts;
  // Images need not cover the canvas, so the background may be seen through.
  counts.profile = kProfileValid | kTransparencyValid | kBackgroundTransparency;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (record.tag == tag::PNGI) {
      ++counts.frames;
      counts.profile |= profile_of_image(record);
    }
    for (const FeatureRow& row : kFeatures)
      if (row.tag == record.tag) counts.profile |= row.bits;
  }
  counts.layers = counts.frames + 1;
  counts.playTime = count_play_time(window.list);
  return counts;
}

bool has_unplayed_chunks(const ChunkList& list) {
  for (std::size_t i = 0; i < list.size(); ++i)
    for (const FeatureRow& row : kFeatures)
      if (row.tag == list.record(i).tag && row.bits & (kStoredObjects | kJng)) return true;
  return chunk_find_first(list, tag::MAGN) != kNoEntry;
}

std::uint32_t profile_with_images(std::uint32_t profile, const ChunkList& list) {
  if (!(profile & kProfileValid)) return profile;
  const std::uint32_t told = profile & kTransparencyValid ? ~0u : kTransparencyValid - 1u;
  for (std::size_t i = 0; i < list.size(); ++i)
    if (list.record(i).tag == tag::PNGI) profile |= profile_of_image(list.record(i)) & told;
  return profile;
}

std::size_t loop_partner(const ChunkList& list, std::size_t index) {
  const bool forward = list.record(index).tag == tag::LOOP;
  const ChunkTag own = forward ? tag::LOOP : tag::ENDL;
  const ChunkTag other = forward ? tag::ENDL : tag::LOOP;
  const std::uint8_t level = payload_byte(list.record(index), 0);
  std::size_t inner = 0;
  for (std::size_t i = forward ? index + 1 : index - 1; i < list.size(); i += forward ? 1 : std::size_t(-1)) {
    const ChunkRecord& record = list.record(i);
    if (payload_byte(record, 0) != level) continue;
    if (record.tag == own) ++inner;
    if (record.tag == other && inner-- == 0) return i;
  }
  return kNoEntry;
}

}  // namespace vellum
