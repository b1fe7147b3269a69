#include "shell/help/guide_view.h"

#include <QEvent>
#include <QImage>
#include <QScrollBar>
#include <QTextBlock>

#include "shell/help/page_style.h"
#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr int kReadingPoints = 11;

}  // namespace

GuideView::GuideView(QWidget* parent) : QTextBrowser(parent), moving_(new MovingPictures(*this)) {
  setOpenExternalLinks(false);
  setUndoRedoEnabled(false);
  setFrameShape(QFrame::NoFrame);
  // Names of settings stay whole, so that tables make room for them.
  setWordWrapMode(QTextOption::WordWrap);
  QFont letters = font();
  letters.setPointSize(std::max(letters.pointSize(), kReadingPoints));
  document()->setDefaultFont(letters);
  setAccessibleName(tr("Page"));
  connect(this, &QTextBrowser::sourceChanged, this, &GuideView::dress);
  connect(this, &QTextBrowser::sourceChanged, moving_, &MovingPictures::play);
}

void GuideView::show_page(const QString& folder, const QString& page) {
  setSource(QUrl::fromLocalFile(folder + u'/' + page), QTextDocument::MarkdownResource);
}

/// Pages and pictures come from the guide's own folders: nothing is fetched.
QVariant GuideView::loadResource(int type, const QUrl& name) {
  const QUrl url = source().isEmpty() ? name : source().resolved(name);
  if (!url.isLocalFile()) return {};
  if (type != QTextDocument::ImageResource) return QTextBrowser::loadResource(type, url);
  return QImage(url.toLocalFile());
}

void GuideView::dress() {
  style_page(*document(), palette());
  fit_pictures(*document(), viewport()->width() - 4 * style::kWideGap);
  setExtraSelections({});
}

void GuideView::mark_words(const QString& words) {
  QList<ExtraSelection> marks;
  QTextCharFormat look;
  look.setBackground(style::between(palette().color(QPalette::Base), QColor(255, 200, 0), 0.55));
  for (const QString& word : words.split(u' ', Qt::SkipEmptyParts))
    for (QTextCursor at = document()->find(word); !at.isNull(); at = document()->find(word, at))
      marks.push_back({at, look});
  setExtraSelections(marks);
  if (marks.isEmpty()) return;
  const auto first = std::ranges::min_element(
      marks, {}, [](const ExtraSelection& mark) { return mark.cursor.selectionStart(); });
  QTextCursor cursor = first->cursor;
  cursor.clearSelection();
  setTextCursor(cursor);
  ensureCursorVisible();
}

void GuideView::changeEvent(QEvent* event) {
  QTextBrowser::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !source().isEmpty()) dress();
}

void GuideView::resizeEvent(QResizeEvent* event) {
  QTextBrowser::resizeEvent(event);
  fit_pictures(*document(), viewport()->width() - 4 * style::kWideGap);
}

}  // namespace vellum
