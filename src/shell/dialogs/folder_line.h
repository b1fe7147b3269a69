// A folder as a line of text, with those that were used before below it.
#pragma once

#include <QComboBox>
#include <QTimer>

namespace vellum {

class FolderLine : public QComboBox {
  Q_OBJECT
 public:
  explicit FolderLine(QWidget* parent = nullptr);

  void show_folder(const QString& folder);
  /// Puts the folder in front of the ones that were used before.
  void remember(const QString& folder);

 signals:
  /// A folder that is there was typed or chosen.
  void folder_chosen(const QString& folder);

 private:
  void take();

  QTimer rest_;
};

}  // namespace vellum
