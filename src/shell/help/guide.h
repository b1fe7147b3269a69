// The guide as files: where it lies, its table of contents, the page of a topic, words in its pages.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace vellum {

/// The page that lists all others.
inline constexpr const char* kGuideIndex = "index.md";
/// The page that beginners read.
inline constexpr const char* kGuideStart = "start.md";

/// The folder of the guide: installed with the program, beside it, or in the source tree around the build.
/// Empty where there is none.
QString find_guide(const QString& program_folder);

/// A line of the table of contents, in its order.
struct GuideEntry {
  int level = 0;  ///< 0: a part, 1: a page, 2: a page below it ...
  QString title;
  QString page;  ///< file name; empty for a part
  bool operator==(const GuideEntry&) const = default;
};

/// The headings ("## Part") and the links of lists ("- [Title](page.md)", two blanks for each step inwards)
/// of the text of the index.
std::vector<GuideEntry> parse_contents(const QString& index);

/// The page of a topic: its name in small letters. Where there is none, that of the topic without its last
/// "_" part; at last the index.
QString page_of_topic(const QString& folder, const QString& topic);

/// The text of a page; empty where it can't be read.
QString guide_text(const QString& folder, const QString& page);

struct GuideHit {
  QString page, title;
  int score = 0;
  bool operator==(const GuideHit&) const = default;
};

/// The pages that have every one of the words, those with a word in their title first, then by how often.
std::vector<GuideHit> search_guide(const QString& folder, const std::vector<GuideEntry>& contents,
                                   const QString& words);

}  // namespace vellum
