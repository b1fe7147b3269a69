// What the work area shows while no document is open.
#pragma once

#include <QPushButton>
#include <QWidget>

namespace vellum {

class EmptyState : public QWidget {
  Q_OBJECT
 public:
  explicit EmptyState(QWidget* parent = nullptr);

  /// Shows that what is being dragged can be dropped here.
  void set_inviting(bool inviting);

 signals:
  void open_wanted();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QRect card() const;
  bool inviting_ = false;
};

}  // namespace vellum
