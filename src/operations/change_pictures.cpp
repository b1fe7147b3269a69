#include "operations/change_pictures.h"

#include <algorithm>
#include <atomic>

#include "base/memory_budget.h"
#include "base/parallel.h"
#include "core/edit/document_colors.h"
#include "core/model/chunk_description.h"
#include "core/model/record_picture.h"
#include "operations/frame_pictures.h"

namespace vellum {
namespace {

FrameWork work_of(const DocumentWindow& draft, std::size_t frame, std::size_t entry) {
  FrameWork work;
  work.frame = frame;
  chunk_list_get(draft.list, entry, work.record);
  work.picture = picture_of(work.record);
  work.offset = GetFrameOffset(work.record, draft.document.kind);
  return work;
}

/// Whether a picture's record stays what it is but for the size.
bool has_same_form(const Picture& a, const Picture& b) {
  if (a.bits() != b.bits() || a.colours() != b.colours()) return false;
  return a.bits() > 8 || std::equal(a.table(), a.table() + 4 * a.colours(), b.table());
}

void put_back(DocumentWindow& draft, std::size_t entry, FrameWork& work) {
  const DocumentKind kind = draft.document.kind;
  const Picture before = picture_of(draft.list.record(entry));
  const FrameOffset now = GetFrameOffset(work.record, kind);
  if (!has_same_form(before, work.picture))
    record_take_picture(work.record, kind, work.picture);
  else if (!before.handle().shares_with(work.picture.handle()))
    record_take_pixels(work.record, kind, work.picture);
  if (now.x != work.offset.x || now.y != work.offset.y) SetFrameOffset(work.record, kind, work.offset);
  work.record.description = chunk_description(work.record);
  chunk_list_put(draft.list, entry, work.record);
}

bool change_default_image(DocumentWindow& draft, const ChangePicture& change) {
  FrameWork work;
  work.frame = kDefaultImageWork;
  work.picture = Picture(draft.document.defaultImage);
  if (!work.picture) return true;
  if (!change(work) || !work.picture) return false;
  draft.document.defaultImage = work.picture.handle();
  return true;
}

}  // namespace

bool names_all(const FrameList& frames, const DocumentWindow& window) {
  return frames.size() == frame_entries(window).size();
}

bool change_pictures(DocumentWindow& draft, const FrameList& frames, std::string_view caption, Host& host,
                     const ChangePicture& change) {
  const auto entries = frame_entries(draft);
  const Progress progress(host, caption);
  const std::size_t step = 4 * parallel_width();
  for (std::size_t first = 0; first < frames.size(); first += step) {
    if (host.stopped()) return false;
    const std::size_t count = std::min(step, frames.size() - first);
    std::vector<FrameWork> works;
    for (std::size_t i = 0; i < count; ++i)
      works.push_back(work_of(draft, frames[first + i], entries[frames[first + i]]));
    std::atomic<bool> failed = false;
    parallel_for(count, [&](std::size_t i) {
      if (!works[i].picture || !change(works[i]) || !works[i].picture) failed = true;
    });
    if (failed) return false;
    for (FrameWork& work : works) {
      const ChunkHandle before = draft.list.record(entries[work.frame]).data;
      put_back(draft, entries[work.frame], work);
      // Its rows were made for this; the next results take their memory.
      if (!before.shares_with(work.record.data)) let_go(before);
    }
    progress.step(first + count, frames.size());
  }
  return !names_all(frames, draft) || change_default_image(draft, change);
}

void follow_palettes(DocumentWindow& draft) {
  const DocumentKind kind = draft.document.kind;
  if (kind != DocumentKind::PING && kind != DocumentKind::APNG) return;
  if (const auto colors = shared_colors(draft)) put_document_colors(draft, *colors);
}

}  // namespace vellum
