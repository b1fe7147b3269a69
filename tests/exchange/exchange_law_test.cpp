// What holds for every export and import, whatever the format: the rows are walked over small documents of
// every kind and color form, and their files over every place at which one may break off or change.
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "base/file.h"
#include "core/files/save_document.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/trials.h"

namespace vellum {
namespace {

using testing::Recorder;

std::vector<DocumentWindow> samples(const Parameters& parameters) {
  std::vector<DocumentWindow> made;
  for (const DocumentKind kind : parameters.kinds)
    for (const std::uint8_t color_type : {0, 2, 3, 6}) {
      if (kind == DocumentKind::WEBP && (color_type == 0 || color_type == 3)) continue;
      for (const std::size_t count : {1, 4}) {
        if (!is_animation(kind) && count > 1) continue;
        made.push_back(testing::small_document(kind, count, color_type));
      }
    }
  return made;
}

/// What a file of the row is, read back.
void expect_reads(const Exporter& exporter, const std::vector<std::uint8_t>& bytes,
                  const DocumentWindow& source) {
  const Importer* importer = importer_of(bytes);
  // What goes out and never comes in has judges of its own.
  constexpr std::string_view kOut[] = {"movie", "swf", "ilg", "print"};
  ASSERT_EQ(importer == nullptr, std::ranges::count(kOut, exporter.parameters.name) == 1);
  EXPECT_FALSE(bytes.empty());
  if (!importer) return;
  Recorder recorder;
  DocumentWindow again;
  ASSERT_TRUE(
      import_bytes(*importer, again, "a", bytes, initial_values(importer->parameters.fields), recorder.host))
      << ::testing::PrintToString(recorder.messages);
  EXPECT_TRUE(recorder.notes.empty()) << recorder.notes.front();
  EXPECT_EQ(frame_entries(again).size(), frame_entries(source).size());
  EXPECT_EQ(document_size(again.list, again.document).width, 6u);
  EXPECT_EQ(document_size(again.list, again.document).height, 4u);
}

class ExportLaw : public ::testing::TestWithParam<const Exporter*> {
 protected:
  std::vector<std::uint8_t> bytes_of(const DocumentWindow& window, const FieldValues& values) {
    const auto path = folder / ("a" + std::string(GetParam()->extension));
    Recorder recorder;
    EXPECT_TRUE(export_document(*GetParam(), window, values, path, recorder.host))
        << ::testing::PrintToString(recorder.messages);
    return testing::file_bytes(path);
  }
  testing::ScratchFolder folder;
};

TEST_P(ExportLaw, EveryValueGivesAFileThatReadsBackAndLeavesTheSourceAsItIs) {
  for (const DocumentWindow& sample : samples(GetParam()->parameters)) {
    Recorder recorder;
    DocumentWindow copy = sample;
    const auto saved = folder / testing::kFileNames.at(sample.document.kind);
    ASSERT_TRUE(save_document(copy, saved, recorder.host));
    const auto before = testing::file_bytes(saved);
    for (const FieldValues& values : testing::trials(GetParam()->parameters, sample)) {
      if (check_values(GetParam()->parameters, values, sample)) continue;
      const auto bytes = bytes_of(sample, values);
      expect_reads(*GetParam(), bytes, sample);
      EXPECT_EQ(bytes, bytes_of(sample, values));
    }
    copy = sample;
    ASSERT_TRUE(save_document(copy, saved, recorder.host));
    EXPECT_EQ(testing::file_bytes(saved), before) << "pictures are shared, and were written";
  }
}

TEST_P(ExportLaw, WhatStoodAtTheNameStaysUntilAllIsWritten) {
  const DocumentWindow sample = samples(GetParam()->parameters).back();
  const FieldValues values = initial_values(GetParam()->parameters.fields);
  const auto old = folder / "old";
  std::ofstream(old) << "old";
  Recorder recorder;
  recorder.host.stop_requested = [] { return true; };
  EXPECT_FALSE(export_document(*GetParam(), sample, values, old, recorder.host));
  EXPECT_EQ(testing::file_bytes(old).size(), 3u);
  EXPECT_TRUE(recorder.messages.empty()) << "who stops it needs no message";
  recorder.host.stop_requested = {};
  EXPECT_FALSE(export_document(*GetParam(), sample, values, folder.path(), recorder.host));
  EXPECT_EQ(recorder.messages.size(), 1u);
  const auto files = std::filesystem::directory_iterator(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_P(ExportLaw, EverySinkThatFailsIsTold) {
  const DocumentWindow sample = samples(GetParam()->parameters).back();
  const FieldValues values = initial_values(GetParam()->parameters.fields);
  const std::size_t whole = bytes_of(sample, values).size();
  Recorder recorder;
  auto run = prepare_export(*GetParam(), sample, recorder.host);
  ASSERT_TRUE(run);
  run->path = folder / ("a" + std::string(GetParam()->extension));
  for (std::size_t room = 0; room < whole; room += std::max<std::size_t>(7, whole / 400)) {
    std::size_t left = room;
    const Sink sink{[&](std::span<const std::uint8_t> bytes) {
                      const bool fits = bytes.size() <= left;
                      left -= fits ? bytes.size() : left;
                      return fits;
                    },
                    [] { return true; }, [] { return std::string("full"); }};
    EXPECT_FALSE(GetParam()->write(*run, values, sink)) << room;
  }
}

INSTANTIATE_TEST_SUITE_P(All, ExportLaw,
                         ::testing::ValuesIn(exporter_table().begin(), exporter_table().end()),
                         [](const auto& row) { return std::string(row.param->parameters.name); });

/// Imports give a document that can be saved, or tell once why not.
void expect_survives(const Importer& importer, std::span<const std::uint8_t> bytes,
                     const std::filesystem::path& folder) {
  Recorder recorder;
  DocumentWindow window;
  if (!import_bytes(importer, window, "a.x", bytes, initial_values(importer.parameters.fields),
                    recorder.host)) {
    EXPECT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(window.list.size(), 0u);
    return;
  }
  EXPECT_TRUE(recorder.messages.empty());
  EXPECT_TRUE(window.document.dirty && !window.document.HasFileName);
  EXPECT_TRUE(save_document(window, folder / testing::kFileNames.at(window.document.kind), recorder.host));
}

TEST(ImportLaw, FilesThatBreakOffOrChangeAnywhereDoNoHarm) {
  testing::ScratchFolder folder;
  for (const Exporter* exporter : exporter_table())
    for (const DocumentWindow& sample : samples(exporter->parameters)) {
      const bool still = exporter->parameters.kinds.front() == DocumentKind::PING;
      if (sample.document.kind != exporter->parameters.kinds.front() ||
          frame_entries(sample).size() != (still ? 1u : 4u))
        continue;
      const auto path = folder / ("a" + std::string(exporter->extension));
      Recorder recorder;
      ASSERT_TRUE(export_document(*exporter, sample, initial_values(exporter->parameters.fields), path,
                                  recorder.host));
      const auto bytes = testing::file_bytes(path);
      const Importer* importer = importer_of(bytes);
      if (!importer) continue;
      for (std::size_t i = 0; i < bytes.size(); i += 1 + bytes.size() / 300) {
        SCOPED_TRACE(std::string(exporter->parameters.name) + " " + std::to_string(i));
        expect_survives(*importer, std::span(bytes).first(i), folder.path());
        auto changed = bytes;
        constexpr std::uint8_t kChanges[] = {1, 0x80, 0xFF};
        changed[i] = static_cast<std::uint8_t>(changed[i] ^ kChanges[i % 3]);
        expect_survives(*importer, changed, folder.path());
      }
    }
}

TEST(ExchangeTable, RowsAreWhole) {
  std::set<std::string> names;
  const auto expect_whole = [&](const Parameters& row, bool kinds) {
    EXPECT_TRUE(names.insert(row.name).second);
    EXPECT_TRUE(*row.title && *row.help && row.kinds.empty() != kinds) << row.name;
    for (const Field& field : row.fields)
      EXPECT_FALSE(check_field(field, initial_value(field))) << row.name << " " << field.name;
    for (const CompoundOption& option : row.options)
      for (const char* name : option.fields) EXPECT_TRUE(find_field(row.fields, name)) << option.name;
  };
  for (const Exporter* row : exporter_table()) expect_whole(row->parameters, true);
  for (const Importer* row : importer_table()) expect_whole(row->parameters, false);
}

}  // namespace
}  // namespace vellum
