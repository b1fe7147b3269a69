// Fields of FRAM and DEFI (MNG 1.0), as entries of their own and as images of an MNG carry them.
#include <algorithm>
#include <cstring>

#include "base/text.h"
#include "core/chunks/chunk_field_sets.h"
#include "core/chunks/text_chunk.h"
#include "core/model/framing.h"

namespace vellum {
namespace {

constexpr std::uint32_t kHeadBytes = 4, kPositionBytes = 12, kClippingBytes = 28;  // lengths of a DEFI
constexpr std::uint32_t kNoTimeout = 0x7FFFFFFF;

// ---------------------------------------------------------------------------------------------------------
// where the fields lie: an entry of its own is prepared by unfolding it into the blocks of an image

template <auto Block, auto Member>
FieldValue get_byte(const ChunkRecord& record) {
  return std::int64_t{((*record.image).*Block).*Member};
}
template <auto Block, auto Member>
void put_byte(ChunkRecord& record, const FieldValue& value) {
  (record.image.edit().*Block).*Member = static_cast<std::uint8_t>(std::get<std::int64_t>(value));
}
template <auto Block, auto Member>
constexpr ChunkField byte_field(Field field) {
  return {field, get_byte<Block, Member>, put_byte<Block, Member>};
}

/// A number of 32 bits in the byte order of the file.
template <auto Block, auto Member, Sign Signed>
FieldValue get_number(const ChunkRecord& record) {
  const auto value = from_file_order(static_cast<std::uint32_t>(((*record.image).*Block).*Member));
  if constexpr (Signed == Sign::Signed) return std::int64_t{static_cast<std::int32_t>(value)};
  return std::int64_t{value};
}
template <auto Block, auto Member>
void put_number(ChunkRecord& record, const FieldValue& value) {
  auto& member = (record.image.edit().*Block).*Member;
  const auto number = static_cast<std::uint32_t>(std::get<std::int64_t>(value));
  member = static_cast<std::remove_reference_t<decltype(member)>>(to_file_order(number));
}
template <auto Block, auto Member, Sign Signed = Sign::None>
constexpr ChunkField number_field(Field field) {
  return {field, get_number<Block, Member, Signed>, put_number<Block, Member>};
}

constexpr auto kFram = &EmbeddedImage::framBlock;
constexpr auto kDefi = &EmbeddedImage::defiBlock;

FieldValue get_name(const ChunkRecord& record) {
  return utf8_from_latin1(record.image->framBlock.subframeName.data());
}
void put_name(ChunkRecord& record, const FieldValue& value) {
  auto& name = record.image.edit().framBlock.subframeName;
  const std::string latin1 = latin1_from_utf8(std::get<std::string>(value));
  name.fill(0);
  std::copy_n(latin1.begin(), std::min(latin1.size(), name.size() - 1), name.begin());
}

std::uint16_t swapped(std::uint32_t value) {
  std::uint8_t bytes[2];
  write_be16(bytes, value);
  std::uint16_t result;
  std::memcpy(&result, bytes, sizeof result);
  return result;
}
FieldValue get_object(const ChunkRecord& record) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&record.image->defiBlock.objectId);
  return std::int64_t{read_be16(bytes)};
}
void put_object(ChunkRecord& record, const FieldValue& value) {
  record.image.edit().defiBlock.objectId = swapped(static_cast<std::uint32_t>(std::get<std::int64_t>(value)));
}

template <std::uint32_t Bytes>
FieldValue reaches(const ChunkRecord& record) {
  return std::int64_t{record.image->defiBytes >= Bytes};
}

// ---------------------------------------------------------------------------------------------------------
// the rows

constexpr FieldChoice kModes[] = {{0, "No change"},
                                  {1, "Each image, no background"},
                                  {2, "Together, no background"},
                                  {3, "Each image on the background"},
                                  {4, "Together on the background"}};
constexpr FieldChoice kChanges[] = {{0, "No"}, {1, "This subframe"}, {2, "This and later"}};
/// MNG 1.0: who may end the wait, and whether the new value holds for later subframes.
constexpr FieldChoice kTimeoutChanges[] = {{0, "No"},
                                           {1, "This subframe, deterministic"},
                                           {2, "This and later, deterministic"},
                                           {3, "This subframe, the decoder decides"},
                                           {4, "This and later, the decoder decides"},
                                           {5, "This subframe, the user decides"},
                                           {6, "This and later, the user decides"},
                                           {7, "This subframe, an external signal"},
                                           {8, "This and later, an external signal"}};
constexpr FieldChoice kClipTypes[] = {{0, "Absolute"}, {1, "Relative"}};

constexpr Field signed_field(const char* name, const char* label) {
  return whole_field(name, label, kLeastSigned, kMost31);
}
template <auto Member>
constexpr ChunkField clip_field(const char* name, const char* label) {
  return number_field<kFram, Member, Sign::Signed>(enabled_by(signed_field(name, label), "changeClipping"));
}

constexpr ChunkField kFramingRows[] = {
    byte_field<kFram, &FramBlock::framingMode>(choice_field("framingMode", "Framing mode", kModes)),
    {{.name = "name", .label = "Name", .type = FieldType::Text, .most = 79}, get_name, put_name},
    byte_field<kFram, &FramBlock::changeDelay>(choice_field("changeDelay", "Change the delay", kChanges)),
    number_field<kFram, &FramBlock::interframeDelay>(
        enabled_by(whole_field("delay", "Delay in ticks", 0, kMost31), "changeDelay")),
    byte_field<kFram, &FramBlock::changeTimeout>(
        enabled_by(choice_field("changeTimeout", "Change the timeout", kTimeoutChanges), "changeDelay")),
    number_field<kFram, &FramBlock::timeout>(
        enabled_by(whole_field("timeout", "Timeout in ticks", 0, kMost31), "changeTimeout")),
    byte_field<kFram, &FramBlock::changeClipping>(
        enabled_by(choice_field("changeClipping", "Change the clipping", kChanges), "changeTimeout")),
    byte_field<kFram, &FramBlock::clipType>(
        enabled_by(choice_field("clipType", "Clip type", kClipTypes), "changeClipping")),
    clip_field<&FramBlock::clipLeft>("clipLeft", "Clip left"),
    clip_field<&FramBlock::clipRight>("clipRight", "Clip right"),
    clip_field<&FramBlock::clipTop>("clipTop", "Clip top"),
    clip_field<&FramBlock::clipBottom>("clipBottom", "Clip bottom"),
    byte_field<kFram, &FramBlock::changeSyncId>(
        enabled_by(choice_field("changeSyncId", "Change the sync number", kChanges), "changeClipping")),
    byte_field<kFram, &FramBlock::syncByte>(
        enabled_by(whole_field("sync", "Sync number", 0, 255), "changeSyncId")),
};

template <auto Member>
constexpr ChunkField place_field(const char* name, const char* label, const char* by) {
  return number_field<kDefi, Member, Sign::Signed>(enabled_by(signed_field(name, label), by));
}

constexpr ChunkField kPositionRow = {flag_field("hasPosition", "Has a position"), reaches<kPositionBytes>};
constexpr ChunkField kXRow = place_field<&DefiBlock::xLocation>("x", "X", "hasPosition");
constexpr ChunkField kYRow = place_field<&DefiBlock::yLocation>("y", "Y", "hasPosition");

/// Clip fields of a DEFI are named apart from those of a FRAM where an image carries both.
template <bool Apart>
constexpr std::array<ChunkField, 8> kDefinitionRows = {{
    {whole_field("objectId", "Object", 0, 65535), get_object, put_object},
    byte_field<kDefi, &DefiBlock::doNotShow>(flag_field("doNotShow", "Do not show")),
    byte_field<kDefi, &DefiBlock::concreteFlag>(flag_field("concrete", "Concrete")),
    {enabled_by(flag_field("hasClipping", "Has clipping"), "hasPosition"), reaches<kClippingBytes>},
    place_field<&DefiBlock::clipLeft>(Apart ? "objectClipLeft" : "clipLeft", "Clip left", "hasClipping"),
    place_field<&DefiBlock::clipRight>(Apart ? "objectClipRight" : "clipRight", "Clip right", "hasClipping"),
    place_field<&DefiBlock::clipTop>(Apart ? "objectClipTop" : "clipTop", "Clip top", "hasClipping"),
    place_field<&DefiBlock::clipBottom>(Apart ? "objectClipBottom" : "clipBottom", "Clip bottom",
                                        "hasClipping"),
}};

constexpr std::array<ChunkField, 11> definition_entry_rows() {
  const auto& rows = kDefinitionRows<false>;
  return {rows[0], rows[1], rows[2], kPositionRow, kXRow, kYRow, rows[3], rows[4], rows[5], rows[6], rows[7]};
}
constexpr auto kDefinitionEntryRows = definition_entry_rows();

constexpr ChunkField on_page(ChunkField row, const char* page, const char* by) {
  row.field.page = page;
  if (!row.field.enabledBy) row.field.enabledBy = by;
  return row;
}

template <RecordFlag Flag>
FieldValue carries(const ChunkRecord& record) {
  return std::int64_t{(record.flags & Flag) != 0};
}

constexpr ChunkField box_row(const char* name, const char* label, const char* page,
                             FieldValue (*get)(const ChunkRecord&)) {
  ChunkField row = {flag_field(name, label), get};
  row.field.page = page;
  return row;
}

// The bKGD of the image: one grey sample, three, or an index.
template <std::size_t At, std::size_t Bytes>
FieldValue get_background(const ChunkRecord& record) {
  const auto& bytes = record.image->background;
  return std::int64_t{Bytes == 2 ? read_be16(&bytes[At]) : bytes[At]};
}
template <std::size_t At, std::size_t Bytes>
void put_background(ChunkRecord& record, const FieldValue& value) {
  auto& bytes = record.image.edit().background;
  const auto number = static_cast<std::uint32_t>(std::get<std::int64_t>(value));
  if constexpr (Bytes == 2)
    write_be16(&bytes[At], number);
  else
    bytes[At] = static_cast<std::uint8_t>(number);
}
template <std::size_t At, std::size_t Bytes>
constexpr ChunkField background_field(const char* name, const char* label) {
  ChunkField row = {enabled_by(whole_field(name, label, 0, 65535), "hasBackground"),
                    get_background<At, Bytes>, put_background<At, Bytes>};
  row.field.page = "Background";
  return row;
}

constexpr ChunkField kBackgroundRows[] = {
    box_row("hasBackground", "This image has a background", "Background", carries<CRF_BKGD>),
    background_field<0, 2>("backgroundGrey", "Grey"),
    background_field<0, 2>("backgroundRed", "Red"),
    background_field<2, 2>("backgroundGreen", "Green"),
    background_field<4, 2>("backgroundBlue", "Blue"),
    background_field<0, 1>("backgroundIndex", "Color"),
};

/// Fields of a background that images of a color type don't have go away; the others get their range.
void adapt_image(const EntryPlace& place, std::vector<Field>& fields) {
  const ChunkRecord& record = place.record();
  const bool indexed = record.colorType == 3, grey = record.colorType % 4 == 0;
  const std::int64_t most = indexed ? std::max<std::int64_t>(record.image->paletteBytes / 3, 1) - 1
                                    : (std::int64_t{1} << record.bitDepth) - 1;
  for (const char* name :
       {"backgroundGrey", "backgroundRed", "backgroundGreen", "backgroundBlue", "backgroundIndex"}) {
    const std::string_view which = name;
    const bool has = which == "backgroundIndex" ? indexed : !indexed && grey == (which == "backgroundGrey");
    if (has)
      edit_field(fields, name)->most = most;
    else
      remove_field(fields, name);
  }
}

constexpr std::size_t kImageRowCount =
    3 + 1 + std::size(kFramingRows) + 1 + std::size(kDefinitionRows<true>) + std::size(kBackgroundRows);

/// Position and delay first, then a page for each block with a box that tells whether the image carries it.
constexpr std::array<ChunkField, kImageRowCount> image_rows() {
  std::array<ChunkField, kImageRowCount> rows{};
  std::size_t count = 0;
  for (const ChunkField& row : {kPositionRow, kXRow, kYRow}) rows[count++] = row;
  for (const ChunkField& row : kFramingRows)
    if (row.field.name == std::string_view("delay")) {
      rows[count] = row;
      rows[count++].field.enabledBy = nullptr;
    }
  rows[count++] = box_row("hasFram", "This image has a FRAM", "FRAM", carries<CRF_FRAM>);
  for (const ChunkField& row : kFramingRows)
    if (row.field.name != std::string_view("delay")) rows[count++] = on_page(row, "FRAM", "hasFram");
  rows[count++] = box_row("hasDefi", "This image has a DEFI", "DEFI", carries<CRF_DEFI>);
  for (const ChunkField& row : kDefinitionRows<true>) rows[count++] = on_page(row, "DEFI", "hasDefi");
  for (const ChunkField& row : kBackgroundRows) rows[count++] = row;
  return rows;
}
constexpr auto kImageRows = image_rows();

// ---------------------------------------------------------------------------------------------------------
// what they mean together

/// A level is written only under the one before it, and none of them under mode 0: levels that were set are
/// raised, and those that must then be there too change nothing.
void raise_levels(FramBlock& block, const Applying& applying) {
  const auto raise = [&](std::uint8_t& flag, std::initializer_list<const char*> names) {
    const bool set = std::ranges::any_of(names, [&](const char* name) { return applying.changed(name); });
    if (set && flag == 0) flag = 1;
  };
  raise(block.changeDelay, {"delay"});
  raise(block.changeTimeout, {"timeout"});
  raise(block.changeClipping, {"clipType", "clipLeft", "clipRight", "clipTop", "clipBottom"});
  raise(block.changeSyncId, {"sync"});
  if (block.changeSyncId != 0 && block.changeClipping == 0) {
    block.changeClipping = block.clipType = 1;  // relative, by nothing
    block.clipLeft = block.clipRight = block.clipTop = block.clipBottom = 0;
  }
  if (block.changeClipping != 0 && block.changeTimeout == 0) {
    block.changeTimeout = 1;
    block.timeout = to_file_order(kNoTimeout);
  }
  if (block.changeTimeout != 0 && block.changeDelay == 0) block.changeDelay = 1;
  if (block.changeDelay != 0 && block.framingMode == 0) block.framingMode = 1;
}

std::uint32_t definition_bytes(const FieldValues& values) {
  if (values.number("hasPosition") == 0) return kHeadBytes;
  return values.number("hasClipping") == 0 ? kPositionBytes : kClippingBytes;
}

bool is_laid_out_framing(const EntryPlace& place) {
  FramBlock block;
  return parse_laid_out_framing(raw_payload(place.record()), block);
}
void unfold_framing(ChunkRecord& record) {
  parse_laid_out_framing(raw_payload(record), record.image.edit().framBlock);
}
bool fold_framing(Applying& applying) {
  FramBlock& block = applying.record.image.edit().framBlock;
  raise_levels(block, applying);
  const auto payload = framing_payload(block);
  applying.record.image.reset();
  return put_payload(applying.record, payload);
}

bool is_whole_definition(const EntryPlace& place) {
  const std::size_t size = raw_payload(place.record()).size();
  return size == kHeadBytes || size == kPositionBytes || size == kClippingBytes;
}
void unfold_definition(ChunkRecord& record) {
  EmbeddedImage& image = record.image.edit();
  image.defiBytes = parse_definition(raw_payload(record), image.defiBlock);
}
bool fold_definition(Applying& applying) {
  const auto payload =
      definition_payload(applying.record.image->defiBlock, definition_bytes(applying.values));
  applying.record.image.reset();
  return put_payload(applying.record, payload);
}

std::optional<FieldFault> check_name(const EntryPlace&, const FieldValues& values) {
  const auto beyond = first_beyond_latin1(values.text("name"));
  if (!beyond) return std::nullopt;
  return FieldFault{"name", StringId::Latin1Question, std::string(string_text(StringId::Latin1Question)),
                    true, *beyond};
}

/// What a block holds that the image is given.
void prepare_image(ChunkRecord& record) {
  EmbeddedImage& image = record.image.edit();
  if (!(record.flags & CRF_FRAM)) {
    image.framBlock = {};
    image.framBlock.framingMode = image.framBlock.changeDelay = 1;
  }
  if (!(record.flags & CRF_DEFI)) {
    image.defiBlock = {};
    image.defiBlock.concreteFlag = 1;
    image.defiBytes = 0;
  }
}

void set_flag(std::uint32_t& flags, RecordFlag flag, bool on) { flags = on ? flags | flag : flags & ~flag; }

bool finish_image(Applying& applying) {
  ChunkRecord& record = applying.record;
  const FieldValues& values = applying.values;
  set_flag(record.flags, CRF_FRAM, values.number("hasFram") != 0 || applying.changed("delay"));
  if (record.flags & CRF_FRAM) raise_levels(record.image.edit().framBlock, applying);
  set_flag(record.flags, CRF_BKGD, values.number("hasBackground") != 0);
  const bool positioned = values.number("hasPosition") != 0 && applying.changed("hasPosition");
  set_flag(record.flags, CRF_DEFI, values.number("hasDefi") != 0 || positioned);
  const bool same_length =
      !applying.changed("hasPosition") && !applying.changed("hasClipping") && !applying.changed("hasDefi");
  if (!same_length && record.flags & CRF_DEFI) record.image.edit().defiBytes = definition_bytes(values);
  return true;
}

constexpr ChunkFieldSet kSets[] = {
    {.tag = tag::FRAM,
     .kinds = kMng,
     .rows = kFramingRows,
     .fits = is_laid_out_framing,
     .prepare = unfold_framing,
     .check = check_name,
     .finish = fold_framing},
    {.tag = tag::DEFI,
     .kinds = kMng,
     .rows = kDefinitionEntryRows,
     .fits = is_whole_definition,
     .prepare = unfold_definition,
     .finish = fold_definition},
    {.tag = tag::PNGI,
     .kinds = kMng,
     .rows = kImageRows,
     .prepare = prepare_image,
     .adapt = adapt_image,
     .check = check_name,
     .finish = finish_image},
};

}  // namespace

std::span<const ChunkFieldSet> framing_field_sets() { return kSets; }

}  // namespace vellum
