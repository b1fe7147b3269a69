#include "core/model/chunk_list.h"

#include <algorithm>

#include "base/limits.h"
#include "core/model/chunk_description.h"
#include "core/model/document.h"
#include "core/model/kind_table.h"

namespace vellum {

ChunkList& ChunkList::operator=(const ChunkList& other) {
  entries_ = other.entries_;
  selected_ = other.selected_;
  topIndex = other.topIndex;
  tell(ListChange::What::Reset, 0, entries_.size());
  return *this;
}

void ChunkList::tell(ListChange::What what, std::size_t first, std::size_t count) {
  if (quiet_ == 0 && changed) changed({what, first, count});
}

void ChunkList::end_quiet() {
  --quiet_;
  tell(ListChange::What::Reset, 0, entries_.size());
}

void ChunkList::insert(std::size_t index, std::shared_ptr<const ChunkRecord> record) {
  entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index), Entry{std::move(record)});
  tell(ListChange::What::Inserted, index, 1);
}

void ChunkList::insert(std::size_t index, std::span<const std::shared_ptr<const ChunkRecord>> records) {
  std::vector<Entry> entries;
  entries.reserve(records.size());
  for (const auto& record : records) entries.push_back(Entry{record});
  entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(index), entries.begin(), entries.end());
  tell(ListChange::What::Inserted, index, records.size());
}

void ChunkList::replace(std::size_t index, std::shared_ptr<const ChunkRecord> record) {
  entries_[index].record = std::move(record);
  tell(ListChange::What::Content, index, 1);
}

void ChunkList::remove(std::size_t first, std::size_t count) {
  const auto begin = entries_.begin() + static_cast<std::ptrdiff_t>(first);
  const auto end = begin + static_cast<std::ptrdiff_t>(count);
  selected_ -= static_cast<std::size_t>(std::count_if(begin, end, std::mem_fn(&Entry::selected)));
  entries_.erase(begin, end);
  tell(ListChange::What::Removed, first, count);
}

void ChunkList::remove_marked(const std::vector<bool>& marks) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (marks[i])
      selected_ -= entries_[i].selected;
    else if (kept++ != i)
      entries_[kept - 1] = std::move(entries_[i]);
  }
  entries_.resize(kept);
  tell(ListChange::What::Reset, 0, kept);
}

void ChunkList::reorder(const std::vector<std::size_t>& order) {
  std::vector<Entry> entries;
  entries.reserve(order.size());
  for (const std::size_t i : order) entries.push_back(std::move(entries_[i]));
  entries_ = std::move(entries);
  tell(ListChange::What::Reset, 0, entries_.size());
}

void ChunkList::clear() {
  entries_.clear();
  selected_ = 0;
  topIndex = 0;
  tell(ListChange::What::Reset, 0, 0);
}

void ChunkList::select(std::size_t index, bool selected) {
  if (entries_[index].selected == selected) return;
  entries_[index].selected = selected;
  selected ? ++selected_ : --selected_;
  tell(ListChange::What::Selection, index, 1);
}

void ChunkList::select_all(bool selected) {
  for (Entry& entry : entries_) entry.selected = selected;
  selected_ = selected ? entries_.size() : 0;
  tell(ListChange::What::Selection, 0, entries_.size());
}

void ChunkList::set_heights(const std::vector<int>& heights) {
  for (std::size_t i = 0; i < entries_.size() && i < heights.size(); ++i) entries_[i].height = heights[i];
  tell(ListChange::What::Layout, 0, entries_.size());
}

void ChunkList::renumber() {
  for (std::size_t i = 0; i < entries_.size(); ++i) entries_[i].listIndex = static_cast<std::uint32_t>(i);
}

std::shared_ptr<const ChunkRecord> make_entry(const Document& document, const ChunkRecord& record) {
  auto copy = std::make_shared<ChunkRecord>(record);
  if (!copy->owner) copy->owner = &document;
  copy->description = chunk_description(*copy);
  return copy;
}

std::size_t chunk_list_insert(ChunkList& list, const Document& document, std::size_t index,
                              const ChunkRecord& record) {
  if (list.size() >= kMaximumEntries || index > list.size()) return 0;
  list.insert(index, make_entry(document, record));
  return list.size();
}

std::size_t chunk_list_append(ChunkList& list, const Document& document, const ChunkRecord& record) {
  return chunk_list_insert(list, document, list.size(), record);
}

bool chunk_list_get(const ChunkList& list, std::size_t index, ChunkRecord& out) {
  if (index >= list.size()) return false;
  out = list.record(index);
  out.listIndex = list.entry(index).listIndex;
  return true;
}

bool chunk_list_put(ChunkList& list, std::size_t index, const ChunkRecord& record) {
  if (index >= list.size()) return false;
  list.replace(index, std::make_shared<ChunkRecord>(record));
  return true;
}

bool chunk_list_renumber(ChunkList& list, const Document&) {
  list.renumber();
  return true;
}

void chunk_list_redescribe(ChunkList& list) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    std::string text = chunk_description(list.record(i));
    if (text == list.record(i).description) continue;
    auto copy = std::make_shared<ChunkRecord>(list.record(i));
    copy->description = std::move(text);
    list.replace(i, std::move(copy));
  }
}

std::size_t chunk_count_tag(const ChunkList& list, ChunkTag tag) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < list.size(); ++i) count += list.record(i).tag == tag;
  return count;
}

std::size_t chunk_count_images(const ChunkList& list, DocumentKind kind) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < list.size(); ++i) count += is_image_entry(kind, list.record(i).tag);
  return count;
}

std::size_t chunk_find_first(const ChunkList& list, ChunkTag tag, ChunkRecord* out, std::size_t from) {
  for (std::size_t i = from; i < list.size(); ++i) {
    if (list.record(i).tag != tag) continue;
    if (out) chunk_list_get(list, i, *out);
    return i;
  }
  return kNoEntry;
}

std::uint32_t chunk_find_palette(const ChunkList& list, Palette& palette) {
  const std::size_t at = chunk_find_first(list, tag::PLTE);
  if (at == kNoEntry) return 0;
  const auto bytes = raw_payload(list.record(at));
  const std::size_t used = std::min<std::size_t>(bytes.size() / 3 * 3, palette.size());
  std::copy_n(bytes.begin(), used, palette.begin());
  return static_cast<std::uint32_t>(used / 3);
}

std::size_t chunk_find_header(const ChunkList& list, const Document& document, std::size_t from,
                              ChunkRecord& out) {
  if (document.kind != DocumentKind::MING)
    return chunk_find_first(list, kind_row(document.kind).header, &out);
  for (std::size_t i = std::min(from + 1, list.size()); i-- > 1;) {
    if (list.record(i).tag != tag::IHDR) continue;
    chunk_list_get(list, i, out);
    return i;
  }
  return kNoEntry;
}

std::size_t chunk_find_image(const ChunkList& list, const Document& document, ChunkRecord& out,
                             std::size_t from) {
  const bool still = document.kind == DocumentKind::PING || document.kind == DocumentKind::APNG;
  return chunk_find_first(list, tag::IDAT, &out, still ? 0 : from);
}

bool chunk_replace_first(ChunkList& list, const Document&, const ChunkRecord& record) {
  const std::size_t at = chunk_find_first(list, record.tag);
  return at != kNoEntry && chunk_list_put(list, at, record);
}

void chunk_free(ChunkRecord& record) { record = {}; }

bool chunk_duplicate(ChunkRecord& out, const ChunkRecord& record) {
  out = record;
  out.reserved = 0;
  return true;
}

}  // namespace vellum
