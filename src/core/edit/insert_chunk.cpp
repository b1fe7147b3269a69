#include "core/edit/insert_chunk.h"

#include <algorithm>

#include "core/edit/edit_closing.h"
#include "core/edit/undo.h"
#include "core/model/framing.h"
#include "core/model/loops.h"
#include "core/settings.h"

namespace vellum {
namespace {

using Refusal = std::optional<StringId>;

bool is_image(const DocumentWindow& window, std::size_t entry) {
  return entry < window.list.size() && is_image_entry(window.document.kind, window.list.record(entry).tag);
}

Refusal refuse_if(bool condition, StringId message) { return condition ? Refusal(message) : std::nullopt; }

Refusal loop_refusal(const DocumentWindow& window, std::size_t caret) {
  if (!is_image(window, caret)) return StringId::LoopPosition;
  return refuse_if(caret > 0 && window.list.record(caret - 1).tag == tag::LOOP, StringId::LoopExists);
}

Refusal loop_end_refusal(const DocumentWindow& window, std::size_t caret) {
  if (open_loops(window.list, caret).empty()) return StringId::LoopMissing;
  return refuse_if(!is_image(window, caret), StringId::LoopEndPosition);
}

Refusal termination_refusal(const DocumentWindow& window, std::size_t) {
  return refuse_if(chunk_count_tag(window.list, tag::TERM) != 0, StringId::TerminationExists);
}

Refusal framing_refusal(const DocumentWindow& window, std::size_t caret) {
  return fold_refusal(window, tag::FRAM, caret);
}

Refusal definition_refusal(const DocumentWindow& window, std::size_t caret) {
  return fold_refusal(window, tag::DEFI, caret);
}

/// Tests that one tag alone has.
struct TestRow {
  ChunkTag tag;
  Refusal (*test)(const DocumentWindow& window, std::size_t caret);
};

constexpr TestRow kTests[] = {
    {tag::LOOP, loop_refusal},       {tag::ENDL, loop_end_refusal},    {tag::FRAM, framing_refusal},
    {tag::DEFI, definition_refusal}, {tag::TERM, termination_refusal},
};

/// Only what may stand anywhere is refused at the end entry; other chunks have a place of their own.
bool is_refused_at_end(const DocumentWindow& window, ChunkTag tag, std::size_t caret) {
  return place_of(tag, window.document.kind) == ChunkPlace::Anywhere && caret < window.list.size() &&
         is_end_entry(window.document.kind, window.list.record(caret).tag);
}

bool report(Host& host, const Refusal& refusal) {
  if (refusal) host.show(*refusal);
  return !refusal;
}

std::size_t wanted_place(const DocumentWindow& window, ChunkTag tag) {
  const std::size_t caret = caret_entry(window);
  return tag == tag::LOOP && window.document.kind == DocumentKind::MING ? caret : caret + 1;
}

constexpr std::pair<Added, StringId> kAddedMessages[] = {{Added::Exists, StringId::AlreadyExists},
                                                         {Added::NoPlace, StringId::LocationInvalid},
                                                         {Added::NoMemory, StringId::MemoryError}};

bool tell(Host& host, Added added) {
  for (const auto& [what, message] : kAddedMessages)
    if (what == added) host.show(message);
  return added == Added::Done;
}

bool place_record(DocumentWindow& window, ChunkRecord record, Host& host) {
  const std::size_t caret = caret_entry(window);
  if (place_of(record.tag, window.document.kind) == ChunkPlace::Folded) {
    fold_into_image(window, record, caret);
    finish_edit(window, false);
    return true;
  }
  if (place_of(record.tag, window.document.kind) == ChunkPlace::Loop)
    put_loop_level(record, open_loops(window.list, caret));
  Insertion insertion(window, wanted_place(window, record.tag));
  const Placed placed = insertion.add(record);
  insertion.flush();
  if (placed != Placed::Done) {
    host.show(placed == Placed::Exists ? StringId::AlreadyExists : StringId::LocationInvalid);
    return false;
  }
  finish_edit(window, insertion.counted());
  return true;
}

/// Arguments that a person need not give.
NewChunkArgument completed(const DocumentWindow& window, ChunkTag tag, NewChunkArgument argument) {
  if (argument.number != 0) return argument;
  if (tag == tag::LOOP) argument.number = kLoopForEver;
  const auto delay = static_cast<std::uint64_t>(std::clamp(settings::DefaultDelay, 0, 60'000));
  if (tag == tag::FRAM)
    argument.number = static_cast<std::uint32_t>((delay * ticks_per_second(window.list) + 500) / 1000);
  return argument;
}

/// For tags without a content of their own: whoever inserts one types it.
bool make_zeros(ChunkRecord& record, ChunkTag tag, DocumentKind kind) {
  const ChunkRow* row = chunk_row(tag, kind);
  record.tag = tag;
  return put_payload(record, std::vector<std::uint8_t>(row ? row->shortest : 0));
}

}  // namespace

std::size_t caret_entry(const DocumentWindow& window) {
  const auto last = static_cast<std::int64_t>(window.list.size()) - 1;
  return static_cast<std::size_t>(
      std::clamp<std::int64_t>(window.document.caret, 0, std::max<std::int64_t>(last, 0)));
}

std::optional<StringId> header_refusal(const DocumentWindow& window, ChunkTag tag) {
  if (chunk_row(tag, window.document.kind) == nullptr) return std::nullopt;
  ChunkRecord header;
  if (chunk_find_first(window.list, tag::IHDR, &header) == kNoEntry) return std::nullopt;
  const bool grey = header.colorType == 0 || header.colorType == 4;
  if (tag == tag::PLTE) return refuse_if(grey, StringId::InsertError);
  if (tag != tag::tRNS) return std::nullopt;
  if (header.colorType == 4 || header.colorType == 6) return StringId::AlphaHasNoTransparency;
  return refuse_if(header.colorType == 3 && chunk_count_tag(window.list, tag::PLTE) == 0,
                   StringId::NoPaletteHere);
}

std::optional<StringId> fold_refusal(const DocumentWindow& window, ChunkTag tag, std::size_t entry) {
  const bool framing = tag == tag::FRAM;
  if (!is_image(window, entry)) return framing ? StringId::FramingPosition : StringId::DefinitionPosition;
  const bool has = window.list.record(entry).flags & (framing ? CRF_FRAM : CRF_DEFI);
  return refuse_if(has, framing ? StringId::FramingExists : StringId::DefinitionExists);
}

void fold_into_image(DocumentWindow& window, const ChunkRecord& record, std::size_t entry) {
  ChunkRecord image;
  if (!chunk_list_get(window.list, entry, image)) return;
  EmbeddedImage& embedded = image.image.edit();
  image.flags |= record.tag == tag::FRAM ? CRF_FRAM : CRF_DEFI;
  if (record.tag == tag::FRAM)
    parse_framing(raw_payload(record), embedded.framBlock);
  else
    embedded.defiBytes = parse_definition(raw_payload(record), embedded.defiBlock);
  chunk_list_put(window.list, entry, image);
}

std::optional<StringId> insert_refusal(const DocumentWindow& window, ChunkTag tag) {
  const DocumentKind kind = window.document.kind;
  if (!may_be_put(tag, kind) || (tag == tag::fdAT)) return StringId::InsertError;
  const std::size_t caret = caret_entry(window);
  for (const TestRow& row : kTests)
    if (row.tag == tag && chunk_row(tag, kind)) {
      const Refusal refusal = row.test(window, caret);
      if (refusal) return refusal;
    }
  if (const Refusal refusal = header_refusal(window, tag)) return refusal;
  if (stands_once(tag, kind) && chunk_count_tag(window.list, tag) != 0) return StringId::AlreadyExists;
  if (place_of(tag, kind) == ChunkPlace::Folded) return std::nullopt;
  return refuse_if(
      is_refused_at_end(window, tag, caret) || !place_for(shape_of(window.list, kind), tag, caret),
      StringId::LocationInvalid);
}

std::vector<ChunkTag> insertable_tags(const DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  std::vector<ChunkTag> tags;
  for (const ChunkRow& row : chunk_table()) {
    if (!(row.kinds & kind_bit(kind)) || !may_be_put(row.tag, kind) || row.place == ChunkPlace::Image)
      continue;
    if (!stands_once(row.tag, kind) || chunk_count_tag(window.list, row.tag) == 0) tags.push_back(row.tag);
  }
  return tags;
}

bool insert_record(DocumentWindow& window, const ChunkRecord& record, Host& host) {
  return report(host, insert_refusal(window, record.tag)) &&
         undo_push(window, host, undo_name(StringId::UndoInsert, 1, record.tag)) &&
         place_record(window, record, host);
}

bool insert_chunk(DocumentWindow& window, ChunkTag tag, const NewChunkArgument& argument, Host& host) {
  if (is_image_entry(window.document.kind, tag)) {
    const Picture picture(argument.picture);
    return picture ? insert_pictures(window, {&picture, 1}, host) : report(host, StringId::InsertError);
  }
  if (!report(host, insert_refusal(window, tag)) ||
      !undo_push(window, host, undo_name(StringId::UndoInsert, 1, tag)))
    return false;
  ChunkRecord record;
  const bool made = has_default_content(tag)
                        ? new_chunk(window, record, tag, completed(window, tag, argument))
                        : make_zeros(record, tag, window.document.kind);
  if (!made) return report(host, StringId::InsertError);
  return place_record(window, record, host);
}

bool insert_pictures(DocumentWindow& window, std::span<const Picture> pictures, Host& host,
                     std::optional<PaletteChoice> choice) {
  if (pictures.empty() || !report(host, insert_refusal(window, image_tag(window.document.kind))))
    return false;
  const ChunkTag tag = image_tag(window.document.kind);
  if (!undo_push(window, host, undo_name(StringId::UndoInsert, pictures.size(), tag))) return false;
  Adding adding(window, caret_entry(window) + 1, host, choice);
  for (const Picture& picture : pictures)
    if (!tell(host, add_picture(adding, picture))) break;
  return adding.finish();
}

}  // namespace vellum
