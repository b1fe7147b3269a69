#include "core/model/loops.h"

#include <algorithm>

namespace vellum {

void follow_loops(std::vector<std::uint8_t>& open, const ChunkRecord& record) {
  // A look at the payload of another entry may unpack a picture.
  if (record.tag != tag::LOOP && record.tag != tag::ENDL) return;
  const std::uint8_t level = payload_byte(record, 0);
  if (record.tag == tag::LOOP) return open.push_back(level);
  const auto at = std::find(open.rbegin(), open.rend(), level);
  if (at != open.rend()) open.erase(at.base() - 1, open.end());
}

std::vector<std::uint8_t> open_loops(const ChunkList& list, std::size_t index) {
  std::vector<std::uint8_t> open;
  for (std::size_t i = 0; i < std::min(index, list.size()); ++i) follow_loops(open, list.record(i));
  return open;
}

void put_loop_level(ChunkRecord& record, const std::vector<std::uint8_t>& open) {
  std::uint8_t* level = record.data.size() > 0 ? record.data.edit() : nullptr;
  if (!level) return;
  if (record.tag == tag::LOOP) *level = static_cast<std::uint8_t>(std::min<std::size_t>(open.size(), 255));
  if (record.tag == tag::ENDL && !open.empty()) *level = open.back();
}

bool loops_match(const ChunkList& list) {
  std::vector<std::uint8_t> open;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (record.tag == tag::ENDL && (open.empty() || open.back() != payload_byte(record, 0))) return false;
    follow_loops(open, record);
  }
  return open.empty();
}

}  // namespace vellum
