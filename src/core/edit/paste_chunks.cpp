#include "core/edit/paste_chunks.h"

#include <algorithm>
#include <utility>

#include "core/chunks/chunk_validity.h"
#include "core/chunks/text_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "core/model/first_frame.h"
#include "core/model/loops.h"
#include "core/settings.h"

namespace vellum {
namespace {

/// A paste under way.
struct Pasting {
  Adding adding;
  const FrameSource& source;
  std::size_t caret;                ///< as it was at the beginning: FRAM and DEFI go into this image
  bool several;                     ///< more than one record
  std::vector<std::uint8_t> loops;  ///< that are open where the next record goes
};

void tell(Pasting& pasting, Added added) {
  refuse(pasting.adding, added, added == Added::Exists ? StringId::AlreadyExists : StringId::PasteRefused);
}

void paste_image(Pasting& pasting, const ChunkRecord& record) {
  const Added added = add_frame(pasting.adding, pasting.source, record);
  if (added == Added::Exists)
    pasting.adding.refuse(StringId::PasteRefused);
  else
    tell(pasting, added);
}

void paste_plain(Pasting& pasting, const ChunkRecord& record) {
  const Placed placed = pasting.adding.insertion.add(record);
  tell(pasting, placed == Placed::Done     ? Added::Done
                : placed == Placed::Exists ? Added::Exists
                                           : Added::NoPlace);
}

void paste_folded(Pasting& pasting, const ChunkRecord& record) {
  DocumentWindow& window = pasting.adding.window;
  if (const auto refusal = fold_refusal(window, record.tag, pasting.caret))
    return pasting.adding.refuse(*refusal);
  pasting.adding.insertion.flush();
  fold_into_image(window, record, pasting.caret);
  pasting.adding.folded = true;
}

/// A single LOOP or ENDL goes where one would be inserted; in a paste of several they stay among the others.
void paste_loop(Pasting& pasting, ChunkRecord record) {
  if (!pasting.several) {
    if (const auto refusal = insert_refusal(pasting.adding.window, record.tag))
      return pasting.adding.refuse(*refusal);
  } else if (record.tag == tag::ENDL && pasting.loops.empty()) {
    return pasting.adding.refuse(StringId::LoopMissing);
  }
  put_loop_level(record, pasting.loops);
  follow_loops(pasting.loops, record);
  paste_plain(pasting, record);
}

void paste_record(Pasting& pasting, const ChunkRecord& record) {
  DocumentWindow& window = pasting.adding.window;
  const DocumentKind kind = window.document.kind;
  if (is_image_entry(pasting.source.kind, record.tag)) return paste_image(pasting, record);
  if (!may_be_put(record.tag, kind) || place_of(record.tag, kind) == ChunkPlace::Image)
    return pasting.adding.refuse(StringId::PasteRefused);
  if (stands_once(record.tag, kind) && pasting.adding.insertion.has(record.tag))
    return pasting.adding.refuse(StringId::AlreadyExists);
  if (depends_on_header(record.tag, kind)) {
    pasting.adding.insertion.flush();  // the header and the palette that it is judged by are in the list
    if (const auto refusal = header_refusal(window, record.tag)) return pasting.adding.refuse(*refusal);
  }
  if (!is_valid_here(window, record)) return pasting.adding.refuse(StringId::PasteRefused);
  if (place_of(record.tag, kind) == ChunkPlace::Folded) return paste_folded(pasting, record);
  if (place_of(record.tag, kind) == ChunkPlace::Loop) return paste_loop(pasting, record);
  paste_plain(pasting, record);
}

bool caret_is_at_end(const DocumentWindow& window) {
  return !window.list.empty() &&
         is_end_entry(window.document.kind, window.list.record(caret_entry(window)).tag);
}

/// Where the records of a paste go.
std::size_t paste_place(const DocumentWindow& window, const ChunkBlock& block) {
  const bool loop = block.records.size() == 1 && block.records.front().tag == tag::LOOP;
  return caret_entry(window) + (loop ? 0 : 1);
}

bool refused(Host& host, StringId message) {
  host.show(message);
  return false;
}

/// The row becomes the caret; returns what the caret was.
std::int32_t begin_drop(DocumentWindow& to, std::size_t row) {
  to.document.DropInsertMark = -1;
  return std::exchange(to.document.caret, static_cast<std::int32_t>(row));
}

/// The images of a drop, in order, until one is refused.
bool drop_records(DocumentWindow& to, const FrameSource& source, std::span<const ChunkRecord> records,
                  std::size_t row, Host& host) {
  Adding adding(to, row + 1, host);
  const std::int32_t caret = begin_drop(to, row);
  for (const ChunkRecord& record : records) {
    if (!is_image_entry(source.kind, record.tag)) continue;
    const Added added =
        is_image_entry(to.document.kind, record.tag) ? add_frame(adding, source, record) : Added::NoPlace;
    if (added == Added::Done) continue;
    refuse(adding, added, StringId::DropRefused);
    break;
  }
  const bool changed = adding.finish();
  if (!changed) to.document.caret = caret;
  return changed;
}

std::vector<ChunkRecord> selected_records(const DocumentWindow& window) {
  std::vector<ChunkRecord> records;
  for (std::size_t i = 0; window.list.selected_count() > 0 && i < window.list.size(); ++i)
    if (window.list.entry(i).selected) records.push_back(window.list.record(i));
  return records;
}

// -------------------------------------------------------------------------------------------------------
// merging

/// Of the first image, as its kind keeps it; nothing without one.
std::optional<std::uint32_t> first_color_type(const DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  ChunkRecord header;
  if (kind == DocumentKind::APNG && chunk_find_first(window.list, tag::IHDR, &header) != kNoEntry)
    return header.colorType;
  const std::size_t at = chunk_find_first(window.list, image_tag(kind));
  if (at == kNoEntry) return std::nullopt;
  const ChunkRecord& record = window.list.record(at);
  return kind == DocumentKind::WEBP ? record.webpImage.colorType : record.colorType;
}

bool agrees_to_merge(const DocumentWindow& to, const DocumentWindow& from, Host& host) {
  const auto ours = first_color_type(to), theirs = first_color_type(from);
  if (!ours || !theirs || *ours == *theirs || settings::WarnMerge == 0 || !host.ask) return true;
  const Message question{
      StringId::MergeWarning, {}, std::string(string_text(StringId::MergeWarning)), {}, &settings::WarnMerge};
  return host.ask(question, false) == Answer::Yes;
}

/// The entry of image `ordinal`, counted from 1, or of the last one before; nothing in front of all.
std::optional<std::size_t> image_entry(const DocumentWindow& window, std::size_t ordinal) {
  std::optional<std::size_t> found;
  for (std::size_t i = 0; i < window.list.size() && ordinal > 0; ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag)) {
      found = i;
      --ordinal;
    }
  return found;
}

/// Ends a paste: what came is selected, so that it can be moved or taken out at once.
bool finish_paste(Adding& adding) {
  const bool changed = adding.finish();
  if (adding.insertion.count() > 0) adding.insertion.select_added();
  return changed;
}

bool goes_along(ChunkTag tag) { return tag == tag::tEXt || tag == tag::zTXt || tag == tag::iTXt; }

}  // namespace

bool paste_block(DocumentWindow& window, std::span<const std::uint8_t> bytes, Host& host) {
  const auto block = read_chunk_block(bytes);
  if (!block || block->records.empty()) return refused(host, StringId::ClipboardInvalid);
  const std::string name = undo_name(StringId::UndoPaste, block->records.size(), block->records.front().tag);
  if (!undo_push(window, host, name)) return false;
  if (caret_is_at_end(window)) return refused(host, StringId::PasteRefused);
  Pasting pasting{{window, paste_place(window, *block), host},
                  block->source,
                  caret_entry(window),
                  block->records.size() > 1,
                  {}};
  if (window.document.kind == DocumentKind::MING)
    pasting.loops = open_loops(window.list, std::min(pasting.adding.insertion.wanted(), window.list.size()));
  for (const ChunkRecord& record : block->records) paste_record(pasting, record);
  return finish_paste(pasting.adding);
}

bool paste_picture(DocumentWindow& window, const Picture& picture, Host& host) {
  if (!undo_push(window, host, undo_name(StringId::UndoPaste, 1, image_tag(window.document.kind))))
    return false;
  if (caret_is_at_end(window)) return refused(host, StringId::PasteRefused);
  Adding adding(window, caret_entry(window) + 1, host);
  const Added added = add_picture(adding, picture);
  refuse(adding, added, StringId::PasteRefused);
  return finish_paste(adding);
}

bool paste_text(DocumentWindow& window, std::string_view text, Host& host) {
  const ChunkRecord record = record_of_text({.keyword = "Comment", .text = std::string(text)});
  if (!undo_push(window, host, undo_name(StringId::UndoPaste, 1, record.tag))) return false;
  if (caret_is_at_end(window) || !may_be_put(record.tag, window.document.kind))
    return refused(host, StringId::PasteRefused);
  Adding adding(window, caret_entry(window) + 1, host);
  if (adding.insertion.add(record) != Placed::Done) adding.refuse(StringId::PasteRefused);
  if (record.tag == tag::iTXt) host.add_note(string_text(StringId::BecameInternational));
  return finish_paste(adding);
}

bool drop_rows(DocumentWindow& to, const DocumentWindow& from, std::size_t row, Host& host) {
  const FrameSource source = frame_source_of(from);
  const std::vector<ChunkRecord> records = selected_records(from);
  return undo_push(to, host, undo_name(StringId::UndoDrop, from)) &&
         drop_records(to, source, records, row, host);
}

bool drop_block(DocumentWindow& to, std::span<const std::uint8_t> bytes, std::size_t row, Host& host) {
  const auto block = read_chunk_block(bytes);
  if (!block || block->records.empty()) return refused(host, StringId::ClipboardInvalid);
  const std::string name = undo_name(StringId::UndoDrop, block->records.size(), block->records.front().tag);
  if (!undo_push(to, host, name)) return false;
  return drop_records(to, block->source, block->records, row, host);
}

bool drop_pictures(DocumentWindow& to, std::span<const Picture> pictures, std::size_t row, Host& host) {
  const ChunkTag tag = image_tag(to.document.kind);
  if (!undo_push(to, host, undo_name(StringId::UndoDrop, pictures.size(), tag))) return false;
  const std::int32_t caret = begin_drop(to, row);
  Adding adding(to, row + 1, host);
  for (const Picture& picture : pictures) {
    const Added added = add_picture(adding, picture);
    if (added == Added::Done) continue;
    refuse(adding, added, StringId::DropRefused);
    break;
  }
  const bool changed = adding.finish();
  if (!changed) to.document.caret = caret;
  return changed;
}

bool merge_document(DocumentWindow& to, const DocumentWindow& from, const MergeRequest& request, Host& host) {
  const FrameSource source = frame_source_of(from);
  const ChunkList list = from.list;  // which may be the same one
  if (!undo_push(to, host, string_text(StringId::UndoMerge)) || !agrees_to_merge(to, from, host))
    return false;
  const std::size_t behind = image_entry(to, request.after).value_or(0) + 1;
  Adding adding(to, behind, host);
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    Added added = Added::Done;
    if (is_image_entry(source.kind, record.tag))
      added = add_frame(adding, source, record);
    else if (request.texts && goes_along(record.tag) && may_be_put(record.tag, to.document.kind))
      adding.insertion.add(record);
    if (added == Added::Done) continue;
    refuse(adding, added, StringId::DropRefused);
    break;
  }
  const bool changed = adding.finish();
  if (changed) pad_first_frame(to);
  return changed;
}

}  // namespace vellum
