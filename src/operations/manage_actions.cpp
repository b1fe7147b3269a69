#include "operations/manage_actions.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "operations/places.h"

namespace vellum {
namespace {

constexpr FieldChoice kDisposals[] = {{0, "None"}, {1, "Background"}, {2, "Previous"}};
constexpr FieldChoice kBlends[] = {{0, "Source"}, {1, "Over"}};

/// "10, 20"; nothing for another text.
std::optional<FrameOffset> parse_place(std::string_view text) {
  const auto comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  FrameOffset place;
  const auto number = [](std::string_view part, std::int32_t& out) {
    part = trimmed(part);
    const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), out);
    return error == std::errc() && end == part.data() + part.size();
  };
  if (!number(text.substr(0, comma), place.x) || !number(text.substr(comma + 1), place.y))
    return std::nullopt;
  return place;
}

template <auto Change, class Number>
std::optional<Managed> with_number(DocumentWindow& window, const FrameList& frames, const FieldValue& value) {
  return Change(window, frames, static_cast<Number>(std::get<std::int64_t>(value)));
}
template <auto Change, auto Parse>
std::optional<Managed> with_text(DocumentWindow& window, const FrameList& frames, const FieldValue& value) {
  const auto read = Parse(std::get<std::string>(value));
  return read ? std::optional(Change(window, frames, *read)) : std::nullopt;
}

constexpr Field whole(const char* name, const char* label, std::int64_t least, std::int64_t most) {
  return {.name = name, .label = label, .least = least, .most = most};
}
constexpr Field text(const char* name, const char* label) {
  return {.name = name, .label = label, .type = FieldType::Text, .most = 40};
}
constexpr Field choice(const char* name, const char* label, std::span<const FieldChoice> choices) {
  return {.name = name, .label = label, .type = FieldType::Choice, .choices = choices};
}

constexpr ManageAction kActions[] = {
    {whole("delay", "Set delay (ms)", 0, kMostDelayMs), "MS|N/D",
     "The delay, in milliseconds or as a fraction of a second", "100",
     with_number<set_delays, std::uint32_t>},
    {whole("scale-delay", "Scale delays (%)", 1, kMostScale), "P", "Scale the delays, per cent, 1 to 10000",
     "100", with_number<scale_delays, std::uint32_t>},
    {whole("add-delay", "Add to delays (ms)", -kMostAdded, kMostAdded), "MS",
     "Add to the delays, -60000 to 60000 ms; none falls below 0", "10",
     with_number<add_to_delays, std::int32_t>},
    {whole("total", "Set total time (ms)", 0, kMostTotalMs), "MS",
     "Scale the delays so that their sum is this", "1000", with_number<set_total_time, std::uint64_t>},
    {text("rate", "Set rate (frames a second)"), "R", "Frames a second, as 25 or 24000/1001", "25",
     with_text<set_frame_rate, parse_frame_delay>, StringId::RateRule},
    {text("position", "Set position (X, Y)"), "X,Y", "Put the frames there", "0, 0",
     with_text<set_positions, parse_place>, StringId::PlaceRule},
    {text("move", "Move by (X, Y)"), "DX,DY", "Move the frames by so many pixels", "10, 0",
     with_text<move_frames_by, parse_place>, StringId::PlaceRule},
    {choice("align", "Align on the canvas", kPlaces), "PLACE",
     "top-left, top, top-right, left, center, right, bottom-left, bottom or bottom-right of the canvas", "4",
     with_number<align_frames, std::size_t>},
    {choice("dispose", "Set dispose", kDisposals), "D", "none, background, or (animated PNG) previous", "0",
     with_number<set_disposal, std::uint32_t>},
    {choice("blend", "Set blend", kBlends), "B", "source or over, of an animated PNG", "0",
     with_number<set_blending, std::uint32_t>},
};

}  // namespace

std::span<const ManageAction> manage_actions() { return kActions; }

const ManageAction& manage_action(std::string_view name) {
  return *std::ranges::find(kActions, name, [](const ManageAction& row) { return row.field.name; });
}

std::optional<Field> manage_field(const ManageAction& action, DocumentKind kind) {
  Field field = action.field;
  if (field.choices.data() == kBlends && kind != DocumentKind::APNG) return std::nullopt;
  if (field.choices.data() == kDisposals && !has_disposal(kind, 2)) field.choices = field.choices.first(2);
  return field;
}

}  // namespace vellum
