#include "core/check/check_document.h"

#include <algorithm>
#include <new>
#include <utility>

#include "base/file.h"
#include "base/limits.h"
#include "base/translation.h"
#include "core/check/webp_parts.h"
#include "core/edit/undo.h"
#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/files/save_document.h"
#include "core/files/save_options.h"
#include "core/model/chunk_layout.h"
#include "core/model/kind_table.h"

namespace vellum {
namespace {

struct DocumentBytes {
  std::vector<std::uint8_t> made;
  std::optional<FileContent> file;
  std::span<const std::uint8_t> span() const {
    return file ? std::span<const std::uint8_t>(*file) : std::span<const std::uint8_t>(made);
  }
};

/// Reading forgives much, so that the file tells more than what was made of it.
std::optional<DocumentBytes> bytes_of(const DocumentWindow& window, Host& host) {
  DocumentBytes bytes;
  std::string reason;
  if (window.document.HasFileName && !window.document.dirty)
    bytes.file = read_file(window.document.fileName, reason, kMaximumFileBytes);
  if (bytes.file) return bytes;
  DocumentWindow copy;
  copy.document = window.document;
  copy.list = window.list;
  SaveOptions options = save_options();
  options.backup = false;
  if (write_document(copy, copy.document.kind, memory_sink(bytes.made), options, host) == WriteResult::Done)
    return bytes;
  return std::nullopt;
}

/// Which entry stands for a chunk of a file. Images are counted; other chunks are looked for behind the entry
/// of the one before, since both stand in the same order.
class EntryFinder {
 public:
  EntryFinder(const DocumentWindow& window, std::span<const ChunkTag> chunks)
      : list_(window.list), kind_(window.document.kind) {
    for (std::size_t i = 0; i < list_.size(); ++i)
      if (is_image_entry(kind_, list_.record(i).tag)) images_.push_back(i);
    for (const ChunkTag tag : chunks) entries_.push_back(next(tag));
  }
  const std::vector<std::size_t>& entries() const { return entries_; }

 private:
  std::size_t image() const { return begun_ < images_.size() ? images_[begun_] : kNoEntry; }

  std::size_t next(ChunkTag tag) {
    switch (kind_) {
      case DocumentKind::MING:
        return next_of_mng(tag);
      case DocumentKind::WEBP:
        return next_of_webp(tag);
      default:
        return next_of_png(tag);
    }
  }

  std::size_t next_of_png(ChunkTag tag) {
    const bool animated = kind_ == DocumentKind::APNG;
    if (tag == tag::fcTL) {
      if (std::exchange(framed_, true)) ++begun_;
      return image();
    }
    // Without a frame control in front of it the image is the one for viewers that know no animations.
    if (tag == tag::fdAT || (tag == tag::IDAT && (framed_ || !animated))) return image();
    return tag == tag::IDAT ? kNoEntry : plain(tag);
  }

  std::size_t next_of_mng(ChunkTag tag) {
    if (tag == tag::IHDR) inside_ = true;
    if (tag == tag::IEND && inside_) {
      inside_ = false;
      return begun_ < images_.size() ? images_[begun_++] : kNoEntry;
    }
    const std::size_t own = inside_ ? kNoEntry : plain(tag);
    return own == kNoEntry ? image() : own;  // framing and place belong to the image that follows
  }

  std::size_t next_of_webp(ChunkTag tag) {
    if (tag == webp::kExtended || tag == webp::kAnimation) return list_.empty() ? kNoEntry : 0;
    if (tag != webp::kFrame && !webp::is_part(tag)) return plain(tag);
    const std::size_t entry = image();
    if (tag != webp::kAlpha) ++begun_;
    return entry;
  }

  std::size_t plain(ChunkTag tag) {
    for (std::size_t i = from_; i < list_.size(); ++i)
      if (list_.record(i).tag == tag) {
        from_ = i + 1;
        return i;
      }
    return kNoEntry;
  }

  const ChunkList& list_;
  DocumentKind kind_;
  std::vector<std::size_t> images_, entries_;
  std::size_t begun_ = 0, from_ = 0;
  bool framed_ = false, inside_ = false;
};

bool read_bytes(DocumentWindow& window, std::vector<std::uint8_t> bytes, DocumentKind kind, Host& host) {
  const auto owner = std::make_shared<const FileContent>(ChunkHandle::copy_of(bytes, 0));
  bytes = {};
  const auto read = kind == DocumentKind::MING ? read_mng : kind == DocumentKind::WEBP ? read_webp : read_png;
  return read(window, *owner, host, owner);
}

}  // namespace

std::optional<DocumentCheck> check_document(const DocumentWindow& window, Host& host) try {
  const auto bytes = bytes_of(window, host);
  if (!bytes) return std::nullopt;
  DocumentCheck check{check_file(bytes->span()), bytes->file.has_value(), {}};
  const EntryFinder finder(window, check.found.chunks);
  for (const Finding& finding : check.found.findings)
    check.entries.push_back(finding.chunk == 0 || finding.chunk > finder.entries().size()
                                ? kNoEntry
                                : finder.entries()[finding.chunk - 1]);
  return check;
} catch (const std::bad_alloc&) {
  host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
  return std::nullopt;
}

bool repair_document(DocumentWindow& window, Host& host, RepairedFile& result) try {
  const auto bytes = bytes_of(window, host);
  if (!bytes) return false;
  result = repair_file(bytes->span());
  if (result.bytes.empty())
    return host.fail({FaultKind::Damaged, 0, -1, -1, translated("there is no image that could be shown")});
  if (result.mended.empty() && result.given_up.empty()) return false;
  DocumentWindow mended;
  mended.document = window.document;
  if (!read_bytes(mended, std::move(result.bytes), result.kind, host)) return false;
  if (mended.document.kind != window.document.kind)
    return host.fail(
        {FaultKind::Misuse, 0, -1, -1, translated("the repaired file is of another kind; open it anew")});
  if (!undo_push(window, host, string_text(StringId::UndoRepair))) return false;
  const QuietList quiet(window.list);
  window.document.defaultImage = mended.document.defaultImage;
  window.document.PartialRedraw = true;
  window.document.dirty = true;
  window.list = mended.list;
  const auto last = static_cast<std::int32_t>(window.list.size());
  window.document.caret = std::clamp(window.document.caret, 0, std::max(last - 1, 0));
  chunk_list_close_change(window.list, window.document);
  return true;
} catch (const std::bad_alloc&) {
  return host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
}

}  // namespace vellum
