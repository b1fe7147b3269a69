// Cursors out: animated ones as a RIFF file of form ACON, still ones as a file of one entry.
#include <algorithm>

#include "base/translation.h"
#include "core/build/frame_stream.h"
#include "core/edit/picture_fitting.h"
#include "exchange/cursor.h"
#include "exchange/exchange_rows.h"
#include "exchange/riff.h"
#include "exchange/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr Field kFields[] = {
    {.name = "hotX", .label = "Hot spot X", .most = 32, .initial = 16, .setting = &settings::ANIHotX},
    {.name = "hotY", .label = "Hot spot Y", .most = 32, .initial = 16, .setting = &settings::ANIHotY},
    {.name = "maskThreshold",
     .label = "Mask threshold",
     .least = 1,
     .most = 254,
     .tip = "Pixels whose alpha is below it are transparent",
     .initial = 127,
     .setting = &settings::ANIMaskThreshold},
};
constexpr const char* kHot[] = {"hotX", "hotY"};
constexpr CompoundOption kOptions[] = {
    {.name = "hot", .form = "X,Y", .help = "The pixel that points, 0 to 32", .fields = kHot}};

constexpr DocumentKind kStills[] = {DocumentKind::PING};

struct CursorOptions {
  HotSpot hot;
  std::uint32_t threshold = 127;
};

CursorOptions options_of(const FieldValues& values) {
  return {
      {static_cast<std::uint32_t>(values.number("hotX")), static_cast<std::uint32_t>(values.number("hotY"))},
      static_cast<std::uint32_t>(values.number("maskThreshold"))};
}

bool prepare(ExportRun& run) {
  const FrameStream stream = stored_frames(run.draft);
  const Picture first = stream.frame(0).picture;
  if (!first) return run.refuse(StringId::ErrorAccessingChunk);
  const std::uint32_t longest =
      std::max({stream.canvas.width, stream.canvas.height, first.width(), first.height()});
  return longest <= kMostCursor || run.refuse(StringId::CursorTooLarge);
}

/// 1 or 4 where all frames have that depth, else 32.
std::uint32_t common_bits(const FrameStream& stream) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < stream.count; ++i) {
    const Picture picture = stream.frame(i).picture;
    if (!picture || picture.bits() > 4 || (bits != 0 && bits != picture.bits())) return 32;
    bits = picture.bits();
  }
  return bits;
}

/// A frame alone on the canvas, as a cursor; empty where it is lost.
std::vector<std::uint8_t> cursor_of(const StreamedFrame& frame, Extent canvas, std::uint32_t bits,
                                    const CursorOptions& options) {
  if (!has_rows(frame.picture)) return {};
  Picture picture = PictureCreateAlpha(canvas.width, canvas.height);
  const Picture deep = PictureWithTransparency(frame.picture, frame.transparency);
  if (!picture || !deep) return {};
  PictureBlit(picture, frame.offset.x, frame.offset.y, deep, 0, 0, static_cast<std::int32_t>(deep.width()),
              static_cast<std::int32_t>(deep.height()));
  return write_cursor(picture, bits, palette_of(frame.picture), options.hot, options.threshold);
}

void put_header(std::vector<std::uint8_t>& out, const FrameStream& stream, std::uint32_t bits) {
  const auto count = static_cast<std::uint32_t>(stream.count);
  put_riff_head(out, "anih", 36);
  for (const std::uint32_t value :
       {36u, count, count, stream.canvas.width, stream.canvas.height, bits, 1u, 1u, 1u})
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

/// Sixtieths of a second of every frame, truncated.
void put_rates(std::vector<std::uint8_t>& out, const FrameStream& stream) {
  put_riff_head(out, "rate", static_cast<std::uint32_t>(4 * stream.count));
  for (std::size_t i = 0; i < stream.count; ++i) {
    const std::uint64_t rate = std::uint64_t{stream.frame(i).delay} * 60 / 1000;
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(rate >> shift));
  }
}

bool write_ani(ExportRun& run, const FieldValues& values, const Sink& sink) {
  const FrameStream stream = stored_frames(run.draft);
  const CursorOptions options = options_of(values);
  const std::uint32_t bits = common_bits(stream);
  const std::size_t icon = cursor_bytes(stream.canvas.width, stream.canvas.height, bits);
  const std::uint64_t list = 4 + stream.count * (8 + icon + (icon & 1)),
                      whole = 4 + 8 + 36 + 8 + list + 8 + 4 * stream.count;
  if (whole > 0xFFFFFFFF)
    return run.host.fail(
        {FaultKind::Limit, 0, -1, -1, translated("the file would be longer than its format can tell")});
  std::vector<std::uint8_t> bytes;
  const auto put_form = [&](const char* tag, std::uint64_t length, std::string_view form) {
    put_riff_head(bytes, tag, static_cast<std::uint32_t>(length));
    bytes.insert(bytes.end(), form.begin(), form.end());
  };
  put_form("RIFF", whole, "ACON");
  put_header(bytes, stream, bits);
  put_form("LIST", list, "fram");
  const Progress progress(run.host, string_text(StringId::Writing));
  for (std::size_t i = 0; i < stream.count; ++i) {
    if (run.host.stopped()) return false;
    const auto cursor = cursor_of(stream.frame(i), stream.canvas, bits, options);
    if (cursor.size() != icon) return run.refuse(StringId::MemoryError);
    put_riff_head(bytes, "icon", static_cast<std::uint32_t>(icon));
    bytes.insert(bytes.end(), cursor.begin(), cursor.end());
    if (icon & 1) bytes.push_back(0);
    if (!sink.write(bytes)) return false;
    bytes.clear();
    progress.step(i + 1, stream.count);
  }
  put_rates(bytes, stream);
  return sink.write(bytes);
}

bool write_cur(ExportRun& run, const FieldValues& values, const Sink& sink) {
  const FrameStream stream = stored_frames(run.draft);
  const auto bytes = cursor_of(stream.frame(0), stream.canvas, common_bits(stream), options_of(values));
  return bytes.empty() ? run.refuse(StringId::MemoryError) : sink.write(bytes);
}

}  // namespace

constinit const Exporter kExportAni{
    .parameters =
        {
            .name = "ani",
            .title = "Export to ANI",
            .help = "An animation as an animated cursor",
            .command = 121,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
        },
    .filter = "ANI files",
    .extension = ".ani",
    .prepare = prepare,
    .write = write_ani,
};

constinit const Exporter kExportCur{
    .parameters =
        {
            .name = "cur",
            .title = "Export to CUR",
            .help = "A still as a cursor",
            .kinds = kStills,
            .page = "ani",
            .fields = kFields,
            .options = kOptions,
        },
    .filter = "Cursors",
    .extension = ".cur",
    .prepare = prepare,
    .write = write_cur,
};

}  // namespace vellum
