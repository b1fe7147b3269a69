#include "shell/dialogs/supercompress_dialog.h"

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

#include "operations/settings.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

struct BoxRow {
  unsigned pass;
  const char* name;
  const char* label;
};

constexpr BoxRow kBoxes[] = {
    {kPalettePass, "palette", QT_TR_NOOP("&Palette compression")},
    {kPrunePass, "prune", QT_TR_NOOP("P&rune overlapping frames")},
    {kRedundancyPass, "redundancy", QT_TR_NOOP("Re&dundancy compression")},
    {kTextPass, "stripText", QT_TR_NOOP("Strip &text chunks")},
    {kRecompressPass, "recompress", QT_TR_NOOP("Reco&mpress images")},
    {kDeepPass, "deep", QT_TR_NOOP("Search d&eeper")},
    {kMergePass, "mergeEqual", QT_TR_NOOP("Mer&ge equal frames")},
};

/// The stated passes can't begin on some documents; these always can.
constexpr unsigned kBeyond = kRecompressPass | kDeepPass | kMergePass;

unsigned options() { return static_cast<unsigned>(settings::SupercompressionOptions); }

void put_options(unsigned bits, unsigned values) {
  settings::SupercompressionOptions = static_cast<int>((options() & ~bits) | (values & bits));
}

}  // namespace

SupercompressDialog::SupercompressDialog(const DocumentWindow& source, DocumentWindow& copy,
                                         Services& services, QWidget* parent)
    : QDialog(parent),
      source_(source),
      copy_(copy),
      services_(services),
      offer_(supercompress_offer(copy, options())),
      list_(new QListWidget),
      start_(new QPushButton(tr("&Start"))) {
  setWindowTitle(tr("Supercompress"));
  setObjectName(QStringLiteral("SupercompressDialog"));
  auto* layout = dialog_layout(*this);
  auto* introduction = new QLabel(to_qt(string_text(StringId::SupercompressIntroduction)));
  introduction->setWordWrap(true);
  layout->addWidget(introduction);
  layout->addWidget(make_boxes());
  list_->setObjectName(QStringLiteral("status"));
  list_->setAccessibleName(tr("Status"));
  list_->setSelectionMode(QAbstractItemView::NoSelection);
  list_->setTextElideMode(Qt::ElideNone);
  layout->addWidget(list_, 1);
  close_ = new QCheckBox(tr("&Close this window when complete"));
  close_->setObjectName(QStringLiteral("close"));
  close_->setChecked((options() & kCloseWhenDone) != 0);
  connect(close_, &QCheckBox::clicked, this,
          [](bool on) { put_options(kCloseWhenDone, on ? unsigned{kCloseWhenDone} : 0u); });
  layout->addWidget(close_);
  buttons_ =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("SUPERCOMPRESS"));
  start_->setObjectName(QStringLiteral("start"));
  start_->setDefault(true);
  buttons_->addButton(start_, QDialogButtonBox::ActionRole);
  buttons_->button(QDialogButtonBox::Ok)->setEnabled(false);
  buttons_->button(QDialogButtonBox::Ok)->setDefault(false);
  connect(start_, &QPushButton::clicked, this, &SupercompressDialog::start);
  layout->addWidget(buttons_);
  add_line(std::string(string_text(StringId::Searching)));
  if (offer_.hasTexts) add_line(std::string(string_text(StringId::TextsFound)));
  show_start();
  resize(520, 480);
}

QWidget* SupercompressDialog::make_boxes() {
  auto* group = new QGroupBox(tr("Options"));
  auto* grid = new QGridLayout(group);
  const unsigned checked = offer_.checked | (options() & offer_.enabled & kBeyond);
  for (const BoxRow& row : kBoxes) {
    auto* box = new QCheckBox(tr(row.label));
    box->setObjectName(QLatin1String(row.name));
    box->setEnabled((offer_.enabled & row.pass) != 0);
    box->setChecked((checked & row.pass) != 0);
    connect(box, &QCheckBox::toggled, this, &SupercompressDialog::show_start);
    const int at = static_cast<int>(boxes_.size());
    grid->addWidget(box, at % 4, at / 4);
    boxes_.push_back({row.pass, box});
  }
  return group;
}

void SupercompressDialog::show_start() {
  start_->setEnabled(!done_ && (offer_.mayStart || (chosen() & kBeyond) != 0));
}

unsigned SupercompressDialog::chosen() const {
  unsigned passes = 0;
  for (const Box& row : boxes_)
    if (row.box->isEnabled() && row.box->isChecked()) passes |= row.pass;
  return passes;
}

void SupercompressDialog::add_line(const std::string& line) {
  list_->addItem(to_qt(line));
  list_->scrollToBottom();
}

void SupercompressDialog::start() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const auto tell = [this](const std::string& line) { add_line(line); };
  done_ = supercompress(copy_, chosen(), tell, services_.host, document_bytes(source_)).ran;
  QApplication::restoreOverrideCursor();
  buttons_->button(QDialogButtonBox::Ok)->setEnabled(done_);
  buttons_->button(QDialogButtonBox::Ok)->setDefault(done_);
  show_start();
  if (!done_) return;
  buttons_->button(QDialogButtonBox::Ok)->setFocus();
  if (close_->isChecked()) accept();
}

void SupercompressDialog::accept() {
  if (!done_) return;
  unsigned shown = 0;
  for (const Box& row : boxes_)
    if (row.box->isEnabled()) shown |= row.pass;
  put_options(shown, chosen());
  QDialog::accept();
}

}  // namespace vellum
