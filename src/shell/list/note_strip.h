// A strip of notes on a document, with a button that closes it.
#pragma once

#include <QFrame>
#include <QLabel>
#include <QToolButton>
#include <string>
#include <vector>

namespace vellum {

/// Hidden while there are no notes. Where they are many it shows the first ones and their number, and all of
/// them in its tip.
class NoteStrip : public QFrame {
  Q_OBJECT
 public:
  explicit NoteStrip(QWidget* parent = nullptr);
  void show_notes(const std::vector<std::string>& notes);

 signals:
  void dismissed();

 private:
  QLabel* text_;
  QToolButton* close_;
  std::vector<std::string> shown_;
};

}  // namespace vellum
