#include "image/stored_webp.h"

#include <string_view>

#include "image/picture_rows.h"
#include "image/webp_library.h"

namespace vellum {

ChunkHandle StoredWebp::make() const {
  const auto& [pixels, width, height, area, blend, dispose, bits, alone, on_nothing] = frame_;
  if (!can_make() || !owner_->intact()) return {};
  const auto columns = static_cast<std::uint32_t>(area.right - area.left),
             rows = static_cast<std::uint32_t>(area.bottom - area.top);
  const bool covers = columns == width && rows == height;
  Picture canvas = covers ? create_rows(width, height, nullptr, bits) : PictureCreateAlpha(width, height);
  if (!canvas) return {};
  const WebpPlace place = place_in(canvas, static_cast<std::uint32_t>(area.left),
                                   static_cast<std::uint32_t>(area.top), columns, rows);
  return decode_webp_into(pixels, place, WebpThreads::One) ? canvas.handle() : ChunkHandle();
}

bool StoredWebp::lossless() const {
  return std::string_view(reinterpret_cast<const char*>(frame_.pixels.data()), frame_.pixels.size())
      .starts_with("VP8L");
}

KeptWebp stored_webp_of(const ChunkHandle& block) {
  return std::dynamic_pointer_cast<const StoredWebp>(block.source());
}

}  // namespace vellum
