// The animations of a page of text: they play where they stand.
#pragma once

#include <QTextBrowser>
#include <QTimer>
#include <list>

#include "core/build/frame_stream.h"

namespace vellum {

class MovingPictures : public QObject {
  Q_OBJECT
 public:
  explicit MovingPictures(QTextBrowser& browser) : QObject(&browser), browser_(browser) {}

  /// Plays those of the page that is shown, whose pictures lie in local files.
  void play();

 private:
  struct Moving {
    QUrl name;
    DocumentWindow window;
    FrameStream frames;
    std::size_t next = 0;
    QTimer timer;
  };
  void add(const QUrl& name);
  void step(Moving& moving);

  QTextBrowser& browser_;
  std::list<Moving> moving_;
};

}  // namespace vellum
