#include "shell/docks/check_panel.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QStyle>

#include "base/text.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

enum Column { kSeverity, kRow, kWhat, kColumns };
constexpr int kEntryRole = Qt::UserRole;
constexpr int kSayWidth = 320;  // pixels that the findings want

QIcon icon_of(Severity severity, const QStyle& style) {
  switch (severity) {
    case Severity::Error:
      return style.standardIcon(QStyle::SP_MessageBoxCritical);
    case Severity::Warning:
      return style.standardIcon(QStyle::SP_MessageBoxWarning);
    default:
      return style.standardIcon(QStyle::SP_MessageBoxInformation);
  }
}

std::vector<const ChunkRecord*> records_of(DocumentFrame& frame) {
  std::vector<const ChunkRecord*> records;
  for (std::size_t i = 0; i < frame.entries().size(); ++i)
    records.push_back(frame.entries().entry(i).record.get());
  return records;
}

/// What the format asks for, and what can be done.
QString tip_of(const Rule& rule) {
  QStringList lines;
  if (*rule.asked) lines << QObject::tr("Asked: %1").arg(shown(rule.asked));
  if (*rule.remedy) lines << QObject::tr("To do: %1").arg(shown(rule.remedy));
  return lines.join(u'\n');
}

QString counts_text(const FileCheck& check) {
  if (check.findings.empty()) return to_qt(string_text(StringId::NothingWrong));
  return to_qt(check.counts_text());
}

bool can_be_repaired(const FileCheck& check) {
  return std::ranges::any_of(check.findings,
                             [](const Finding& finding) { return rule(finding.rule).repaired(); });
}

}  // namespace

CheckPanel::CheckPanel(DockContext& context)
    : services_(context.services),
      summary_(new QLabel(this)),
      lines_(new QTreeWidget(this)),
      check_(new QPushButton(tr("&Check again"), this)),
      repair_(new QPushButton(tr("&Repair"), this)) {
  summary_->setWordWrap(true);
  summary_->setTextFormat(Qt::PlainText);
  lines_->setColumnCount(kColumns);
  lines_->setHeaderLabels({tr("Severity"), tr("Row"), tr("What is wrong")});
  lines_->setRootIsDecorated(false);
  lines_->setUniformRowHeights(true);
  lines_->setAllColumnsShowFocus(true);
  lines_->header()->setStretchLastSection(true);
  lines_->setMinimumWidth(kSayWidth);
  lines_->setAccessibleName(tr("What is wrong with the document"));
  repair_->setToolTip(tr("Mends what can be mended without a choice; Undo takes it back"));
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(summary_, 1);
  buttons->addWidget(check_);
  buttons->addWidget(repair_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(style::kGap, style::kGap, style::kGap, style::kGap);
  column->addLayout(buttons);
  column->addWidget(lines_, 1);
  setFocusProxy(lines_);
  connect(check_, &QPushButton::clicked, this, &CheckPanel::check);
  connect(repair_, &QPushButton::clicked, this, &CheckPanel::repair);
  connect(lines_, &QTreeWidget::currentItemChanged, this, &CheckPanel::go_to);
  connect(lines_, &QTreeWidget::itemActivated, this, &CheckPanel::go_to);
  show_findings();
}

void CheckPanel::show_document(DocumentFrame* frame) {
  if (frame_ == frame && (frame || !found_)) return;
  frame_ = frame;
  found_.reset();
  show_findings();
}

void CheckPanel::follow() {
  if (!frame_ || !found_ || records_of(*frame_) == checked_) return;
  found_.reset();
  show_findings();
  say(tr("The document has changed since it was checked."));
}

void CheckPanel::check() {
  if (!frame_ || services_.busy()) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  found_ = check_document(frame_->content(), services_.host);
  QApplication::restoreOverrideCursor();
  checked_ = records_of(*frame_);
  show_findings();
  if (!found_) say(to_qt(filled(StringId::NotChecked, {services_.host.take_fault()})));
}

void CheckPanel::repair() {
  if (!frame_ || services_.busy()) return;
  RepairedFile repaired;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const bool mended = repair_document(frame_->content(), services_.host, repaired);
  QApplication::restoreOverrideCursor();
  if (!mended) {
    const std::string reason = services_.host.take_fault();
    return say(to_qt(reason.empty() ? std::string(string_text(StringId::NothingToRepair))
                                    : filled(StringId::NotRepaired, {reason})));
  }
  for (const std::string& lost : repaired.given_up) services_.host.add_note(lost);
  frame_->size_to_content();
  emit frame_->changed();
  check();
}

void CheckPanel::show_findings() {
  lines_->clear();
  check_->setEnabled(frame_);
  repair_->setEnabled(frame_ && found_ && can_be_repaired(found_->found));
  if (!found_) return say(frame_ ? tr("Not checked yet.") : tr("No document is open."));
  for (std::size_t i = 0; i < found_->found.findings.size(); ++i) {
    const Finding& finding = found_->found.findings[i];
    const Rule& row = rule(finding.rule);
    const std::size_t entry = found_->entries[i];
    auto* item = new QTreeWidgetItem(lines_);
    item->setText(kSeverity, shown(severity_name(row.severity)));
    item->setIcon(kSeverity, icon_of(row.severity, *style()));
    if (entry != kNoEntry) item->setText(kRow, QString::number(entry + 1));
    item->setText(kWhat,
                  (finding.tag == 0 ? QString() : to_qt(tag_letters(finding.tag)) + QStringLiteral(": ")) +
                      to_qt(finding_text(finding)));
    for (int column = 0; column < kColumns; ++column) item->setToolTip(column, tip_of(row));
    item->setData(0, kEntryRole, entry == kNoEntry ? QVariant() : QVariant::fromValue<qulonglong>(entry));
  }
  for (const int column : {kSeverity, kRow}) lines_->resizeColumnToContents(column);
  say(counts_text(found_->found) + QStringLiteral(" - ") +
      (found_->ofFile ? tr("the file as it stands on the disk") : tr("the document as it would be saved")));
}

void CheckPanel::go_to(const QTreeWidgetItem* item) {
  if (!item || !frame_ || !item->data(0, kEntryRole).isValid()) return;
  const auto entry = static_cast<std::size_t>(item->data(0, kEntryRole).toULongLong());
  if (entry >= frame_->entries().size()) return;
  frame_->entries().select_all(false);
  frame_->entries().select(entry, true);
  frame_->document().caret = static_cast<std::int32_t>(entry);
  frame_->show_caret();
  emit frame_->changed();
}

void CheckPanel::say(const QString& text) { summary_->setText(text); }

}  // namespace vellum
