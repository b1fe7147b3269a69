#include "core/edit/delete_chunks.h"

#include <algorithm>

#include "base/text.h"
#include "core/edit/edit_closing.h"
#include "core/edit/placement.h"
#include "core/edit/undo.h"
#include "core/settings.h"

namespace vellum {
namespace {

bool is_fixed(ChunkTag tag) {
  static constexpr ChunkTag fixed[] = {tag::IHDR, tag::IEND, tag::acTL, tag::MHDR, tag::MEND, tag::WEBH};
  return std::ranges::find(fixed, tag) != std::end(fixed);
}

/// A deletion under way.
struct Deletion {
  DocumentWindow& window;
  Host& host;
  std::vector<bool> marks;
  std::vector<PlaceRange> streams;
  bool paletted;
};

/// A stream goes as a whole with its first chunk, and chunks that a decoder may miss go alone.
bool keeps_stream(Deletion& deletion, std::size_t i) {
  const PlaceRange* stream = stream_of(deletion.streams, i);
  if (!stream) return false;
  if (i == stream->first) {
    for (std::size_t k = stream->first; k <= stream->last; ++k) deletion.marks[k] = true;
    return false;
  }
  return !is_ancillary(deletion.window.list.record(i).tag) && !deletion.marks[stream->first];
}

/// Takes the mark away from what stays, with the warnings.
void judge(Deletion& deletion, std::size_t i) {
  const ChunkTag tag = deletion.window.list.record(i).tag;
  const bool in_stream = stream_of(deletion.streams, i) && tag == tag::IEND;
  if ((is_fixed(tag) && !(in_stream && deletion.marks[stream_of(deletion.streams, i)->first])) ||
      keeps_stream(deletion, i)) {
    deletion.marks[i] = false;
    deletion.host.warn(StringId::NotDeleted, settings::WarnKillChunk);
  } else if (tag == tag::IDAT && deletion.window.document.kind == DocumentKind::PING) {
    deletion.host.warn(StringId::DeletedImage, settings::WarnKillIDAT);
  } else if (tag == tag::PLTE && deletion.paletted) {
    deletion.host.warn(StringId::DeletedPalette, settings::WarnKillPLTE);
  }
}

/// The caret stays on its entry, or moves onto the one that takes its place.
void keep_caret(DocumentWindow& window, const std::vector<bool>& marks) {
  const auto caret =
      std::min<std::size_t>(static_cast<std::size_t>(std::max(window.document.caret, 0)), marks.size());
  window.document.caret -= static_cast<std::int32_t>(
      std::count(marks.begin(), marks.begin() + static_cast<std::ptrdiff_t>(caret), true));
}

bool agrees_to_all(Host& host, std::size_t count) {
  if (count < 2 || settings::WarnMultipleDelete == 0 || !host.ask) return true;
  const Message question{
      StringId::DeleteAllQuestion,
      {},
      format_text(string_text(StringId::DeleteAllQuestion).data(), static_cast<int>(count)),
      {},
      &settings::WarnMultipleDelete};
  return host.ask(question, false) == Answer::Yes;
}

}  // namespace

bool delete_marked(DocumentWindow& window, std::vector<bool> marks, Host& host) {
  const DocumentKind kind = window.document.kind;
  ChunkRecord header;
  const bool has_header = chunk_find_first(window.list, tag::IHDR, &header) != kNoEntry;
  if (kind == DocumentKind::PING && !has_header) {
    host.show(StringId::ErrorAccessingChunk);
    return false;
  }
  Deletion deletion{window, host, std::move(marks), opaque_streams(window.list, kind),
                    has_header && header.colorType == 3};
  for (std::size_t i = window.list.size(); i-- > 0;)
    if (deletion.marks[i]) judge(deletion, i);
  bool counted = false, any = false;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    if (!deletion.marks[i]) continue;
    any = true;
    counted = counted || is_counted(kind, window.list.record(i).tag);
  }
  if (!any) return false;
  keep_caret(window, deletion.marks);
  window.list.remove_marked(deletion.marks);
  finish_edit(window, counted);
  return true;
}

bool delete_selected(DocumentWindow& window, Host& host) {
  const std::size_t count = window.list.selected_count();
  if (count == 0 || !undo_push(window, host) || !agrees_to_all(host, count)) return false;
  std::vector<bool> marks(window.list.size());
  for (std::size_t i = 0; i < marks.size(); ++i) marks[i] = window.list.entry(i).selected;
  return delete_marked(window, std::move(marks), host);
}

}  // namespace vellum
