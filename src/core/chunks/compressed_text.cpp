#include "core/chunks/compressed_text.h"

#include <algorithm>

#include "base/limits.h"
#include "base/translation.h"
#include "image/deflate.h"
#include "image/inflate.h"

namespace vellum {
namespace {

constexpr std::size_t kKeywordLimit = 260;  // a keyword this long or longer is none

/// What a text was inflated from.
class StoredText : public BlockSource {
 public:
  explicit StoredText(std::span<const std::uint8_t> payload) : payload_(payload.begin(), payload.end()) {}
  ChunkHandle make() const override { return {}; }
  bool can_make() const override { return false; }
  std::size_t held_bytes() const override { return payload_.size(); }
  const std::vector<std::uint8_t>& payload() const { return payload_; }

 private:
  const std::vector<std::uint8_t> payload_;
};

}  // namespace

std::optional<std::size_t> inflatable_keyword(std::span<const std::uint8_t> payload) {
  const auto searched = payload.first(std::min(payload.size(), kKeywordLimit));
  const auto nul = std::ranges::find(searched, std::uint8_t{0});
  if (nul == searched.end() || nul == searched.begin()) return std::nullopt;
  return static_cast<std::size_t>(nul - searched.begin());
}

ChunkHandle inflate_text_chunk(std::span<const std::uint8_t> payload, std::size_t keyword,
                               std::size_t& budget, TextFault& fault) {
  // Keyword, NUL, method byte (which is not looked at), stream.
  const std::size_t head = keyword + 2;
  bool over_limit = false;
  const auto text = payload.size() < head ? std::nullopt
                                          : inflate_text(payload.subspan(head),
                                                         std::min(budget, kMaximumTextBytes), over_limit);
  if (!text) {
    fault = over_limit ? TextFault{FaultKind::Limit, translated("the compressed text is too long")}
                       : TextFault{FaultKind::Damaged, translated("the compressed text is damaged")};
    return {};
  }
  budget -= text->size();
  std::vector<std::uint8_t> inflated(payload.begin(),
                                     payload.begin() + static_cast<std::ptrdiff_t>(keyword + 1));
  const std::size_t length = std::min(text->find('\0'), text->size());
  inflated.insert(inflated.end(), text->begin(), text->begin() + static_cast<std::ptrdiff_t>(length));
  const ChunkHandle block = ChunkHandle::copy_of(inflated);
  if (!block) throw std::bad_alloc();
  const bool valid = payload[keyword + 1] == 0 && length == text->size();
  return valid ? ChunkHandle::kept(block, 0, std::make_shared<const StoredText>(payload)) : block;
}

std::vector<std::uint8_t> compressed_text_payload(const ChunkRecord& record, int level, bool as_stored) {
  if (const auto stored = std::dynamic_pointer_cast<const StoredText>(record.data.source());
      stored && as_stored)
    return stored->payload();
  // The zero byte behind a payload is none of its own, and ends no keyword.
  const auto raw = raw_payload(record);
  const auto keyword = inflatable_keyword(raw);
  if (!keyword) return {raw.begin(), raw.end()};
  const auto block = record.data.bytes();
  const auto text_begin = block.begin() + static_cast<std::ptrdiff_t>(*keyword + 1);
  const auto text_end = std::find(text_begin, block.end(), std::uint8_t{0});
  std::vector<std::uint8_t> payload(block.begin(), text_begin);
  payload.push_back(0);
  const auto packed = deflate_bytes({text_begin, text_end}, level);
  payload.insert(payload.end(), packed.begin(), packed.end());
  return payload;
}

}  // namespace vellum
