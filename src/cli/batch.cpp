#include <atomic>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>

#include "base/translation.h"
#include "batch/batch_process.h"
#include "batch/settings.h"
#include "cli/batch_report.h"
#include "cli/command.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "cli/words.h"
#include "core/files/open_document.h"

namespace vellum::cli {
namespace {

const std::map<std::string, Overwrite> kOverwrites = {{"silently", Overwrite::Silently},
                                                      {"skip", Overwrite::Skip},
                                                      {"keep-both", Overwrite::KeepBoth},
                                                      {"fail", Overwrite::Fail}};

/// One operation or export below the command.
struct Chosen {
  BatchProcess process;
  CLI::App* app;
  GivenParameters parameters;
  std::vector<std::string> inputs;
};

struct BatchOptions {
  std::vector<std::unique_ptr<Chosen>> processes;
  std::string destination, list, shard, prefix, resume, extension;
  std::vector<std::string> reports;
  Overwrite overwrite = Overwrite::Fail;
  bool stills = false, recursive = false, noPrefix = false, noPromote = false, thumbnails = false,
       hidden = false;
  bool dryRun = false, json = false;
  std::size_t jobs = 0;
};

std::atomic<bool> stopped = false;

struct Shard {
  std::size_t index = 1, of = 1;
};

/// "2/3"
std::optional<Shard> parse_shard(const std::string& text) {
  Shard shard;
  const char* end = text.data() + text.size();
  const auto [slash, first] = std::from_chars(text.data(), end, shard.index);
  if (first != std::errc() || slash == end || *slash != '/') return std::nullopt;
  const auto [rest, second] = std::from_chars(slash + 1, end, shard.of);
  if (second != std::errc() || rest != end || shard.index < 1 || shard.index > shard.of) return std::nullopt;
  return shard;
}

/// The paths of a list, one a line; false after the reason was told.
bool read_list(const std::string& name, std::vector<std::string>& paths) {
  std::ifstream file;
  if (name != "-") file.open(name);
  std::istream& list = name == "-" ? std::cin : file;
  for (std::string line; std::getline(list, line);) {
    // A list made on another system ends its lines with two characters.
    std::error_code none;
    if (line.ends_with('\r') && !std::filesystem::exists(line, none)) line.pop_back();
    if (!line.empty()) paths.push_back(line);
  }
  return list.eof() && !list.bad()
             ? true
             : wrong_usage(translated("the list ") + name + translated(" can't be read"));
}

bool leave_out_done(const std::string& report, std::vector<BatchFile>& files) {
  const auto rows = read_report(report);
  if (!rows) return false;
  std::set<std::filesystem::path> done;
  for (const BatchRow& row : *rows)
    if (row.result == BatchResult::Ok) done.insert(row.source);
  for (BatchFile& file : files)
    if (done.contains(file.source)) file.ours = false;
  return true;
}

std::optional<std::vector<BatchFile>> files_of(const BatchOptions& options, const Chosen& chosen,
                                               const Host& host) {
  std::vector<std::string> inputs = chosen.inputs;
  if (!options.list.empty() && !read_list(options.list, inputs)) return std::nullopt;
  if (inputs.empty()) {
    wrong_usage(translated("no files are named"));
    return std::nullopt;
  }
  auto files = batch_files(inputs, {options.stills, options.recursive}, host);
  if (!options.shard.empty()) {
    const auto shard = parse_shard(options.shard);
    if (!shard) {
      wrong_usage(translated("--shard is a number and a count, such as 1/3"));
      return std::nullopt;
    }
    take_shard(files, shard->index, shard->of);
  }
  if (!options.resume.empty() && !leave_out_done(options.resume, files)) return std::nullopt;
  return files;
}

/// The values for the first of our files that is of a kind that is taken: what is wrong for it is wrong
/// usage, and told. Those for no document where there is no such file.
std::optional<FieldValues> first_values(const Chosen& chosen, const std::vector<BatchFile>& files) {
  const Parameters& parameters = chosen.process.parameters();
  for (const BatchFile& file : files) {
    DocumentWindow window;
    Host silent;
    if (file.ours && open_document(window, file.source, silent) &&
        takes_kind(parameters, window.document.kind))
      return parameter_values(parameters, chosen.parameters, window);
  }
  return setting_values(fields_for(parameters, {}));
}

void tell_row(const BatchOptions& options, const BatchRow& row) {
  std::string line = options.json ? report_line(row) : batch_line(row);
  if (options.dryRun && !options.json && row.result == BatchResult::Ok)
    line = row.source.string() + '\t' + row.target.string();
  if (!options.json && !row.reason.empty())
    std::fprintf(stderr, "vellum: %s: %s\n", row.source.c_str(), row.reason.c_str());
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

int end_of_run(const BatchOptions& options, const std::vector<BatchRow>& rows) {
  const std::size_t errors = batch_errors(rows);
  if (!options.json) std::printf("%s\n", batch_error_line(errors).c_str());
  return errors == 0 ? kDone : kFailed;
}

/// Takes the format of --extension; false after the reason was told.
bool choose_format(const BatchOptions& options, Chosen& chosen) {
  if (options.extension.empty()) return true;
  const std::string name = (options.extension.starts_with('.') ? "x" : "x.") + options.extension;
  const Exporter* exporter = chosen.process.exporter;
  const auto format = exporter ? format_of_name(*exporter, name) : std::nullopt;
  if (!format || exporter->formatField)
    return wrong_usage(translated("--extension ") + options.extension +
                       translated(" is none of its formats"));
  chosen.process.format = *format;
  return true;
}

BatchRun batch_run_of(const BatchOptions& options, const Chosen& chosen, const FieldValues& first) {
  BatchRun run;
  run.work = batch_work(
      chosen.process,
      [&chosen](const DocumentWindow& window) {
        return parameter_values(chosen.process.parameters(), chosen.parameters, window);
      },
      !options.noPromote);
  run.naming.destination = options.destination;
  run.naming.overwrite = options.overwrite;
  name_results(run.naming, chosen.process, first);
  if (!options.noPrefix)
    run.naming.prefix =
        options.prefix.empty() ? batch_prefix(chosen.process, chosen.parameters.stored) : options.prefix;
  run.stills = options.stills;
  run.thumbnails = options.thumbnails || options.hidden;
  run.hiddenThumbnails = options.hidden;
  run.jobs = options.jobs;
  return run;
}

int run_over_files(const BatchOptions& options, Chosen& chosen, Host& host) {
  if (options.destination.empty()) {
    wrong_usage(translated("--dest names the folder of the results"));
    return kWrongUsage;
  }
  if (options.prefix.find('/') != std::string::npos) {
    wrong_usage(translated("--prefix has no slash"));
    return kWrongUsage;
  }
  if (!choose_format(options, chosen)) return kWrongUsage;
  const auto files = files_of(options, chosen, host);
  const auto first = files ? first_values(chosen, *files) : std::nullopt;
  if (!first) return kWrongUsage;
  const BatchRun run = batch_run_of(options, chosen, *first);
  const auto tell = [&options](const BatchRow& row) { tell_row(options, row); };
  if (options.dryRun) {
    const auto rows = plan_batch(run, *files);
    for (const BatchRow& row : rows) tell(row);
    return end_of_run(options, rows);
  }
  std::signal(SIGINT, [](int) { stopped = true; });
  std::signal(SIGTERM, [](int) { stopped = true; });
  std::size_t done = 0;
  const std::size_t count = count_ours(*files);
  const Progress progress(host, translated(chosen.process.parameters().title));
  return end_of_run(options, run_batch(run, *files, stopped, [&](const BatchRow& row) {
                      progress.step(++done, count);
                      tell(row);
                    }));
}

int join_reports(const BatchOptions& options) {
  std::vector<BatchRow> all;
  for (const std::string& name : options.reports) {
    const auto rows = read_report(name);
    if (!rows) return kWrongUsage;
    all.insert(all.end(), rows->begin(), rows->end());
  }
  for (const BatchRow& row : all) tell_row(options, row);
  return end_of_run(options, all);
}

int run_batch_command(const BatchOptions& options, Host& host) {
  for (const auto& chosen : options.processes)
    if (chosen->app->parsed()) {
      if (options.reports.empty()) return run_over_files(options, *chosen, host);
      wrong_usage(translated("--report stands without an operation"));
      return kWrongUsage;
    }
  if (!options.reports.empty()) return join_reports(options);
  wrong_usage(translated("name an operation or an export, or reports to join"));
  return kWrongUsage;
}

void add_options(CLI::App& app, BatchOptions& options) {
  app.add_option("--dest", options.destination, "The folder of the results; it is made")->type_name("DIR");
  app.add_flag("--stills", options.stills,
               "Pictures of the graphic formats too, each written in its own format");
  app.add_option("--overwrite", options.overwrite, "What happens where the target exists: fail unless named")
      ->transform(one_of(kOverwrites, "silently|skip|keep-both|fail"));
  app.add_flag("--no-prefix", options.noPrefix, "Results have the names of their sources");
  app.add_option("--prefix", options.prefix, "In front of each name, in place of the operation's own")
      ->type_name("TEXT");
  app.add_option("--extension", options.extension,
                 "Of an export with several formats: the one of this extension")
      ->type_name("EXT");
  app.add_flag("--no-promote", options.noPromote,
               "Animations with palettes are not made true color where the operation needs it");
  app.add_flag("--thumbnails", options.thumbnails, "A small picture, NAME.THN, beside each result");
  app.add_flag("--hidden-thumbnails", options.hidden, "The same as .NAME.THN");
  app.add_flag("--recursive", options.recursive, "The folders in folders too, made anew below DIR");
  app.add_option("--list", options.list, "Paths, one a line; - is standard input")->type_name("FILE");
  app.add_option("--jobs", options.jobs, "Files at a time; 0: one a core")
      ->capture_default_str()
      ->type_name("N");
  app.add_flag("--dry-run", options.dryRun, "Say what would be written where, and write nothing");
  app.add_flag("--json", options.json, "An object a line");
  app.add_option("--shard", options.shard, "Every Nth file from number I on, of the files by name")
      ->type_name("I/N");
  app.add_option("--resume", options.resume, "Leave out what this report, of --json, has as \"Ok\"")
      ->type_name("FILE");
  app.add_option("--report", options.reports, "Join reports of --json and count the errors")
      ->type_name("FILE")
      ->take_all();
}

}  // namespace

Run prepare_batch(CLI::App& app) {
  const auto options = std::make_shared<BatchOptions>();
  add_options(app, *options);
  app.require_subcommand(0, 1);
  app.fallthrough();
  for (const BatchProcess& process : batch_processes()) {
    if (process.format != 0) continue;  // --extension chooses it
    const Parameters& parameters = process.parameters();
    CLI::App* sub = app.add_subcommand(parameters.name, parameters.help);
    auto chosen = std::make_unique<Chosen>();
    chosen->process = process;
    chosen->app = sub;
    sub->fallthrough();
    sub->add_option("INPUT", chosen->inputs, "A file, or a folder: its animations");
    add_parameter_options(*sub, parameters, chosen->parameters);
    add_stored_option(*sub, parameters, chosen->parameters);
    options->processes.push_back(std::move(chosen));
  }
  return [options](Host& host) { return run_batch_command(*options, host); };
}

}  // namespace vellum::cli
