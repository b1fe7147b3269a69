#include "operations/animation_properties.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/text.h"
#include "core/files/save_document.h"
#include "core/model/played_frames.h"
#include "core/model/playing_rules.h"
#include "operations/frames.h"

namespace vellum {
namespace {

FrameProperties frame_properties(const DocumentWindow& window, std::size_t entry, std::uint32_t ticks) {
  const DocumentKind kind = window.document.kind;
  const ChunkRecord& record = window.list.record(entry);
  FrameProperties frame;
  frame.entry = entry;
  frame.offset = GetFrameOffset(record, kind);
  frame.delay = frame_delay_ms(record, kind, ticks);
  frame.dispose = GetFrameDispose(record, kind);
  frame.over = frame_manner(record, kind).over;
  const Picture picture = picture_of(record);
  if (!picture) return frame;
  frame.size = {picture.width(), picture.height()};
  frame.bits = picture.bits();
  frame.colors = std::uint64_t{1} << std::min(picture.bits(), 24u);
  frame.memory = picture.handle().size();
  return frame;
}

std::vector<std::string> color_forms(const std::vector<FrameProperties>& frames) {
  static const std::map<std::uint32_t, const char*> names = {{1, "1 bit, two colors"},
                                                             {4, "4 bits, palette"},
                                                             {8, "8 bits, palette"},
                                                             {24, "24 bits, true color"},
                                                             {32, "32 bits, true color with alpha"}};
  std::vector<std::string> forms;
  for (const auto& [bits, name] : names)
    if (std::ranges::any_of(frames, [b = bits](const FrameProperties& frame) { return frame.bits == b; }))
      forms.emplace_back(name);
  return forms;
}

/// Bytes of all pictures, the default image too.
std::uint64_t picture_memory(const DocumentWindow& window, const std::vector<FrameProperties>& frames) {
  std::set<const std::uint8_t*> seen;
  std::uint64_t sum = 0;
  const auto add = [&](const ChunkHandle& block) {
    if (block && seen.insert(block.data()).second) sum += block.size();
  };
  for (const FrameProperties& frame : frames)
    if (frame.bits > 0) add(window.list.record(frame.entry).data);
  add(window.document.defaultImage);
  return sum;
}

std::uint64_t key_of(const FrameProperties& frame, FrameColumn column) {
  switch (column) {
    case FrameColumn::Size:
      return std::uint64_t{frame.size.width} * frame.size.height;
    case FrameColumn::Delay:
      return frame.delay;
    case FrameColumn::Colors:
      return frame.colors;
    case FrameColumn::Memory:
      return frame.memory;
    case FrameColumn::Number:
      break;
  }
  return frame.number;
}

}  // namespace

AnimationProperties animation_properties(const DocumentWindow& window) {
  AnimationProperties properties;
  properties.name = document_title(window.document);
  properties.kind = window.document.kind;
  properties.canvas = document_size(window.list, window.document);
  properties.plays = whole_plays(window);
  const std::uint32_t ticks = ticks_per_second(window.list);
  if (properties.kind == DocumentKind::MING) properties.ticks = ticks;
  for (const std::size_t entry : frame_entries(window)) {
    properties.frames.push_back(frame_properties(window, entry, ticks));
    properties.frames.back().number = properties.frames.size();
    properties.runningTime += properties.frames.back().delay;
  }
  properties.colorForms = color_forms(properties.frames);
  Palette palette;
  properties.paletteColors = chunk_find_palette(window.list, palette);
  properties.memory = picture_memory(window, properties.frames);
  return properties;
}

std::optional<std::uint64_t> size_on_disk(const Document& document) {
  if (document.fileName.empty()) return std::nullopt;
  std::error_code error;
  const auto size = std::filesystem::file_size(document.fileName, error);
  return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

std::optional<std::uint64_t> size_when_written(const DocumentWindow& window, const SaveOptions& options,
                                               Host& host) {
  DocumentWindow copy;
  copy.document = window.document;
  copy.list = window.list;
  std::uint64_t bytes = 0;
  const Sink sink = counting_sink(bytes, [&host] { return host.stopped(); });
  Host silent;
  const WriteResult result = write_document(copy, copy.document.kind, sink, options, silent);
  return result == WriteResult::Done ? std::optional(bytes) : std::nullopt;
}

FrameColumn frame_column(int index) {
  const bool known = index >= 0 && index < static_cast<int>(kFrameColumns.size());
  return known ? static_cast<FrameColumn>(index) : FrameColumn::Number;
}

void sort_frames(std::vector<FrameProperties>& frames, FrameColumn column) {
  std::ranges::sort(frames, {}, [column](const FrameProperties& frame) {
    return std::pair(key_of(frame, column), frame.number);
  });
}

Light traffic_light(std::uint64_t value, std::uint64_t yellow, std::uint64_t red) {
  return value <= yellow ? Light::Green : value <= red ? Light::Yellow : Light::Red;
}

}  // namespace vellum
