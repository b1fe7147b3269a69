// A page of the guide on the screen.
#pragma once

#include <QTextBrowser>

#include "shell/help/moving_pictures.h"

namespace vellum {

class GuideView : public QTextBrowser {
  Q_OBJECT
 public:
  explicit GuideView(QWidget* parent = nullptr);

  /// Shows a page of the folder.
  void show_page(const QString& folder, const QString& page);
  /// The file name of the page that is shown.
  QString page() const { return source().fileName(); }
  /// Marks the words wherever they stand and shows the first of them.
  void mark_words(const QString& words);

  QVariant loadResource(int type, const QUrl& name) override;

 protected:
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void dress();

  MovingPictures* moving_;
};

}  // namespace vellum
