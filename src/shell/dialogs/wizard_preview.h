// A picture file by itself, fitted or at its own size.
#pragma once

#include <QDialog>
#include <QImage>

namespace vellum {

/// Where a picture of this size is drawn in an area: in the middle, fitted by whole per cent (never below 1
/// pixel) or at its own size, which may reach beyond it.
QRect preview_place(QSize picture, QSize area, bool actual);

class WizardPreview : public QDialog {
  Q_OBJECT
 public:
  /// The file is read behind it, by a worker. Opens at the size that `NewAnimationWizardPreviewSizeas` says.
  explicit WizardPreview(const QString& path, QWidget* parent = nullptr);

  bool loaded() const { return !image_.isNull(); }
  bool actual() const { return actual_; }
  /// "WIDTH: ..."; "Wait..." while the file is read, and why it can't be.
  const QString& text() const { return text_; }

 signals:
  void read();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void toggle();

  QImage image_;
  QString text_;
  bool actual_;
};

}  // namespace vellum
