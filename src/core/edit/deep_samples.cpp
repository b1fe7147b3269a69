#include "core/edit/deep_samples.h"

#include <algorithm>
#include <unordered_set>

#include "base/text.h"
#include "core/model/document_notes.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

bool is_deep(const ChunkRecord& record) {
  if (record.bitDepth != 16) return false;
  const auto stored = stored_image_of(record.data);
  return stored && stored->header().bitDepth == 16;
}

}  // namespace

std::size_t deep_images_changed(const ChunkList& before, const ChunkList& after) {
  std::unordered_set<const void*> deep;
  for (std::size_t i = 0; i < before.size(); ++i)
    if (is_deep(before.record(i))) deep.insert(before.record(i).data.identity());
  if (deep.empty()) return 0;
  std::size_t others = 0;  // images of `after` that are not among them
  for (std::size_t i = 0; i < after.size(); ++i) {
    const ChunkHandle& block = after.record(i).data;
    if (after.record(i).width != 0 && deep.erase(block.identity()) == 0) ++others;
  }
  return std::min(deep.size(), others);
}

void note_deep_images(const ChunkList& before, const ChunkList& after, Document& document, const Host& host) {
  const std::size_t changed = deep_images_changed(before, after);
  if (changed == 0) return;
  const std::string text =
      format_text(string_text(StringId::DeepSamplesLost).data(), static_cast<unsigned>(changed));
  add_note(document, text);
  host.add_note(text);
}

}  // namespace vellum
