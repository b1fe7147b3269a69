#include "core/files/write_webp.h"

#include <deque>
#include <set>

#include "base/memory_budget.h"
#include "base/translation.h"
#include "core/build/convert_records.h"
#include "core/chunks/chunk_policy.h"
#include "core/files/png_writing.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/stored_image.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

/// A save of a WEBP document.
struct WebpSaving {
  const DocumentWindow& window;
  Host& host;
  const SaveOptions& options;
  std::vector<WebpExtra> extras{};  ///< chunks beside the images; they refer to the list

  bool fail(const std::string& reason, FaultKind kind = FaultKind::Misuse) const {
    return host.fail({kind, 0, -1, -1, reason});
  }
  bool fail_to_write(const Sink& sink) const { return fail(write_fault(sink), FaultKind::Limit); }
};

/// The bytes that the only image came with, where they are a picture of this size by themselves.
KeptWebp stored_still(const WebpSaving& saving, const ChunkRecord& record, const Picture& picture) {
  const KeptWebp stored = saving.options.keepStored ? stored_webp_of(record.data) : nullptr;
  if (!stored || !stored->frame().alone || !stored->intact()) return nullptr;
  if (saving.options.webpSmallest && stored->lossless()) return nullptr;
  const bool same =
      stored->frame().canvasWidth == picture.width() && stored->frame().canvasHeight == picture.height();
  return same ? stored : nullptr;
}

bool write_still(const WebpSaving& saving, const Sink& sink) {
  const ChunkList& list = saving.window.list;
  const std::size_t at = chunk_find_first(list, tag::WEBI);
  if (at == 0) return saving.fail(translated("there is no header in front of the image"));
  const Picture picture = picture_of(list.record(at));
  if (!has_rows(picture)) return saving.fail(translated("the image has lost its picture"));
  if (std::max(picture.width(), picture.height()) > kMostWebpPixels)
    return saving.fail(translated("the image is wider or higher than ") + std::to_string(kMostWebpPixels) +
                       translated(" pixels"));
  const KeptWebp stored = stored_still(saving, list.record(at), picture);
  const auto made = stored ? std::vector<std::uint8_t>()
                           : encode_webp_still(picture, saving.options.webpLossless,
                                               saving.options.webpQuality, saving.options.webpSmallest);
  const std::span<const std::uint8_t> image = stored ? stored->frame().pixels : made;
  const bool written = write_webp_file(
      {picture.width(), picture.height(), false, 0, 0, {{.still = image}}, saving.extras}, sink);
  if (!image.empty() && (!written || (stored && !stored->intact()))) return saving.fail_to_write(sink);
  return written || saving.fail(translated("the image can't be compressed"), FaultKind::Limit);
}

/// A 32-bit picture of the canvas' size: the frame at its offset, which is kept inside, the rest transparent.
/// A frame that has lost its picture is all transparent.
Picture canvas_of(const ChunkRecord& record, Extent size) {
  const Picture picture = picture_of(record);
  const auto inside = [](std::uint32_t offset, std::uint32_t canvas, std::uint32_t extent) {
    return extent >= canvas ? 0 : std::min(offset, canvas - extent);
  };
  if (!has_rows(picture)) return PictureCreateAlpha(size.width, size.height);
  const Picture frame = picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
  if (!frame || (frame.width() == size.width && frame.height() == size.height)) return frame;
  Picture canvas = PictureCreateAlpha(size.width, size.height);
  const WebpImageFields& fields = record.webpImage;
  PictureBlit(canvas, static_cast<std::int32_t>(inside(fields.xOffset, size.width, frame.width())),
              static_cast<std::int32_t>(inside(fields.yOffset, size.height, frame.height())), frame, 0, 0,
              static_cast<std::int32_t>(frame.width()), static_cast<std::int32_t>(frame.height()));
  return canvas;
}

/// Hands the frames of a list over, one a call.
class FrameSource {
 public:
  FrameSource(const WebpSaving& saving, const WebpParameters& parameters)
      : list_(saving.window.list),
        options_(saving.options),
        size_{parameters.canvasWidth, parameters.canvasHeight},
        count_(parameters.frameCount),
        progress_(saving.host, string_text(StringId::Writing)) {}

  bool operator()(WebpFrameRequest& request) {
    request.timestamp = time_;
    if (request.last) return true;
    const std::size_t at = chunk_find_first(list_, tag::WEBI, nullptr, next_);
    if (at == kNoEntry) return false;
    progress_.step(done_++, count_);
    const ChunkRecord& record = list_.record(at);
    request.canvas = [this, at] { return canvas_of(list_.record(at), size_); };
    if (options_.keepStored) request.stored = stored_canvas(record);
    request.anew = options_.webpSmallest && request.stored && request.stored->lossless();
    request.dispose = record.webpImage.dispose;
    time_ += record.webpImage.delay;
    next_ = at + 1;
    let_go_behind(at);
    return true;
  }

  /// Whether what frames came from is another by now.
  bool is_lost() const {
    for (std::size_t at = 0; (at = chunk_find_first(list_, tag::WEBI, nullptr, at)) != kNoEntry; ++at)
      if (const KeptWebp stored = stored_webp_of(list_.record(at).data); stored && !stored->intact())
        return true;
    return false;
  }

 private:
  /// Rows that were unpacked for this, when nobody works on them any more.
  void let_go_behind(std::size_t at) {
    constexpr std::size_t kMostAtWork = 32;
    given_.push_back(at);
    if (given_.size() <= kMostAtWork) return;
    const ChunkHandle& block = list_.record(given_.front()).data;
    if (stored_image_of(block)) let_go(block);
    given_.pop_front();
  }

  /// What the whole canvas came from.
  KeptWebp stored_canvas(const ChunkRecord& record) const {
    const KeptWebp stored = stored_webp_of(record.data);
    const bool fits =
        stored && stored->frame().canvasWidth == size_.width && stored->frame().canvasHeight == size_.height;
    return fits ? stored : nullptr;
  }

  const ChunkList& list_;
  const SaveOptions& options_;
  Extent size_;
  std::size_t count_;
  Progress progress_;
  std::size_t next_ = 0, done_ = 0;
  std::deque<std::size_t> given_;  ///< entries, the last ones
  std::int64_t time_ = 0;          ///< when the next frame starts, in milliseconds
};

bool write_animation(const WebpSaving& saving, std::size_t images, const Sink& sink) {
  ChunkRecord record;
  if (chunk_find_first(saving.window.list, tag::WEBH, &record) == kNoEntry)
    return saving.fail(translated("the document has no header"));
  const WebpHeaderFields& header = record.webpHeader;
  if (header.canvasWidth == 0 || header.canvasHeight == 0)
    return saving.fail(translated("the canvas has no pixels"));
  if (std::max(header.canvasWidth, header.canvasHeight) > kMostWebpPixels)
    return saving.fail(translated("the canvas is wider or higher than ") + std::to_string(kMostWebpPixels) +
                       translated(" pixels"));
  const WebpParameters parameters{.canvasWidth = header.canvasWidth,
                                  .canvasHeight = header.canvasHeight,
                                  .loopCount = header.loopCount,
                                  .frameCount = static_cast<std::uint32_t>(images),
                                  .backgroundColor = header.backgroundColor,
                                  .lossless = saving.options.webpLossless,
                                  .quality = saving.options.webpQuality,
                                  .smallest = saving.options.webpSmallest,
                                  .mixed = saving.options.webpMixed,
                                  .extras = saving.extras};
  FrameSource source(saving, parameters);
  bool full = false;  // the sink takes no more
  Sink watched = sink;
  watched.write = [&](std::span<const std::uint8_t> bytes) {
    full = full || !sink.write(bytes);
    return !full;
  };
  const auto give = [&](WebpFrameRequest& request) { return source(request); };
  if (WEBPWriteAnimation(parameters, give, watched)) return true;
  return full || source.is_lost() ? saving.fail_to_write(sink)
                                  : saving.fail(translated("a frame can't be compressed"), FaultKind::Limit);
}

/// The entries that are no image, and how many images stand in front of each.
void gather_extras(WebpSaving& saving) {
  const ChunkList& list = saving.window.list;
  std::set<ChunkTag> seen;
  std::size_t images = 0;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    images += record.tag == tag::WEBI;
    if (record.tag == tag::WEBI || record.tag == tag::WEBH) continue;
    const auto payload = raw_payload(record);
    const bool again = stands_once(record.tag, DocumentKind::WEBP) && !seen.insert(record.tag).second;
    if (again || !is_valid_chunk(record.tag, payload, {}, DocumentKind::WEBP))
      saving.host.add_note(mending_note(Mending::LeftOut, record.tag, i));
    else
      saving.extras.push_back({record.tag, payload, images});
  }
}

WriteResult write_file(WebpSaving saving, const Sink& sink) {
  gather_extras(saving);
  const std::size_t images = chunk_count_images(saving.window.list, DocumentKind::WEBP);
  const bool written = images == 0   ? saving.fail(translated("there is no image in this document"))
                       : images == 1 ? write_still(saving, sink)
                                     : write_animation(saving, images, sink);
  if (!written) return WriteResult::Failed;
  if (sink.finish()) return WriteResult::Done;
  saving.fail_to_write(sink);
  return WriteResult::Failed;
}

}  // namespace

WriteResult write_webp(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host) {
  if (window.document.kind == DocumentKind::WEBP) return write_file({window, host, options}, sink);
  DocumentWindow converted;
  if (!convert_document(window, converted, DocumentKind::WEBP, host)) return WriteResult::Failed;
  return write_file({converted, host, options}, sink);
}

}  // namespace vellum
