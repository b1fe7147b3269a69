#include "shell/list/document_frame.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMenu>
#include <QStyle>
#include <QStyleOptionTitleBar>
#include <QTimer>
#include <QVBoxLayout>
#include <map>

#include "configuration/shell_settings.h"
#include "core/edit/insert_chunk.h"
#include "core/model/chunk_layout.h"
#include "shell/look/icon.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kLeastHeight = 120;

/// The keys of the program are in one table; the frame's own menu would bind further ones.
void remove_own_keys(const QMdiSubWindow& frame) {
  if (!frame.systemMenu()) return;
  for (QAction* action : frame.systemMenu()->actions()) action->setShortcuts(QList<QKeySequence>());
}

std::uint64_t next_number() {
  static std::uint64_t last = 0;
  return ++last;
}

}  // namespace

QString kind_text(DocumentKind kind) {
  static const std::map<DocumentKind, const char*> names = {{DocumentKind::PING, "PNG"},
                                                            {DocumentKind::APNG, "Animated PNG"},
                                                            {DocumentKind::MING, "MNG"},
                                                            {DocumentKind::WEBP, "WebP"}};
  const auto name = names.find(kind);
  return name == names.end() ? QString() : shown(name->second);
}

QString plain_title(QString text) { return text.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")); }

DocumentFrame::DocumentFrame(DocumentWindow content, ThumbnailCache& thumbnails)
    : content_(std::move(content)),
      list_(new ChunkListView(content_, thumbnails, this)),
      notes_(new NoteStrip(this)),
      find_(new FindBar(*list_, this)),
      number_(next_number()) {
  setObjectName(QStringLiteral("VellumcraftTask"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(program_icon("vellumcraft"));
  setMinimumHeight(kLeastHeight);
  auto* inside = new QWidget;
  auto* column = new QVBoxLayout(inside);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(notes_);
  column->addWidget(list_, 1);
  column->addWidget(find_);
  inside->setFocusProxy(list_);
  setWidget(inside);
  setFocusProxy(list_);
  connect(notes_, &NoteStrip::dismissed, this, &DocumentFrame::notes_dismissed);
  remove_own_keys(*this);
  connect(list_, &ChunkListView::changed, this, &DocumentFrame::changed);
  connect(list_, &ChunkListView::search_ended, find_, &FindBar::dismiss);
  update_title();
}

// The view draws the content and so goes before it.
DocumentFrame::~DocumentFrame() {
  delete find_;
  delete list_;
}

void DocumentFrame::close_without_question() {
  settled_ = true;
  close();
}

int DocumentFrame::title_width() const {
  QStyleOptionTitleBar bar;
  bar.initFrom(this);
  bar.rect.setHeight(style()->pixelMetric(QStyle::PM_TitleBarHeight, &bar, this));
  bar.subControls = QStyle::SC_All;
  bar.titleBarFlags = windowFlags();
  return style()->subControlRect(QStyle::CC_TitleBar, &bar, QStyle::SC_TitleBarLabel, this).width();
}

void DocumentFrame::update_title() {
  const QString title = path_text(document_title(document()));
  const QFontMetrics metrics(QApplication::font("QMdiSubWindowTitleBar"));
  // The mark of a modified document and the style's margins.
  const int room = title_width() - metrics.horizontalAdvance(QStringLiteral("*WW"));
  setWindowTitle(plain_title(metrics.elidedText(title, Qt::ElideLeft, room)) + QStringLiteral("[*]"));
  setWindowModified(document().dirty);
}

void DocumentFrame::resizeEvent(QResizeEvent* event) {
  QMdiSubWindow::resizeEvent(event);
  update_title();
}

int DocumentFrame::opening_height(int area) {
  if (settings::OptimumVerticalWindows != 0) return area;
  return settings::FileWindowY > 0 ? std::min(settings::FileWindowY, area) : area * 3 / 4;
}

void DocumentFrame::size_to_content() {
  if (!mdiArea()) return;
  const bool restored = sizePending_;
  sizePending_ = isMaximized() || isMinimized();
  if (sizePending_) return;
  const QSize client = mdiArea()->viewport()->size();
  const int percent = kThumbnailScales[static_cast<std::size_t>(document().thumbScale)];
  const auto drawn =
      static_cast<int>(std::int64_t{document_size(entries(), document()).width} * percent / 100);
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  const int border = style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
  const int wanted = std::max(drawn + bar + 2 * border, settings::FileWindowX);
  const int tall = restored ? opening_height(client.height()) : std::min(height(), client.height());
  resize(std::min(wanted, client.width()), tall);
}

void DocumentFrame::show_notes() { notes_->show_notes(document().notes); }

void DocumentFrame::show_caret() {
  if (!entries().empty()) list_->show_row(caret_entry(content_));
}

void DocumentFrame::set_scale(int index) {
  const std::size_t top = entries().topIndex;
  document().thumbScale = std::clamp<int>(index, 0, kThumbnailScales.size() - 1);
  chunk_list_layout(entries(), document());
  entries().topIndex = top;
  list_->show_top_row();
}

void DocumentFrame::changeEvent(QEvent* event) {
  QMdiSubWindow::changeEvent(event);
  // The window gets the place that it is restored to behind this event.
  if (event->type() == QEvent::WindowStateChange && sizePending_)
    QTimer::singleShot(0, this, [this] {
      if (sizePending_) size_to_content();
    });
}

void DocumentFrame::closeEvent(QCloseEvent* event) {
  if (!settled_ && may_close && !may_close(*this)) {
    event->ignore();
    list_->setFocus();
    return;
  }
  settled_ = true;
  QMdiSubWindow::closeEvent(event);
}

}  // namespace vellum
