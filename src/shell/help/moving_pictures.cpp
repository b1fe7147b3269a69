#include "shell/help/moving_pictures.h"

#include <QTextBlock>
#include <set>

#include "core/files/open_document.h"
#include "shell/look/picture_image.h"

namespace vellum {
namespace {

constexpr int kLeastBeat = 20;  // milliseconds
constexpr std::size_t kMostMoving = 16;

/// The names of the pictures of a page.
std::set<QString> picture_names(const QTextDocument& page) {
  std::set<QString> names;
  for (QTextBlock block = page.begin(); block.isValid(); block = block.next())
    for (auto at = block.begin(); !at.atEnd(); ++at)
      if (const QTextImageFormat format = at.fragment().charFormat().toImageFormat(); format.isValid())
        names.insert(format.name());
  return names;
}

}  // namespace

void MovingPictures::play() {
  moving_.clear();
  for (const QString& name : picture_names(*browser_.document()))
    if (moving_.size() < kMostMoving) add(QUrl(name));
}

void MovingPictures::add(const QUrl& name) {
  const QUrl url = browser_.source().resolved(name);
  if (!url.isLocalFile()) return;
  Host nobody;
  Moving& moving = moving_.emplace_back();
  const bool opened = open_document(moving.window, url.toLocalFile().toStdString(), nobody);
  if (opened && moving.window.document.kind != DocumentKind::PING)
    moving.frames = canvas_frames(moving.window);
  if (moving.frames.count < 2) return moving_.pop_back();
  moving.name = name;
  moving.timer.setSingleShot(true);
  connect(&moving.timer, &QTimer::timeout, this, [this, &moving] { step(moving); });
  step(moving);
}

void MovingPictures::step(Moving& moving) {
  const StreamedFrame frame = moving.frames.frame(moving.next);
  if (!frame.picture) return;
  browser_.document()->addResource(QTextDocument::ImageResource, moving.name,
                                   image_of_picture(frame.picture));
  browser_.viewport()->update();
  moving.next = (moving.next + 1) % moving.frames.count;
  moving.timer.start(std::max(static_cast<int>(frame.delay), kLeastBeat));
}

}  // namespace vellum
