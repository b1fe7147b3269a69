#include "shell/widgets/hex_buffer.h"

#include <algorithm>
#include <functional>

namespace vellum {
namespace {

int digit_of(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

void HexBuffer::put(std::size_t at, std::size_t removed, std::span<const std::uint8_t> inserted) {
  const auto place = bytes_.begin() + static_cast<std::ptrdiff_t>(at);
  const std::size_t common = std::min(removed, inserted.size());
  std::copy_n(inserted.begin(), common, place);
  const auto behind = place + static_cast<std::ptrdiff_t>(common);
  if (removed > common)
    bytes_.erase(behind, behind + static_cast<std::ptrdiff_t>(removed - common));
  else
    bytes_.insert(behind, inserted.begin() + static_cast<std::ptrdiff_t>(common), inserted.end());
}

bool HexBuffer::replace(std::size_t at, std::size_t removed, std::span<const std::uint8_t> inserted,
                        bool joined) {
  at = std::min(at, size());
  removed = std::min(removed, size() - at);
  if (size() - removed + inserted.size() > most_) return false;
  const auto gone = bytes().subspan(at, removed);
  undo_.push_back(
      {at, {gone.begin(), gone.end()}, {inserted.begin(), inserted.end()}, joined && !undo_.empty()});
  redo_.clear();
  undoBytes_ += removed + inserted.size();
  put(at, removed, inserted);
  hold_undo();
  return true;
}

/// The oldest steps go when all of them hold too much; the newest stays.
void HexBuffer::hold_undo() {
  std::size_t oldest = 0;
  while (undoBytes_ > kMostUndoBytes && oldest + 1 < undo_.size()) {
    undoBytes_ -= undo_[oldest].removed.size() + undo_[oldest].inserted.size();
    ++oldest;
  }
  undo_.erase(undo_.begin(), undo_.begin() + static_cast<std::ptrdiff_t>(oldest));
}

std::optional<std::size_t> HexBuffer::undo() {
  std::optional<std::size_t> place;
  for (bool more = true; more && !undo_.empty();) {
    Step step = std::move(undo_.back());
    undo_.pop_back();
    put(step.at, step.inserted.size(), step.removed);
    undoBytes_ -= step.removed.size() + step.inserted.size();
    place = step.at;
    more = step.joined;
    redo_.push_back(std::move(step));
  }
  return place;
}

std::optional<std::size_t> HexBuffer::redo() {
  std::optional<std::size_t> place;
  for (bool more = true; more && !redo_.empty();) {
    Step step = std::move(redo_.back());
    redo_.pop_back();
    put(step.at, step.removed.size(), step.inserted);
    undoBytes_ += step.removed.size() + step.inserted.size();
    place = step.at;
    undo_.push_back(std::move(step));
    more = !redo_.empty() && redo_.back().joined;
  }
  return place;
}

std::optional<std::size_t> HexBuffer::find(std::span<const std::uint8_t> wanted, std::size_t from) const {
  if (wanted.empty()) return std::nullopt;
  const std::boyer_moore_horspool_searcher searcher(wanted.begin(), wanted.end());
  const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(std::min(from, size()));
  auto at = std::search(begin, bytes_.end(), searcher);
  if (at == bytes_.end()) at = std::search(bytes_.begin(), bytes_.end(), searcher);
  if (at == bytes_.end()) return std::nullopt;
  return static_cast<std::size_t>(at - bytes_.begin());
}

std::optional<std::vector<std::uint8_t>> parse_hex(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  int high = -1;
  for (const char c : text) {
    if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
      if (high >= 0) return std::nullopt;
      continue;
    }
    const int digit = digit_of(c);
    if (digit < 0) return std::nullopt;
    if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high << 4 | digit));
    high = high >= 0 ? -1 : digit;
  }
  if (high >= 0) return std::nullopt;
  return bytes;
}

std::string hex_text(std::span<const std::uint8_t> bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace vellum
