#include "core/edit/copy_chunks.h"

#include <algorithm>

#include "base/text.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

struct RefusalRow {
  ChunkTag tag;
  StringId message;
};

constexpr RefusalRow kRefusals[] = {
    {tag::IHDR, StringId::HeaderNotCopied}, {tag::IEND, StringId::EndNotCopied},
    {tag::MEND, StringId::EndNotCopied},    {tag::MHDR, StringId::NotToClipboard},
    {tag::WEBH, StringId::NotToClipboard},  {tag::acTL, StringId::NotToClipboard},
    {tag::fcTL, StringId::NotToClipboard},
};

bool is_readable(const ChunkRecord& record, DocumentKind kind) {
  if (is_image_entry(kind, record.tag)) return has_rows(picture_of(record));
  return record.tag == tag::zTXt
             ? static_cast<bool>(record.data)
             : record.size >= 0 && static_cast<std::size_t>(record.size) <= record.data.size();
}

std::optional<StringId> copy_refusal(const DocumentWindow& window, const std::vector<PlaceRange>& streams,
                                     std::size_t entry) {
  const ChunkRecord& record = window.list.record(entry);
  const DocumentKind kind = window.document.kind;
  const auto row = std::ranges::find(kRefusals, record.tag, &RefusalRow::tag);
  if (row != std::end(kRefusals)) return row->message;
  const bool raw_frame = record.tag == tag::fdAT && !is_image_entry(kind, record.tag);
  if (raw_frame || stream_of(streams, entry)) return StringId::NotToClipboard;
  if (!is_readable(record, kind)) return StringId::NotCopied;
  return std::nullopt;
}

std::vector<std::size_t> wanted_entries(const DocumentWindow& window) {
  std::vector<std::size_t> entries;
  if (window.list.selected_count() == 0 && !window.list.empty()) entries.push_back(caret_entry(window));
  for (std::size_t i = 0; window.list.selected_count() > 0 && i < window.list.size(); ++i)
    if (window.list.entry(i).selected) entries.push_back(i);
  return entries;
}

/// The other forms of one single chunk.
void add_forms(CopiedChunks& copied, const ChunkBlock& block) {
  if (block.records.size() != 1) return;
  const ChunkRecord& record = block.records.front();
  if (is_image_entry(block.source.kind, record.tag))
    copied.picture = frame_layer_of(block.source, record).picture;
  if (record.tag == tag::tEXt || record.tag == tag::zTXt) copied.text = text_of(record);
}

}  // namespace

std::string text_of(const ChunkRecord& record) {
  const auto bytes = record.tag == tag::zTXt ? record.data.bytes() : raw_payload(record);
  const std::string_view payload(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const auto keyword = payload.find('\0');
  if (keyword == std::string_view::npos) return {};
  const std::string_view text = payload.substr(keyword + 1);
  return utf8_from_latin1(text.substr(0, text.find('\0')));
}

std::optional<CopiedChunks> copy_selected(const DocumentWindow& window, Host& host) {
  CopiedChunks copied;
  ChunkBlock block{frame_source_of(window), {}};
  const auto streams = opaque_streams(window.list, window.document.kind);
  std::optional<StringId> first_refusal;
  for (const std::size_t entry : wanted_entries(window)) {
    const auto refusal = copy_refusal(window, streams, entry);
    if (refusal) {
      if (!first_refusal) first_refusal = refusal;
      continue;
    }
    block.records.push_back(window.list.record(entry));
    copied.entries.push_back(entry);
  }
  if (block.records.empty()) {
    if (first_refusal) host.show(*first_refusal);
    return std::nullopt;
  }
  copied.block = write_chunk_block(block);
  add_forms(copied, block);
  return copied;
}

std::optional<CopiedChunks> cut_selected(DocumentWindow& window, Host& host) {
  auto copied = copy_selected(window, host);
  if (!copied) {
    host.show(StringId::NotCut);
    return copied;
  }
  const ChunkTag first = window.list.record(copied->entries.front()).tag;
  if (!undo_push(window, host, undo_name(StringId::UndoCut, copied->entries.size(), first)))
    return std::nullopt;
  std::vector<bool> marks(window.list.size());
  for (const std::size_t entry : copied->entries) marks[entry] = true;
  delete_marked(window, std::move(marks), host);
  return copied;
}

}  // namespace vellum
