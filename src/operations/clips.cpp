#include "operations/clips.h"

#include <algorithm>

#include "core/model/framing.h"

namespace vellum {
namespace {

template <class Value>
std::int64_t edge_of(Value value) {
  return static_cast<std::int32_t>(from_file_order(value));
}

template <class Value>
void put_edge(Value& value, std::int64_t edge) {
  value = from_file_order(
      static_cast<Value>(static_cast<std::int32_t>(std::clamp<std::int64_t>(edge, INT32_MIN, INT32_MAX))));
}

template <class Block>
void change_block(Block& block, const std::function<ClipBox(ClipBox)>& change) {
  const ClipBox box = change(
      {edge_of(block.clipLeft), edge_of(block.clipRight), edge_of(block.clipTop), edge_of(block.clipBottom)});
  put_edge(block.clipLeft, box.left);
  put_edge(block.clipRight, box.right);
  put_edge(block.clipTop, box.top);
  put_edge(block.clipBottom, box.bottom);
}

}  // namespace

void change_clips(ChunkRecord& record, const std::function<ClipBox(ClipBox)>& change) {
  constexpr std::uint32_t kDefiWithClip = 28;
  if (record.flags & CRF_DEFI && record.image->defiBytes >= kDefiWithClip)
    change_block(record.image.edit().defiBlock, change);
  if (record.flags & CRF_FRAM && record.image->framBlock.changeClipping != 0)
    change_block(record.image.edit().framBlock, change);
}

}  // namespace vellum
