#include "core/files/recovery_copy.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/limits.h"
#include "core/chunks/chunk_table.h"
#include "core/edit/clipboard_block.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kMagic = 0x56435256;  // "VRCV"
constexpr std::uint32_t kVersion = 1;
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

std::uint64_t bytes_of(const DocumentWindow& window) {
  std::uint64_t bytes = window.document.defaultImage.size();
  for (std::size_t i = 0; i < window.list.size(); ++i) bytes += window.list.record(i).data.size() + 512;
  return bytes;
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

bool read_content(std::span<const std::uint8_t> bytes, DocumentWindow& window) {
  std::size_t behind = 0;
  const auto note = parse_note(bytes, behind);
  if (!note) return false;
  Document& document = window.document;
  std::span<const std::uint8_t> rest = bytes.subspan(behind);
  if (!take_default_image(rest, document.defaultImage)) return false;
  const auto block = read_chunk_block(rest, true);
  if (!block || block->source.kind != note->kind) return false;
  document.kind = note->kind;
  document.fileName = note->fileName;
  document.HasFileName = note->hasFileName && !note->fileName.empty();
  document.fileTime = note->fileTime;
  document.thumbScale = std::clamp(settings::DefaultViewMode, 0, 7);
  document.dirty = true;
  for (const ChunkRecord& record : block->records)
    if (chunk_list_append(window.list, document, record) == 0) return false;
  chunk_list_close_change(window.list, document);
  return true;
}

}  // namespace

bool write_recovery_copy(const DocumentWindow& window, const fs::path& path, std::int64_t made,
                         const std::function<bool()>& stop) try {
  if (!has_room(path, bytes_of(window))) return false;
  SafeFile file(path);
  const auto sink = [&](std::span<const std::uint8_t> bytes) {
    return !(stop && stop()) && file.write(bytes);
  };
  return sink(head_of(window.document, made)) && sink(window.document.defaultImage.bytes()) &&
         write_chunk_block(window.document.kind, window.list, sink) && file.commit();
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
