// Web galleries: every link leads somewhere, every text is escaped, nobody else's file is touched.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "batch/gallery.h"
#include "configuration/favorites.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "exchange/importer.h"
#include "image/graphic_file.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;
using testing::Recorder;

std::string decoded(const std::string& address) {
  std::string out;
  for (std::size_t i = 0; i < address.size(); ++i)
    if (address[i] == '%')
      out += static_cast<char>(std::stoi(address.substr(i + 1, 2), nullptr, 16)), i += 2;
    else
      out += address[i];
  return out;
}

std::vector<std::string> matches(const std::string& text, const char* pattern) {
  std::vector<std::string> found;
  const std::regex expression(pattern);
  for (std::sregex_iterator m(text.begin(), text.end(), expression), end; m != end; ++m)
    found.push_back((*m)[1]);
  return found;
}

class Gallery : public ::testing::Test {
 protected:
  Gallery() {
    take_imports();
    values = initial_values(kGallery.fields);
    values.set("destination", out.string());
    fs::create_directories(folder / "in/more");
    add("a.png", DocumentKind::APNG, 3);
    add("more/a.png", DocumentKind::PING, 1);
    add("odd \"<&>' \xC3\xBC%20.png", DocumentKind::PING, 1);
    add("m.mng", DocumentKind::MING, 2);
    add("w.webp", DocumentKind::WEBP, 2);
    GraphicFileWrite((folder / "in/p.jpg").string(), testing::small_picture(300, 200, 24));
    files.push_back(folder / "in/p.jpg");
    std::ofstream(folder / "in/a.txt") << "<script>\"&\xFF";
    std::ofstream(folder / "in/m.url") << "[InternetShortcut]\nURL=https://example.org/?a=1&b=2\n";
    std::ofstream(folder / "in/p.url") << "javascript:alert(1)";
    std::ofstream(folder / "in/p.btn") << "Get <it>";
  }
  void add(const std::string& name, DocumentKind kind, std::size_t images) {
    Recorder saved;
    DocumentWindow made = testing::small_document(kind, images, 2);
    ASSERT_TRUE(save_document(made, folder / "in" / name, saved.host));
    files.push_back(folder / "in" / name);
  }
  testing::ScratchFolder folder;
  fs::path out = folder / "out";
  std::vector<fs::path> files;
  FieldValues values;
  Recorder recorder;
};

TEST_F(Gallery, PagesAreValidAndEveryLinkLeadsSomewhere) {
  for (const auto& [field, value] :
       {std::pair("perPage", 20), std::pair("perPage", 2), std::pair("externalCss", 1),
        std::pair("inline", 1), std::pair("thumbStyle", 1), std::pair("thumbFormat", 2),
        std::pair("thumbFormat", 3), std::pair("thumbFormat", 4)}) {
    SCOPED_TRACE(std::string(field) + std::to_string(value));
    FieldValues given = values;
    given.set(field, std::int64_t{value});
    given.set("title", std::string("</title>&\"")), given.set("importCss", (folder / "own.css").string());
    std::ofstream(folder / "own.css") << "</style><p>";
    const auto report = build_gallery(files, given, recorder.host);
    ASSERT_TRUE(report) << ::testing::PrintToString(recorder.messages);
    for (const BatchRow& row : report->rows)
      EXPECT_EQ(row.result, BatchResult::Ok) << row.source << row.reason;
    EXPECT_EQ(report->pages.size(), (files.size() + static_cast<std::size_t>(given.number("perPage")) - 1) /
                                        static_cast<std::size_t>(given.number("perPage")));
    std::size_t images = 0;
    for (const fs::path& page : report->pages) {
      const std::string text = testing::file_text(page);
      if (const auto tidy = testing::run_tool({"tidy", "-q", "-e", page}); tidy.there)
        EXPECT_LT(tidy.status, 2) << tidy.output;
      EXPECT_EQ(text.find("<script"), std::string::npos);
      EXPECT_EQ(text.find("javascript:"), std::string::npos);
      for (const std::string& address : matches(text, "(?:href|src)=\"([^\"#]+)\""))
        if (!address.starts_with("data:") && !address.starts_with("https://"))
          EXPECT_TRUE(fs::is_regular_file(out / decoded(address))) << address;
      images += matches(text, "(<img [^>]*alt=\"[^\"]+\")").size();
    }
    EXPECT_EQ(images, files.size());
  }
  const std::string text = testing::file_text(out / "index.html");
  EXPECT_NE(text.find("&lt;script&gt;&quot;&amp;\xEF\xBF\xBD"), std::string::npos);
  EXPECT_NE(text.find("href=\"https://example.org/?a=1&amp;b=2\""), std::string::npos);
  EXPECT_NE(text.find("Get &lt;it&gt;"), std::string::npos);
  DocumentWindow published;
  ASSERT_TRUE(open_document(published, out / "images/m_full.png", recorder.host));
  EXPECT_EQ(frame_entries(published).size(), 2u);
}

TEST_F(Gallery, FilesOfOthersStayAndOriginalsAreCopiedOnce) {
  fs::create_directories(out / "downloads");
  fs::create_directories(out / "images");
  std::ofstream(out / "downloads/a.png") << "mine";
  std::ofstream(out / "images/favicon.png") << "mine";
  std::ofstream(out / "index.html") << "mine";
  recorder.answer = Answer::No;
  EXPECT_FALSE(build_gallery(files, values, recorder.host));
  EXPECT_EQ(testing::file_text(out / "index.html"), "mine");
  fs::remove(out / "index.html");
  ASSERT_TRUE(build_gallery(files, values, recorder.host));
  for (const char* name : {"downloads/a.png", "images/favicon.png"})
    EXPECT_EQ(testing::file_text(out / name), "mine");
  const auto copy = out / "downloads/p.jpg";
  EXPECT_EQ(testing::file_bytes(copy), testing::file_bytes(folder / "in/p.jpg"));
  std::ofstream(copy) << "newer";
  ASSERT_TRUE(build_gallery(files, values, recorder.host)) << "its own pages need no question";
  EXPECT_EQ(testing::file_text(copy), "newer");
  files.push_back(folder / "in/no.png");
  const auto report = build_gallery(files, values, recorder.host);
  ASSERT_TRUE(report);
  EXPECT_EQ(report->rows.back().result, BatchResult::BadRead);
  EXPECT_FALSE(build_gallery({}, values, recorder.host));
  EXPECT_EQ(recorder.messages.back(), string_text(StringId::NoGalleryItems));
}

TEST(Favorites, AreKeptOnceAndReadBack) {
  testing::ScratchFolder folder;
  FavoritesGallery gallery{"My gallery", {}};
  EXPECT_TRUE(add_favorite(gallery, "/a/b/../c d.png"));
  EXPECT_FALSE(add_favorite(gallery, "/a/c d.png"));
  EXPECT_FALSE(add_favorite(gallery, "/a\nb"));
  EXPECT_TRUE(add_favorite(gallery, "/x"));
  std::string reason;
  ASSERT_TRUE(store_favorites(folder / "Favorites", gallery, reason));
  std::ofstream(folder / "Favorites/bad.pngfav") << "no gallery\n/a\n";
  const auto all = load_favorites(folder / "Favorites");
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].paths, (std::vector<std::string>{"/a/c d.png", "/x"}));
  EXPECT_TRUE(remove_favorite(gallery, "/x") && !remove_favorite(gallery, "/x"));
  for (const char* name : {"", ".a", "a/b", "a\n", " a"}) EXPECT_FALSE(is_gallery_name(name)) << name;
  EXPECT_FALSE(store_favorites("/proc/no", gallery, reason));
  EXPECT_NE(reason, "");
}

}  // namespace
}  // namespace vellum
