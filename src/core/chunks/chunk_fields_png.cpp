// Fields of the chunks of still and animated PNG files.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

#include "base/limits.h"
#include "base/text.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_table.h"
#include "core/model/clock.h"
#include "core/model/header_record.h"

namespace vellum {
namespace {

// ---------------------------------------------------------------------------------------------------------
// IHDR

constexpr FieldChoice kColorTypes[] = {
    {0, "Grey"}, {2, "True color"}, {3, "Palette"}, {4, "Grey with alpha"}, {6, "True color with alpha"}};
/// Those that an animation is written in: greys go out as a palette, or as true color.
constexpr FieldChoice kAnimatedTypes[] = {kColorTypes[1], kColorTypes[2], kColorTypes[4]};
constexpr FieldChoice kDepths[] = {{1, "1"}, {2, "2"}, {4, "4"}, {8, "8"}, {16, "16"}};

constexpr ChunkField kHeaderRows[] = {
    member_field<&ChunkRecord::width>(whole_field("width", "Width", 1, kMaximumDimension)),
    member_field<&ChunkRecord::height>(whole_field("height", "Height", 1, kMaximumDimension)),
    {kEnlargeField},
    member_field<&ChunkRecord::colorType>(choice_field("colorType", "Color type", kColorTypes)),
    member_field<&ChunkRecord::bitDepth>(choice_field("bitDepth", "Bits", kDepths)),
    member_field<&ChunkRecord::interlace>(flag_field("interlace", "Interlaced")),
    member_field<&ChunkRecord::compression>(shown_field("compression", "Compression")),
    member_field<&ChunkRecord::filter>(shown_field("filter", "Filter")),
};

void lock(std::vector<Field>& fields, const char* name, StringId tip) {
  Field* field = edit_field(fields, name);
  if (!field) return;
  field->locked = true;
  field->tip = string_text(tip).data();
}

void adapt_header(const EntryPlace& place, std::vector<Field>& fields) {
  const bool still = place.window.document.kind == DocumentKind::PING;
  const bool images = has_images(place.window);
  if (still || !images) remove_field(fields, "enlarge");
  const bool written = std::ranges::find(kAnimatedTypes, place.record().colorType, &FieldChoice::value) !=
                       std::end(kAnimatedTypes);
  if (!still && images && written) edit_field(fields, "colorType")->choices = kAnimatedTypes;
  if (still && images)
    for (const char* name : {"width", "height"}) lock(fields, name, StringId::UseResizeOrCrop);
  if (images && !convertImages)
    for (const char* name : {"colorType", "bitDepth"}) lock(fields, name, StringId::ColorTypeFixed);
}

std::optional<FieldFault> check_depth(const EntryPlace& place, const FieldValues& values) {
  const std::int64_t depth = values.number("bitDepth");
  Field field =
      choice_field("bitDepth", "Bits", bit_depths(place.window.document.kind, values.number("colorType")));
  const bool kept =
      depth == place.record().bitDepth && values.number("colorType") == place.record().colorType;
  return kept ? std::nullopt : check_field(field, depth);
}

std::optional<FieldFault> check_header(const EntryPlace& place, const FieldValues& values) {
  if (auto wrong = check_depth(place, values)) return wrong;
  if (place.window.document.kind == DocumentKind::PING) return std::nullopt;
  return check_holds_frames(place.window, values.number("width"), values.number("height"), "width", "height");
}

/// Without images there is nothing to convert, but colors that the new header can't mean go away.
void drop_unfit_colors(Applying& applying) {
  ChunkList& list = applying.window.list;
  Palette palette;
  const PngContext context{applying.record.bitDepth, applying.record.colorType,
                           chunk_find_palette(list, palette)};
  for (const ChunkTag tag : {tag::tRNS, tag::bKGD}) {
    const std::size_t at = chunk_find_first(list, tag);
    if (at != kNoEntry && !is_valid_chunk(tag, raw_payload(list.record(at)), context)) list.remove(at);
  }
}

bool finish_header(Applying& applying) {
  if (applying.changed("colorType") || applying.changed("bitDepth")) {
    if (!has_images(applying.window)) {
      drop_unfit_colors(applying);
    } else if (!convertImages ||
               !convertImages(applying.window, png_header_of(applying.record), applying.host)) {
      return false;
    }
  }
  return applying.window.document.kind == DocumentKind::PING ||
         apply_canvas_size(applying, "width", "height");
}

// ---------------------------------------------------------------------------------------------------------
// acTL, fcTL and frames

constexpr FieldChoice kDisposals[] = {{0, "None"}, {1, "Background"}, {2, "Previous"}};
constexpr FieldChoice kBlends[] = {{0, "Source"}, {1, "Over"}};

constexpr ChunkField kAnimationRows[] = {
    member_field<&ChunkRecord::numPlays>(
        special_field(whole_field("numPlays", "Plays", 0, kMost31), 0, "For ever")),
    member_field<&ChunkRecord::numFrames>(shown_field("numFrames", "Frames")),
};

template <auto Member>
constexpr ChunkField frame_field(Field field) {
  return member_field<&ChunkRecord::frameControl, Member>(field);
}

constexpr ChunkField kFrameRows[] = {
    frame_field<&FrameControl::xOffset>(whole_field("x", "X", 0, kMaximumDimension)),
    frame_field<&FrameControl::yOffset>(whole_field("y", "Y", 0, kMaximumDimension)),
    frame_field<&FrameControl::frameWidth>(shown_field("frameWidth", "Width")),
    frame_field<&FrameControl::frameHeight>(shown_field("frameHeight", "Height")),
    frame_field<&FrameControl::sequence>(shown_field("sequence", "Sequence number")),
    frame_field<&FrameControl::delayNum>(whole_field("delayNum", "Delay, numerator", 0, 65535)),
    frame_field<&FrameControl::delayDen>(whole_field("delayDen", "Delay, denominator", 0, 65535)),
    {{.name = "rate",
      .label = "Rate or time",
      .type = FieldType::Text,
      .tip = "Frames a second (25 or 24000/1001), or a time (40 ms)"}},
    frame_field<&FrameControl::dispose>(choice_field("dispose", "Dispose", kDisposals)),
    frame_field<&FrameControl::blend>(choice_field("blend", "Blend", kBlends)),
};

FrameDelay delay_of(const ChunkRecord& record) {
  return {record.frameControl.delayNum, record.frameControl.delayDen};
}

void adapt_frame(const EntryPlace& place, std::vector<Field>& fields) {
  const FrameControl& frame = place.record().frameControl;
  const bool own_control = place.record().tag == tag::fcTL;
  const auto most = [](std::uint32_t size) {
    return std::max<std::int64_t>(std::int64_t{kMaximumDimension} - size, 0);
  };
  edit_field(fields, "x")->most = most(frame.frameWidth);
  edit_field(fields, "y")->most = most(frame.frameHeight);
  // Where a default image stands beside the animation, that one fills the canvas.
  const bool first = first_image(place.window) == place.index && !place.window.document.defaultImage;
  if (first && !own_control)
    for (const char* name : {"x", "y"}) lock(fields, name, StringId::FirstFrameFills);
  if (!own_control)
    for (const char* name : {"frameWidth", "frameHeight", "sequence"}) remove_field(fields, name);
}

void read_frame(const EntryPlace& place, FieldValues& values) {
  values.set("rate", frame_delay_text(delay_of(place.record())));
}

std::optional<FieldFault> check_frame(const EntryPlace&, const FieldValues& values) {
  if (!values.find("rate") || parse_frame_delay(values.text("rate"))) return std::nullopt;
  return fault_of("rate", StringId::RateRule);
}

/// A delay that was typed as a rate counts where the fraction was left alone.
bool finish_frame(Applying& applying) {
  const auto delay = parse_frame_delay(applying.values.text("rate"));
  if (!delay || !applying.changed("rate") || applying.changed("delayNum") || applying.changed("delayDen"))
    return true;
  applying.record.frameControl.delayNum = delay->num;
  applying.record.frameControl.delayDen = delay->den;
  return true;
}

constexpr ChunkFieldSet frame_set(ChunkTag tag) {
  return {.tag = tag,
          .kinds = kApng,
          .rows = kFrameRows,
          .adapt = adapt_frame,
          .read = read_frame,
          .check = check_frame,
          .finish = finish_frame};
}

std::optional<std::uint32_t> parse_digits(std::string_view text) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// "12.5" as 125 / 10; at most four digits behind the point.
struct Decimal {
  std::uint64_t num = 0, den = 1;
};
std::optional<Decimal> parse_decimal(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view behind = text.substr(std::min(point + 1, text.size()));
  if (behind.size() > 4 || (behind.empty() && point != text.size())) return std::nullopt;
  const auto digits = parse_digits(std::string(text.substr(0, point)).append(behind));
  if (!digits) return std::nullopt;
  Decimal decimal{*digits, 1};
  for (std::size_t i = 0; i < behind.size(); ++i) decimal.den *= 10;
  return decimal;
}

/// Rates of television are written short: 29.97 is 30000/1001.
Decimal exact_rate(Decimal rate) {
  for (const std::uint64_t whole : {24u, 30u, 48u, 60u, 120u})
    if (rate.den > 1 && (whole * 1000 * rate.den * 2 + 1001) / (1001 * 2) == rate.num)
      return {whole * 1000, 1001};
  return rate;
}

std::optional<FrameDelay> delay_from(std::uint64_t num, std::uint64_t den) {
  const std::uint64_t divisor = std::max<std::uint64_t>(std::gcd(num, den), 1);
  num /= divisor;
  den /= divisor;
  if (den == 0 || num > 65535 || den > 65535) return std::nullopt;
  return FrameDelay{static_cast<std::uint16_t>(num), static_cast<std::uint16_t>(den)};
}

// ---------------------------------------------------------------------------------------------------------
// tIME

constexpr ChunkField kTimeRows[] = {
    payload_field<0, 2>(whole_field("year", "Year", 1, 65535)),
    payload_field<2, 1>(whole_field("month", "Month", 1, 12)),
    payload_field<3, 1>(whole_field("day", "Day", 1, 31)),
    payload_field<4, 1>(whole_field("hour", "Hour", 0, 23)),
    payload_field<5, 1>(whole_field("minute", "Minute", 0, 59)),
    payload_field<6, 1>(whole_field("second", "Second", 0, 60)),
};

std::optional<FieldFault> check_time(const EntryPlace&, const FieldValues& values) {
  const auto number = [&](const char* name) { return static_cast<unsigned>(values.number(name)); };
  const unsigned year = number("year"), month = number("month"), day = number("day");
  if (day <= days_of_month(year, month)) return std::nullopt;
  return FieldFault{
      "day", StringId::NoSuchDay,
      format_text(string_text(StringId::NoSuchDay).data(), month_name(static_cast<int>(month)), year, day),
      false, 0};
}

/// A day that its month lacks comes down to the last one, as every value outside its range does.
void read_time(const EntryPlace&, FieldValues& values) {
  const auto last = days_of_month(static_cast<unsigned>(values.number("year")),
                                  static_cast<unsigned>(values.number("month")));
  values.set("day", std::min<std::int64_t>(values.number("day"), last));
}

// ---------------------------------------------------------------------------------------------------------
// gAMA

constexpr double kGammaUnit = 100'000;  // PNG standard: the value times 100000

constexpr ChunkField kGammaRows[] = {
    {{.name = "gamma",
      .label = "Gamma",
      .type = FieldType::Real,
      .leastReal = 0.01,
      .mostReal = 100.0,
      .decimals = 2}},
    payload_field<0, 4>(whole_field("stored", "Stored value", 1, kMost31)),
};

void read_gamma(const EntryPlace&, FieldValues& values) {
  values.set("gamma", gamma_of_stored(values.number("stored")));
}

bool finish_gamma(Applying& applying) {
  if (applying.changed("stored")) return true;
  const std::int64_t stored = stored_gamma(applying.values.real("gamma"));
  put_payload_number<0, 4>(applying.record, stored);
  return static_cast<bool>(applying.record.data);
}

// ---------------------------------------------------------------------------------------------------------
// bKGD and tRNS

constexpr ChunkField kSampleRows[] = {
    payload_field<0, 2>(whole_field("grey", "Grey", 0, 0)),
    payload_field<0, 2>(whole_field("red", "Red", 0, 0)),
    payload_field<2, 2>(whole_field("green", "Green", 0, 0)),
    payload_field<4, 2>(whole_field("blue", "Blue", 0, 0)),
    payload_field<0, 1>(whole_field("index", "Color", 0, 0)),
};

enum class Samples { Grey, Colors, Index };

Samples samples_of(const PngHeader& header) {
  return header.colorType == 3 ? Samples::Index : header.colorType % 4 == 0 ? Samples::Grey : Samples::Colors;
}

void adapt_samples(const EntryPlace& place, std::vector<Field>& fields) {
  const PngHeader header = ruling_header(place).value_or(PngHeader());
  const Samples samples = samples_of(header);
  Palette palette;
  const std::uint32_t colors = chunk_find_palette(place.window.list, palette);
  for (Field& field : fields)
    field.most = samples == Samples::Index && colors > 0 ? colors - 1 : (1 << header.bitDepth) - 1;
  std::erase_if(fields, [samples](const Field& field) {
    const std::string_view name = field.name;
    return samples != (name == "grey" ? Samples::Grey : name == "index" ? Samples::Index : Samples::Colors);
  });
}

bool finish_samples(Applying& applying) {
  static constexpr std::size_t bytes[] = {2, 6, 1};
  const PngHeader header = ruling_header({applying.window, applying.index}).value_or(PngHeader());
  return cut_payload(applying.record, bytes[static_cast<std::size_t>(samples_of(header))]);
}

bool has_header(const EntryPlace& place) { return ruling_header(place).has_value(); }

/// A table of alphas is no row of numbers, and headers with alpha allow no tRNS.
bool has_transparent_color(const EntryPlace& place) {
  const auto header = ruling_header(place);
  return header && (header->colorType == 0 || header->colorType == 2);
}

constexpr ChunkFieldSet kSets[] = {
    {.tag = tag::IHDR,
     .kinds = kPng,
     .rows = kHeaderRows,
     .adapt = adapt_header,
     .check = check_header,
     .finish = finish_header},
    {.tag = tag::acTL, .kinds = kApng, .rows = kAnimationRows},
    frame_set(tag::fcTL),
    frame_set(tag::IDAT),
    frame_set(tag::fdAT),
    {.tag = tag::tIME,
     .kinds = kChunked,
     .rows = kTimeRows,
     .prepare = lengthen_payload<7>,
     .read = read_time,
     .check = check_time},
    {.tag = tag::gAMA,
     .kinds = kChunked,
     .rows = kGammaRows,
     .prepare = lengthen_payload<4>,
     .read = read_gamma,
     .finish = finish_gamma},
    {.tag = tag::bKGD,
     .kinds = kPng,
     .rows = kSampleRows,
     .fits = has_header,
     .prepare = lengthen_payload<6>,
     .adapt = adapt_samples,
     .finish = finish_samples},
    {.tag = tag::tRNS,
     .kinds = kPng,
     .rows = kSampleRows,
     .fits = has_transparent_color,
     .prepare = lengthen_payload<6>,
     .adapt = adapt_samples,
     .finish = finish_samples},
};

}  // namespace

std::span<const ChunkFieldSet> png_field_sets() { return kSets; }

std::span<const FieldChoice> color_types() { return kColorTypes; }

std::span<const FieldChoice> bit_depths(DocumentKind kind, std::int64_t colorType) {
  const std::span all(kDepths);
  const std::size_t deep = kind == DocumentKind::PING ? 1 : 0;  // 16 bits are offered in still images alone
  if (colorType == 3) return all.first(4);
  return colorType == 0 ? all.first(4 + deep) : all.subspan(3, 1 + deep);
}

bool converts_images(const DocumentWindow& window, std::size_t index, const FieldValues& values) {
  const FieldValues before = read_chunk_fields(window, index);
  return has_images(window) && (before.number("colorType") != values.number("colorType") ||
                                before.number("bitDepth") != values.number("bitDepth"));
}

double gamma_of_stored(std::int64_t stored) {
  const double exact = kGammaUnit / static_cast<double>(std::max<std::int64_t>(stored, 1));
  return std::clamp(std::round(exact * 100) / 100, 0.01, 100.0);
}

std::int64_t stored_gamma(double gamma) { return std::llround(kGammaUnit / std::max(gamma, 0.01)); }

std::optional<FrameDelay> parse_frame_delay(std::string_view text) {
  std::string_view inner = trimmed(text);
  if (inner.ends_with("ms")) {
    const auto time = parse_decimal(trimmed(inner.substr(0, inner.size() - 2)));
    if (!time) return std::nullopt;
    return delay_from(time->num, 1000 * time->den);
  }
  const std::size_t bar = inner.find('/');
  const auto frames = parse_decimal(trimmed(inner.substr(0, bar)));
  const auto seconds =
      bar == std::string_view::npos ? std::optional(1u) : parse_digits(trimmed(inner.substr(bar + 1)));
  if (!frames || !seconds || frames->num == 0 || *seconds == 0) return std::nullopt;
  const Decimal rate = bar == std::string_view::npos ? exact_rate(*frames) : *frames;
  return delay_from(*seconds * rate.den, rate.num);
}

std::string frame_delay_text(FrameDelay delay) {
  const unsigned den = delay.den == 0 ? 100 : delay.den;
  if (delay.num == 0) return "0 ms";
  if (delay.num * 1000u % den == 0) return std::to_string(delay.num * 1000u / den) + " ms";
  const unsigned divisor = std::gcd(den, delay.num);
  const std::string frames = std::to_string(den / divisor);
  return delay.num == divisor ? frames : frames + "/" + std::to_string(delay.num / divisor);
}

}  // namespace vellum
