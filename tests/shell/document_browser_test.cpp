// The browser of documents: what a folder offers, and open documents as the other file of an operation.
#include <QDir>

#include "configuration/shell_settings.h"
#include "core/files/save_document.h"
#include "image/graphic_file.h"
#include "operations/second_file.h"
#include "shell/dialogs/combine_dialog.h"
#include "shell/dialogs/document_browser.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/look/text.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

class BrowserTest : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    settings::DocumentBrowserPath = folder_.path().string();
    std::filesystem::create_directories(folder_ / "below");
    for (const char* name : {"b10.png", "b9.gif", ".hidden.png", "below/z.bmp"})
      EXPECT_TRUE(GraphicFileWrite((folder_ / name).string(), sample_picture(30, 20, 8)));
    Host host;
    for (const auto& [name, kind] : {std::pair("a.png", DocumentKind::APNG),
                                     {"c.mng", DocumentKind::MING},
                                     {"d.webp", DocumentKind::WEBP}}) {
      DocumentWindow made = document_of(kind, host);
      EXPECT_TRUE(save_document(made, folder_ / name, host)) << name;
    }
    QFile(path_text(folder_ / "notes.txt")).open(QIODevice::WriteOnly);
  }
  static QString names(const ThumbnailList& list) {
    QStringList names;
    for (const QString& path : list.paths()) names << QFileInfo(path).fileName();
    return names.join(u' ');
  }
};

TEST_F(BrowserTest, AFolderOffersWhatOpensAndTheFlagsChooseFromIt) {
  const struct {
    int flags;
    const char* names;
  } cases[] = {{3, "a.png b9.gif b10.png c.mng d.webp"},
               {3 | 8, "a.png b9.gif b10.png c.mng d.webp z.bmp"},
               {3 | 4, "a.png c.mng d.webp"},
               {4 | 8, "a.png c.mng d.webp"}};
  for (const auto& [flags, found] : cases) {
    const QLatin1String expected(found);  // a lambda of clang takes no structured binding
    settings::DocumentBrowserFlags = flags;
    DocumentBrowser browser({.title = QStringLiteral("Files"), .several = true}, nullptr);
    browser.show();
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !browser.at_work() && names(browser.files()) == expected; }, 10000))
        << browser.folder().toStdString() << browser.at_work() << flags << ": "
        << names(browser.files()).toStdString();
    EXPECT_EQ(browser.pages().count(), 1) << "nothing is open";
    if (flags == 3) expect_presentable(browser);
  }
}

TEST_F(BrowserTest, AnOpenDocumentCanBeTheOtherFile) {
  add(animated_document(3));
  DocumentFrame& frame = add(animated_document(2));
  in_dialog<OperationDialog>(304, [&](OperationDialog& dialog) {
    const std::string first = lent_documents().front().name, second = lent_documents().back().name;
    EXPECT_NE(first, second);
    QTimer::singleShot(0, qApp, [&] {
      auto* browser = qobject_cast<DocumentBrowser*>(QApplication::activeModalWidget());
      ASSERT_NE(browser, nullptr);
      EXPECT_TRUE(browser->chosen().isEmpty());
      browser->pages().setCurrentIndex(1);
      browser->documents().setCurrentIndex(browser->documents().model()->index(0, 0));
      browser->accept();
    });
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
      if (button->text() == QStringLiteral("Browse...")) button->click();
    EXPECT_EQ(dialog.values().text("with"), first);
    dialog.accept();
  });
  EXPECT_EQ(frame_entries(frame.content()).size(), 5u);
  EXPECT_TRUE(lent_documents().empty());
  in_dialog<CombineDialog>(117, [&](CombineDialog& dialog) {
    dialog.add_files({to_qt(lent_documents().back().name), path_text(folder_ / "d.webp")});
    dialog.accept();
  });
  ASSERT_EQ(documents(), 3u);
  EXPECT_EQ(frame_entries(main_.area().documents().back()->content()).size(), 7u);
}

}  // namespace
}  // namespace vellum::testing
