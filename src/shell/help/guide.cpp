#include "shell/help/guide.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <algorithm>

namespace vellum {
namespace {

constexpr int kStepsUp = 4;  // from the program to the top of a source tree
constexpr qint64 kLongestPage = 1 << 20;
constexpr int kTitleScore = 1000;

bool has_index(const QString& folder) { return QFile::exists(folder + u'/' + QLatin1String(kGuideIndex)); }

/// A topic may come from a file (the letters of a chunk): only what page names are made of is left.
QString page_name(const QString& topic) {
  QString name;
  for (const QChar c : topic.toLower())
    if ((c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_' || c == u'-') name += c;
  return name;
}

int count_of(const QString& text, const QString& word) {
  return static_cast<int>(text.count(word, Qt::CaseInsensitive));
}

}  // namespace

QString find_guide(const QString& program_folder) {
  for (const char* place : {"../share/vellumcraft/docs/guide", "guide", "docs/guide"}) {
    const QString folder = QDir(program_folder).absoluteFilePath(QLatin1String(place));
    if (has_index(folder)) return QDir::cleanPath(folder);
  }
  QDir folder(program_folder);
  for (int step = 0; step < kStepsUp && folder.cdUp(); ++step)
    if (has_index(folder.filePath(QStringLiteral("docs/guide"))))
      return folder.filePath(QStringLiteral("docs/guide"));
  return {};
}

std::vector<GuideEntry> parse_contents(const QString& index) {
  static const QRegularExpression part(QStringLiteral("^## (.+)$"));
  static const QRegularExpression link(QStringLiteral("^( *)- \\[([^\\]]+)\\]\\(([\\w-]+\\.md)\\)"));
  std::vector<GuideEntry> entries;
  for (const QString& line : index.split(u'\n')) {
    if (const auto match = part.match(line); match.hasMatch())
      entries.push_back({0, match.captured(1).trimmed(), {}});
    else if (const auto page = link.match(line); page.hasMatch())
      entries.push_back(
          {1 + static_cast<int>(page.capturedLength(1)) / 2, page.captured(2), page.captured(3)});
  }
  return entries;
}

QString page_of_topic(const QString& folder, const QString& topic) {
  for (QString name = page_name(topic); !name.isEmpty();
       name = name.left(std::max<qsizetype>(name.lastIndexOf(u'_'), 0)))
    if (QFile::exists(folder + u'/' + name + QStringLiteral(".md"))) return name + QStringLiteral(".md");
  return QLatin1String(kGuideIndex);
}

QString guide_text(const QString& folder, const QString& page) {
  QFile file(folder + u'/' + page);
  if (file.size() > kLongestPage || !file.open(QIODevice::ReadOnly)) return {};
  return QString::fromUtf8(file.readAll());
}

std::vector<GuideHit> search_guide(const QString& folder, const std::vector<GuideEntry>& contents,
                                   const QString& words) {
  const QStringList wanted = words.split(u' ', Qt::SkipEmptyParts);
  std::vector<GuideHit> hits;
  if (wanted.isEmpty()) return hits;
  for (const GuideEntry& entry : contents) {
    if (entry.page.isEmpty()) continue;
    const QString text = guide_text(folder, entry.page);
    int score = 0;
    const bool all = std::ranges::all_of(wanted, [&](const QString& word) {
      score += count_of(text, word) + kTitleScore * count_of(entry.title, word);
      return text.contains(word, Qt::CaseInsensitive) || entry.title.contains(word, Qt::CaseInsensitive);
    });
    if (all) hits.push_back({entry.page, entry.title, score});
  }
  std::ranges::stable_sort(hits, std::ranges::greater{}, &GuideHit::score);
  return hits;
}

}  // namespace vellum
