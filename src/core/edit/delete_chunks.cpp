#include "core/edit/delete_chunks.h"

#include <algorithm>
#include <optional>

#include "base/fields.h"
#include "base/text.h"
#include "core/edit/edit_closing.h"
#include "core/edit/placement.h"
#include "core/edit/undo.h"
#include "core/model/chunk_description.h"
#include "core/settings.h"

namespace vellum {
namespace {

bool is_fixed(ChunkTag tag) {
  static constexpr ChunkTag fixed[] = {tag::IHDR, tag::IEND, tag::acTL, tag::MHDR, tag::MEND, tag::WEBH};
  return std::ranges::find(fixed, tag) != std::end(fixed);
}

struct Warning {
  StringId text;
  int* option;
};
constexpr Warning kStays = {StringId::NotDeleted, &settings::WarnKillChunk};
constexpr Warning kImageGoes = {StringId::DeletedImage, &settings::WarnKillIDAT};
constexpr Warning kPaletteGoes = {StringId::DeletedPalette, &settings::WarnKillPLTE};

/// A deletion that was looked at: what goes, what stays, and what has to be told.
struct Deletion {
  const DocumentWindow& window;
  std::vector<bool> marks;
  std::vector<PlaceRange> streams;
  bool paletted;
  std::vector<std::size_t> staying = {};
  std::vector<const Warning*> warnings = {};

  void warn(const Warning& warning) {
    if (std::ranges::find(warnings, &warning) == warnings.end()) warnings.push_back(&warning);
  }
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

/// Takes the mark away from what stays.
void judge(Deletion& deletion, std::size_t i) {
  const ChunkTag tag = deletion.window.list.record(i).tag;
  const bool in_stream = stream_of(deletion.streams, i) && tag == tag::IEND;
  if ((is_fixed(tag) && !(in_stream && deletion.marks[stream_of(deletion.streams, i)->first])) ||
      keeps_stream(deletion, i)) {
    deletion.marks[i] = false;
    deletion.staying.push_back(i);
    deletion.warn(kStays);
  } else if (tag == tag::IDAT && deletion.window.document.kind == DocumentKind::PING) {
    deletion.warn(kImageGoes);
  } else if (tag == tag::PLTE && deletion.paletted) {
    deletion.warn(kPaletteGoes);
  }
}

/// The caret stays on its entry, or moves onto the one that takes its place.
void keep_caret(DocumentWindow& window, const std::vector<bool>& marks) {
  const auto caret =
      std::min<std::size_t>(static_cast<std::size_t>(std::max(window.document.caret, 0)), marks.size());
  window.document.caret -= static_cast<std::int32_t>(
      std::count(marks.begin(), marks.begin() + static_cast<std::ptrdiff_t>(caret), true));
}

/// "2 tEXt, IDAT", in the order of the list.
std::string tags_text(const ChunkList& list, const std::vector<std::size_t>& entries) {
  std::vector<std::pair<ChunkTag, std::size_t>> counts;
  for (const std::size_t i : entries) {
    const ChunkTag tag = list.record(i).tag;
    const auto at = std::ranges::find(counts, tag, &std::pair<ChunkTag, std::size_t>::first);
    at == counts.end() ? (void)counts.emplace_back(tag, 1) : (void)++at->second;
  }
  std::string text;
  for (const auto& [tag, count] : counts)
    text.append(text.empty() ? "" : ", ")
        .append(count == 1 ? "" : std::to_string(count) + " ")
        .append(tag_letters(tag));
  return text;
}

std::vector<std::size_t> marked(const std::vector<bool>& marks) {
  std::vector<std::size_t> entries;
  for (std::size_t i = 0; i < marks.size(); ++i)
    if (marks[i]) entries.push_back(i);
  return entries;
}

/// What goes, what stays, and what the file then lacks.
std::string describe(const Deletion& deletion) {
  const ChunkList& list = deletion.window.list;
  std::string text = filled(StringId::WillBeDeleted, {tags_text(list, marked(deletion.marks))});
  if (!deletion.staying.empty()) {
    std::vector<std::size_t> staying = deletion.staying;
    std::ranges::sort(staying);
    text += "\n" + filled(StringId::WillStay, {tags_text(list, staying)});
  }
  for (const Warning* warning : deletion.warnings)
    if (warning != &kStays && *warning->option != 0) text.append("\n\n").append(string_text(warning->text));
  return text;
}

/// One question about several, which lists them; where it is switched off, and for a single one, each
/// warning.
bool agrees(const Deletion& deletion, std::size_t count, Host& host) {
  if (count >= 2 && settings::WarnMultipleDelete != 0 && host.ask) {
    const StringId id = StringId::DeleteAllQuestion;
    const Message question{id,
                           {},
                           format_text(string_text(id).data(), static_cast<int>(count)),
                           describe(deletion),
                           &settings::WarnMultipleDelete};
    return host.ask(question, false) == Answer::Yes;
  }
  for (const Warning* warning : deletion.warnings) host.warn(warning->text, *warning->option);
  return true;
}

/// Nothing, with the message given to the host, where the list can't be judged.
std::optional<Deletion> looked_at(const DocumentWindow& window, std::vector<bool> marks, Host& host) {
  ChunkRecord header;
  const bool has_header = chunk_find_first(window.list, tag::IHDR, &header) != kNoEntry;
  if (window.document.kind == DocumentKind::PING && !has_header) {
    host.show(StringId::ErrorAccessingChunk);
    return std::nullopt;
  }
  Deletion deletion{window, std::move(marks), opaque_streams(window.list, window.document.kind),
                    has_header && header.colorType == 3};
  for (std::size_t i = window.list.size(); i-- > 0;)
    if (deletion.marks[i]) judge(deletion, i);
  return deletion;
}

bool remove_entries(DocumentWindow& window, const std::vector<bool>& marks) {
  const std::vector<std::size_t> entries = marked(marks);
  if (entries.empty()) return false;
  const bool counted = std::ranges::any_of(
      entries, [&](std::size_t i) { return is_counted(window.document.kind, window.list.record(i).tag); });
  keep_caret(window, marks);
  window.list.remove_marked(marks);
  finish_edit(window, counted);
  return true;
}

}  // namespace

bool delete_marked(DocumentWindow& window, std::vector<bool> marks, Host& host) {
  const auto deletion = looked_at(window, std::move(marks), host);
  return deletion && agrees(*deletion, 1, host) && remove_entries(window, deletion->marks);
}

bool delete_selected(DocumentWindow& window, Host& host) {
  const std::size_t count = window.list.selected_count();
  if (count == 0) return false;
  std::vector<bool> marks(window.list.size());
  for (std::size_t i = 0; i < marks.size(); ++i) marks[i] = window.list.entry(i).selected;
  const auto deletion = looked_at(window, std::move(marks), host);
  if (!deletion || !agrees(*deletion, count, host)) return false;
  const std::size_t going = marked(deletion->marks).size();
  const ChunkTag first = going > 0 ? window.list.record(marked(deletion->marks).front()).tag : 0;
  return going > 0 && undo_push(window, host, undo_name(StringId::UndoDelete, going, first)) &&
         remove_entries(window, deletion->marks);
}

}  // namespace vellum
