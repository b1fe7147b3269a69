// Any bytes at all as a clipboard block: they are refused, or read, written back as the same records and
// pasted into a document of every kind, whose list stays in order.
#include "core/edit/clipboard_block.h"
#include "core/edit/new_document.h"
#include "core/edit/paste_chunks.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

void paste_into(DocumentKind kind, std::span<const std::uint8_t> bytes) {
  Host host;
  DocumentWindow window;
  check(new_document(window, default_new_document(kind)));
  paste_block(window, bytes, host);
  const ListShape shape = shape_of(window.list, kind);
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkTag tag = window.list.record(i).tag;
    check(place_of(tag, kind) == ChunkPlace::Fixed || is_in_place(shape, tag, i));
    if (stands_once(tag, kind)) check(chunk_count_tag(window.list, tag) == 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto block = read_chunk_block({data, size});
  if (!block) return 0;
  const auto again = read_chunk_block(write_chunk_block(*block));
  check(again && again->records.size() == block->records.size());
  for (const DocumentKind kind :
       {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP})
    paste_into(kind, {data, size});
  return 0;
}
