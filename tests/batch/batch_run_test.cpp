// Runs over folders of good and bad files: what each row says, what is written, and what is left alone.
#include "batch/batch_process.h"

#include <gtest/gtest.h>

#include <fstream>

#include "batch/settings.h"
#include "batch/thumbnail_file.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;
using testing::Recorder;

class Batch : public ::testing::Test {
 protected:
  Batch() {
    fs::create_directories(in_ / "deep");
    const std::pair<DocumentKind, const char*> good[] = {{DocumentKind::APNG, "a.png"},
                                                         {DocumentKind::MING, "b.mng"},
                                                         {DocumentKind::WEBP, "c.webp"},
                                                         {DocumentKind::PING, "d.png"},
                                                         {DocumentKind::APNG, "deep/a.png"}};
    Recorder recorder;
    for (const auto& [kind, name] : good) {
      DocumentWindow window = testing::small_document(kind, kind == DocumentKind::PING ? 1 : 3, 2);
      EXPECT_TRUE(save_document(window, in_ / name, recorder.host));
    }
    EXPECT_TRUE(GraphicFileWrite((in_ / "e.bmp").string(), testing::small_picture(9, 7, 24)));
    std::ofstream(in_ / "f.png") << "no picture";
    std::ofstream(in_ / "g.txt") << "a text";
    std::ofstream(in_ / ".hidden.png") << "not looked at";
  }

  BatchRun run_of(const char* operation) {
    BatchRun run;
    const Operation& row = *find_operation(operation);
    run.work = operation_work(
        row,
        [&row](const DocumentWindow& window) {
          return std::optional(initial_values(fields_for(row.parameters, window)));
        },
        true);
    run.naming = {out_, "T_", row.makes, Overwrite::Fail};
    return run;
  }
  std::vector<BatchFile> files(BatchSearch search = {}) {
    return batch_files(std::vector<std::string>{in_.string()}, search, host_);
  }
  /// "a.png Ok, b.mng Bad read": what was told while it ran, which is what is returned.
  std::string told(const BatchRun& run, std::span<const BatchFile> files) {
    std::string text;
    const auto add = [&text](const BatchRow& row) {
      text += (text.empty() ? "" : ", ") + row.source.filename().string() + " " +
              std::string(batch_word(row.result));
    };
    const auto rows = run_batch(run, files, stop_, add);
    const std::string while_running = std::exchange(text, {});
    for (const BatchRow& row : rows) add(row);
    EXPECT_EQ(text, while_running);
    return text;
  }
  std::map<std::string, std::vector<std::uint8_t>> contents(const fs::path& folder) {
    std::map<std::string, std::vector<std::uint8_t>> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
      if (entry.is_regular_file())
        found[fs::relative(entry.path(), folder).string()] = testing::file_bytes(entry.path());
    return found;
  }

  testing::ScratchFolder folder_;
  fs::path in_ = folder_ / "in", out_ = folder_ / "out";
  std::atomic<bool> stop_ = false;
  Host host_;
};

TEST_F(Batch, EachFileHasItsRowInOrderWhateverTheNumberOfJobs) {
  const auto before = contents(in_);
  BatchRun run = run_of("reverse");
  std::map<std::string, std::vector<std::uint8_t>> first;
  for (const std::size_t jobs : {1, 3}) {
    run.jobs = jobs;
    EXPECT_EQ(told(run, files({.recursive = true})),
              "a.png Ok, b.mng Ok, c.webp Ok, d.png Bad read, a.png Ok, f.png Bad read");
    const auto made = contents(out_);
    if (first.empty()) first = made;
    EXPECT_EQ(made, first);
    EXPECT_EQ(made.size(), 4u);
    EXPECT_TRUE(made.contains("deep/T_a.png"));
    EXPECT_EQ(contents(in_), before);
    fs::remove_all(out_);
  }
  // Pictures go through the same operation, in their own format; a name from outside is taken as it is.
  run.stills = true;
  auto stills = files({.stills = true});
  stills.push_back({in_ / "missing.png", {}});
  stills.push_back({});
  EXPECT_EQ(told(run, stills),
            "a.png Ok, b.mng Ok, c.webp Ok, d.png Ok, e.bmp Ok, f.png Bad read, missing.png Bad read, "
            " Object error");
  EXPECT_TRUE(GraphicFileRead((out_ / "T_e.bmp").string()));
}

TEST_F(Batch, WhatStandsAtATargetIsTreatedAsWished) {
  const std::vector<BatchFile> twice = {{in_ / "a.png", {}}, {in_ / "deep" / "a.png", {}}};
  const struct {
    Overwrite overwrite;
    const char *rows, *again;
    std::size_t files;
  } cases[] = {
      {Overwrite::Fail, "a.png Ok, a.png Bad write", "a.png Bad write, a.png Bad write", 1},
      {Overwrite::Skip, "a.png Ok, a.png Skipped", "a.png Skipped, a.png Skipped", 1},
      {Overwrite::Silently, "a.png Ok, a.png Ok", "a.png Ok, a.png Ok", 1},
      {Overwrite::KeepBoth, "a.png Ok, a.png Ok", "a.png Ok, a.png Ok", 4},
  };
  for (const auto& c : cases) {
    BatchRun run = run_of("reverse");
    run.naming.overwrite = c.overwrite;
    EXPECT_EQ(told(run, twice), c.rows);
    EXPECT_EQ(told(run, twice), c.again);
    EXPECT_EQ(contents(out_).size(), c.files);
    if (c.files == 4) {
      EXPECT_TRUE(fs::exists(out_ / "T_a (4).png"));
    }
    fs::remove_all(out_);
  }
  // Without a prefix the sources' own folder is like any other.
  BatchRun run = run_of("reverse");
  run.naming = {in_, "", DocumentKind::None, Overwrite::Fail};
  const auto before = contents(in_);
  EXPECT_EQ(told(run, twice), "a.png Bad write, a.png Bad write");
  EXPECT_EQ(contents(in_), before);
  EXPECT_EQ(batch_error_line(1), "There was one error.\t ");
  EXPECT_EQ(batch_error_line(2), "There were 2 errors.\t ");
}

TEST_F(Batch, NamesAreHeldToWhatAFileSystemTakes) {
  BatchTargets targets({out_, std::string(250, 'p'), DocumentKind::None, Overwrite::KeepBoth});
  fs::create_directories(out_);
  for (int i = 0; i < 12; ++i) {
    const BatchTarget target = targets.settle({in_ / "name.png", {}});
    EXPECT_LE(target.path.filename().string().size(), 255u);
    EXPECT_EQ(target.path.extension(), ".png");
    EXPECT_TRUE(std::ofstream(target.path).good()) << target.path;
  }
}

TEST_F(Batch, AStopEndsTheRunWithARowOfItsOwnAndLeavesNoHalfFile) {
  BatchRun run = run_of("reverse");
  run.jobs = 1;
  std::string text;
  const auto rows = run_batch(run, files(), stop_, [&](const BatchRow&) { stop_ = true; });
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(batch_line(rows[0]), (in_ / "a.png").string() + "\tOk");
  EXPECT_EQ(batch_line(rows[1]), "\tAborted");
  EXPECT_EQ(contents(out_).size(), 1u);
}

TEST_F(Batch, JobsAndShardsWriteWhatOneRunWritesWhateverNamesMeet) {
  // Names meet in the destination, results are sources of others, one source stands twice, and a folder has
  // two names.
  Recorder recorder;
  for (const char* name : {"T_a.png", "T_T_a.png", "z/a.png"}) {
    fs::create_directories((in_ / name).parent_path());
    DocumentWindow window =
        testing::small_document(DocumentKind::APNG, 2 + std::string_view(name).size() % 5, 2);
    ASSERT_TRUE(save_document(window, in_ / name, recorder.host));
  }
  fs::create_directory_symlink("in", folder_ / "again");
  const auto start = contents(in_);
  const auto reset = [&] {
    fs::remove_all(in_);
    for (const auto& [name, bytes] : start) {
      fs::create_directories((in_ / name).parent_path());
      std::ofstream(in_ / name)
          .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
  };
  std::vector<BatchFile> named;
  for (const char* name : {"a.png", "T_a.png", "a.png", "deep/a.png", "z/a.png", "T_T_a.png"})
    named.push_back({in_ / name, {}});
  for (const auto overwrite : {Overwrite::Silently, Overwrite::Skip, Overwrite::KeepBoth, Overwrite::Fail})
    for (const bool among : {false, true}) {
      BatchRun run = run_of("reverse");
      run.naming.overwrite = overwrite;
      run.naming.destination = among ? folder_ / "again" : out_;
      std::map<std::string, std::vector<std::uint8_t>> first;
      for (const std::size_t jobs : {1, 4, 7}) {
        reset();
        fs::remove_all(out_);
        run.jobs = jobs;
        run_batch(run, named, stop_, {});
        const auto made = contents(folder_.path());
        if (jobs == 1) first = made;
        EXPECT_EQ(made, first) << static_cast<int>(overwrite) << among << jobs;
      }
      // Shards don't wait for each other, so none reads what another writes; sources stand once.
      if (among || overwrite == Overwrite::Silently) continue;
      std::vector<BatchFile> sorted = named;
      sorted.erase(sorted.begin() + 2);
      take_shard(sorted, 1, 1);
      fs::remove_all(out_);
      run_batch(run, sorted, stop_, {});
      const auto whole = contents(out_);
      fs::remove_all(out_);
      for (const std::size_t shard : {3, 1, 2}) {
        take_shard(sorted, shard, 3);
        run_batch(run, sorted, stop_, {});
      }
      EXPECT_EQ(contents(out_), whole) << static_cast<int>(overwrite);
    }
}

TEST_F(Batch, WhereNoNameIsLeftAPersonIsAsked) {
  // In a folder that leads to itself every name is taken.
  fs::create_symlink("loop", folder_ / "loop");
  BatchRun run = run_of("reverse");
  run.naming = {folder_ / "loop", "", DocumentKind::None, Overwrite::KeepBoth};
  run.jobs = 1;
  const std::vector<BatchFile> two = {{in_ / "a.png", {}}, {in_ / "b.mng", {}}};
  EXPECT_EQ(told(run, two), "a.png Bad write, b.mng Bad write");
  std::vector<std::string> faults;
  run.ask = [&](const fs::path&, const Picture&, const std::string& fault) -> OverwriteChoice {
    faults.push_back(fault);
    if (faults.size() == 2) return {OverwriteAnswer::KeepBoth, {}, true};
    return {OverwriteAnswer::NewName, out_ / ("new" + std::to_string(faults.size()) + ".png"), false};
  };
  EXPECT_EQ(told(run, two), "a.png Ok, b.mng Ok");
  const std::string none(string_text(StringId::NoUniqueName));
  EXPECT_EQ(faults, (std::vector<std::string>{none, "", none})) << "once asked, the run asks on";
  EXPECT_TRUE(fs::exists(out_ / "new1.png") && fs::exists(out_ / "new3.png"));
}

TEST_F(Batch, ExportsGoThroughTheirRows) {
  for (const BatchProcess& process : batch_processes()) {
    if (!process.exporter) continue;
    const Parameters& parameters = process.parameters();
    const auto values = [&](const DocumentWindow& w) {
      return std::optional(initial_values(fields_for(parameters, w)));
    };
    BatchRun run;
    run.work = batch_work(process, values, true);
    run.naming.destination = out_;
    run.naming.prefix = batch_prefix(process, true);
    name_results(run.naming, process, *values({}));
    for (const fs::path& source : {in_ / "a.png", in_ / "d.png"}) {
      DocumentWindow window;
      ASSERT_TRUE(open_document(window, source, host_));
      const bool taken = takes_kind(parameters, window.document.kind);
      const BatchFile file{source, {}};
      const BatchRow row = run_batch(run, {&file, 1}, stop_, {})[0];
      EXPECT_EQ(row.result, taken ? BatchResult::Ok : BatchResult::BadRead) << parameters.name << row.reason;
      if (!taken) continue;
      EXPECT_EQ(row.target.extension(), run.naming.extension);
      EXPECT_TRUE(row.target.filename().string().starts_with(run.naming.prefix));
      const fs::path alone = folder_ / ("alone" + run.naming.extension);
      ASSERT_TRUE(export_document(*process.exporter, window, *values(window), alone, host_));
      EXPECT_EQ(fs::file_size(row.target), fs::file_size(alone)) << parameters.name;
    }
    fs::remove_all(out_);
  }
}

TEST_F(Batch, OperationsThatNeedTrueColorPromoteOrRefuse) {
  Recorder recorder;
  DocumentWindow window = testing::small_document(DocumentKind::APNG, 2, 3);
  const fs::path indexed = in_ / "indexed.png";
  ASSERT_TRUE(save_document(window, indexed, recorder.host));
  const BatchFile file{indexed, {}};
  const Operation& row = *find_operation("balance");
  const auto values = [&row](const DocumentWindow& w) {
    FieldValues made = initial_values(fields_for(row.parameters, w));
    made.set("brightness", std::int64_t{20});
    return std::optional(made);
  };
  const unsigned needs =
      operation_needs(row, window, *values(window), all_frames(2)) & (kTrueColor | kAsksTrueColor);
  BatchRun run = run_of("balance");
  for (const bool promote : {false, true}) {
    run.work = operation_work(row, values, promote);
    const auto rows = run_batch(run, {&file, 1}, stop_, {});
    EXPECT_EQ(rows[0].result, needs && !promote ? BatchResult::ObjectError : BatchResult::Ok)
        << rows[0].reason;
    fs::remove_all(out_);
  }
}

TEST_F(Batch, ThumbnailsHaveTheirLayoutAndGoWithTheirFile) {
  // A wide picture, half transparent: 96 x 48 in the middle, over the ground.
  const Picture wide = PictureCreateFilled(200, 100, make_colour(200, 100, 50, 0));
  const Picture made = make_thumbnail(wide, make_colour(10, 20, 30, 255));
  ASSERT_TRUE(write_thumbnail(out_ = folder_ / "x.THN", made));
  const auto bytes = testing::file_bytes(folder_ / "x.THN");
  ASSERT_EQ(bytes.size(), 27912u);
  EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), std::string("THNL\0\2\0\0", 8));
  EXPECT_EQ(std::vector(bytes.begin() + 264, bytes.begin() + 267), (std::vector<std::uint8_t>{10, 20, 30}));
  const Picture opaque = make_thumbnail(PictureCreateFilled(2, 1, make_colour(200, 100, 50, 255)), 0);
  EXPECT_EQ(PictureGetPixel(opaque, 48, 48) & 0xFFFFFF, make_colour(200, 100, 50, 0))
      << "small ones are enlarged";
  EXPECT_EQ(PictureGetPixel(opaque, 48, 10) & 0xFFFFFF, 0u);
  EXPECT_EQ(PictureGetPixel(read_thumbnail(folder_ / "x.THN"), 50, 50), PictureGetPixel(made, 50, 50));
  std::ofstream(folder_ / "x.THN", std::ios::app).close();
  fs::resize_file(folder_ / "x.THN", 27911);
  EXPECT_FALSE(read_thumbnail(folder_ / "x.THN"));

  BatchRun run = run_of("reverse");
  run.naming.destination = out_ = folder_ / "made";
  run.thumbnails = run.hiddenThumbnails = true;
  const BatchFile file{in_ / "a.png", {}};
  EXPECT_EQ(run_batch(run, {&file, 1}, stop_, {})[0].reason, "");
  EXPECT_TRUE(fs::exists(out_ / ".T_a.THN"));
  EXPECT_TRUE(thumbnail_of(out_ / "T_a.png"));
  fs::last_write_time(out_ / ".T_a.THN", fs::file_time_type::min());
  EXPECT_FALSE(thumbnail_of(out_ / "T_a.png")) << "older than its file";
}

}  // namespace
}  // namespace vellum
