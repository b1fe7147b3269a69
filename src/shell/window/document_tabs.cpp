#include "shell/window/document_tabs.h"

#include <QMouseEvent>
#include <algorithm>

#include "shell/look/text.h"

namespace vellum {
namespace {

std::vector<DocumentFrame*> open_documents(const WorkArea& area) {
  std::vector<DocumentFrame*> frames = area.documents();
  std::erase_if(frames, [](const DocumentFrame* frame) { return frame->isHidden(); });  // they are closed
  return frames;
}

QString tab_text(DocumentFrame& frame) {
  const std::filesystem::path name = document_title(frame.document());
  const QString text = path_text(name.filename()).replace(u'&', QStringLiteral("&&"));
  return frame.document().dirty ? text + u'*' : text;
}

}  // namespace

DocumentTabs::DocumentTabs(WorkArea& area, QWidget* parent) : QTabBar(parent), area_(area) {
  setObjectName(QStringLiteral("DocumentTabs"));
  setAccessibleName(tr("Documents"));
  setDocumentMode(true);
  setExpanding(false);
  setMovable(true);
  setTabsClosable(true);
  setElideMode(Qt::ElideMiddle);
  setChangeCurrentOnDrag(true);
  setFocusPolicy(Qt::TabFocus);
  hide();
  connect(this, &QTabBar::currentChanged, this, [this](int tab) {
    if (DocumentFrame* frame = refreshing_ ? nullptr : frame_of(tab)) area_.setActiveSubWindow(frame);
  });
  connect(this, &QTabBar::tabCloseRequested, this, [this](int tab) {
    if (DocumentFrame* frame = frame_of(tab)) frame->close();
  });
}

DocumentFrame* DocumentTabs::frame_of(int tab) const {
  const auto frames = open_documents(area_);
  const auto found = std::ranges::find(frames, tabData(tab).toULongLong(), &DocumentFrame::number);
  return found == frames.end() ? nullptr : *found;
}

std::vector<DocumentFrame*> DocumentTabs::documents() const {
  std::vector<DocumentFrame*> frames;
  for (int tab = 0; tab < count(); ++tab)
    if (DocumentFrame* frame = frame_of(tab)) frames.push_back(frame);
  return frames;
}

void DocumentTabs::refresh() {
  refreshing_ = true;
  for (int tab = count() - 1; tab >= 0; --tab)
    if (!frame_of(tab)) removeTab(tab);
  const auto shown = documents();
  for (DocumentFrame* frame : open_documents(area_))
    if (std::ranges::find(shown, frame) == shown.end())
      setTabData(addTab(QString()), QVariant::fromValue<qulonglong>(frame->number()));
  for (int tab = 0; tab < count(); ++tab) {
    DocumentFrame& frame = *frame_of(tab);
    if (const QString text = tab_text(frame); text != tabText(tab)) setTabText(tab, text);
    setTabToolTip(tab, path_text(document_title(frame.document())));
    if (&frame == area_.active()) setCurrentIndex(tab);
  }
  const DocumentFrame* active = area_.active();
  setVisible(count() > 1 && active && active->isMaximized());
  refreshing_ = false;
}

void DocumentTabs::step(int direction) {
  refresh();
  if (count() > 1) area_.setActiveSubWindow(frame_of((currentIndex() + direction + count()) % count()));
}

/// The middle button closes.
void DocumentTabs::mouseReleaseEvent(QMouseEvent* event) {
  QTabBar::mouseReleaseEvent(event);
  const int tab = event->button() == Qt::MiddleButton ? tabAt(event->position().toPoint()) : -1;
  if (tab >= 0) emit tabCloseRequested(tab);
}

}  // namespace vellum
