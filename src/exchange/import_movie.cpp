// Movies in: frames of a range, thinned out where somebody wants that, as frames of a document.
#include <algorithm>

#include "core/build/build_animation.h"
#include "core/settings.h"
#include "exchange/exchange_rows.h"
#include "exchange/movie_import.h"
#include "exchange/settings.h"

namespace vellum {
namespace {

constexpr std::int64_t kLongest = 0x7FFFFFFF;
constexpr FieldChoice kModes[] = {{0, "Keep, then skip"}, {1, "Skip, then keep"}};

constexpr Field option_flag(const char* name, const char* label, int bit, const char* tip) {
  return {.name = name,
          .label = label,
          .type = FieldType::Flag,
          .most = 1,
          .tip = tip,
          .initial = bit == 1 ? 1 : 0,
          .setting = &settings::MovieOptions,
          .settingBits = bit};
}

constexpr Field kFields[] = {
    {.name = kKindField, .label = "Kind of document", .type = FieldType::Choice, .choices = kKindChoices},
    {.name = "from", .label = "First time (ms)", .most = kLongest},
    {.name = "to", .label = "Last time (ms)", .most = kLongest, .special = "The end"},
    {.name = "size",
     .label = "Sides at most",
     .most = 100000,
     .special = "As they are",
     .tip = "Larger movies are made smaller, in pixels"},
    {.name = "duration",
     .label = "Frame duration (ms)",
     .most = 60000,
     .special = "As in the movie",
     .setting = &settings::MovieFrameDuration},
    {.name = "preserve",
     .label = "Preserve running time",
     .type = FieldType::Flag,
     .tip = "A frame that is left out leaves its time to the one in front of it",
     .initial = 1,
     .setting = &settings::MoviePreserveTime},
    {.name = "depopulate",
     .label = "Leave frames out",
     .type = FieldType::Flag,
     .setting = &settings::MovieDepopulateFlag},
    {.name = "mode",
     .label = "Order",
     .type = FieldType::Choice,
     .choices = kModes,
     .enabledBy = "depopulate",
     .setting = &settings::MovieDepopulateMode},
    {.name = "keep",
     .label = "Frames to keep",
     .least = 1,
     .most = 1000,
     .enabledBy = "depopulate",
     .initial = 1,
     .setting = &settings::MovieDepopulateKeepValue},
    {.name = "skip",
     .label = "Frames to skip",
     .least = 1,
     .most = 1000,
     .enabledBy = "depopulate",
     .initial = 1,
     .setting = &settings::MovieDepopulateSkipValue},
    option_flag("merge", "Merge equal frames", 1, "One frame stands as long as all of them did"),
    option_flag("cut", "Cut to what changes", 2,
                "Frames have only the part that differs from the one before"),
    option_flag("palette", "One palette", 4, "256 colors for all frames"),
    option_flag("loop", "Loop for ever", 8, "Otherwise it is played once"),
};

constexpr const char* kKeep[] = {"keep"};
constexpr const char* kSkip[] = {"skip"};
constexpr CompoundOption kOptions[] = {
    {.name = "keep",
     .form = "N",
     .help = "Of each group so many frames stay",
     .fields = kKeep,
     .alongside = "depopulate",
     .alongsideValue = 1},
    {.name = "skip",
     .form = "N",
     .help = "Of each group so many frames go",
     .fields = kSkip,
     .alongside = "depopulate",
     .alongsideValue = 1},
};

void fit(std::vector<Field>& fields, const DocumentWindow&) {
  fields[0].initial = std::clamp(settings::DefaultAnimationType, 0, 2);
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  const std::int64_t to = values.number("to");
  if (to == 0 || to > values.number("from")) return std::nullopt;
  return fault_of("to", StringId::RangeIsEmpty);
}

bool recognizes(std::span<const std::uint8_t>) { return false; }

bool read(DocumentWindow& window, ImportRun& run) {
  const auto number = [&](const char* name) { return static_cast<std::uint32_t>(run.values.number(name)); };
  if (!movies_built()) return run.host.show(StringId::NoMovieLibraries), run.told = true, false;
  auto reader = open_movie(run.path, number("size"), run.host);
  if (!reader) return false;
  MovieImport import{.from = number("from"),
                     .to = number("to"),
                     .duration = number("duration"),
                     .preserve = number("preserve") != 0,
                     .merge = number("merge") != 0,
                     .cut = number("cut") != 0,
                     .palette = number("palette") != 0,
                     .loop = number("loop") != 0};
  if (number("depopulate") != 0) {
    import.keep = number("keep");
    import.skip = number("skip");
    import.skipFirst = number("mode") != 0;
  }
  return import_movie(*reader, import, build_kind(number(kKindField)), window, run.host, run.told);
}

constexpr std::string_view kExtensions[] = {".avi", ".mov",  ".mp4", ".m4v", ".webm", ".mkv",
                                            ".mpg", ".mpeg", ".ogv", ".flv", ".wmv",  ".gif"};

}  // namespace

constinit const Importer kImportMovie{
    .parameters =
        {
            .name = "import-movie",
            .title = "Import from Movie",
            .help = "The frames of a movie as a document: a range of them, thinned out, cut to what changes",
            .command = 110,
            .page = "movies",
            .stateFile = "ImportMovieState.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = fit,
            .check = check,
        },
    .filter = "Movies",
    .extensions = kExtensions,
    .recognizes = recognizes,
    .read = read,
    .fromFile = true,
};

}  // namespace vellum
