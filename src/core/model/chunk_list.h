// ChunkList: the entries of a document in file order, with what a list on the screen needs to know of them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "core/model/chunk_record.h"

namespace vellum {

struct Document;

/// What changed in a list, so that a view of 100,000 entries redraws three.
struct ListChange {
  enum class What {
    Inserted,   ///< entries first .. first + count - 1 are new
    Removed,    ///< they are gone
    Content,    ///< their records changed
    Selection,  ///< selected or not
    Layout,     ///< heights changed (all entries)
    Reset,      ///< anything may have changed
  };
  What what = What::Reset;
  std::size_t first = 0;
  std::size_t count = 0;
};

/// A value: copying a list copies the entries, which share their records, and so costs no pixels. A copy
/// starts with nobody listening.
class ChunkList {
 public:
  struct Entry {
    std::shared_ptr<const ChunkRecord> record;
    std::uint32_t listIndex = 0;
    bool selected = false;
    int height = 0;  ///< of the row, in pixels; set by chunk_list_layout
  };

  ChunkList() = default;
  ChunkList(const ChunkList& other)
      : topIndex(other.topIndex), entries_(other.entries_), selected_(other.selected_) {}
  ChunkList& operator=(const ChunkList& other);

  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  const Entry& entry(std::size_t index) const { return entries_[index]; }
  /// The record for reading. `listIndex` and `owner` are filled in by chunk_list_get alone.
  const ChunkRecord& record(std::size_t index) const { return *entries_[index].record; }

  void insert(std::size_t index, std::shared_ptr<const ChunkRecord> record);
  /// Several at once, in one step whatever their number.
  void insert(std::size_t index, std::span<const std::shared_ptr<const ChunkRecord>> records);
  void replace(std::size_t index, std::shared_ptr<const ChunkRecord> record);
  void remove(std::size_t first, std::size_t count = 1);
  /// Removes the entries that are marked (one mark an entry), in one step whatever their number.
  void remove_marked(const std::vector<bool>& marks);
  /// Puts the entries into another order: entry i of the result is entry order[i], each of them once. They
  /// take their selection along.
  void reorder(const std::vector<std::size_t>& order);
  void clear();

  void select(std::size_t index, bool selected);
  void select_all(bool selected);
  std::size_t selected_count() const { return selected_; }

  void set_heights(const std::vector<int>& heights);
  void renumber();

  /// Index of the first row that is shown.
  std::size_t topIndex = 0;
  /// Who shows the list listens here. While `quiet` is above 0 nothing is told; the last one tells Reset.
  std::function<void(const ListChange&)> changed;
  void begin_quiet() { ++quiet_; }
  void end_quiet();

 private:
  void tell(ListChange::What what, std::size_t first, std::size_t count);
  std::vector<Entry> entries_;
  std::size_t selected_ = 0;  ///< how many entries are selected
  int quiet_ = 0;
};

/// Switches the list's drawing off for as long as it lives.
class QuietList {
 public:
  explicit QuietList(ChunkList& list) : list_(list) { list_.begin_quiet(); }
  ~QuietList() { list_.end_quiet(); }
  QuietList(const QuietList&) = delete;
  QuietList& operator=(const QuietList&) = delete;

 private:
  ChunkList& list_;
};

// The operations on the core. All report 0 or false for failure, without a message: the caller reports.

/// A copy of the record as a list holds it: described, owned by this document where it had no owner.
std::shared_ptr<const ChunkRecord> make_entry(const Document& document, const ChunkRecord& record);
/// Adds a copy of the record at the end, with its description built. Returns the new count; 0 when the list
/// is full.
std::size_t chunk_list_append(ChunkList& list, const Document& document, const ChunkRecord& record);
/// The same at `index` (at most the count).
std::size_t chunk_list_insert(ChunkList& list, const Document& document, std::size_t index,
                              const ChunkRecord& record);
/// Copies the record out, with `listIndex`. The copy shares the entry's blocks.
bool chunk_list_get(const ChunkList& list, std::size_t index, ChunkRecord& out);
/// Replaces the entry's record. The description goes in as it stands.
bool chunk_list_put(ChunkList& list, std::size_t index, const ChunkRecord& record);
/// `listIndex` = position for each entry.
bool chunk_list_renumber(ChunkList& list, const Document& document);
/// Rebuilds the description of every entry.
void chunk_list_redescribe(ChunkList& list);

std::size_t chunk_count_tag(const ChunkList& list, ChunkTag tag);
/// How many entries are images of this kind of document.
std::size_t chunk_count_images(const ChunkList& list, DocumentKind kind);

inline constexpr std::size_t kNoEntry = static_cast<std::size_t>(-1);
/// Index of the first entry with the tag at or behind `from`, kNoEntry when there is none; `out`, where it is
/// given, gets a copy.
std::size_t chunk_find_first(const ChunkList& list, ChunkTag tag, ChunkRecord* out = nullptr,
                             std::size_t from = 0);
/// The colors of the first PLTE: entries (at most 256, and as many as its bytes hold), copied to `palette`. 0
/// without one.
std::uint32_t chunk_find_palette(const ChunkList& list, Palette& palette);
/// The header that rules entry `from`: the first IHDR in PING and APNG, the first WEBH in WEBP, and in MING
/// the nearest IHDR at or before `from`, entry 0 left out. kNoEntry when there is none.
std::size_t chunk_find_header(const ChunkList& list, const Document& document, std::size_t from,
                              ChunkRecord& out);
/// The first IDAT at or behind `from` (from 0 in PING and APNG).
std::size_t chunk_find_image(const ChunkList& list, const Document& document, ChunkRecord& out,
                             std::size_t from);
/// Overwrites the first entry with the record's tag by a copy of it.
bool chunk_replace_first(ChunkList& list, const Document& document, const ChunkRecord& record);

/// Releases what the record holds and zeroes it.
void chunk_free(ChunkRecord& record);
/// A lasting copy: all fields, `data` and `auxData` (shared until one of the two is written), `reserved`
/// zero.
bool chunk_duplicate(ChunkRecord& out, const ChunkRecord& record);

}  // namespace vellum
