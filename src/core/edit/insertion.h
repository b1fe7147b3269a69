// Putting records into a list one behind the other, each at the place that its tag may stand at.
#pragma once

#include <unordered_set>
#include <vector>

#include "core/edit/placement.h"

namespace vellum {

enum class Placed { Done, Exists, NoPlace };

/// One insertion, paste or drop of any number of records. What comes to lie side by side goes into the list
/// in one step, so that thousands cost one walk. The destructor puts the rest in.
class Insertion {
 public:
  /// The first record goes to `wanted`, or to the nearest place where it may stand.
  Insertion(DocumentWindow& window, std::size_t wanted);
  ~Insertion() { flush(); }
  Insertion(const Insertion&) = delete;
  Insertion& operator=(const Insertion&) = delete;

  /// Adds a record behind the one before. Nothing is added where one stands already that stands once, or
  /// where there is no place.
  Placed add(ChunkRecord record);
  /// Whether the list, with all that was added, has an entry with this tag.
  bool has(ChunkTag tag) { return tags().contains(tag); }
  /// Puts what was added into the list.
  void flush();

  /// Selects what was added, and nothing else.
  void select_added();

  /// Begins anew behind the caret, after others changed the list.
  void restart();

  std::size_t wanted() const { return wanted_; }
  std::size_t count() const { return count_; }
  /// Whether an entry was added that the header counts.
  bool counted() const { return counted_; }

 private:
  const std::unordered_set<ChunkTag>& tags();

  DocumentWindow& window_;
  ListShape shape_;
  std::size_t wanted_;
  std::vector<std::shared_ptr<const ChunkRecord>> pending_;
  std::size_t pendingAt_ = 0;
  std::unordered_set<ChunkTag> tags_;  ///< filled when first asked for
  std::unordered_set<const ChunkRecord*> added_;
  std::size_t count_ = 0;
  bool counted_ = false;
};

}  // namespace vellum
