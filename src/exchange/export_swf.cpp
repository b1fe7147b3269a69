// SWF out: each frame the bitmap of what changes, over the former ones or in place of them.
#include <algorithm>
#include <numeric>

#include "base/file.h"
#include "base/page_text.h"
#include "core/build/frame_stream.h"
#include "core/model/frame_values.h"
#include "exchange/as_animated_png.h"
#include "exchange/constant_rate.h"
#include "exchange/exchange_rows.h"
#include "exchange/settings.h"
#include "exchange/swf_writer.h"
#include "operations/changed_parts.h"
#include "operations/frames.h"

#include <zlib.h>

namespace vellum {
namespace {

constexpr std::uint64_t kMostSound = std::uint64_t{256} << 20;
/// Bitmaps that lie over each other before a whole canvas takes their place: players draw all of them.
constexpr std::uint16_t kMostLayers = 40;

constexpr Field kFields[] = {
    {.name = "backgroundColor",
     .label = "Background color",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .initial = 0xFFFFFF,
     .setting = &settings::SWFBackgroundColor},
    {.name = "crush",
     .label = "Reduce to 256 colors",
     .type = FieldType::Flag,
     .tip = "Each frame has a palette of its own; the file becomes smaller",
     .initial = 1,
     .setting = &settings::CrushSWFTrueColour},
    {.name = "html",
     .label = "Write a page beside it",
     .type = FieldType::Flag,
     .tip = "With the animation as a PNG, which is what browsers show",
     .initial = 1,
     .setting = &settings::SWFWriteHtml},
    {.name = "includeSound",
     .label = "Include sound",
     .type = FieldType::Flag,
     .setting = &settings::SWFIncludeSound},
    {.name = "soundPath",
     .label = "Sound file",
     .type = FieldType::Text,
     .look = FieldLook::Path,
     .enabledBy = "includeSound",
     .tip = "WAV or MP3",
     .textSetting = &settings::SWFSoundPath},
};

constexpr const char *kHtml[] = {"html"}, *kSound[] = {"soundPath"};
constexpr CompoundOption kOptions[] = {
    {.name = "html", .form = nullptr, .help = "Write a page beside it", .fields = kHtml, .otherwise = 0},
    {.name = "sound",
     .form = "FILE",
     .help = "The sound of a WAV or MP3 file",
     .fields = kSound,
     .parting = '\0',
     .alongside = "includeSound",
     .alongsideValue = 1},
};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (values.number("includeSound") == 0 || !values.text("soundPath").empty()) return std::nullopt;
  return fault_of("soundPath", StringId::NoFileName);
}

/// Bytes behind the signature, packed as they come and kept, since the file begins with their number.
class Packer {
 public:
  Packer() { ready_ = deflateInit(&stream_, 6) == Z_OK; }
  ~Packer() {
    if (ready_) deflateEnd(&stream_);
  }
  Packer(const Packer&) = delete;
  Packer& operator=(const Packer&) = delete;

  bool add(std::span<const std::uint8_t> bytes, bool last = false) {
    if (!ready_ || taken_ + bytes.size() > 0xFFFFFFF0u) return false;
    taken_ += bytes.size();
    stream_.next_in = const_cast<std::uint8_t*>(bytes.data());
    stream_.avail_in = static_cast<uInt>(bytes.size());
    int state = Z_OK;
    do {
      std::uint8_t room[1 << 15];
      stream_.next_out = room;
      stream_.avail_out = sizeof room;
      state = deflate(&stream_, last ? Z_FINISH : Z_NO_FLUSH);
      packed_.insert(packed_.end(), room, room + (sizeof room - stream_.avail_out));
    } while (stream_.avail_out == 0);
    return state != Z_STREAM_ERROR;
  }
  std::uint64_t taken() const { return taken_; }
  const SwfBytes& packed() const { return packed_; }

 private:
  z_stream stream_{};
  bool ready_ = false;
  std::uint64_t taken_ = 0;
  SwfBytes packed_;
};

struct Timing {
  std::uint32_t rate256 = 0;
  std::vector<std::int64_t> lengths;
  std::uint64_t frames() const {
    return static_cast<std::uint64_t>(std::accumulate(lengths.begin(), lengths.end(), std::int64_t{0}));
  }
};

Timing timing_of(const DocumentWindow& window) {
  std::vector<std::uint32_t> delays;
  const std::uint32_t ticks = ticks_per_second(window.list);
  for (const std::size_t entry : frame_entries(window))
    delays.push_back(GetFrameDelay(window.list.record(entry), window.document.kind, ticks));
  const std::uint32_t period = constant_period(delays);
  return {(256 * 1000 + period / 2) / period, lengths_in(delays, period)};
}

/// Puts the frames one after the other.
class Stage {
 public:
  Stage(bool crushed) : crushed_(crushed) {}

  bool put(SwfBytes& out, const Picture& canvas) {
    FrameLayer layer;
    if (before_) layer = changed_part(before_, canvas);
    const bool over = before_ && layer.over && depth_ < kMostLayers;
    if (!over) {
      for (; depth_ > 0; --depth_) put_swf_remove(out, depth_);
      layer.picture = canvas;
      layer.offset = {};
    }
    if (next_ >= 0xFFF0) return false;
    before_ = canvas;
    if (!put_swf_picture(out, next_, layer.picture, crushed_)) return false;
    put_swf_place(out, ++depth_, static_cast<std::uint16_t>(next_ + 1),
                  static_cast<std::uint32_t>(layer.offset.x), static_cast<std::uint32_t>(layer.offset.y));
    next_ = static_cast<std::uint16_t>(next_ + 2);
    return true;
  }

 private:
  bool crushed_;
  Picture before_;
  std::uint16_t depth_ = 0, next_ = 2;  ///< number 1 is the sound's
};

bool put_sound(Packer& packer, const FieldValues& values, ExportRun& run) {
  if (values.number("includeSound") == 0) return true;
  std::string reason;
  const auto file = read_file(values.text("soundPath"), reason, kMostSound);
  const SwfBytes tags = file ? swf_sound(*file, 1) : SwfBytes{};
  if (!tags.empty()) return packer.add(tags);
  run.host.show(StringId::ErrorReadingFile, {}, file ? values.text("soundPath") : reason);
  run.told = true;
  return false;
}

bool pack_frames(ExportRun& run, const FrameStream& stream, const Timing& timing, bool crushed,
                 Packer& packer) {
  const Progress progress(run.host, string_text(StringId::Writing));
  Stage stage(crushed);
  for (std::size_t i = 0; i < stream.count; ++i) {
    if (run.host.stopped()) return false;
    SwfBytes tags;
    const Picture canvas = stream.frame(i).picture;
    if (!canvas || !stage.put(tags, canvas)) return run.refuse(StringId::MemoryError);
    if (i + 1 == stream.count && stream.plays == 1) put_swf_stop(tags);
    for (std::int64_t shown = 0; shown < timing.lengths[i]; ++shown) put_swf_show(tags);
    if (!packer.add(tags)) return run.refuse(StringId::TooLargeForFormat);
    progress.step(i + 1, stream.count);
  }
  return true;
}

bool write(ExportRun& run, const FieldValues& values, const Sink& sink) {
  const FrameStream stream = canvas_frames(run.draft);
  const Timing timing = timing_of(run.draft);
  const std::uint64_t frames = timing.frames();
  if (std::max(stream.canvas.width, stream.canvas.height) > kMostSwfSide || frames > kMostSwfFrames)
    return run.refuse(StringId::TooLargeForFormat);
  Packer packer;
  SwfBytes bytes;
  put_swf_head(bytes, stream.canvas.width, stream.canvas.height, timing.rate256,
               static_cast<std::uint32_t>(frames));
  put_swf_background(bytes, static_cast<Colour>(values.number("backgroundColor")));
  if (!packer.add(bytes) || !put_sound(packer, values, run)) return false;
  if (!pack_frames(run, stream, timing, values.number("crush") != 0, packer)) return false;
  bytes.clear();
  put_swf_end(bytes);
  if (!packer.add(bytes, true)) return run.refuse(StringId::MemoryError);
  constexpr std::uint32_t kSignature = 8;
  return sink.write(swf_signature(static_cast<std::uint32_t>(packer.taken() + kSignature))) &&
         sink.write(packer.packed());
}

std::string page_of(const ExportRun& run, const std::string& picture) {
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  const std::string name = url_part(run.path.filename().string()),
                    title = html_text(run.path.stem().string());
  const std::string size =
      " width=\"" + std::to_string(canvas.width) + "\" height=\"" + std::to_string(canvas.height) + "\"";
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + title +
         "</title>\n</head>\n<body>\n<object type=\"application/x-shockwave-flash\" data=\"" + name + "\"" +
         size + ">\n<param name=\"movie\" value=\"" + name + "\">\n<img src=\"" + url_part(picture) + "\"" +
         size + " alt=\"" + title + "\">\n</object>\n</body>\n</html>\n";
}

/// The page and its picture, after a question where files of their names are there.
bool write_page(ExportRun& run, const FieldValues& values) {
  if (values.number("html") == 0) return true;
  std::filesystem::path page = run.path, picture = run.path;
  page.replace_extension(".html");
  picture += ".png";
  std::error_code error;
  if ((std::filesystem::exists(page, error) || std::filesystem::exists(picture, error)) && run.host.ask) {
    const StringId id = StringId::TilesExistQuestion;
    if (run.host.ask({id, {}, std::string(string_text(id)), {}, nullptr}, false) != Answer::Yes) return true;
  }
  SafeFile image(picture);
  const Sink sink = file_sink(image);
  if (!image.ok() || !write_as_animated_png(run.source, sink, run.host))
    return image.ok() ? false : run.host.fail({FaultKind::Limit, 0, -1, -1, image.reason()});
  const std::string text = page_of(run, picture.filename().string());
  SafeFile file(page);
  return (file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) && file.commit()) ||
         run.host.fail({FaultKind::Limit, 0, -1, -1, file.reason()});
}

}  // namespace

constinit const Exporter kExportSwf{
    .parameters =
        {
            .name = "swf",
            .title = "Export to SWF",
            .help = "An animation as an SWF movie",
            .command = 115,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
            .check = check,
        },
    .filter = "SWF movies",
    .extension = ".swf",
    .write = write,
    .beside = write_page,
};

}  // namespace vellum
