// The deeper search: the canvases of an animation made of frames anew, as small as a cheap estimate finds, in
// the smallest form that holds all of them.
#include <algorithm>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/parallel.h"
#include "core/edit/document_colors.h"
#include "core/edit/edit_closing.h"
#include "core/files/save_document.h"
#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"
#include "core/model/playing_rules.h"
#include "core/model/record_picture.h"
#include "image/picture_rows.h"
#include "operations/deep_ways.h"
#include "operations/reconstruct.h"
#include "operations/same_animation.h"
#include "operations/source_canvases.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

PictureRect whole_of_canvas(const Picture& canvas) {
  return {0, 0, static_cast<std::int32_t>(canvas.width()), static_cast<std::int32_t>(canvas.height())};
}

/// The image of an animated PNG that is no frame, as canvases are; null where there is none.
Picture default_image(const DocumentWindow& window) {
  const Picture kept(window.document.defaultImage);
  if (!kept) return {};
  Picture canvas = PictureToTrueColorAlpha(PictureWithTransparency(kept, document_transparency(window.list)));
  if (!canvas) return {};
  const EditRows rows(canvas);
  for (std::uint32_t y = 0; rows && y < canvas.height(); ++y)
    for (std::size_t x = 0; x < canvas.width(); ++x)
      if (rows[y][4 * x + 3] == 0) write_le32(rows[y] + 4 * x, 0);
  return canvas;
}

/// Chooses the frames, one after the other.
class DeepSearch {
 public:
  DeepSearch(Supercompression& work, const PixelForm& form, SourceCanvases& source)
      : work_(work), form_(form), source_(source) {}

  /// Whether the draft got its frames. False when it was stopped or memory is exhausted.
  bool run() {
    const auto entries = frame_entries(work_.draft);
    const Progress progress(work_.host, string_text(StringId::SearchingDeeper));
    ways_.reserve(entries.size());
    disposals_.assign(entries.size(), 0);
    if (!take_first(source_.canvas(0))) return false;
    constexpr std::size_t kAtOnce = 16;
    for (std::size_t first = 1; first < entries.size(); first += kAtOnce) {
      if (work_.host.stopped()) return false;
      if (!take_some(first, std::min(kAtOnce, entries.size() - first))) return false;
      progress.step(first, entries.size());
    }
    put_frames(entries);
    return true;
  }

 private:
  bool mng() const { return work_.draft.document.kind == DocumentKind::MING; }

  bool take_first(const Picture& canvas) {
    if (!canvas) return false;
    const PictureRect whole = whole_of_canvas(canvas);
    Way way{.picture = part_of(canvas, whole, form_, nullptr), .rect = whole};
    // Nothing of the last frame may be seen in a second round.
    way.clears = mng() && !is_opaque_part(canvas, whole);
    last_ = canvas;
    empty_ = PictureCreateAlpha(canvas.width(), canvas.height());
    under_ = empty_;
    ways_.push_back(std::move(way));
    return ways_.back().picture && empty_;
  }

  /// What doesn't depend on the frame in front is done side by side.
  bool take_some(std::size_t first, std::size_t count) {
    std::vector<Picture> canvases{last_};
    for (std::size_t i = 0; i < count; ++i) {
      canvases.push_back(source_.canvas(first + i));
      if (!canvases.back()) return false;
    }
    std::vector<std::vector<Way>> ways(count);
    parallel_for(count, [&](std::size_t i) { ways[i] = lone_ways(canvases[i], canvases[i + 1]); });
    for (std::size_t i = 0; i < count; ++i)
      if (!take_next(first + i, canvases[i + 1], std::move(ways[i]))) return false;
    return true;
  }

  /// The ways on what the last frame left; of an MNG those on an empty canvas, too.
  std::vector<Way> lone_ways(const Picture& last, const Picture& canvas) const {
    const WayRule rule = mng() ? WayRule::LiesOver : WayRule::Replaces;
    std::vector<Way> ways = ways_on(last, false, canvas, form_, rule);
    if (mng() &&
        (ways.empty() || rect_area(filled_rect(canvas, whole_of_canvas(canvas))) < rect_area(ways[0].rect)))
      std::ranges::move(ways_on(empty_, true, canvas, form_, rule), std::back_inserter(ways));
    if (ways.size() > 1) estimate(ways);
    return ways;
  }

  void estimate(std::vector<Way>& ways) const {
    for (Way& way : ways)
      if (way.cost == 0) way.cost = way.picture ? estimated_bytes(form_, way.picture) : SIZE_MAX;
  }

  Picture cleared(const PictureRect& rect) const {
    Picture canvas = PictureDuplicate(last_);
    PictureFillRect(canvas, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, 0);
    return canvas;
  }

  /// What the frame in front can leave beside what it shows: nothing where it was, or what was there.
  struct Ground {
    Picture canvas;
    std::uint32_t dispose;
  };
  std::vector<Ground> grounds(std::size_t frame, const Picture& canvas, std::size_t least) const {
    std::vector<Ground> all;
    if (work_.draft.document.kind != DocumentKind::APNG) return all;
    const PictureRect& rect = ways_.back().rect;
    // What is drawn there again makes a larger part of the canvas.
    if (rect_area(filled_rect(canvas, rect)) < least) all.push_back({cleared(rect), 1});
    // Behind the first frame this is the same.
    if (frame > 1) all.push_back({under_, 2});
    return all;
  }

  bool take_next(std::size_t frame, const Picture& canvas, std::vector<Way> ways) {
    std::vector<Picture> of(ways.size(), last_);
    std::vector<std::uint32_t> disposals(ways.size(), 0);
    // A larger part of the canvas costs more, as good as always.
    std::size_t least = ways.empty() ? SIZE_MAX : rect_area(ways[0].rect);
    for (const Ground& ground : grounds(frame, canvas, least)) {
      if (!ground.canvas) return false;
      const std::size_t pixels = rect_area(changed_rect(ground.canvas, canvas));
      if (pixels >= least) continue;
      least = pixels;
      for (Way& way : ways_on(ground.canvas, false, canvas, form_, WayRule::Replaces)) {
        ways.push_back(std::move(way));
        of.push_back(ground.canvas);
        disposals.push_back(ground.dispose);
      }
    }
    if (ways.empty()) return false;
    if (ways.size() > 1) estimate(ways);
    const auto best = static_cast<std::size_t>(std::ranges::min_element(ways, {}, &Way::cost) - ways.begin());
    if (!ways[best].picture) return false;
    disposals_[frame - 1] = disposals[best];
    under_ = of[best];
    ways_.push_back(std::move(ways[best]));
    last_ = canvas;
    return true;
  }

  void put_frames(const std::vector<std::size_t>& entries) {
    DocumentWindow& draft = work_.draft;
    const DocumentKind kind = draft.document.kind;
    const bool clearing = std::ranges::any_of(ways_, &Way::clears);
    ChunkRecord record;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const Way& way = ways_[i];
      chunk_list_get(draft.list, entries[i], record);
      record_take_picture(record, kind, way.picture);
      SetFrameOffset(record, kind, {way.rect.left, way.rect.top});
      if (kind == DocumentKind::APNG) {
        set_frame_dispose(record, kind, disposals_[i]);
        record.frameControl.blend = way.over ? 1 : 0;
      }
      record.interlace = 0;
      if (kind == DocumentKind::MING) {
        // Behind an image with a FRAM one without says another delay than it had alone.
        const std::uint32_t ticks = delay_ticks(record);
        if (clearing || clears_canvas(record)) {
          set_frame_dispose(record, kind, way.clears ? 1 : 0);
          set_frame_ticks(record, ticks);
        }
        record.image.edit().paletteBytes = 3 * form_.colors.colors;
        record.colorType = form_.colors.colorType;
        record.bitDepth = form_.colors.bitDepth;
        put_image_transparency(record, form_.colors.transparency);
      }
      record.description = chunk_description(record);
      chunk_list_put(draft.list, entries[i], record);
    }
    put_default_image();
    if (kind != DocumentKind::MING) put_header();
    finish_edit(draft, false);
  }

  void put_default_image() {
    const Picture kept = default_image(work_.draft);
    if (!kept) return;
    work_.draft.document.defaultImage = part_of(kept, whole_of_canvas(kept), form_, nullptr).handle();
  }

  void put_header() {
    put_document_colors(work_.draft, form_.colors);
    ChunkRecord header;
    const std::size_t at = chunk_find_first(work_.draft.list, tag::IHDR, &header);
    if (at == kNoEntry || header.interlace == 0) return;
    header.interlace = 0;
    header.description = chunk_description(header);
    chunk_list_put(work_.draft.list, at, header);
  }

  Supercompression& work_;
  const PixelForm& form_;
  SourceCanvases& source_;
  std::vector<Way> ways_;
  std::vector<std::uint32_t> disposals_;
  Picture last_, under_;  ///< the last canvas, and what was there in front of its frame
  Picture empty_;
};

/// All colors of a document; nothing when a picture is lost or the user stopped it.
std::optional<PixelStock> stock_of(SourceCanvases& source, Host& host) {
  PixelStock stock;
  for (std::size_t i = 0; i < source.size() && !stock.settled(); ++i) {
    const Picture canvas = host.stopped() ? Picture() : source.canvas(i);
    if (!canvas) return std::nullopt;
    stock.add(canvas);
  }
  if (const Picture kept = default_image(source.window())) stock.add(kept);
  return stock;
}

/// How long a quickly packed file of it is.
std::uint64_t quick_bytes(DocumentWindow window) {
  std::uint64_t bytes = 0;
  SaveOptions options = save_options();
  options.compression = 2;
  Host silent;
  const auto result = write_document(window, window.document.kind, counting_sink(bytes), options, silent);
  return result == WriteResult::Done ? bytes : UINT64_MAX;
}

std::uint64_t pixel_bytes(const DocumentWindow& window) {
  std::uint64_t bytes = 0;
  for (const std::size_t entry : frame_entries(window)) {
    const Picture picture = picture_of(window.list.record(entry));
    bytes += picture.stride() * std::uint64_t{picture.height()};
  }
  return bytes;
}

/// The first frame, and of the others every so many.
DocumentWindow thinned(DocumentWindow window, std::size_t every) {
  const auto entries = frame_entries(window);
  for (std::size_t i = entries.size(); i-- > 1;)
    if (i % every != 0) window.list.remove(entries[i]);
  return window;
}

/// By what is packed, where that differs much, else by a quickly packed file; of a large one by some frames.
bool is_smaller(const DocumentWindow& draft, const DocumentWindow& before) {
  constexpr std::uint64_t kMuch = 3, kLarge = std::uint64_t{4} << 20;
  const std::uint64_t now = pixel_bytes(before);
  if (kMuch * pixel_bytes(draft) < now) return true;
  const auto every = static_cast<std::size_t>(now / kLarge + 1);
  return quick_bytes(thinned({draft.document, draft.list, {}}, every)) <
         quick_bytes(thinned({before.document, before.list, {}}, every));
}

/// Neighbours that show the same become one frame. Where there are none, or too many to hold at a time, the
/// draft stays as it is.
void merge_equal(Supercompression& work) {
  DocumentWindow merged{work.draft.document, work.draft.list, {}};
  if (!reconstruct_frames(merged, CanvasDepth::TrueColorAlpha, work.host, true) ||
      frame_entries(merged).size() == frame_entries(work.draft).size())
    return;
  work.draft.document = std::move(merged.document);
  work.draft.list = merged.list;
}

}  // namespace

bool deep_pass(Supercompression& work) {
  work.say(StringId::DeepBegins);
  if (work.draft.document.kind == DocumentKind::WEBP) {
    work.say(StringId::DeepFoundNothing);
    return true;
  }
  const DocumentWindow before{work.draft.document, work.draft.list, {}};
  if (work.passes & kMergePass) merge_equal(work);
  const bool merged = frame_entries(work.draft).size() != work.source.size();
  std::optional<SourceCanvases> own;
  if (merged) own.emplace(DocumentWindow{work.draft.document, work.draft.list, {}});
  SourceCanvases& source = own ? *own : work.source;
  const auto stock = stock_of(source, work.host);
  const auto put_back = [&] {
    work.draft.document = before.document;
    work.draft.list = before.list;
  };
  if (!stock) {
    put_back();
    return work.host.stopped() ? false : work.abort(StringId::ErrorAccessingChunk);
  }
  const PixelForm form = smallest_form(*stock, is_animation(work.draft.document.kind));
  if (!DeepSearch(work, form, source).run()) {
    put_back();
    return work.host.stopped() ? false : work.abort(StringId::MemoryError);
  }
  const bool smaller = is_smaller(work.draft, before);
  if (!smaller || !is_same_animation(source, work.draft, work.host)) {
    put_back();
    if (work.host.stopped()) return false;
    work.say(smaller ? StringId::NotTheSame : StringId::DeepFoundNothing);
    return true;
  }
  work.say(StringId::DeepChanged, {std::to_string(frame_entries(work.draft).size())});
  return true;
}

}  // namespace vellum
