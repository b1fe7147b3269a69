#include "shell/dialogs/batch_progress.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <cmath>

#include "base/text.h"
#include "batch/settings.h"
#include "shell/dialogs/overwrite_prompt.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

/// "2 min 5 s"
QString time_text(double seconds) {
  const auto whole = static_cast<qint64>(std::lround(seconds));
  if (whole < 60) return QObject::tr("%1 s").arg(whole);
  if (whole < 3600) return QObject::tr("%1 min %2 s").arg(whole / 60).arg(whole % 60);
  return QObject::tr("%1 h %2 min").arg(whole / 3600).arg(whole / 60 % 60);
}

QString bytes_text(const BatchRow& row) {
  if (row.result != BatchResult::Ok) return {};
  return QStringLiteral("%1 \u2192 %2").arg(to_qt(grouped(row.bytesIn)), to_qt(grouped(row.bytesOut)));
}

}  // namespace

BatchProgress::BatchProgress(BatchRun run, std::vector<BatchFile> files, Services& services, QWidget* parent)
    : QDialog(parent),
      run_(std::move(run)),
      files_(std::move(files)),
      services_(services),
      list_(new QTreeWidget(this)),
      bar_(new QProgressBar(this)),
      state_(new QLabel(this)) {
  setWindowTitle(tr("Batch processor"));
  QVBoxLayout* layout = dialog_layout(*this);
  layout->setSpacing(style::kGap);
  list_->setHeaderLabels({tr("File"), tr("Result"), tr("Bytes")});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAccessibleName(tr("Results"));
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->header()->setStretchLastSection(false);
  list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  list_->header()->resizeSection(1, 130);
  list_->header()->resizeSection(2, 170);
  layout->addWidget(list_, 1);
  bar_->setRange(0, static_cast<int>(files_.size()));
  layout->addWidget(bar_);
  layout->addWidget(state_);
  auto* buttons = new QDialogButtonBox(this);
  close_ = buttons->addButton(tr("&Close"), QDialogButtonBox::RejectRole);
  abort_ = buttons->addButton(tr("&Abort"), QDialogButtonBox::ActionRole);
  connect(close_, &QPushButton::clicked, this, &QDialog::reject);
  connect(abort_, &QPushButton::clicked, this, &BatchProgress::abort);
  close_->setEnabled(false);
  layout->addWidget(buttons);
  resize(720, 420);
  run_.ask = [this](const std::filesystem::path& target, const Picture& result, const std::string& fault) {
    OverwriteChoice choice;
    QMetaObject::invokeMethod(
        this, [&] { choice = ask(target, result, fault); }, Qt::BlockingQueuedConnection);
    return choice;
  };
  show_state();
}

/// A worker may wait for an answer, which is then a cancel.
BatchProgress::~BatchProgress() {
  if (!thread_) return;
  stop_ = true;
  closing_ = true;
  while (!thread_->wait(10)) QCoreApplication::sendPostedEvents(this);
}

void BatchProgress::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (!since_.isValid()) begin();
}

void BatchProgress::begin() {
  since_.start();
  thread_ = QThread::create([this] {
    run_batch(run_, files_, stop_, [this](const BatchRow& row) {
      QMetaObject::invokeMethod(
          this, [this, row] { take_row(row); }, Qt::QueuedConnection);
    });
  });
  thread_->setParent(this);
  connect(thread_, &QThread::finished, this, &BatchProgress::finish);
  thread_->start();
}

OverwriteChoice BatchProgress::ask(const std::filesystem::path& target, const Picture& result,
                                   const std::string& fault) {
  if (stop_) return {OverwriteAnswer::Cancel, {}, false};
  if (!fault.empty()) services_.host.show(StringId::NoUniqueName);
  OverwritePrompt prompt(target, result, services_, this);
  prompt.exec();
  return prompt.choice();
}

void BatchProgress::take_row(const BatchRow& row) {
  rows_.push_back(row);
  bytesIn_ += row.result == BatchResult::Ok ? row.bytesIn : 0;
  bytesOut_ += row.result == BatchResult::Ok ? row.bytesOut : 0;
  auto* item =
      new QTreeWidgetItem(list_, {path_text(row.source), shown(batch_word(row.result)), bytes_text(row)});
  item->setToolTip(0, path_text(row.source));
  item->setToolTip(1, to_qt(row.reason));
  item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
  list_->scrollToItem(item);
  show_state();
}

void BatchProgress::show_state() {
  const auto done = static_cast<int>(std::min(rows_.size(), files_.size()));
  bar_->setValue(done);
  const double seconds = since_.isValid() ? static_cast<double>(since_.elapsed()) / 1000 : 0;
  const QString left = done == 0 ? QStringLiteral("?") : time_text(seconds / done * (bar_->maximum() - done));
  state_->setText(
      to_qt(filled(StringId::BatchProgress,
                   {std::to_string(done), count_text(StringId::OneFile, files_.size()), left.toStdString(),
                    count_text(StringId::OneByte, bytesIn_), count_text(StringId::OneByte, bytesOut_)})));
}

void BatchProgress::finish() {
  thread_->deleteLater();
  thread_ = nullptr;
  const std::size_t errors = batch_errors(rows_);
  const QStringList last = to_qt(batch_error_line(errors)).split(u'\t');
  list_->scrollToItem(new QTreeWidgetItem(list_, last));
  abort_->setEnabled(false);
  close_->setEnabled(true);
  close_->setDefault(true);
  close_->setFocus();
  show_state();
  if (closing_ || (settings::BPCloseProgressWhenDone != 0 && errors == 0)) accept();
}

void BatchProgress::abort() {
  stop_ = true;
  abort_->setEnabled(false);
}

void BatchProgress::reject() {
  if (!at_work()) return QDialog::reject();
  closing_ = true;
  abort();
}

}  // namespace vellum
