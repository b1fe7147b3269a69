#include "core/files/recovery_copy.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <unordered_map>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/limits.h"
#include "core/chunks/chunk_table.h"
#include "core/edit/clipboard_block.h"
#include "core/edit/undo_restore.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kMagic = 0x56435256;  // "VRCV"
constexpr std::uint32_t kVersion = 2;
constexpr std::uint64_t kSameImage = ~std::uint64_t{0};  ///< as the length of a level's default image
constexpr std::uint32_t kSelected = 0x80000000;
constexpr std::uint32_t kMostStates = 64;
constexpr std::size_t kFixedHead = 4 * 4 + 3 * 8;  // all in front of the file name
constexpr std::size_t kLongestName = 4096;         // PATH_MAX

// ------------------------------------------------------------------------------------------------------
// writing

void put(std::vector<std::uint8_t>& out, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

std::vector<std::uint8_t> head_of(const Document& document, std::int64_t made) {
  std::vector<std::uint8_t> head;
  for (const std::uint32_t number : {kMagic, kVersion, static_cast<std::uint32_t>(document.kind),
                                     static_cast<std::uint32_t>(document.HasFileName)})
    put(head, number, 4);
  put(head, static_cast<std::uint64_t>(made), 8);
  put(head, static_cast<std::uint64_t>(document.fileTime.time_since_epoch().count()), 8);
  const std::string name = document.fileName.string();
  put(head, name.size(), 8);
  head.insert(head.end(), name.begin(), name.end());
  put(head, document.defaultImage.size(), 8);
  return head;
}

/// All records of a document and its undo levels, each once, and which of them each state has.
struct Records {
  ChunkList all;
  std::unordered_map<const ChunkRecord*, std::uint32_t> places;
  std::uint64_t bytes = 0;

  void add(const ChunkList& list) {
    std::vector<std::shared_ptr<const ChunkRecord>> more;
    for (std::size_t i = 0; i < list.size(); ++i) {
      const auto& record = list.entry(i).record;
      if (!places.try_emplace(record.get(), static_cast<std::uint32_t>(places.size())).second) continue;
      bytes += record->data.size() + 512;
      more.push_back(record);
    }
    all.insert(all.size(), more);
  }
};

void put_text(std::vector<std::uint8_t>& out, std::string_view text) {
  put(out, text.size(), 8);
  out.insert(out.end(), text.begin(), text.end());
}

void put_state(std::vector<std::uint8_t>& out, const UndoLevel& state, const ChunkHandle& present,
               const Records& records) {
  put(out, state.dirty, 4);
  put(out, static_cast<std::uint32_t>(state.caret), 4);
  put_text(out, state.name);
  const bool same = state.defaultImage.identity() == present.identity();
  put(out, same ? kSameImage : state.defaultImage.size(), 8);
  if (!same) {
    const auto image = state.defaultImage.bytes();
    out.insert(out.end(), image.begin(), image.end());
  }
  put(out, state.list.size(), 8);
  for (std::size_t i = 0; i < state.list.size(); ++i) {
    const ChunkList::Entry& entry = state.list.entry(i);
    put(out, records.places.at(entry.record.get()) | (entry.selected ? kSelected : 0), 4);
  }
}

std::vector<std::uint8_t> states_of(const DocumentWindow& window, bool levels, const Records& records) {
  const Document& document = window.document;
  std::vector<std::uint8_t> out;
  put(out, 1 + (levels ? window.undoLevels.size() : 0), 4);
  put_state(out, {window.list, document.dirty, document.caret, document.defaultImage, {}},
            document.defaultImage, records);
  for (std::size_t i = 0; levels && i < window.undoLevels.size(); ++i)
    put_state(out, window.undoLevels[i], document.defaultImage, records);
  return out;
}

/// A copy must not take the room that the user's own saving needs.
bool has_room(const fs::path& path, std::uint64_t bytes) {
  std::error_code error;
  const fs::space_info space = fs::space(path.parent_path(), error);
  return !error && bytes <= kMaximumRecoveryBytes && space.available >= bytes + kRecoveryLeavesFree;
}

// ------------------------------------------------------------------------------------------------------
// reading

std::uint64_t number_at(std::span<const std::uint8_t> bytes, std::size_t at) {
  return read_le32(bytes.data() + at) | std::uint64_t{read_le32(bytes.data() + at + 4)} << 32;
}

/// What stands in front of the default image's length. `behind` gets its own length.
std::optional<RecoveryNote> parse_note(std::span<const std::uint8_t> bytes, std::size_t& behind) {
  if (bytes.size() < kFixedHead || read_le32(bytes.data()) != kMagic ||
      read_le32(bytes.data() + 4) != kVersion)
    return std::nullopt;
  RecoveryNote note;
  note.kind = static_cast<DocumentKind>(read_le32(bytes.data() + 8));
  note.hasFileName = read_le32(bytes.data() + 12) != 0;
  note.made = static_cast<std::int64_t>(number_at(bytes, 16));
  note.fileTime =
      fs::file_time_type(fs::file_time_type::duration(static_cast<std::int64_t>(number_at(bytes, 24))));
  const std::uint64_t length = number_at(bytes, 32);
  if (kind_bit(note.kind) == 0 || length > kLongestName || length > bytes.size() - kFixedHead)
    return std::nullopt;
  const std::string name(reinterpret_cast<const char*>(bytes.data()) + kFixedHead,
                         static_cast<std::size_t>(length));
  if (name.find('\0') != std::string::npos) return std::nullopt;
  note.fileName = name;
  behind = kFixedHead + name.size();
  return note;
}

/// The default image behind its length; false where it is none.
bool take_default_image(std::span<const std::uint8_t>& rest, ChunkHandle& image) {
  if (rest.size() < 8) return false;
  const std::uint64_t length = number_at(rest, 0);
  rest = rest.subspan(8);
  if (length > rest.size()) return false;
  if (length == 0) return true;
  image = ChunkHandle::copy_of(rest.first(static_cast<std::size_t>(length)), 0);
  rest = rest.subspan(static_cast<std::size_t>(length));
  return image && has_rows(Picture(image));
}

/// Takes what stands in front, as long as it is there.
class StateReader {
 public:
  explicit StateReader(std::span<const std::uint8_t> rest) : rest_(rest) {}
  bool good() const { return good_; }
  std::span<const std::uint8_t> rest() const { return rest_; }

  std::uint64_t number(std::size_t bytes) {
    std::uint64_t value = 0;
    const auto taken = take(bytes);
    for (std::size_t i = 0; i < taken.size(); ++i) value |= std::uint64_t{taken[i]} << 8 * i;
    return value;
  }
  std::span<const std::uint8_t> take(std::uint64_t bytes) {
    good_ = good_ && bytes <= rest_.size();
    if (!good_) return {};
    const auto taken = rest_.first(static_cast<std::size_t>(bytes));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

 private:
  std::span<const std::uint8_t> rest_;
  bool good_ = true;
};

/// A state whose list is numbers until the records behind it are known.
struct ReadState {
  UndoLevel level;
  std::vector<std::uint32_t> entries;
};

bool take_state(StateReader& reader, const ChunkHandle& present, ReadState& state) {
  state.level.dirty = reader.number(4) != 0;
  state.level.caret = static_cast<std::int32_t>(reader.number(4));
  const auto name = reader.take(reader.number(8));
  state.level.name.assign(name.begin(), name.end());
  const std::uint64_t image = reader.number(8);
  if (image == kSameImage) {
    state.level.defaultImage = present;
  } else if (const auto bytes = reader.take(image); !bytes.empty()) {
    state.level.defaultImage = ChunkHandle::copy_of(bytes, 0);
    if (!state.level.defaultImage || !has_rows(Picture(state.level.defaultImage))) return false;
  }
  const std::uint64_t count = reader.number(8);
  if (!reader.good() || count > reader.rest().size() / 4) return false;
  for (std::uint64_t i = 0; i < count; ++i)
    state.entries.push_back(static_cast<std::uint32_t>(reader.number(4)));
  return true;
}

using SharedRecords = std::vector<std::shared_ptr<const ChunkRecord>>;

bool make_list(ReadState& state, const SharedRecords& records) {
  SharedRecords own;
  for (const std::uint32_t entry : state.entries) {
    if ((entry & ~kSelected) >= records.size()) return false;
    own.push_back(records[entry & ~kSelected]);
  }
  state.level.list.insert(0, own);
  for (std::size_t i = 0; i < own.size(); ++i)
    if (state.entries[i] & kSelected) state.level.list.select(i, true);
  const auto last = static_cast<std::int32_t>(own.size()) - 1;
  state.level.caret = std::clamp(state.level.caret, 0, std::max(last, 0));
  return true;
}

/// The present state, and the levels behind it; empty where one of them can't be.
std::vector<ReadState> take_states(StateReader& reader, const ChunkHandle& present) {
  const std::uint64_t count = reader.number(4);
  if (count == 0 || count > kMostStates) return {};
  std::vector<ReadState> states(static_cast<std::size_t>(count));
  for (ReadState& state : states)
    if (!take_state(reader, present, state)) return {};
  return states;
}

bool read_content(std::span<const std::uint8_t> bytes, DocumentWindow& window) {
  std::size_t behind = 0;
  const auto note = parse_note(bytes, behind);
  if (!note) return false;
  Document& document = window.document;
  std::span<const std::uint8_t> rest = bytes.subspan(behind);
  if (!take_default_image(rest, document.defaultImage)) return false;
  StateReader reader(rest);
  auto states = take_states(reader, document.defaultImage);
  if (states.empty()) return false;
  const auto block = read_chunk_block(reader.rest(), true);
  if (!block || block->source.kind != note->kind) return false;
  document.kind = note->kind;
  document.fileName = note->fileName;
  document.HasFileName = note->hasFileName && !note->fileName.empty();
  document.fileTime = note->fileTime;
  document.thumbScale = std::clamp(settings::DefaultViewMode, 0, 7);
  document.dirty = true;
  SharedRecords records;
  for (const ChunkRecord& record : block->records) records.push_back(make_entry(document, record));
  for (ReadState& state : states)
    if (!make_list(state, records)) return false;
  window.list = states.front().level.list;
  document.caret = states.front().level.caret;
  chunk_list_close_change(window.list, document);
  std::deque<UndoLevel> levels;
  for (std::size_t i = 1; i < states.size(); ++i) levels.push_back(std::move(states[i].level));
  undo_restore(window, std::move(levels));
  return true;
}

}  // namespace

bool write_recovery_copy(const DocumentWindow& window, const fs::path& path, std::int64_t made,
                         const std::function<bool()>& stop) try {
  Records records;
  records.add(window.list);
  const std::uint64_t own = records.bytes + window.document.defaultImage.size();
  Records with_levels = records;
  for (const UndoLevel& level : window.undoLevels) with_levels.add(level.list);
  const bool levels = with_levels.all.size() < kMaximumEntries && window.undoLevels.size() < kMostStates &&
                      has_room(path, with_levels.bytes + window.document.defaultImage.size());
  if (!levels && !has_room(path, own)) return false;
  const Records& kept = levels ? with_levels : records;
  SafeFile file(path);
  const auto sink = [&](std::span<const std::uint8_t> bytes) {
    return !(stop && stop()) && file.write(bytes);
  };
  return sink(head_of(window.document, made)) && sink(window.document.defaultImage.bytes()) &&
         sink(states_of(window, levels, kept)) && write_chunk_block(window.document.kind, kept.all, sink) &&
         file.commit();
} catch (const std::bad_alloc&) {
  return false;
}

std::optional<RecoveryNote> read_recovery_note(const fs::path& path) {
  std::vector<std::uint8_t> head(kFixedHead + kLongestName);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(head.data()), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  std::size_t behind = 0;
  auto note = parse_note(head, behind);
  if (note) note->path = path;
  return note;
}

bool read_recovery_copy(const fs::path& path, DocumentWindow& window) try {
  std::string reason;
  const auto content = read_file(path, reason, kMaximumRecoveryBytes + kRecoveryLeavesFree);
  return content && read_content(*content, window);
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace vellum
