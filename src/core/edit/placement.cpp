#include "core/edit/placement.h"

#include <algorithm>

#include "core/model/kind_table.h"

namespace vellum {
namespace {

bool begins_stream(ChunkTag tag) {
  return tag == make_tag("JHDR") || tag == make_tag("DHDR") || tag == make_tag("BASI");
}

bool is_header(DocumentKind kind, ChunkTag tag) { return tag == kind_row(kind).header; }

/// A chunk that nothing may come between it and the header.
bool belongs_to_header(const ListShape& shape, ChunkTag tag, std::size_t index) {
  if (is_header(shape.kind, tag)) return true;
  if (shape.kind == DocumentKind::MING) return tag == tag::TERM && index == shape.head;
  return tag == tag::acTL && shape.kind == DocumentKind::APNG && index < shape.firstImage;
}

void note(ListShape& shape, std::size_t index, ChunkTag tag) {
  const ChunkPlace place = place_of(tag, shape.kind);
  const auto first = [index](std::size_t& landmark) { landmark = std::min(landmark, index); };
  const auto behind = [index](std::size_t& landmark) { landmark = std::max(landmark, index + 1); };
  if (is_end_entry(shape.kind, tag)) first(shape.end);
  if (belongs_to_header(shape, tag, index)) behind(shape.head);
  if (place == ChunkPlace::Image || (shape.kind == DocumentKind::MING && begins_stream(tag)))
    first(shape.firstImage);
  if (tag == tag::LOOP && shape.kind == DocumentKind::MING) first(shape.firstLoop);
  if (index >= shape.firstImage) return;  // what stands there keeps nothing from standing in front of it
  if (place == ChunkPlace::AtPalette) first(shape.palette);
  if (place == ChunkPlace::BehindPalette) first(shape.behindPalette);
  if (place == ChunkPlace::BeforePalette) behind(shape.behindEarly);
  if (place == ChunkPlace::Canvas) behind(shape.behindCanvas);
  const bool in_front = place == ChunkPlace::BeforePalette || place == ChunkPlace::AtPalette ||
                        place == ChunkPlace::BehindPalette || place == ChunkPlace::BeforeImage ||
                        place == ChunkPlace::Termination || place == ChunkPlace::Canvas || tag == tag::LOOP;
  if (in_front) behind(shape.behindFront);
}

using Range = std::optional<PlaceRange>;

/// `last` rules where the list is out of order already.
Range range(std::size_t first, std::size_t last) { return PlaceRange{std::min(first, last), last}; }

std::size_t before_image(const ListShape& s) { return std::min(s.firstImage, s.end); }

Range nowhere(const ListShape&) { return std::nullopt; }
Range anywhere(const ListShape& s) { return range(s.head, s.end); }
Range image_range(const ListShape& s) { return range(std::max(s.head, s.behindFront), s.end); }
Range early_range(const ListShape& s) {
  const std::size_t last = std::min({s.palette, s.behindPalette, before_image(s)});
  return range(last == s.end ? s.head : last, last);  // directly in front of palette or image
}
Range palette_range(const ListShape& s) {
  return range(std::max(s.head, s.behindEarly), std::min(s.behindPalette, before_image(s)));
}
Range behind_palette_range(const ListShape& s) {
  const std::size_t palette = s.palette == kNoEntry ? 0 : s.palette + 1;
  return range(std::max({s.head, s.behindEarly, palette}), before_image(s));
}
Range before_image_range(const ListShape& s) { return range(s.head, before_image(s)); }
Range termination_range(const ListShape&) { return range(1, 1); }
Range loop_range(const ListShape& s) { return range(std::max(s.head, s.behindCanvas), s.end); }
Range canvas_range(const ListShape& s) { return range(s.head, std::min(before_image(s), s.firstLoop)); }

// The same for an entry of the list, which is among the landmarks itself.

bool never(const ListShape&, std::size_t) { return false; }
bool free_holds(const ListShape& s, std::size_t i) { return i >= s.head && i < s.end; }
bool front_holds(const ListShape& s, std::size_t i) { return i >= s.head && i < before_image(s); }
bool early_holds(const ListShape& s, std::size_t i) { return front_holds(s, i) && i < s.palette; }
bool palette_holds(const ListShape& s, std::size_t i) {
  return front_holds(s, i) && i >= s.behindEarly && i < s.behindPalette;
}
bool behind_palette_holds(const ListShape& s, std::size_t i) {
  return front_holds(s, i) && (s.palette == kNoEntry || i > s.palette);
}
bool loop_holds(const ListShape& s, std::size_t i) { return free_holds(s, i) && i >= s.behindCanvas; }
bool termination_holds(const ListShape&, std::size_t i) { return i == 1; }
bool canvas_holds(const ListShape& s, std::size_t i) { return front_holds(s, i) && i < s.firstLoop; }

/// What a place means: where a new entry goes, and where one may stand.
struct RangeRow {
  ChunkPlace place;
  Range (*range)(const ListShape& shape);
  bool (*holds)(const ListShape& shape, std::size_t index);
};

constexpr RangeRow kRanges[] = {
    {ChunkPlace::Fixed, nowhere, never},
    {ChunkPlace::Image, image_range, free_holds},
    {ChunkPlace::BeforePalette, early_range, early_holds},
    {ChunkPlace::AtPalette, palette_range, palette_holds},
    {ChunkPlace::BehindPalette, behind_palette_range, behind_palette_holds},
    {ChunkPlace::BeforeImage, before_image_range, front_holds},
    {ChunkPlace::Anywhere, anywhere, free_holds},
    {ChunkPlace::Termination, termination_range, termination_holds},
    {ChunkPlace::Canvas, canvas_range, canvas_holds},
    {ChunkPlace::Loop, loop_range, loop_holds},
    {ChunkPlace::Folded, nowhere, never},
};

}  // namespace

bool is_end_entry(DocumentKind kind, ChunkTag tag) {
  if (kind == DocumentKind::MING) return tag == tag::MEND;
  return kind != DocumentKind::WEBP && tag == tag::IEND;
}

ListShape shape_of(const ChunkList& list, DocumentKind kind) {
  ListShape shape;
  shape.kind = kind;
  shape.size = shape.end = list.size();
  for (std::size_t i = 0; i < list.size() && i <= shape.firstImage; ++i) note(shape, i, list.record(i).tag);
  // The end is the last entry of nearly every list.
  for (std::size_t i = list.size(); i-- > 0 && shape.end == list.size();)
    if (is_end_entry(kind, list.record(i).tag)) shape.end = i;
  return shape;
}

void shape_insert(ListShape& shape, std::size_t index, ChunkTag tag) {
  ++shape.size;
  for (std::size_t* at :
       {&shape.end, &shape.palette, &shape.behindPalette, &shape.firstImage, &shape.firstLoop})
    if (*at != kNoEntry && *at >= index) ++*at;
  for (std::size_t* behind : {&shape.head, &shape.behindEarly, &shape.behindCanvas, &shape.behindFront})
    if (*behind > index) ++*behind;
  note(shape, index, tag);
}

std::optional<PlaceRange> place_range(const ListShape& shape, ChunkTag tag) {
  if (shape.head == 0) return std::nullopt;
  return std::ranges::find(kRanges, place_of(tag, shape.kind), &RangeRow::place)->range(shape);
}

std::optional<std::size_t> place_for(const ListShape& shape, ChunkTag tag, std::size_t wanted) {
  const auto allowed = place_range(shape, tag);
  if (!allowed) return std::nullopt;
  return std::clamp(wanted, allowed->first, allowed->last);
}

bool is_in_place(const ListShape& shape, ChunkTag tag, std::size_t index) {
  return std::ranges::find(kRanges, place_of(tag, shape.kind), &RangeRow::place)->holds(shape, index);
}

std::vector<PlaceRange> opaque_streams(const ChunkList& list, DocumentKind kind) {
  std::vector<PlaceRange> streams;
  bool open = false;
  for (std::size_t i = 0; kind == DocumentKind::MING && i < list.size(); ++i) {
    const ChunkTag tag = list.record(i).tag;
    if (!open && begins_stream(tag)) streams.push_back({i, i});
    open = open ? tag != tag::IEND : begins_stream(tag);
    if (open || tag == tag::IEND) {
      if (!streams.empty()) streams.back().last = i;
    }
  }
  return streams;
}

const PlaceRange* stream_of(const std::vector<PlaceRange>& streams, std::size_t entry) {
  const auto at = std::ranges::lower_bound(streams, entry, {}, &PlaceRange::last);
  return at != streams.end() && at->first <= entry ? &*at : nullptr;
}

std::size_t outside_streams(const ChunkList& list, DocumentKind kind, std::size_t position) {
  const auto streams = opaque_streams(list, kind);
  const PlaceRange* stream = stream_of(streams, position);
  return stream && position != stream->first ? stream->last + 1 : position;
}

}  // namespace vellum
