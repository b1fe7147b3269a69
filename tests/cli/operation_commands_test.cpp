// Every operation as a command of the built tool: what it writes is, byte for byte, what the operation makes
// of the same values.
#include <cstdlib>
#include <fstream>

#include "base/file.h"
#include "cli/parameter_options.h"
#include "core/build/frame_stream.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "generators/generator.h"
#include "generators/wizard.h"
#include "image/graphic_file.h"
#include "operations/combine.h"
#include "operations/operation.h"
#include "operations/supercompress.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;

/// `vellum` with the command that does an operation.
std::vector<std::string> command_of(const Operation& operation, const std::filesystem::path& in,
                                    const std::filesystem::path& out) {
  const std::string name = operation.parameters.name, program = testing::program_folder() / "vellum";
  if (!operation.convertOption || name == "palette") return {program, name, in, out};
  return {program, "convert", in, out, "--" + std::string(operation.convertOption), name};
}

bool is_folder(const Parameters& row, const Field& field) {
  return row.folder && row.folder == std::string_view(field.name);
}

/// What gives a field its value; empty where nothing need be said.
std::vector<std::string> words_for(const Parameters& row, const Field& field, const FieldValue& value) {
  const std::string name = cli::option_name(field.name);
  const auto* number = std::get_if<std::int64_t>(&value);
  for (const CompoundOption& option : row.options)
    if (option.name == std::string_view(field.name))
      return *number == option.value ? std::vector{"--" + name} : std::vector<std::string>();
    else if (option.forAll && std::ranges::count(option.fields, std::string_view(field.name)) > 0)
      return option.form ? std::vector{"--" + std::string(option.name), field_value_text(field, value)}
                         : std::vector{"--" + std::string(option.name)};
  if (field.type != FieldType::Flag) return {"--" + name, field_value_text(field, value)};
  if (*number == field.initial) return {};
  return {(field.initial ? "--no-" : "--") + name};
}

std::vector<std::string> words_of(const Parameters& row, const FieldValues& values) {
  std::vector<std::string> words;
  for (const Field& field : row.fields) {
    const FieldValue* value = values.find(field.name);
    if (!value || is_folder(row, field) || (row.second && row.second == std::string_view(field.name)) ||
        !field_enabled(row.fields, field, values))
      continue;
    const auto more = words_for(row, field, *value);
    words.insert(words.end(), more.begin(), more.end());
  }
  return words;
}

/// The bytes of a file, or of all files of a folder by their names.
std::map<std::string, std::vector<std::uint8_t>> written(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) return {{"", testing::file_bytes(path)}};
  std::map<std::string, std::vector<std::uint8_t>> files;
  for (const auto& file : std::filesystem::directory_iterator(path))
    files[file.path().filename()] = testing::file_bytes(file.path());
  return files;
}

TEST(OperationCommands, WriteWhatTheOperationMakes) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  for (const Operation* operation : operation_table())
    for (const DocumentKind kind : operation->parameters.kinds) {
      SCOPED_TRACE(std::string(operation->parameters.name) + " " + testing::kFileNames.at(kind));
      const std::string extension = std::filesystem::path(testing::kFileNames.at(kind)).extension();
      const DocumentKind result_kind = operation->makes == DocumentKind::None ? kind : operation->makes;
      const std::string made_extension =
          std::filesystem::path(testing::kFileNames.at(result_kind)).extension();
      const auto in = folder / ("in" + extension), out = folder / ("out" + made_extension),
                 wanted = folder / ("wanted" + made_extension);
      Recorder recorder;
      DocumentWindow made = testing::small_document(kind, 3, 2), window;
      ASSERT_TRUE(save_document(made, in, recorder.host));
      ASSERT_TRUE(open_document(window, in, recorder.host));
      FieldValues values = initial_values(fields_for(operation->parameters, window));
      for (const Field& field : fields_for(operation->parameters, window))
        if (field.type == FieldType::Whole && !field.locked)
          values.set(field.name, std::min(field.most, field.initial + 1));
      if (check_values(operation->parameters, values, window))
        values = initial_values(fields_for(operation->parameters, window));
      const bool files = operation->result == OperationResult::Files;
      for (const Field& field : operation->parameters.fields)
        if (field.type == FieldType::Text)
          values.set(field.name, field.look == FieldLook::Path ? in.string() : std::string("name"));
      if (files) values.set(operation->parameters.folder, wanted.string());
      // A picture of 6 x 4 is too small for some.
      if (check_values(operation->parameters, values, window)) continue;
      const FrameList all = all_frames(frame_entries(window).size());
      ASSERT_TRUE(run_operation(*operation, window, values, all, recorder.host));
      ASSERT_TRUE(files || (operation->neverGrows ? save_supercompressed(window, in, wanted, recorder.host)
                                                  : save_document(window, wanted, recorder.host)));
      auto words = words_of(operation->parameters, values);
      auto batch_words = words;
      const auto command = command_of(*operation, in, out);
      words.insert(words.begin(), command.begin(), command.end());
      if (const char* second = operation->parameters.second) {
        words.insert(words.begin() + 3, values.text(second));
        batch_words.insert(batch_words.end(), {"--" + std::string(second), values.text(second)});
      }
      const auto result = testing::run_tool(words);
      ASSERT_EQ(result.status, 0) << result.output;
      EXPECT_EQ(written(out), written(wanted));
      // A batch run writes the same.
      if (!files) {
        const auto many = folder / "many";
        batch_words.insert(batch_words.begin(),
                           {testing::program_folder() / "vellum", "batch", operation->parameters.name, in,
                            "--dest", many, "--no-prefix", "--overwrite", "silently"});
        const auto batch = testing::run_tool(batch_words);
        ASSERT_EQ(batch.status, 0) << batch.output;
        EXPECT_EQ(testing::file_bytes(many / ("in" + made_extension)), testing::file_bytes(wanted));
      }
      std::filesystem::remove_all(out);
      std::filesystem::remove_all(wanted);
    }
}

TEST(OperationCommands, ValuesBeyondTheirRangeAreWrongUsage) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  Recorder recorder;
  DocumentWindow made = testing::small_document(DocumentKind::APNG, 3, 2);
  const auto in = folder / "in.png", out = folder / "out.png";
  ASSERT_TRUE(save_document(made, in, recorder.host));
  const auto expect_refusals = [&](const Parameters& row, const std::vector<std::string>& files) {
    for (const Field& field : fields_for(row, made)) {
      if (field.locked || (field.type != FieldType::Whole && field.type != FieldType::Real)) continue;
      const bool whole = field.type == FieldType::Whole;
      for (const std::string& value :
           {whole ? std::to_string(field.least - 1) : std::to_string(field.leastReal - 0.01),
            whole ? std::to_string(field.most + 1) : std::to_string(field.mostReal + 0.01)}) {
        std::vector<std::string> words = {testing::program_folder() / "vellum", row.name,
                                          "--" + cli::option_name(field.name) + "=" + value};
        words.insert(words.end(), files.begin(), files.end());
        const auto result = testing::run_tool(words);
        EXPECT_EQ(result.status, 2) << row.name << " --" << field.name << " " << value;
        // Values that miss others may be told of first.
        EXPECT_TRUE(row.settle || result.output.find(" must be a ") != std::string::npos) << result.output;
        EXPECT_FALSE(std::filesystem::exists(out));
      }
    }
  };
  for (const Operation* operation : operation_table())
    if (takes_kind(operation->parameters, DocumentKind::APNG) && !operation->convertOption)
      expect_refusals(operation->parameters, operation->parameters.second
                                                 ? std::vector<std::string>{in, in, out}
                                                 : std::vector<std::string>{in, out});
  expect_refusals(find_generator("spin")->parameters, {"-o", out, in});
  for (const Parameters* row : {&find_generator("transition")->parameters, &kWizard})
    expect_refusals(*row, {"-o", out, in, in});
}

TEST(OperationCommands, ASizeMayStandForAChoice) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  std::filesystem::create_directories(folder / "Tarnwick");
  std::ofstream(folder / "Tarnwick/SocialMediaSizes.txt") << "Tiny; 40 x 30\n";
  Recorder recorder;
  DocumentWindow made = testing::small_document(DocumentKind::APNG, 2, 2);
  const auto in = folder / "in.png", out = folder / "out.png";
  ASSERT_TRUE(save_document(made, in, recorder.host));
  const struct {
    const char* destination;
    unsigned width, height;
  } cases[] = {{"50x60", 50, 60}, {"tiny", 40, 30}, {"12", 40, 30}, {"x", 0, 0},
               {"50x", 0, 0},     {"0x9", 0, 0},    {"13", 0, 0}};
  for (const auto& [destination, width, height] : cases) {
    std::filesystem::remove(out);
    const auto result = testing::run_tool({testing::program_folder() / "vellum", "social", in, out,
                                           "--margin", "0", "--destination", destination});
    ASSERT_EQ(result.status, width ? 0 : 2) << destination << result.output;
    if (width == 0) continue;
    DocumentWindow window;
    ASSERT_TRUE(open_document(window, out, recorder.host));
    const Extent size = document_size(window.list, window.document);
    EXPECT_EQ(std::pair(size.width, size.height), std::pair(width, height)) << destination;
  }
}

TEST(BatchCommand, ShardsReportsAndResumedRunsAreTogetherOneRun) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  std::filesystem::create_directories(folder / "in");
  Recorder recorder;
  for (int i = 0; i < 5; ++i) {
    DocumentWindow made = testing::small_document(DocumentKind::APNG, 2, 2);
    ASSERT_TRUE(save_document(made, folder / "in" / (std::to_string(i) + ".png"), recorder.host));
  }
  const auto batch = [&](const std::string& out, std::vector<std::string> more) {
    more.insert(more.begin(), {testing::program_folder() / "vellum", "batch"});
    if (!out.empty()) more.insert(more.end(), {"--dest", folder / out, folder / "in"});
    return testing::run_tool(more);
  };
  const auto report = [&](const std::string& name, const std::string& text) {
    std::ofstream(folder / name) << text;
    return folder / name;
  };
  const auto whole = batch("whole", {"reverse"});
  EXPECT_EQ(whole.status, 0) << whole.output;
  const auto first = batch("parts", {"reverse", "--json", "--shard", "1/2"});
  const auto second = batch("parts", {"reverse", "--json", "--shard", "2/2", "--jobs", "1"});
  for (int i = 0; i < 5; ++i) {
    const std::string name = "Reverse_" + std::to_string(i) + ".png";
    EXPECT_EQ(testing::file_bytes(folder / "parts" / name), testing::file_bytes(folder / "whole" / name));
    EXPECT_NE(whole.output.find(std::to_string(i) + ".png\tOk\n"), std::string::npos);
  }
  const auto one = report("1.json", first.output), two = report("2.json", second.output + "{\"path\": \"cut");
  const auto joined = batch("", {"--report", one, "--report", two});
  EXPECT_EQ(joined.status, 0) << joined.output;
  EXPECT_EQ(std::ranges::count(joined.output, '\n'), 6);
  // What the first shard did is left out: the two others are written, and the rest stands already.
  const auto resumed = batch("parts", {"reverse", "--resume", one, "--overwrite", "skip"});
  EXPECT_EQ(std::ranges::count(resumed.output, '\n'), 3) << resumed.output;
  const std::string in = folder / "in";
  const auto list = report("list.txt", in + "/1.png\r\n\r\n" + in + "/3.png\n");
  const auto listed = batch("", {"reverse", "--list", list, "--dest", folder / "listed"});
  EXPECT_EQ(listed.status, 0) << listed.output;
  EXPECT_TRUE(std::filesystem::exists(folder / "listed" / "Reverse_1.png"));
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{"reverse", "--shard", "3/2"},
                                             {"reverse", "--prefix", "a/b"},
                                             {"reverse", "--list", "/no/such"},
                                             {"tile", "--size", "0x4"},
                                             {"reverse", "--resume", folder / "in" / "0.png"}})
    EXPECT_EQ(batch("wrong", wrong).status, 2) << wrong[1];
  EXPECT_FALSE(std::filesystem::exists(folder / "wrong"));
  EXPECT_EQ(batch("", {"reverse", folder / "in"}).status, 2) << "without a destination";
  const auto failing = batch("whole", {"reverse"});
  EXPECT_EQ(failing.status, 1);
  EXPECT_NE(failing.output.find("There were 5 errors."), std::string::npos);
}

TEST(BatchCommand, AKilledRunLeavesWholeFilesAndIsResumed) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  std::filesystem::create_directories(folder / "in");
  constexpr int kFiles = 60;
  Recorder recorder;
  for (int i = 0; i < kFiles; ++i) {
    DocumentWindow made = testing::small_document(DocumentKind::APNG, 2 + i % 3, 2);
    ASSERT_TRUE(save_document(made, folder / "in" / (std::to_string(i) + ".png"), recorder.host));
  }
  const auto shell = [&](const std::string& line) {
    return testing::run_tool({"sh", "-c", "cd " + folder.path().string() + " && " + line});
  };
  const std::string program = testing::program_folder() / "vellum";
  const std::string run = program + " --set PngCompression=3 batch resize in --width 400 --json --dest ";
  ASSERT_EQ(shell(run + "whole > whole.json").status, 0);
  // A reader that ends early would end it by a pipe; the third row of the report ends it without a word.
  const auto killed =
      shell("{ " + run +
            "parts --jobs 3 & } > cut.json; pid=$!; "
            "while [ $(wc -l < cut.json) -lt 3 ] && kill -0 $pid; do :; done; kill -9 $pid; wait $pid; "
            "wc -l < cut.json");
  EXPECT_LT(std::stoi(killed.output.substr(killed.output.find_last_of("\n", killed.output.size() - 2) + 1)),
            kFiles);
  const auto made = [&](const char* name) {
    std::map<std::string, std::vector<std::uint8_t>> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder / name))
      if (!entry.path().filename().string().starts_with('.'))
        files[entry.path().filename()] = testing::file_bytes(entry.path());
    return files;
  };
  const auto whole = made("whole");
  ASSERT_EQ(whole.size(), static_cast<std::size_t>(kFiles));
  for (const auto& [name, bytes] : made("parts")) EXPECT_EQ(bytes, whole.at(name)) << name;
  const auto resumed = shell(run + "parts --overwrite silently --resume cut.json > rest.json");
  EXPECT_EQ(resumed.status, 0) << resumed.output;
  EXPECT_EQ(made("parts"), whole);
  const auto joined = shell(program + " batch --report cut.json --report rest.json");
  EXPECT_EQ(joined.status, 0);
  EXPECT_EQ(std::ranges::count(joined.output, '\n'), kFiles + 1);
}

/// The line of the guide's table for a field.
std::string guide_line(const Parameters& row, const Field& field) {
  std::string values = field.type == FieldType::Flag && field.choices.empty() ? "yes, no" : "";
  for (const FieldChoice& choice : field.choices)
    values.append(values.empty() ? "" : "; ").append(choice.name);
  if (field.type == FieldType::Whole)
    values = std::to_string(field.least) + " to " + std::to_string(field.most);
  if (field.type == FieldType::Real)
    values = field_value_text(field, field.leastReal) + " to " + field_value_text(field, field.mostReal);
  const bool flag = field.type == FieldType::Flag;
  std::string initial = flag ? (field.initial ? "yes" : "no") : field_value_text(field, initial_value(field));
  for (const FieldChoice& choice : field.choices)
    if (flag && choice.value == field.initial) initial = choice.name;
  const auto words = words_for(row, field, flag ? std::int64_t{!field.initial} : initial_value(field));
  std::string option = words.empty() ? "--" + cli::option_name(field.name) : words[0];
  if (is_folder(row, field)) option = "DIR";
  if (row.second && row.second == std::string_view(field.name)) option = "FILE";
  return "| " + std::string(field.label) + " | " + values + " | " + initial + " | `" + option + "` |";
}

TEST(OperationCommands, TheGuideHasAPageOfEachRowWithItsFields) {
  std::vector<const Parameters*> rows = {&kWizard};
  for (const Operation* row : operation_table()) rows.push_back(&row->parameters);
  for (const Generator* row : generator_table()) rows.push_back(&row->parameters);
  for (const Exporter* row : exporter_table()) rows.push_back(&row->parameters);
  for (const Importer* row : importer_table()) rows.push_back(&row->parameters);
  rows.push_back(&kCombine);
  for (const Parameters* row : rows) {
    const auto bytes = testing::file_bytes(testing::source_folder() / "docs/guide" /
                                           (std::string(guide_page(*row)) + ".md"));
    const std::string page(bytes.begin(), bytes.end());
    for (const Field& field : row->fields)
      EXPECT_NE(page.find(guide_line(*row, field) + "\n"), std::string::npos)
          << row->name << ": " << guide_line(*row, field);
    for (const CompoundOption& option : row->options)
      EXPECT_NE(page.find("--" + std::string(option.name)), std::string::npos)
          << row->name << ": " << option.name;
  }
}

TEST(GeneratorCommands, WriteWhatTheGeneratorMakes) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  const auto in = folder / "in.bmp";
  ASSERT_TRUE(GraphicFileWrite(in.string(), testing::small_picture(9, 6, 24)));
  for (const Generator* row : generator_table())
    for (const DocumentKind kind : kAnimatedKinds) {
      SCOPED_TRACE(row->parameters.name);
      const auto out = folder /
                       ("out" + std::filesystem::path(testing::kFileNames.at(kind)).extension().string()),
                 wanted = folder / testing::kFileNames.at(kind);
      Recorder recorder;
      DocumentWindow window;
      GeneratorInputs inputs;
      if (row->input != GeneratorInput::None) inputs.pictures.push_back(GraphicFileRead(in.string()));
      FieldValues values = initial_values(row->parameters.fields);
      const bool by_chance = find_field(row->parameters.fields, "seed") != nullptr;
      if (by_chance) values.set("seed", std::int64_t{7});
      ASSERT_TRUE(generate(*row, values, inputs, kind, window, recorder.host));
      ASSERT_TRUE(save_document(window, wanted, recorder.host));
      std::vector<std::string> words = {testing::program_folder() / "vellum", row->parameters.name, "-o",
                                        out};
      if (by_chance) words.insert(words.end(), {"--seed", "7"});
      if (row->input != GeneratorInput::None) words.push_back(in);
      const auto result = testing::run_tool(words);
      ASSERT_EQ(result.status, 0) << result.output;
      EXPECT_EQ(testing::file_bytes(out), testing::file_bytes(wanted));
    }
}

TEST(GeneratorCommands, PicturesHaveValuesOfTheirOwnAndWhatNeverEndsIsWrongUsage) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  const auto in = folder / "in.bmp";
  ASSERT_TRUE(GraphicFileWrite(in.string(), testing::small_picture(9, 6, 24)));
  const auto run = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {testing::program_folder() / "vellum", "transition", "-o", folder / "out.png"});
    more.insert(more.end(), {in, in});
    return testing::run_tool(more).status;
  };
  ASSERT_EQ(run({"--effect", "wipe-in-from-left", "--override", "2=none,77", "--override", "1=13,5,6"}), 0);
  DocumentWindow window;
  Recorder recorder;
  ASSERT_TRUE(open_document(window, folder / "out.png", recorder.host));
  std::vector<std::uint32_t> delays;
  for (const std::size_t entry : frame_entries(window))
    delays.push_back(GetFrameDelay(window.list.record(entry), DocumentKind::APNG, 1000));
  EXPECT_EQ(delays, (std::vector<std::uint32_t>{5, 6, 6, 77})) << "a still one, a roll in two steps, none";
  std::filesystem::remove(folder / "out.png");
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{"--radar-step-angle", "0"},
                                             {"--override", "3=none"},
                                             {"--override", "1"},
                                             {"--override", "1=23"},
                                             {"--override", "1=0,1,1,1"},
                                             {"--override", "1=0,1001"}})
    EXPECT_EQ(run(wrong), 2) << wrong[1];
  EXPECT_EQ(run({"/no/such.png"}), 1);
  EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
}

TEST(ExchangeCommands, WriteWhatTheRowsMake) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  const std::string vellum = testing::program_folder() / "vellum";
  for (const Exporter* row : exporter_table()) {
    SCOPED_TRACE(row->parameters.name);
    const DocumentKind kind = row->parameters.kinds.front();
    const std::string extension = std::filesystem::path(testing::kFileNames.at(kind)).extension();
    const auto in = folder / ("in" + extension);
    const std::string end(row->extension), out = folder / ("out" + end),
                                           wanted = folder / "wanted" / ("out" + end);
    std::filesystem::create_directories(folder / "wanted");
    Recorder recorder;
    DocumentWindow made = testing::small_document(kind, is_animation(kind) ? 3 : 1, 6), window;
    ASSERT_TRUE(save_document(made, in, recorder.host));
    ASSERT_TRUE(open_document(window, in, recorder.host));
    FieldValues values = initial_values(fields_for(row->parameters, window));
    // Files that somebody has to name stay away.
    const auto names_file = [&](const Field& switching) {
      return std::ranges::any_of(row->parameters.fields, [&](const Field& field) {
        return field.look == FieldLook::Path && field.enabledBy == std::string_view(switching.name);
      });
    };
    for (const Field& field : row->parameters.fields)
      if (field.type != FieldType::Text && !(field.type == FieldType::Flag && names_file(field)))
        values.set(field.name, field.type == FieldType::Flag ? 1 - field.initial : field.least);
    FieldValues told;
    for (const Field& field : row->parameters.fields)
      if (field.type != FieldType::Text) told.set(field.name, *values.find(field.name));
    auto words = words_of(row->parameters, told);
    words.insert(words.begin(), {vellum, row->parameters.name, in, out});
    const auto result = testing::run_tool(words);
    ASSERT_EQ(result.status, 0) << result.output;
    ASSERT_TRUE(export_document(*row, window, values, wanted, recorder.host));
    EXPECT_EQ(testing::file_bytes(out), testing::file_bytes(wanted));
    words[3] = folder / "out.jpg";
    EXPECT_EQ(testing::run_tool(words).status, 2) << "a name of another format";
    if (!importer_of(testing::file_bytes(out))) continue;
    // And back, under names of each kind.
    for (const char* name : {"back.png", "back.mng", "back.webp"}) {
      const auto back = testing::run_tool({vellum, "convert", out, folder / name});
      ASSERT_EQ(back.status, 0) << back.output;
      DocumentWindow again;
      ASSERT_TRUE(open_document(again, folder / name, recorder.host));
      EXPECT_EQ(frame_entries(again).size(), frame_entries(window).size());
    }
  }
}

// File managers give it names of their own to write to, and want the sides to keep their shares.
TEST(Thumbnails, ShowWhatAFileShowsFirst) {
  testing::ScratchFolder folder;
  setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
  Recorder recorder;
  const auto thumbnail = [&](const std::filesystem::path& in, const std::string& side) {
    std::filesystem::remove(folder / "out.tmp");
    testing::run_tool({testing::program_folder() / "vellum", "--quiet", "thumbnail", "--size", side, in,
                       folder / "out.tmp"});
    return read_graphic_file((folder / "out.tmp").string()).picture;
  };
  for (const auto& [kind, name] : testing::kFileNames) {
    DocumentWindow made = testing::small_document(kind, is_animation(kind) ? 3 : 1, 6), window;
    ASSERT_TRUE(save_document(made, folder / name, recorder.host));
    ASSERT_TRUE(open_document(window, folder / name, recorder.host));
    const Picture shown = canvas_frames(window).frame(0).picture, whole = thumbnail(folder / name, "256");
    ASSERT_TRUE(whole && whole.width() == shown.width() && whole.height() == shown.height()) << name;
    EXPECT_EQ(PictureGetPixel(whole, 1, 1), PictureGetPixel(shown, 1, 1)) << name;
    const Picture small = thumbnail(folder / name, "2");
    EXPECT_EQ(std::max(small.width(), small.height()), 2u) << name;
  }
  std::ofstream(folder / "none.png") << "no picture";
  EXPECT_FALSE(thumbnail(folder / "none.png", "64"));
}

}  // namespace
}  // namespace vellum
