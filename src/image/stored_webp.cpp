#include "image/stored_webp.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "image/picture_rows.h"
#include "image/webp_library.h"

namespace vellum {

namespace {

/// Frames that lie on each other up to one whose canvas is kept: what a look at any of them costs at most.
constexpr unsigned kMostSteps = 16;
/// Bytes of canvases that a track remembers, or one.
constexpr std::size_t kMostMade = std::size_t{32} << 20;

}  // namespace

StoredWebp::StoredWebp(const Frame& frame, const Before& before, std::shared_ptr<const FileContent> owner,
                       const Picture& canvas)
    : frame_(frame), before_(before), owner_(std::move(owner)) {
  if (begins()) return;
  steps_ = before->steps_ + 1;
  if (steps_ < kMostSteps) {
    ground_ = before;
    track_ = before->track_ ? before->track_ : std::make_shared<WebpTrack>();
  } else {
    steps_ = 0;
    key_ = kept_picture(canvas, nullptr);
    track_ = before->track_;
  }
}

ChunkHandle StoredWebp::make() const {
  if (!owner_->intact()) return {};
  return begins() ? make_by_itself() : make_on_others();
}

Picture StoredWebp::canvas_at_hand() const {
  if (!track_) return {};
  const auto found = std::ranges::find(track_->made, this, &WebpTrack::Made::frame);
  return found != track_->made.end() ? found->canvas : Picture(key_);
}

ChunkHandle StoredWebp::make_on_others() const {
  const std::lock_guard guard(track_->lock);
  std::vector<const StoredWebp*> way;
  const StoredWebp* from = this;
  Picture canvas;
  while (!(canvas = from->canvas_at_hand()) && !from->begins()) {
    way.push_back(from);
    from = from->ground_.get();
  }
  if (!canvas) canvas = Picture(from->make_by_itself());
  for (std::size_t i = way.size(); canvas && i-- > 0;)
    canvas = compose_webp(way[i]->frame_, way[i]->ground_->frame_, canvas);
  if (canvas.handle().is_kept()) canvas = PictureDuplicate(canvas);
  if (!canvas) return {};
  const std::size_t most = std::clamp<std::size_t>(kMostMade / canvas.handle().size(), 1, 8);
  track_->made.push_back({this, canvas});
  while (track_->made.size() > most) track_->made.pop_front();
  return canvas.handle();
}

ChunkHandle StoredWebp::make_by_itself() const {
  const auto& [pixels, width, height, area, blend, dispose, bits, alone, on_nothing] = frame_;
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
