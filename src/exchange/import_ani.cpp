// Animated cursors in: a RIFF file of form ACON, whose icons become the frames of an MNG.
#include <algorithm>

#include "base/byte_order.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/build/build_animation.h"
#include "core/build/convert_records.h"
#include "core/build/frame_stream.h"
#include "core/chunks/text_chunk.h"
#include "core/edit/insertion.h"
#include "core/model/chunk_layout.h"
#include "exchange/cursor.h"
#include "exchange/exchange_rows.h"
#include "exchange/riff.h"
#include "exchange/settings.h"
#include "operations/convert_kind.h"

namespace vellum {
namespace {

constexpr Field kFields[] = {
    {.name = kKindField,
     .label = "Kind of document",
     .type = FieldType::Choice,
     .choices = kKindChoices,
     .initial = 1},
    {.name = "comment",
     .label = "Add a comment about the file",
     .type = FieldType::Flag,
     .tip = "A text with what the cursor file says of itself",
     .initial = 1,
     .setting = &settings::ANIAddDiagnostic},
};

constexpr std::size_t kHeaderFields = 9;
constexpr std::size_t kMostComment = 4095;  // bytes
enum Header : std::size_t { Size, Frames, Steps, Width, Depth, BitCount, Planes, DisplayRate, Flags };
enum Flag : std::uint32_t { kIcons = 1, kSequence = 2 };

/// What an ANI file holds.
struct Ani {
  std::array<std::uint32_t, kHeaderFields> header{};
  std::vector<std::uint32_t> sequence, rates;  ///< one for each step; empty where the file has none
  std::vector<std::span<const std::uint8_t>> frames;
  bool cut = false;  ///< a part of it breaks off
  bool has(Flag flag) const { return (header[Flags] & flag) != 0; }
};

std::vector<std::uint32_t> numbers_of(const RiffChunk& chunk) {
  std::vector<std::uint32_t> numbers;
  for (std::size_t i = 0; i + 4 <= chunk.data.size(); i += 4) numbers.push_back(read_le32(&chunk.data[i]));
  return numbers;
}

/// Tells what is wrong; false.
bool refuse(ImportRun& run, StringId reason) {
  run.host.show(reason, StringId::ErrorReadingFile);
  run.told = true;
  return false;
}

bool read_parts(Ani& ani, ImportRun& run) {
  const auto files = riff_chunks(run.bytes);
  const RiffChunk* file = find_chunk(files, "RIFF", "ACON");
  if (!file) return refuse(run, StringId::CorruptedFile);
  const auto parts = riff_chunks(file->data);
  const RiffChunk* header = find_chunk(parts, "anih");
  if (!header) return refuse(run, StringId::CorruptedFile);
  if (header->data.size() < 4 * kHeaderFields) return refuse(run, StringId::ErrorReadingFile);
  for (std::size_t i = 0; i < kHeaderFields; ++i) ani.header[i] = read_le32(&header->data[4 * i]);
  const RiffChunk* sequence = ani.has(kSequence) ? find_chunk(parts, "seq ") : nullptr;
  const RiffChunk* rates = find_chunk(parts, "rate");
  if ((sequence && sequence->cut) || (rates && rates->cut)) return refuse(run, StringId::ErrorReadingFile);
  if (sequence) ani.sequence = numbers_of(*sequence);
  if (rates) ani.rates = numbers_of(*rates);
  const RiffChunk* list = find_chunk(parts, "LIST", "fram");
  if (!list) return refuse(run, StringId::CorruptedFile);
  ani.cut = list->cut;
  for (const RiffChunk& chunk : riff_chunks(list->data))
    if (chunk.tag == "icon") ani.frames.push_back(chunk.data);
  return !ani.frames.empty() || refuse(run, StringId::CorruptedFile);
}

/// The step at which a frame is shown first; nothing where none shows it.
std::optional<std::size_t> first_step(const Ani& ani, std::size_t frame) {
  if (ani.sequence.empty()) return frame;
  const auto found = std::ranges::find(ani.sequence, frame);
  if (found == ani.sequence.end()) return std::nullopt;
  return static_cast<std::size_t>(found - ani.sequence.begin());
}

/// Milliseconds of a time in sixtieths of a second.
std::uint32_t milliseconds(std::uint32_t sixtieths) {
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>((sixtieths * std::uint64_t{1000} + 30) / 60, 0x7FFFFFFF));
}

std::uint32_t delay_of(const Ani& ani, std::size_t frame) {
  const auto step = first_step(ani, frame);
  const std::uint32_t usual = ani.header[DisplayRate];
  return milliseconds(step && *step < ani.rates.size() ? ani.rates[*step] : usual);
}

void add_values(std::string& text, const char* name, const std::vector<std::uint32_t>& values) {
  if (values.empty()) return;
  text += name;
  for (std::size_t i = 0; i < values.size() && text.size() <= kMostComment; ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(static_cast<std::int32_t>(values[i]));
  text += "\r\n";
}

std::string comment_of(const Ani& ani, HotSpot hot) {
  const auto value = [&](Header field) { return static_cast<int>(ani.header[field]); };
  std::string text = format_text(
      "Source ANI file information\r\n\r\nHeader size: %d\r\nNumber of frames: %d\r\nNumber of steps: %d\r\n"
      "Width: %d\r\nDepth: %d\r\nBit count: %d\r\nPlanes: %d\r\nDisplay rate: %d\r\nSequence: %s\r\n"
      "Icon data: %s\r\nHot spot X: %d\r\nHot spot Y: %d\r\n",
      value(Size), value(Frames), value(Steps), value(Width), value(Depth), value(BitCount), value(Planes),
      value(DisplayRate), ani.has(kSequence) ? "Yes" : "No", ani.has(kIcons) ? "Yes" : "No",
      static_cast<int>(hot.x), static_cast<int>(hot.y));
  add_values(text, "Sequence: ", ani.sequence);
  add_values(text, "Rate: ", ani.rates);
  if (text.size() > kMostComment) text.resize(kMostComment);
  return text;
}

/// A text as it stands, behind the header.
void add_comment(DocumentWindow& window, const std::string& text) {
  const TextPayload payload = text_payload("Comment", text);
  ChunkRecord record;
  record.tag = payload.tag;
  if (!put_payload(record, payload.payload)) return;
  {
    Insertion insertion(window, 1);
    insertion.add(record);
  }
  window.document.caret = 0;
  chunk_list_close_change(window.list, window.document);
}

bool read_ani(DocumentWindow& window, ImportRun& run) {
  Ani ani;
  if (!read_parts(ani, run)) return false;
  std::vector<Picture> pictures;
  std::vector<std::uint32_t> delays;
  for (std::size_t i = 0; i < ani.frames.size(); ++i) {
    const Picture picture = ani.has(kIcons) ? read_cursor(ani.frames[i]) : read_bare_bitmap(ani.frames[i]);
    if (!picture) continue;
    pictures.push_back(picture);
    delays.push_back(delay_of(ani, i));
  }
  if (pictures.empty()) return refuse(run, StringId::CorruptedFile);
  if (pictures.size() < ani.frames.size() || ani.cut)
    run.host.add_note(translated("ANI: ") + std::to_string(pictures.size()) + translated(" of ") +
                      std::to_string(std::max<std::size_t>(ani.frames.size(), ani.header[Frames])) +
                      translated(" frames can be read"));
  const FrameStream stream{
      {pictures[0].width(), pictures[0].height()}, pictures.size(), 0, [&](std::size_t i) {
        StreamedFrame frame;
        frame.picture = pictures[i];
        frame.delay = delays[i];
        frame.clears = true;
        return frame;
      }};
  DocumentWindow made;
  if (!build_from_stream(made, stream, DocumentKind::MING, run.host)) return false;
  if (run.values.number("comment") != 0)
    add_comment(made, comment_of(ani, ani.has(kIcons) ? hot_spot_of(ani.frames[0]) : HotSpot{}));
  const DocumentKind kind = build_kind(static_cast<std::uint32_t>(run.values.number(kKindField)));
  if (kind != DocumentKind::MING) return convert_kind(made, window, {kind, false}, run.host);
  window = made;
  return true;
}

bool is_ani(std::span<const std::uint8_t> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return text.starts_with("RIFF") && text.size() >= 12 && text.substr(8).starts_with("ACON");
}

bool read_cur(DocumentWindow& window, ImportRun& run) {
  const std::size_t entry = largest_entry(run.bytes);
  const Picture picture = read_cursor(run.bytes, entry);
  if (!picture) return refuse(run, StringId::CorruptedFile);
  if (!make_still(window, {}, picture)) return false;
  const HotSpot hot = hot_spot_of(run.bytes.subspan(16 * entry));
  if (run.values.number("comment") != 0)
    add_comment(window, format_text("Hot spot X: %d\r\nHot spot Y: %d\r\n", static_cast<int>(hot.x),
                                    static_cast<int>(hot.y)));
  return true;
}

constexpr std::string_view kAniExtensions[] = {".ani"}, kCurExtensions[] = {".cur"};

}  // namespace

constinit const Importer kImportAni{
    .parameters =
        {
            .name = "import-ani",
            .title = "Import from ANI",
            .help = "An animated cursor as a document",
            .command = 120,
            .page = "ani",
            .fields = kFields,
        },
    .filter = "ANI files",
    .extensions = kAniExtensions,
    .recognizes = is_ani,
    .read = read_ani,
};

constinit const Importer kImportCur{
    .parameters =
        {
            .name = "import-cur",
            .title = "Import from CUR",
            .help = "A cursor as a still PNG",
            .page = "ani",
            .fields = std::span(kFields).subspan(1),
        },
    .filter = "Cursors",
    .extensions = kCurExtensions,
    .recognizes = is_cursor,
    .read = read_cur,
};

}  // namespace vellum
