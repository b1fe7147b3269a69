// Extract: the images of a document, or what its frames show, as picture files.
#include <algorithm>

#include "base/text.h"
#include "operations/extract_frames.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr FieldChoice kPictures[] = {{0, "Own pictures"}, {1, "Composed canvases"}};
constexpr FieldChoice kFormats[] = {{0, "jpg"}, {1, "bmp"}, {2, "gif"}, {3, "pcx"},
                                    {4, "tga"}, {5, "png"}, {6, "webp"}};

constexpr Field kFields[] = {
    {.name = "folder", .label = "Folder", .type = FieldType::Text},
    {.name = "stem", .label = "Name", .type = FieldType::Text, .most = 200},
    {.name = "format",
     .label = "Format",
     .type = FieldType::Choice,
     .choices = kFormats,
     .initial = 5,
     .stateId = 1},
    {.name = "composed",
     .label = "Images",
     .type = FieldType::Choice,
     .choices = kPictures,
     .look = FieldLook::Radio},
    {.name = "numbered",
     .label = "Numbers in names",
     .type = FieldType::Flag,
     .initial = 1,
     .setting = &settings::ExtractNumbered},
    {.name = "sequential",
     .label = "Numbers count frames",
     .type = FieldType::Flag,
     .enabledBy = "numbered",
     .tip = "Otherwise the numbers are those of the list",
     .initial = 1,
     .setting = &settings::BlockExtractSequential},
};

constexpr const char* kComposed[] = {"composed"};
constexpr CompoundOption kOptions[] = {
    {.name = "composed", .form = nullptr, .help = "Whole canvases as they are shown", .fields = kComposed}};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  const std::string& stem = values.text("stem");
  if (stem.empty() || stem.find('/') != std::string::npos) return fault_of("stem", StringId::NoFileName);
  if (values.text("folder").empty()) return fault_of("folder", StringId::NoFolder);
  return std::nullopt;
}

/// Without a name files are frame_00000.png and so on.
const char* settle(FieldValues& values, const DocumentWindow&, const GivenFields& given) {
  if (given.contains("stem")) return nullptr;
  values.set("stem", std::string("frame"));
  values.set("first", std::int64_t{0});
  return nullptr;
}

Extraction extraction_of(const OperationRun& run) {
  const bool from_zero = run.values.find("first") && run.number("first") == 0;
  return {.folder = run.values.text("folder"),
          .stem = run.values.text("stem"),
          .extension = kFormats[run.number("format")].name,
          .frames = run.frames,
          .composed = run.number("composed") != 0,
          .numbered = run.number("numbered") != 0,
          .sequential = run.number("sequential") != 0,
          .first = from_zero ? 0u : 1u};
}

using Names = std::vector<std::filesystem::path>;

/// Asks about files that are there already; nothing when the user cancelled.
std::optional<Names> settle_names(Names names, Host& host) {
  std::error_code error;
  if (std::ranges::none_of(names, [&](const auto& name) { return std::filesystem::exists(name, error); }))
    return names;
  enum { kOverwrite, kKeepBoth, kCancel };
  Choice choice{.title = StringId::ExtractTitle,
                .text = StringId::FilesExist,
                .answers = {StringId::OverwriteAll, StringId::KeepBoth, StringId::CancelAnswer},
                .chosen = kOverwrite};
  if (host.choose && (!host.choose(choice) || choice.chosen == kCancel)) return std::nullopt;
  return choice.chosen == kKeepBoth ? free_names(std::move(names)) : names;
}

/// Those that the user gave to each file.
Names given_names(std::string_view text) {
  Names names;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    names.emplace_back(text.substr(at, end - at));
    at = end + 1;
  }
  return names;
}

bool run(OperationRun& run) {
  const Extraction extraction = extraction_of(run);
  std::optional<Names> names = given_names(run.values.text("names"));
  if (names->empty()) names = settle_names(extracted_names(run.draft, extraction), run.host);
  run.told = true;  // of each file that couldn't be written; who cancels knows it
  if (!names) return false;
  const std::size_t written = extract_frames(run.draft, extraction, *names, run.host);
  run.host.set_status(filled(StringId::FilesWritten, {std::to_string(written)}));
  return written == names->size();
}

}  // namespace

constinit const Operation kExtract{
    .parameters = {.name = "frames",
                   .title = "Extract",
                   .help = "Write each image entry's own picture, or what it shows, as a picture file",
                   .command = 312,
                   .kinds = kEveryKind,
                   .page = "extract",
                   .stateFile = "ExtractState.txt",
                   .fields = kFields,
                   .folder = "folder",
                   .options = kOptions,
                   .settle = settle,
                   .check = check},
    .result = OperationResult::Files,
    .scoped = true,
    .run = run,
};

}  // namespace vellum
