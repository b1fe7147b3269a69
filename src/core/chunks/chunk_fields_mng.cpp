// Fields of the chunks of MNG files (MNG 1.0), but those that images carry.
#include <algorithm>

#include "base/limits.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/mng_counts.h"
#include "core/model/chunk_description.h"
#include "core/model/framing.h"

namespace vellum {
namespace {

// ---------------------------------------------------------------------------------------------------------
// MHDR

constexpr FieldChoice kProfileBits[] = {
    {kProfileValid, "Profile is valid"},
    {kSimpleFeatures, "Simple features"},
    {kComplexFeatures, "Complex features"},
    {kInternalTransparency, "Internal transparency"},
    {kJng, "JNG images"},
    {kDeltaPng, "Delta PNG images"},
    {kTransparencyValid, "Bits 7 to 9 are valid"},
    {kBackgroundTransparency, "Background transparency"},
    {kSemiTransparency, "Semi-transparency"},
    {kStoredObjects, "Stored objects"},
};

constexpr Field kProfileField = {.name = "simplicityProfile",
                                 .label = "Profile",
                                 .most = kMost31,
                                 .choices = kProfileBits,
                                 .look = FieldLook::Bits,
                                 .page = "Profile"};
constexpr Field kKeepTimeField = {
    .name = "keepRunningTime", .label = "Keep the running time", .type = FieldType::Flag, .option = true};

constexpr Field count_field(const char* name, const char* label) {
  return special_field(whole_field(name, label, 0, kMost31), 0, "Unknown");
}

constexpr ChunkField kHeaderRows[] = {
    member_field<&ChunkRecord::frameWidth>(whole_field("frameWidth", "Frame width", 1, kMaximumDimension)),
    member_field<&ChunkRecord::frameHeight>(whole_field("frameHeight", "Frame height", 1, kMaximumDimension)),
    {kEnlargeField},
    member_field<&ChunkRecord::ticksPerSecond>(whole_field("ticksPerSecond", "Ticks per second", 0, kMost31)),
    {kKeepTimeField},
    member_field<&ChunkRecord::layerCount>(count_field("layerCount", "Layers")),
    member_field<&ChunkRecord::frameCount>(count_field("frameCount", "Frames")),
    member_field<&ChunkRecord::playTime>(count_field("playTime", "Play time")),
    member_field<&ChunkRecord::simplicityProfile>(kProfileField),
};

std::optional<FieldFault> check_header(const EntryPlace& place, const FieldValues& values) {
  return check_holds_frames(place.window, values.number("frameWidth"), values.number("frameHeight"),
                            "frameWidth", "frameHeight");
}

/// Ticks of another clock, rounded; a time above 0 stays one.
std::uint32_t rescaled(std::uint32_t ticks, std::uint64_t from, std::uint64_t to) {
  const std::uint64_t scaled = (ticks * to + from / 2) / from;
  return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(scaled, ticks > 0 ? 1 : 0, kMost31));
}

struct Clocks {
  std::uint32_t from, to;
  void rescale(FramBlock& block) const {
    block.interframeDelay = to_file_order(rescaled(from_file_order(block.interframeDelay), from, to));
  }
};

bool rescale_entry(ChunkRecord& record, const Clocks& clocks) {
  if (record.tag == tag::PNGI && record.flags & CRF_FRAM) {
    clocks.rescale(record.image.edit().framBlock);
    return true;
  }
  if (record.tag == tag::TERM && raw_payload(record).size() >= 10) {
    put_payload_number<2, 4>(record, std::int64_t{rescaled(payload_be32(record, 2), clocks.from, clocks.to)});
    return true;
  }
  FramBlock block;
  if (record.tag != tag::FRAM || !parse_laid_out_framing(raw_payload(record), block)) return false;
  clocks.rescale(block);
  return block.changeDelay != 0 && put_payload(record, framing_payload(block));
}

void rescale_delays(ChunkList& list, const Clocks& clocks) {
  const QuietList quiet(list);
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkTag tag = list.record(i).tag;
    if (tag != tag::PNGI && tag != tag::FRAM && tag != tag::TERM) continue;
    ChunkRecord record = list.record(i);
    if (rescale_entry(record, clocks)) chunk_list_put(list, i, record);
  }
}

bool finish_header(Applying& applying) {
  if (!apply_canvas_size(applying, "frameWidth", "frameHeight")) return false;
  const auto ticks = [](const FieldValues& values) {
    return static_cast<std::uint32_t>(values.number("ticksPerSecond"));
  };
  const Clocks clocks{ticks(applying.before), ticks(applying.values)};
  if (clocks.from == clocks.to || clocks.from == 0 || clocks.to == 0 ||
      applying.values.number("keepRunningTime") == 0)
    return true;
  rescale_delays(applying.window.list, clocks);
  std::uint32_t& playTime = applying.record.playTime;
  if (!applying.changed("playTime") && playTime != kMngForEver)
    playTime = rescaled(playTime, clocks.from, clocks.to);
  return true;
}

// ---------------------------------------------------------------------------------------------------------
// BACK, TERM

constexpr FieldChoice kMandatory[] = {{0, "Color is a suggestion"},
                                      {1, "Color is required"},
                                      {2, "Image is required, color is a suggestion"},
                                      {3, "Both are required"}};

constexpr ChunkField kBackgroundRows[] = {
    payload_field<0, 2>(whole_field("red", "Red", 0, 65535)),
    payload_field<2, 2>(whole_field("green", "Green", 0, 65535)),
    payload_field<4, 2>(whole_field("blue", "Blue", 0, 65535)),
    payload_field<6, 1>(choice_field("mandatory", "Required", kMandatory)),
    payload_field<7, 2>(whole_field("imageId", "Image", 0, 65535)),
    payload_field<9, 1>(flag_field("tiling", "Tiled")),
};

/// The shortest of the lengths that reaches the entry's own and every byte that is not 0.
template <std::size_t Count>
bool finish_shortest(Applying& applying, const std::size_t (&lengths)[Count]) {
  const auto bytes = raw_payload(applying.record);
  std::size_t needed = raw_payload(applying.window.list.record(applying.index)).size();
  for (std::size_t i = 0; i < bytes.size(); ++i)
    if (bytes[i] != 0) needed = std::max(needed, i + 1);
  for (const std::size_t length : lengths)
    if (length >= needed) return cut_payload(applying.record, length);
  return cut_payload(applying.record, lengths[Count - 1]);
}

bool finish_background(Applying& applying) { return finish_shortest(applying, {6, 7, 9, 10}); }

constexpr FieldChoice kActions[] = {
    {0, "Show the last frame"}, {1, "Cease displaying"}, {2, "Show the first frame"}, {3, "Repeat"}};
constexpr std::int64_t kRepeat = 3;

constexpr ChunkField kTerminationRows[] = {
    payload_field<0, 1>(choice_field("action", "Action", kActions)),
    payload_field<1, 1>(enabled_by(choice_field("afterAction", "Afterwards", std::span(kActions).first(3)),
                                   "action", kRepeat)),
    payload_field<2, 4>(enabled_by(whole_field("delay", "Delay in ticks", 0, kMost31), "action", kRepeat)),
    payload_field<6, 4>(
        enabled_by(special_field(whole_field("iterations", "Iterations", 0, kMost31), kMost31, "For ever"),
                   "action", kRepeat)),
};

bool finish_termination(Applying& applying) {
  return applying.values.number("action") == kRepeat || cut_payload(applying.record, 1);
}

// ---------------------------------------------------------------------------------------------------------
// LOOP, ENDL

constexpr FieldChoice kConditions[] = {
    {0, "Deterministic"}, {1, "The decoder decides"}, {2, "The user decides"}, {3, "An external signal"}};

constexpr Field shown_choice(const char* name, const char* label, std::span<const FieldChoice> choices) {
  Field field = choice_field(name, label, choices);
  field.locked = true;
  return field;
}
constexpr Field shown_flag(const char* name, const char* label) {
  Field field = flag_field(name, label);
  field.locked = true;
  return field;
}

FieldValue get_condition(const ChunkRecord& record) { return std::int64_t{payload_byte(record, 5)} & 3; }
FieldValue get_cacheable(const ChunkRecord& record) { return std::int64_t{payload_byte(record, 5)} >> 2 & 1; }

/// The numbers behind the fixed fields, with blanks between.
FieldValue get_signals(const ChunkRecord& record) {
  std::string text;
  const std::size_t size = raw_payload(record).size();
  for (std::size_t at = 14; at + 4 <= size; at += 4)
    text.append(text.empty() ? "" : " ").append(std::to_string(payload_be32(record, at)));
  return text;
}

constexpr ChunkField kLoopRows[] = {
    payload_field<0, 1>(whole_field("level", "Level", 0, 255)),
    payload_field<1, 4>(special_field(whole_field("count", "Repeats", 0, kMost31), kMost31, "For ever")),
    {shown_choice("condition", "Condition", kConditions), get_condition},
    {shown_flag("cacheable", "Every turn is the same"), get_cacheable},
    payload_field<6, 4>(shown_field("minimum", "Least turns")),
    payload_field<10, 4>(shown_field("maximum", "Most turns")),
    {{.name = "signals", .label = "Signals", .type = FieldType::Text, .locked = true}, get_signals},
};

/// Chunks end behind any of these fields; those that are not there are not shown.
void adapt_loop(const EntryPlace& place, std::vector<Field>& fields) {
  static constexpr std::pair<const char*, std::size_t> ends[] = {
      {"condition", 6}, {"cacheable", 6}, {"minimum", 10}, {"maximum", 14}, {"signals", 18}};
  const std::size_t size = raw_payload(place.record()).size();
  for (const auto& [name, end] : ends)
    if (size < end) remove_field(fields, name);
}

constexpr ChunkField kLoopEndRows[] = {payload_field<0, 1>(whole_field("level", "Level", 0, 255))};

// ---------------------------------------------------------------------------------------------------------
// MOVE, SHOW

constexpr FieldChoice kMoves[] = {{0, "To the position"}, {1, "By the distance"}};
constexpr FieldChoice kShows[] = {{0, "Show"},
                                  {1, "Hide"},
                                  {2, "Show if visible"},
                                  {3, "Make visible, no display"},
                                  {4, "Toggle and show"},
                                  {5, "Toggle, no display"},
                                  {6, "Cycle and show"},
                                  {7, "Cycle, no display"}};

constexpr Field kFirstField = whole_field("first", "First object", 0, 65535);
constexpr Field kLastField = whole_field("last", "Last object", 0, 65535);

constexpr ChunkField kMoveRows[] = {
    payload_field<0, 2>(kFirstField),
    payload_field<2, 2>(kLastField),
    payload_field<4, 1>(choice_field("mode", "Mode", kMoves)),
    payload_field<5, 4, Sign::Signed>(whole_field("x", "X", kLeastSigned, kMost31)),
    payload_field<9, 4, Sign::Signed>(whole_field("y", "Y", kLeastSigned, kMost31)),
};
constexpr ChunkField kShowRows[] = {
    payload_field<0, 2>(kFirstField),
    payload_field<2, 2>(kLastField),
    payload_field<4, 1>(choice_field("mode", "Mode", kShows)),
};

std::optional<FieldFault> check_order(const EntryPlace&, const FieldValues& values) {
  if (values.number("first") <= values.number("last")) return std::nullopt;
  return fault_of("last", StringId::LastBeforeFirst);
}

bool is_whole_move(const EntryPlace& place) { return raw_payload(place.record()).size() == 13; }
bool is_whole_show(const EntryPlace& place) {
  const std::size_t size = raw_payload(place.record()).size();
  return size == 0 || size == 2 || size == 4 || size == 5;
}

/// An empty SHOW means all objects that are visible; one without a last object means the first alone.
void prepare_show(ChunkRecord& record) {
  constexpr std::array<std::uint8_t, 5> all = {0, 1, 0xFF, 0xFF, 2};
  const auto payload = raw_payload(record);
  std::array<std::uint8_t, 5> bytes{};
  std::copy_n(payload.begin(), std::min(payload.size(), bytes.size()), bytes.begin());
  if (payload.empty()) bytes = all;
  if (payload.size() == 2) std::copy_n(bytes.begin(), 2, bytes.begin() + 2);
  put_payload(record, bytes);
}

/// The shortest payload that says it, but not shorter than it was.
bool finish_show(Applying& applying) {
  const std::size_t was = raw_payload(applying.window.list.record(applying.index)).size();
  const FieldValues& values = applying.values;
  const std::size_t needed = values.number("mode") != 0                        ? 5
                             : values.number("last") != values.number("first") ? 4
                                                                               : 2;
  return cut_payload(applying.record, std::max(was, needed));
}

constexpr ChunkFieldSet kSets[] = {
    {.tag = tag::MHDR,
     .kinds = kMng,
     .rows = kHeaderRows,
     .adapt = adapt_enlarge,
     .check = check_header,
     .finish = finish_header},
    {.tag = tag::BACK,
     .kinds = kMng,
     .rows = kBackgroundRows,
     .prepare = lengthen_payload<10>,
     .finish = finish_background},
    {.tag = tag::TERM,
     .kinds = kMng,
     .rows = kTerminationRows,
     .prepare = lengthen_payload<10>,
     .finish = finish_termination},
    {.tag = tag::LOOP, .kinds = kMng, .rows = kLoopRows, .prepare = lengthen_payload<5>, .adapt = adapt_loop},
    {.tag = tag::ENDL, .kinds = kMng, .rows = kLoopEndRows, .prepare = lengthen_payload<1>},
    {.tag = tag::MOVE, .kinds = kMng, .rows = kMoveRows, .fits = is_whole_move, .check = check_order},
    {.tag = tag::SHOW,
     .kinds = kMng,
     .rows = kShowRows,
     .fits = is_whole_show,
     .prepare = prepare_show,
     .check = check_order,
     .finish = finish_show},
};

}  // namespace

std::span<const ChunkFieldSet> mng_field_sets() { return kSets; }

void forget_mng_counts(DocumentWindow& window) {
  const std::size_t at = chunk_find_first(window.list, tag::MHDR);
  ChunkRecord header;
  if (!chunk_list_get(window.list, at, header)) return;
  if ((header.layerCount | header.frameCount | header.playTime | header.simplicityProfile) == 0) return;
  header.layerCount = header.frameCount = header.playTime = header.simplicityProfile = 0;
  chunk_list_put(window.list, at, header);
}

}  // namespace vellum
