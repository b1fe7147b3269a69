// Exports and imports through the commands of the main window: the files are those of the rows.
#include "exchange/exporter.h"

#include "exchange/importer.h"
#include "operations/frames.h"
#include "shell_fixture.h"
#include "support/documents.h"

namespace vellum::testing {
namespace {

class ExchangeTest : public WindowTest {
 protected:
  SettingsGuard guard_;
};

TEST_F(ExchangeTest, CommandsWriteWhatTheRowsMakeAndReadItBack) {
  for (const Exporter* row : exporter_table()) {
    if (row->parameters.command == 0) continue;
    for (const DocumentKind kind : row->parameters.kinds) {
      SCOPED_TRACE(std::string(row->parameters.name) + " " + kFileNames.at(kind));
      const DocumentWindow source = small_document(kind, is_animation(kind) ? 3 : 1, 2);
      DocumentFrame& frame = add(source);
      answers_.file = folder_ / "made";  // the extension comes by itself
      main_.run(row->parameters.command);
      const auto made = folder_ / ("made" + std::string(row->extension));
      Recorder recorder;
      // Pages have the name of their file in them.
      std::filesystem::create_directories(folder_ / "wanted");
      const auto wanted = folder_ / "wanted" / made.filename();
      ASSERT_TRUE(
          export_document(*row, source, initial_values(row->parameters.fields), wanted, recorder.host));
      EXPECT_FALSE(file_bytes(made).empty());
      EXPECT_EQ(file_bytes(made), file_bytes(wanted));
      frame.close_without_question();
      settle();
    }
  }
  answers_.file = folder_ / "made.ani";
  main_.run(120);
  ASSERT_EQ(documents(), 1u);
  EXPECT_TRUE(main_.open(*answers_.file));
  ASSERT_EQ(documents(), 2u);
  for (DocumentFrame* frame : main_.area().documents()) {
    EXPECT_EQ(frame->document().kind, DocumentKind::MING);
    EXPECT_EQ(frame_entries(frame->content()).size(), 3u);
    EXPECT_TRUE(frame->document().dirty && !frame->document().HasFileName);
    frame->close_without_question();
  }
}

}  // namespace
}  // namespace vellum::testing
