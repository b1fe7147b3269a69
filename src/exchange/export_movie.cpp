// Movies out: the canvases of an animation over their background, with a sound where somebody wants one.
#include <algorithm>

#include "base/text.h"
#include "core/model/frame_values.h"
#include "exchange/exchange_rows.h"
#include "exchange/movie.h"
#include "exchange/settings.h"
#include "operations/frames.h"

namespace vellum {
namespace {

constexpr ExportFormat kFormats[] = {
    {"AVI movies", ".avi"}, {"MOV movies", ".mov"}, {"MP4 movies", ".mp4"},   {"WebM movies", ".webm"},
    {"MKV movies", ".mkv"}, {"M4V movies", ".m4v"}, {"Flash movies", ".flv"},
};

constexpr Field kFields[] = {
    {.name = "quality",
     .label = "Quality",
     .least = 10,
     .most = 10000,
     .tip = "Codecs that lose nothing pass over it",
     .initial = 8500,
     .setting = &settings::AVIQualityFactor},
    {.name = "compress",
     .label = "Compress AVI and MOV",
     .type = FieldType::Flag,
     .tip = "Without it, movies are large and exact",
     .initial = 1,
     .setting = &settings::MovieCompression},
    {.name = "codec",
     .label = "Codec",
     .type = FieldType::Text,
     .most = 100,
     .enabledBy = "compress",
     .tip = "Name of an encoder; empty: the usual one of the file type",
     .textSetting = &settings::VideoCompressionCodec},
    {.name = "roundUp",
     .label = "Sides are multiples of 4",
     .type = FieldType::Flag,
     .tip = "Some players want them; the background fills what is added",
     .initial = 1,
     .setting = &settings::AVIRoundUp},
    {.name = "passes",
     .label = "Plays",
     .least = 1,
     .most = 1000,
     .tip = "How often the animation is in the movie",
     .initial = 1,
     .stateId = 1},
    {.name = "includeSound",
     .label = "Include sound",
     .type = FieldType::Flag,
     .setting = &settings::SaveMovieIncludeSound},
    {.name = "soundPath",
     .label = "Sound file",
     .type = FieldType::Text,
     .look = FieldLook::Path,
     .enabledBy = "includeSound",
     .tip = "Cut, or followed by silence, to the length of the movie",
     .textSetting = &settings::SaveMovieSoundPath},
};

constexpr const char* kSoundFields[] = {"soundPath"};
constexpr CompoundOption kOptions[] = {{.name = "sound",
                                        .form = "FILE",
                                        .help = "A file whose sound the movie gets",
                                        .fields = kSoundFields,
                                        .parting = '\0',
                                        .alongside = "includeSound",
                                        .alongsideValue = 1}};

bool prepare(ExportRun& run) { return movies_built() || run.refuse(StringId::NoMovieLibraries); }

std::filesystem::path sound_of(const FieldValues& values) {
  return values.number("includeSound") != 0 ? values.text("soundPath") : std::string();
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  if (values.number("includeSound") == 0 || !values.text("soundPath").empty()) return std::nullopt;
  return fault_of("soundPath", StringId::NoFileName);
}

/// Frames that are opaque canvases already are written as they are; others are composed.
FrameStream canvases_of(const DocumentWindow& window) {
  FrameStream stored = stored_frames(window);
  for (std::size_t i = 0; i < stored.count; ++i) {
    const StreamedFrame frame = stored.frame(i);
    const bool whole = frame.picture && frame.picture.bits() == 24 && frame.transparency.empty();
    if (!whole || !covers_canvas(frame, stored.canvas)) return canvas_frames(window);
  }
  return stored;
}

bool write(ExportRun& run, const FieldValues& values, const Sink& sink) {
  const FrameStream stream = canvases_of(run.draft);
  MovieForm form{.extension = lower_case(run.path.extension().string()),
                 .delays = {},
                 .compress = values.number("compress") != 0,
                 .codec = values.text("codec"),
                 .quality = static_cast<std::uint32_t>(values.number("quality")),
                 .roundUp = values.number("roundUp") != 0,
                 .background = document_background(run.source.list, run.source.document) & 0xFFFFFF,
                 .sound = sound_of(values),
                 .passes = static_cast<std::uint32_t>(values.number("passes"))};
  if (form.extension.empty()) form.extension = kFormats[0].extension;
  if (!form.compress) form.codec.clear();
  const std::uint32_t ticks = ticks_per_second(run.draft.list);
  for (const std::size_t entry : frame_entries(run.draft))
    form.delays.push_back(GetFrameDelay(run.draft.list.record(entry), run.draft.document.kind, ticks));
  const auto scratch = run.path.empty() ? std::filesystem::temp_directory_path() : run.path.parent_path();
  std::string missing;
  switch (write_movie(stream, form, scratch, sink, run.host, missing)) {
    case MovieFault::None:
      return true;
    case MovieFault::NoEncoder:
      if (run.host.message)
        run.host.message({StringId::NoEncoder, {}, filled(StringId::NoEncoder, {missing}), {}, nullptr});
      run.told = true;
      return false;
    case MovieFault::SoundNotRead:
      run.host.show(StringId::ErrorReadingFile, {}, form.sound.string());
      run.told = true;
      return false;
    case MovieFault::Stopped:
    case MovieFault::Other:
      break;
  }
  return false;
}

}  // namespace

constinit const Exporter kExportMovie{
    .parameters =
        {
            .name = "movie",
            .title = "Export to Movie",
            .help = "An animation as a movie: AVI, MOV, MP4, WebM, MKV",
            .command = 112,
            .kinds = kEveryKind,
            .page = "movies",
            .stateFile = "ExportMovieState.txt",
            .fields = kFields,
            .options = kOptions,
            .check = check,
        },
    .filter = "AVI movies",
    .extension = ".avi",
    .formats = kFormats,
    .prepare = prepare,
    .write = write,
};

}  // namespace vellum
