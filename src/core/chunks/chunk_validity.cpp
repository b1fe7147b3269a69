#include "core/chunks/chunk_validity.h"

#include "base/fields.h"
#include "core/chunks/chunk_table.h"

namespace vellum {
namespace {

PngContext context_of(const ChunkList& list) {
  const std::size_t header = chunk_find_first(list, tag::IHDR);
  Palette palette;
  if (header == kNoEntry) return {};
  return {list.record(header).bitDepth, list.record(header).colorType, chunk_find_palette(list, palette)};
}

bool stands_elsewhere(const ChunkList& list, std::size_t index, ChunkTag tag) {
  const std::size_t first = chunk_find_first(list, tag);
  return first != kNoEntry && (first != index || chunk_find_first(list, tag, nullptr, index + 1) != kNoEntry);
}

}  // namespace

bool depends_on_header(ChunkTag tag, DocumentKind kind) {
  return (kind_bit(kind) & kInPngs) && place_of(tag, kind) != ChunkPlace::Anywhere;
}

bool is_valid_here(const DocumentWindow& window, const ChunkRecord& record) {
  const DocumentKind kind = window.document.kind;
  const PngContext context = depends_on_header(record.tag, kind) ? context_of(window.list) : PngContext{};
  const auto payload = record.tag == tag::zTXt ? record.data.bytes() : raw_payload(record);
  return is_valid_chunk(record.tag, payload, context, kind);
}

std::optional<StringId> record_fault(const DocumentWindow& window, std::size_t index,
                                     const ChunkRecord& record) {
  if (stands_once(record.tag, window.document.kind) && stands_elsewhere(window.list, index, record.tag))
    return StringId::SecondOfItsKind;
  return is_valid_here(window, record) ? std::nullopt : std::optional(StringId::NotValidBytes);
}

bool keeps_anyway(const DocumentWindow& window, std::size_t index, const ChunkRecord& record, Host& host) {
  const auto fault = record_fault(window, index, record);
  if (!fault || !host.ask) return true;
  const StringId id = StringId::KeepAnyway;
  const std::string text = filled(id, {tag_letters(record.tag), std::string(string_text(*fault))});
  return host.ask({id, {}, text, {}, nullptr}, false) == Answer::Yes;
}

}  // namespace vellum
