// Where a color is mixed by eye: saturation and brightness as a square, and a bar of hues beside it.
#pragma once

#include <QImage>
#include <QWidget>

namespace vellum {

/// Hue 0 to 359 degrees, saturation and brightness 0 to 100 percent.
struct HsbColor {
  int hue = 0, saturation = 0, brightness = 0;
  bool operator==(const HsbColor&) const = default;
  QColor color() const {
    return QColor::fromHsvF(hue / 360.0F, saturation / 100.0F, brightness / 100.0F).toRgb();
  }
};
/// A grey has no hue: it keeps the one of `before`.
HsbColor hsb_of(const QColor& color, const HsbColor& before);

/// Keys: arrows change saturation and brightness, Page Up and Page Down the hue.
class ColorPlane : public QWidget {
  Q_OBJECT
 public:
  explicit ColorPlane(QWidget* parent = nullptr);
  const HsbColor& color() const { return color_; }
  void set_color(const HsbColor& color);
  QSize sizeHint() const override { return {300, 240}; }
  QRect square() const;
  QRect bar() const;

 signals:
  /// By mouse or key, not by set_color.
  void mixed(const HsbColor& color);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent*) override { update(); }
  void focusOutEvent(QFocusEvent*) override { update(); }

 private:
  void mix(HsbColor color);
  void follow(QPoint place);

  HsbColor color_;
  bool inBar_ = false;
};

}  // namespace vellum
