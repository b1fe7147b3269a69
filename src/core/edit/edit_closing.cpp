#include "core/edit/edit_closing.h"

#include <algorithm>

#include "core/chunks/mng_counts.h"
#include "core/model/chunk_layout.h"

namespace vellum {
namespace {

void forget_counts(DocumentWindow& window) {
  ChunkRecord header;
  const std::size_t at = chunk_find_first(window.list, tag::MHDR, &header);
  if (at == kNoEntry) return;
  if ((header.layerCount | header.frameCount | header.playTime | header.simplicityProfile) == 0) return;
  header.layerCount = header.frameCount = header.playTime = header.simplicityProfile = 0;
  chunk_list_put(window.list, at, header);
}

/// An image that got a place, a framing or transparency may need more of a decoder than the header says.
void widen_profile(DocumentWindow& window) {
  ChunkRecord header;
  const std::size_t at = chunk_find_first(window.list, tag::MHDR, &header);
  if (at == kNoEntry) return;
  const std::uint32_t profile = profile_with_images(header.simplicityProfile, window.list);
  if (profile == header.simplicityProfile) return;
  header.simplicityProfile = profile;
  chunk_list_put(window.list, at, header);
}

void drop_unfit_default_image(DocumentWindow& window) {
  const Picture image(window.document.defaultImage);
  if (!image) return;
  const Extent size = document_size(window.list, window.document);
  if (image.width() == size.width && image.height() == size.height) return;
  window.document.defaultImage.reset();
  document_extent(window.list, window.document);
}

}  // namespace

bool is_counted(DocumentKind kind, ChunkTag tag) {
  static constexpr ChunkTag counted[] = {tag::PNGI, tag::LOOP, tag::ENDL, tag::TERM};
  return kind == DocumentKind::MING && std::ranges::find(counted, tag) != std::end(counted);
}

void finish_edit(DocumentWindow& window, bool counted) {
  Document& document = window.document;
  if (counted && document.kind == DocumentKind::MING) forget_counts(window);
  if (document.kind == DocumentKind::MING) widen_profile(window);
  chunk_list_renumber(window.list, document);
  document_extent(window.list, document);
  drop_unfit_default_image(window);
  chunk_list_layout(window.list, document);
  const auto last = static_cast<std::int32_t>(window.list.size()) - 1;
  document.caret = std::max(std::min(document.caret, last), 0);
  document.dirty = true;
}

}  // namespace vellum
