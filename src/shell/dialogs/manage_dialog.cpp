#include "shell/dialogs/manage_dialog.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QPushButton>
#include <QStyledItemDelegate>

#include "base/text.h"
#include "configuration/config_file.h"
#include "core/model/played_frames.h"
#include "shell/forms/dialog_state.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr const char* kStateFile = "ManageState.txt";
// Actions go by name: which ones there are depends on the kind of the document.
constexpr DialogStateRow kState[] = {{.id = 1, .tag = "CBSL", .control = "action"}};

constexpr Field whole(const char* name, const char* label, std::int64_t least, std::int64_t most) {
  return {.name = name, .label = label, .least = least, .most = most};
}

/// A list in a cell that is chosen from; other cells are typed.
class CellDelegate : public QStyledItemDelegate {
 public:
  CellDelegate(const ManageModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    const QStringList names = model_.choices(index.column());
    if (names.isEmpty()) return QStyledItemDelegate::createEditor(parent, option, index);
    auto* list = new QComboBox(parent);
    list->addItems(names);
    return list;
  }
  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    if (auto* list = qobject_cast<QComboBox*>(editor))
      list->setCurrentText(index.data(Qt::EditRole).toString());
    else
      QStyledItemDelegate::setEditorData(editor, index);
  }
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    if (auto* list = qobject_cast<QComboBox*>(editor))
      model->setData(index, list->currentText());
    else
      QStyledItemDelegate::setModelData(editor, model, index);
  }

 private:
  const ManageModel& model_;
};

void tell(Host& host, const FieldFault& fault) {
  if (host.message) host.message({fault.id, {}, fault.text, {}, nullptr});
}

/// The number that a control holds where it is one of its field's; else the user is told.
std::optional<std::int64_t> number_of(const FormControl& control, Host& host) {
  const FieldValue value = control.get();
  if (const auto fault = check_field(control.field, value)) {
    tell(host, *fault);
    control.input->setFocus();
    return std::nullopt;
  }
  return std::get<std::int64_t>(value);
}

}  // namespace

ManageDialog::ManageDialog(DocumentWindow& window, ThumbnailCache& thumbnails, Services& services,
                           QWidget* parent)
    : QDialog(parent), window_(window), services_(services) {
  setWindowTitle(tr("Manage"));
  setObjectName(QStringLiteral("ManageDialog"));
  draft_.document = window.document;
  draft_.list = window.list;
  model_ = new ManageModel(draft_, thumbnails, services.host, this);
  auto* top = new QHBoxLayout;
  top->setSpacing(style::kWideGap);
  auto* left = new QVBoxLayout;
  left->addWidget(make_header());
  left->addWidget(make_table(), 1);
  counts_ = new QLabel;
  counts_->setObjectName(QStringLiteral("counts"));
  left->addWidget(counts_);
  top->addLayout(left, 1);
  top->addWidget(make_side());
  auto* layout = dialog_layout(*this);
  layout->addLayout(top, 1);
  auto* buttons =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Reset,
                  QStringLiteral("MANAGE"));
  connect(buttons->button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] {
    draft_.document = window_.document;
    draft_.list = window_.list;
    take_header();
    refresh({});
  });
  layout->addWidget(buttons);
  // Queued: the cell's editor is still open while its value goes into the draft.
  connect(
      model_, &ManageModel::edited, this, [this] { refresh(model_->checked()); }, Qt::QueuedConnection);
  connect(model_, &ManageModel::checks_changed, this, &ManageDialog::show_counts);
  take_header();
  refresh(selected_frames(draft_));
  restore_dialog_state(*this, kState, config_path(kStateFile));
  resize(940, 620);
  table_->setFocus();
}

QWidget* ManageDialog::make_header() {
  auto* line = new QWidget;
  auto* layout = new QHBoxLayout(line);
  layout->setContentsMargins(0, 0, 0, 0);
  const auto add = [&](std::optional<FormControl>& control, const Field& field) {
    control = make_control(field, line, [] {});
    auto* label = new QLabel(shown(field.label) + u':');
    label->setBuddy(control->input);
    layout->addWidget(label);
    layout->addWidget(control->row);
    layout->addSpacing(style::kWideGap);
  };
  const DocumentKind kind = draft_.document.kind;
  Field plays = whole("plays", "&Plays", 0, most_plays(kind));
  plays.special = "For ever";
  add(plays_, plays);
  if (kind == DocumentKind::MING) add(ticks_, whole("ticks", "&Ticks per second", 1, INT32_MAX));
  layout->addStretch(1);
  return line;
}

QWidget* ManageDialog::make_table() {
  table_ = new QTableView;
  table_->setObjectName(QStringLiteral("frames"));
  table_->setAccessibleName(tr("Frames"));
  table_->setModel(model_);
  table_->setItemDelegate(new CellDelegate(*model_, table_));
  table_->setIconSize(QSize(48, 48));
  table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  table_->setTabKeyNavigation(false);
  table_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                          QAbstractItemView::AnyKeyPressed);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(52);
  table_->setWordWrap(false);
  // Whatever the language and the desktop's font, heads and values are whole; of many rows those in sight are
  // measured, and a small screen scrolls.
  QHeaderView& heads = *table_->horizontalHeader();
  heads.setResizeContentsPrecision(0);
  heads.setSectionResizeMode(QHeaderView::ResizeToContents);
  heads.setStretchLastSection(true);
  heads.setSectionResizeMode(ManageModel::Frame, QHeaderView::Fixed);
  table_->setColumnWidth(ManageModel::Frame, 130);
  return table_;
}

void ManageDialog::add_button(QGridLayout& grid, const char* name, const QString& label,
                              std::function<void()> action) {
  auto* button = new QPushButton(label);
  button->setObjectName(QLatin1String(name));
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, std::move(action));
  grid.addWidget(button, grid.count() / 2, grid.count() % 2);
}

QWidget* ManageDialog::make_actions() {
  auto* box = new QGroupBox(tr("Checked frames"));
  auto* layout = new QVBoxLayout(box);
  actions_ = new QComboBox;
  actions_->setObjectName(QStringLiteral("action"));
  actions_->setAccessibleName(tr("Action"));
  values_ = new QStackedWidget;
  for (const ManageAction& row : manage_actions()) {
    const auto field = manage_field(row, draft_.document.kind);
    if (!field) continue;
    actions_->addItem(shown(field->label));
    actions_->setItemData(actions_->count() - 1, QString::fromLatin1(field->label), kSourceRole);
    controls_.push_back(make_control(*field, values_, [] {}));
    controls_.back().set(parse_field_value(*field, row.shipped));
    controls_.back().input->setAccessibleName(shown(field->label));
    values_->addWidget(controls_.back().row);
    rows_.push_back(&row);
  }
  connect(actions_, &QComboBox::currentIndexChanged, values_, &QStackedWidget::setCurrentIndex);
  values_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  auto* apply = new QPushButton(tr("&Apply"));
  apply->setObjectName(QStringLiteral("apply"));
  apply->setAutoDefault(false);
  connect(apply, &QPushButton::clicked, this, &ManageDialog::apply_action);
  auto* line = new QHBoxLayout;
  line->addWidget(values_, 1);
  line->addWidget(apply);
  layout->addWidget(actions_);
  layout->addLayout(line);
  auto* grid = new QGridLayout;
  add_button(*grid, "up", tr("Move &up"), [this] {
    FrameList frames = model_->checked();
    shift_frames(draft_, frames, false);
    refresh(frames);
  });
  add_button(*grid, "down", tr("Move &down"), [this] {
    FrameList frames = model_->checked();
    shift_frames(draft_, frames, true);
    refresh(frames);
  });
  add_button(*grid, "duplicate", tr("Dup&licate"), [this] {
    duplicate_frames(draft_, model_->checked());
    refresh({});
  });
  add_button(*grid, "delete", tr("D&elete"), [this] {
    if (delete_frames(draft_, model_->checked(), services_.host).changed > 0) refresh({});
  });
  layout->addLayout(grid);
  return box;
}

QWidget* ManageDialog::make_side() {
  auto* side = new QWidget;
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  preview_ = new FramePreview;
  layout->addWidget(preview_, 1);
  auto* play = new QPushButton(tr("Pla&y"));
  play->setObjectName(QStringLiteral("play"));
  play->setCheckable(true);
  play->setChecked(true);
  play->setAutoDefault(false);
  connect(play, &QPushButton::toggled, preview_, &FramePreview::set_running);
  layout->addWidget(play, 0, Qt::AlignHCenter);
  auto* checks = new QGroupBox(tr("Check", "rows of a list"));
  auto* grid = new QGridLayout(checks);
  const auto count = [this] { return model_->entries().size(); };
  add_button(*grid, "all", tr("All"), [this, count] { model_->check(all_frames(count())); });
  add_button(*grid, "invert", tr("&Invert"),
             [this, count] { model_->check(inverted(model_->checked(), count())); });
  every_ = make_control(whole("every", "Every Nth frame", 1, 1'000'000), checks, [] {});
  every_.set(std::int64_t{2});
  every_.input->setAccessibleName(tr("N of every Nth"));
  add_button(*grid, "nth", tr("Every &Nth:"), [this, count] {
    if (const auto n = number_of(every_, services_.host))
      model_->check(every_nth(count(), static_cast<std::size_t>(*n)));
  });
  grid->addWidget(every_.row, 1, 1);
  layout->addWidget(checks);
  layout->addWidget(make_actions());
  auto* chunks = new QGroupBox(tr("Chunks"));
  auto* chunk_grid = new QGridLayout(chunks);
  add_button(*chunk_grid, "texts", tr("Delete te&xt chunks"), [this] {
    delete_texts(draft_);
    refresh(model_->checked());
  });
  add_button(*chunk_grid, "only", tr("Delete all &but images"), [this] {
    delete_all_but_images(draft_);
    refresh(model_->checked());
  });
  layout->addWidget(chunks);
  side->setFixedWidth(std::max(340, side->minimumSizeHint().width()));
  return side;
}

void ManageDialog::take_header() {
  plays_->set(std::int64_t{whole_plays(draft_)});
  if (ticks_) ticks_->set(std::int64_t{ticks_per_second(draft_.list)});
}

void ManageDialog::refresh(const FrameList& frames, std::size_t held) {
  const QModelIndex at = table_->currentIndex();
  model_->reload(frames);
  if (at.isValid() && at.row() < model_->rowCount())
    table_->setCurrentIndex(model_->index(at.row(), at.column()));
  preview_->play(draft_);
  if (held > 0)
    counts_->setText(counts_->text() + u' ' +
                     to_qt(filled(StringId::ValuesHeld, {count_text(StringId::OneFrame, held)})) + u'.');
}

void ManageDialog::show_counts() {
  const FrameList checked = model_->checked();
  const auto total = total_time_ms(draft_, all_frames(model_->entries().size()));
  counts_->setText(tr("%1, %2 ms; %3 checked, %4 ms.")
                       .arg(to_qt(count_text(StringId::OneFrame, model_->entries().size())))
                       .arg(to_qt(grouped(total)))
                       .arg(checked.size())
                       .arg(to_qt(grouped(total_time_ms(draft_, checked)))));
}

void ManageDialog::apply_action() {
  const auto at = static_cast<std::size_t>(actions_->currentIndex());
  const ManageAction& row = *rows_[at];
  const FormControl& control = controls_[at];
  if (control.field.type != FieldType::Text && !number_of(control, services_.host)) return;
  const FrameList frames = model_->checked();
  const auto done = row.apply(draft_, frames, control.get());
  if (done) return refresh(frames, done->held);
  services_.host.show(row.rule);
  control.input->setFocus();
}

void ManageDialog::accept() {
  const auto plays = number_of(*plays_, services_.host);
  if (!plays) return;
  if (ticks_) {
    const auto ticks = number_of(*ticks_, services_.host);
    std::string reason;
    if (!ticks || !set_ticks(draft_, static_cast<std::uint32_t>(*ticks), services_.host, reason)) return;
  }
  set_document_plays(draft_, static_cast<std::uint32_t>(*plays));
  take_draft(window_, draft_);
  store_dialog_state(*this, kState, config_path(kStateFile));
  QDialog::accept();
}

}  // namespace vellum
