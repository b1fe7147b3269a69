// The status line: selected chunks | kind and canvas | progress with a button that stops it.
#pragma once

#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolButton>

namespace vellum {

class StatusLine : public QStatusBar {
  Q_OBJECT
 public:
  explicit StatusLine(QWidget* parent = nullptr);

  void set_selection(const QString& text) { selection_->setText(text); }
  void set_document(const QString& text) { document_->setText(text); }
  /// What a running operation does; empty shows the selection again.
  void set_caption(const QString& text);

  void progress_begin();
  void progress_step(std::uint64_t done, std::uint64_t total);
  void progress_end();

 private:
  QLabel* selection_;
  QLabel* document_;
  QLabel* caption_;
  QProgressBar* bar_;
  QToolButton* stop_;
};

}  // namespace vellum
