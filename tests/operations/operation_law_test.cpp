// What holds for every operation, whatever it does: the rows are walked over small documents of every kind,
// color form and frame manner, with their values at the defaults and at both ends of each range.
#include <gtest/gtest.h>

#include <atomic>
#include <set>

#include "base/file.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/kind_table.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/settings.h"
#include "operations/operation.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/settings_guard.h"
#include "support/trials.h"

namespace vellum {
namespace {

using testing::Recorder;

struct Sample {
  std::string name;
  DocumentWindow window;
};

/// Later frames smaller than the canvas, at odd places, one of them disposed of.
void make_partial(DocumentWindow& window, std::uint8_t color_type) {
  const DocumentKind kind = window.document.kind;
  const auto entries = frame_entries(window);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    ChunkRecord record;
    chunk_list_get(window.list, entries[i], record);
    const Picture whole = picture_of(record);
    record_take_pixels(record, kind, PictureCrop(whole, {0, 0, static_cast<std::int32_t>(2 + i), 3}));
    SetFrameOffset(record, kind, {static_cast<std::int32_t>(i % 3), 1});
    set_frame_dispose(record, kind, i % 2);
    if (kind == DocumentKind::APNG) record.frameControl.blend = color_type == 6 ? 1 : 0;
    chunk_list_put(window.list, entries[i], record);
  }
  document_extent(window.list, window.document);
}

std::vector<Sample> samples() {
  std::vector<Sample> made;
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP})
    for (const std::uint8_t color_type : {0, 2, 3, 6}) {
      if (kind == DocumentKind::WEBP && (color_type == 0 || color_type == 3)) continue;
      for (const bool partial : {false, true})
        for (const std::size_t count : {1, 4}) {
          Sample sample{std::string(testing::kFileNames.at(kind)) + " type " + std::to_string(color_type) +
                            (partial ? " partial " : " whole ") + std::to_string(count),
                        testing::small_document(kind, count, color_type)};
          if (partial) make_partial(sample.window, color_type);
          made.push_back(std::move(sample));
        }
    }
  return made;
}

std::vector<std::uint8_t> file_of(DocumentWindow window, const std::filesystem::path& folder) {
  const auto path = folder / testing::kFileNames.at(window.document.kind);
  Recorder recorder;
  EXPECT_TRUE(save_document(window, path, recorder.host)) << ::testing::PrintToString(recorder.messages);
  return testing::file_bytes(path);
}

bool same_list(const DocumentWindow& a, const DocumentWindow& b) {
  if (a.list.size() != b.list.size()) return false;
  for (std::size_t i = 0; i < a.list.size(); ++i)
    if (a.list.entry(i).record != b.list.entry(i).record) return false;
  return true;
}

void expect_valid(const DocumentWindow& window, const std::filesystem::path& folder, bool judged) {
  const auto path = folder / testing::kFileNames.at(window.document.kind);
  EXPECT_FALSE(file_of(window, folder).empty());
  if (judged) {
    EXPECT_EQ(testing::objections(path), "");
  }
  Recorder recorder;
  DocumentWindow again;
  ASSERT_TRUE(open_document(again, path, recorder.host)) << ::testing::PrintToString(recorder.messages);
  ASSERT_EQ(frame_entries(again).size(), frame_entries(window).size());
  const Extent canvas = document_size(again.list, again.document),
               wanted = document_size(window.list, window.document);
  EXPECT_EQ(canvas.width, wanted.width);
  EXPECT_EQ(canvas.height, wanted.height);
}

class OperationLaw : public ::testing::TestWithParam<const Operation*> {
 protected:
  OperationLaw() {
    settings::PngCompression = 1;  // how small the files are is nothing to these laws
  }
  const testing::SettingsGuard guard;
  testing::ScratchFolder folder;
};

TEST_P(OperationLaw, EveryValueGivesAValidFileOrNothing) {
  const Operation& operation = *GetParam();
  for (const Sample& sample : samples()) {
    if (!takes_kind(operation.parameters, sample.window.document.kind)) continue;
    const FrameList all = all_frames(frame_entries(sample.window).size());
    std::size_t number = 0;
    for (const FieldValues& values : testing::trials(operation.parameters, sample.window, folder.path()))
      for (const FrameList& frames : operation.scoped&& all.size() > 1 ? std::vector<FrameList>{all, {0}, {2}}
                                                                       : std::vector<FrameList>{all}) {
        SCOPED_TRACE(std::string(operation.parameters.name) + ", " + sample.name + ", trial " +
                     std::to_string(number++));
        DocumentWindow window = sample.window;
        Recorder recorder;
        recorder.host.ask = [](const Message&, bool) { return Answer::Yes; };  // a question is no failure
        if (run_operation(operation, window, values, frames, recorder.host)) {
          EXPECT_TRUE(recorder.messages.empty()) << ::testing::PrintToString(recorder.messages);
          expect_valid(window, folder.path(), number <= 2);
          // The same values give the same bytes.
          DocumentWindow twin = sample.window;
          run_operation(operation, twin, values, frames, recorder.host);
          EXPECT_EQ(file_of(window, folder.path()), file_of(twin, folder.path()));
        } else {
          EXPECT_EQ(recorder.messages.size(), 1u) << "who is refused is told why, once";
          EXPECT_TRUE(same_list(window, sample.window));
        }
        if (HasFatalFailure()) return;
      }
  }
}

TEST_P(OperationLaw, SourcesStayAsTheyAreAndAStopLeavesNothing) {
  const Operation& operation = *GetParam();
  for (const Sample& sample : samples()) {
    if (!takes_kind(operation.parameters, sample.window.document.kind)) continue;
    SCOPED_TRACE(sample.name);
    const auto before = file_of(sample.window, folder.path());
    const FrameList all = all_frames(frame_entries(sample.window).size());
    const FieldValues values = testing::first_values(operation.parameters, sample.window, folder.path());
    DocumentWindow window = sample.window;
    Recorder recorder;
    run_operation(operation, window, values, all, recorder.host);
    EXPECT_EQ(file_of(sample.window, folder.path()), before) << "pictures are shared, and were written";
    // At the first moment at which it can be stopped, at the second one ... until it comes to its end.
    std::atomic<int> left = 0;
    recorder.host.stop_requested = [&] { return left-- <= 0; };
    for (int moment = 0; left <= 0; ++moment) {
      left = moment;
      DocumentWindow stopped = sample.window;
      if (run_operation(operation, stopped, values, all, recorder.host)) break;
      EXPECT_TRUE(same_list(stopped, sample.window)) << "moment " << moment;
    }
  }
}

TEST_P(OperationLaw, DocumentsWithoutImagesAndOfOtherKindsAreRefused) {
  const Operation& operation = *GetParam();
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    DocumentWindow window = testing::small_document(kind, 0);
    Recorder recorder;
    EXPECT_FALSE(
        run_operation(operation, window, initial_values(operation.parameters.fields), {}, recorder.host));
    EXPECT_EQ(recorder.messages.size(), 1u);
    if (takes_kind(operation.parameters, kind)) continue;
    DocumentWindow full = testing::small_document(kind, 1);
    Recorder refusal;
    EXPECT_FALSE(
        run_operation(operation, full, initial_values(operation.parameters.fields), {0}, refusal.host));
    ASSERT_EQ(refusal.messages.size(), 1u);
    for (const DocumentKind taken : operation.parameters.kinds)
      EXPECT_NE(refusal.messages[0].find(kind_row(taken).name), std::string::npos);
  }
}

INSTANTIATE_TEST_SUITE_P(All, OperationLaw,
                         ::testing::ValuesIn(operation_table().begin(), operation_table().end()),
                         [](const auto& row) { return std::string(row.param->parameters.name); });

TEST(OperationTable, RowsAreWhole) {
  std::set<std::string> names;
  for (const Operation* row : operation_table()) {
    SCOPED_TRACE(row->parameters.name);
    EXPECT_TRUE(names.insert(row->parameters.name).second);
    EXPECT_TRUE(row->run && !row->parameters.kinds.empty() && *row->parameters.title &&
                *row->parameters.help);
    EXPECT_EQ(row->result == OperationResult::NewWindow, row->prefix != StringId{});
    std::set<int> lines;
    for (const Field& field : row->parameters.fields) {
      EXPECT_FALSE(check_field(field, initial_value(field))) << field.name;
      EXPECT_TRUE(field.stateId == 0 || (row->parameters.stateFile && lines.insert(field.stateId).second))
          << field.name;
    }
    for (const CompoundOption& option : row->parameters.options)
      for (const char* name : option.fields)
        EXPECT_TRUE(find_field(row->parameters.fields, name)) << option.name;
  }
}

}  // namespace
}  // namespace vellum
