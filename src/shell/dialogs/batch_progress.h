// A batch run while it goes: a row for each file that is done, how far it is, and a button that ends it.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QThread>
#include <atomic>

#include "batch/batch_run.h"
#include "shell/services/services.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

namespace vellum {

class BatchProgress : public QDialog {
  Q_OBJECT
 public:
  /// The run begins when the window is shown. Where a target exists and a person is to be asked, `run.ask` is
  /// the prompt of this window.
  BatchProgress(BatchRun run, std::vector<BatchFile> files, Services& services, QWidget* parent);
  ~BatchProgress() override;

  bool at_work() const { return thread_ != nullptr; }
  /// Those that are told so far; all of them, with the one of an abort, once it is done.
  const std::vector<BatchRow>& rows() const { return rows_; }
  void abort();
  /// Closing while it works ends the run first.
  void reject() override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void begin();
  void take_row(const BatchRow& row);
  void finish();
  void show_state();
  OverwriteChoice ask(const std::filesystem::path& target, const Picture& result, const std::string& fault);

  BatchRun run_;
  std::vector<BatchFile> files_;
  Services& services_;
  std::vector<BatchRow> rows_;
  std::atomic<bool> stop_ = false;
  QThread* thread_ = nullptr;
  bool closing_ = false;
  QElapsedTimer since_;
  std::uint64_t bytesIn_ = 0, bytesOut_ = 0;
  QTreeWidget* list_;
  QProgressBar* bar_;
  QLabel* state_;
  QPushButton *close_, *abort_;
};

}  // namespace vellum
