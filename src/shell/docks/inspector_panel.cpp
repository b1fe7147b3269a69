#include "shell/docks/inspector_panel.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>

#include "core/chunks/chunk_fields.h"
#include "core/chunks/chunk_reading.h"
#include "core/chunks/chunk_tip.h"
#include "core/edit/frame_scene.h"
#include "core/edit/undo.h"
#include "shell/docks/frame_fields.h"
#include "shell/editors/edit_unknown.h"
#include "shell/editors/field_editor.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kEditCommand = 205;
constexpr int kRest = 300;  // milliseconds without a key until what is typed is taken
constexpr int kToolIcon = 16;
constexpr std::size_t kMostRead = std::size_t{4} << 20;  // bytes that are decoded whenever a row is chosen
constexpr QSize kWanted(340, 420);

/// Whether the user types there, so that a value comes by and by.
bool takes_typing(const QWidget* widget) {
  const auto* list = qobject_cast<const QComboBox*>(widget);
  return qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QPlainTextEdit*>(widget) ||
         qobject_cast<const QAbstractSpinBox*>(widget) || (list && list->isEditable());
}

bool is_same(const Field& a, const Field& b) {
  return std::string_view(a.name) == b.name && a.type == b.type && a.least == b.least && a.most == b.most &&
         a.choices.data() == b.choices.data() && a.choices.size() == b.choices.size() &&
         a.locked == b.locked && std::string_view(a.label) == b.label;
}

void put_values(Form& form, const FieldValues& values) {
  const FieldValues before = form.values();
  for (const Field& field : form.fields()) {
    const FieldValue *now = values.find(field.name), *then = before.find(field.name);
    if (now && (!then || *now != *then)) form.set_value(field.name, *now);
  }
}

}  // namespace

InspectorPanel::InspectorPanel(DockContext& context)
    : context_(context),
      title_(new QLabel(this)),
      note_(new QLabel(this)),
      fault_(new QLabel(this)),
      edit_(new QToolButton(this)),
      repair_(new QToolButton(this)),
      room_(new QScrollArea(this)) {
  setAccessibleName(tr("Inspector"));
  make_head();
  room_->setFrameShape(QFrame::NoFrame);
  room_->setFocusPolicy(Qt::NoFocus);
  room_->setWidgetResizable(true);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(style::kGap, style::kGap / 2, style::kGap, style::kGap);
  column->setSpacing(style::kGap / 2);
  auto* head = new QHBoxLayout;
  head->addWidget(title_, 1);
  head->addWidget(edit_);
  column->addLayout(head);
  column->addWidget(room_, 1);
  column->addWidget(note_);
  auto* below = new QHBoxLayout;
  below->addWidget(fault_, 1);
  below->addWidget(repair_);
  column->addLayout(below);
  later_.setSingleShot(true);
  connect(&later_, &QTimer::timeout, this, &InspectorPanel::take);
  connect(qApp, &QApplication::focusChanged, this, &InspectorPanel::focus_moved);
  show_head();
}

void InspectorPanel::make_head() {
  for (QLabel* label : {title_, note_, fault_}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(label != title_);
  }
  title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  QFont bold = title_->font();
  bold.setBold(true);
  title_->setFont(bold);
  fault_->setObjectName(QStringLiteral("fault"));
  edit_->setIcon(program_icon("properties"));
  edit_->setIconSize(QSize(kToolIcon, kToolIcon));
  edit_->setAutoRaise(true);
  edit_->setFocusPolicy(Qt::TabFocus);
  edit_->setToolTip(tr("Edit chunk..."));
  edit_->setAccessibleName(edit_->toolTip());
  connect(edit_, &QToolButton::clicked, this, [this] {
    frame_->document().caret = static_cast<std::int32_t>(entry());
    context_.run(kEditCommand);
  });
  repair_->setText(tr("Repair"));
  repair_->setToolTip(tr("Replaces what the chunk can't hold by question marks"));
  repair_->hide();
  fault_->hide();
  connect(repair_, &QToolButton::clicked, this, [this] {
    FieldValues values = form_->values();
    repair_chunk_fields(values);
    for (const Field& field : form_->fields())
      if (field.type == FieldType::Text && !field.locked)
        form_->set_value(field.name, *values.find(field.name));
    take();
  });
}

QSize InspectorPanel::sizeHint() const { return kWanted; }

// ----------------------------------------------------------------------------------------- what is selected

void InspectorPanel::show_document(DocumentFrame* frame) {
  later_.stop();
  pending_ = bytesPending_ = false;
  session_.clear();
  frame_ = frame;
  shown_ = {};
  if (frame)
    follow();
  else
    put_form(nullptr), show_head();
}

InspectorPanel::Shown InspectorPanel::wanted() const {
  const ChunkList& list = frame_->entries();
  Shown wanted;
  for (std::size_t i = 0; i < list.size() && wanted.rows.size() < list.selected_count(); ++i)
    if (list.entry(i).selected) wanted.rows.push_back(i);
  const auto caret = static_cast<std::size_t>(std::max(frame_->document().caret, 0));
  if (wanted.rows.empty() && caret < list.size()) wanted.rows.push_back(caret);
  for (const std::size_t row : wanted.rows) wanted.records.push_back(list.entry(row).record);
  return wanted;
}

FrameList InspectorPanel::frames() const { return selected_frames(frame_->content()); }

std::vector<Field> InspectorPanel::fields_wanted() const {
  if (shown_.rows.empty()) return {};
  if (shown_.rows.size() == 1) return chunk_fields(frame_->content(), entry());
  return frames().empty() ? std::vector<Field>() : frame_fields(frame_->document().kind);
}

bool InspectorPanel::same_fields() const {
  const auto now = fields_wanted();
  return form_ && std::ranges::equal(form_->fields(), now, is_same);
}

void InspectorPanel::follow() {
  if (taking_ || !frame_) return;
  Shown now = wanted();
  const bool same_rows = now.rows == shown_.rows, same = now == shown_;
  shown_ = std::move(now);
  if (!same_rows || !same_fields()) return build();
  if (same) return;
  show_values();
}

// ---------------------------------------------------------------------------------------------- how it looks

void InspectorPanel::build() {
  pending_ = bytesPending_ = false;
  session_.clear();
  const QWidget* focused =
      form_ && form_->isAncestorOf(QApplication::focusWidget()) ? QApplication::focusWidget() : nullptr;
  const QString name = focused ? focused->objectName() : QString();
  put_form(nullptr);
  if (shown_.rows.size() == 1) build_entry();
  if (shown_.rows.size() > 1) build_several();
  show_head();
  if (QWidget* input = form_ && !name.isEmpty() ? form_->input(name.toStdString()) : nullptr)
    input->setFocus();
}

/// The one before may be about to tell of a change.
void InspectorPanel::put_form(Form* form) {
  if (QWidget* before = room_->takeWidget()) {
    before->hide();
    before->disconnect(this);
    before->deleteLater();
  }
  clear_fault();
  bytes_ = nullptr;
  details_ = nullptr;
  form_ = form;
  if (!form) return;
  form->set_narrow();
  room_->setWidget(form);
  connect(form, &Form::edited, this, [this](const QString& field) {
    if (loading_) return;
    touchedField_ = field;
    touched();
  });
}

void InspectorPanel::build_entry() {
  DocumentWindow& window = frame_->content();
  const ChunkRecord& record = window.list.record(entry());
  loading_ = true;
  auto* form = new Form(chunk_fields(window, entry()), read_chunk_fields(window, entry()));
  Editing editing{*this, *form, window, entry(), context_.services};
  if (const Decorate decorate = find_decorate(window, entry())) decorate(editing);
  const bool bytes_alone = find_editor(window, entry()) == edit_unknown;
  if (form->fields().empty())
    form->add_note(bytes_alone ? tr("This chunk has no fields. Its bytes are changed on the page Bytes.")
                               : tr("This chunk has no fields. Edit chunk... opens its editor."));
  put_form(form);
  if (has_chunk_reading(record.tag, window.document.kind) && raw_payload(record).size() <= kMostRead) {
    details_ = make_details();
    form->add_page(tr("Reading"), details_);
  }
  bytes_ = new BytesPage;
  form->add_page(tr("Bytes"), bytes_);
  connect(bytes_, &BytesPage::typed, this, [this] { bytesPending_ = true; });
  show_details();
  loading_ = false;
  if (!form->fields().empty()) return;
  form->show_page(details_ ? static_cast<QWidget*>(details_) : bytes_);
}

void InspectorPanel::build_several() {
  if (frames().empty()) return;
  loading_ = true;
  put_form(new Form(frame_fields(frame_->document().kind), {}));
  show_mixed();
  loading_ = false;
}

/// A field in which the frames differ is empty.
void InspectorPanel::show_mixed() {
  const FrameList shown = frames();
  for (const Field& field : form_->fields()) {
    const auto common = common_value(frame_->content(), shown, field);
    QWidget* input = form_->input(field.name);
    auto* list = qobject_cast<QComboBox*>(input);
    if (list && !common) list->setCurrentIndex(-1);
    if (list) list->setPlaceholderText(tr("several values"));
    if (common || !list) form_->set_value(field.name, common ? *common : FieldValue(std::string()));
    auto* line = qobject_cast<QLineEdit*>(input);
    if (!line) line = input->findChild<QLineEdit*>();
    if (line) line->setPlaceholderText(tr("several values"));
  }
}

void InspectorPanel::show_values() {
  loading_ = true;
  if (shown_.rows.size() > 1) {
    show_mixed();
  } else {
    const FieldValues stored = read_chunk_fields(frame_->content(), entry());
    put_values(*form_, stored);
    // Fields that tell the same thing may have changed each other.
    form_->setProperty(kFollowing, true);
    put_values(*form_, stored);
    form_->setProperty(kFollowing, false);
    show_details();
  }
  loading_ = false;
  pending_ = bytesPending_ = false;
  clear_fault();
  show_head();
}

void InspectorPanel::show_details() {
  const DocumentWindow& window = frame_->content();
  if (details_) details_->setPlainText(details_text(window, entry()));
  bytes_->show_entry(window, entry(), find_editor(window, entry()) == edit_unknown);
}

void InspectorPanel::show_head() {
  const std::size_t count = shown_.rows.size();
  edit_->setVisible(count == 1);
  QString title, note;
  if (!frame_) {
    note = tr("No document is open.");
  } else if (count == 0) {
    note = tr("The document has no chunks.");
  } else if (count == 1) {
    title = tr("%1, row %2 of %3")
                .arg(to_qt(tag_letters(frame_->entries().record(entry()).tag)))
                .arg(entry() + 1)
                .arg(frame_->entries().size());
    note = to_qt(chunk_note(frame_->content(), entry()));
  } else {
    const std::size_t frame_count = frames().size();
    title = tr("%1, %2 among them")
                .arg(to_qt(count_text(StringId::OneChunk, count)),
                     to_qt(count_text(StringId::OneFrame, frame_count)));
    note = frame_count > 0 ? tr("What is changed here is changed in all of these frames.")
                           : tr("Frames that are selected together can be changed together here.");
  }
  title_->setText(title);
  note_->setText(note);
  note_->setVisible(!note.isEmpty());
}

void InspectorPanel::show_fault(const FieldFault& fault) {
  QPalette wrong = palette();
  wrong.setColor(QPalette::WindowText, style::readable_on(Qt::red, palette().color(QPalette::Window)));
  fault_->setPalette(wrong);
  fault_->setText(to_qt(fault.text));
  fault_->show();
  repair_->setVisible(fault.question);
}

void InspectorPanel::clear_fault() {
  fault_->clear();
  fault_->hide();
  repair_->hide();
}

// --------------------------------------------------------------------------------------------- what is typed

void InspectorPanel::touched() {
  pending_ = true;
  // What sets several fields at once sets them all before.
  later_.start(takes_typing(QApplication::focusWidget()) ? kRest : 0);
}

void InspectorPanel::focus_moved(const QWidget* from, const QWidget*) {
  if (!frame_ || !from || !isAncestorOf(from)) return;
  take();
  session_.clear();
}

void InspectorPanel::settle() {
  const bool typed = pending_ || bytesPending_;
  take();
  if (typed && !fault().isEmpty()) context_.services.host.set_status(fault().toStdString());
  session_.clear();
}

void InspectorPanel::take() {
  later_.stop();
  if (!frame_ || !form_ || taking_ || (!pending_ && !bytesPending_)) return;
  // The list may be another than what was shown, and nobody has told it yet.
  if (wanted() != shown_) return follow();
  taking_ = true;
  if (shown_.rows.size() > 1)
    take_for_frames();
  else if (bytesPending_)
    take_bytes();
  else
    take_fields();
  taking_ = false;
  pending_ = bytesPending_ = false;
}

/// A level, unless the newest one was taken for this field and nothing happened since.
bool InspectorPanel::begin_change(std::size_t chunks) {
  DocumentWindow& window = frame_->content();
  const QWidget* focused = QApplication::focusWidget();
  const bool goes_on =
      session_ && session_ == focused && takes_typing(focused) && window.undoLevels.size() == sessionLevels_;
  if (goes_on) return true;
  const ChunkTag tag = window.list.record(entry()).tag;
  return undo_push(window, context_.services.host, undo_name(StringId::UndoEdit, chunks, tag));
}

void InspectorPanel::end_change() {
  DocumentWindow& window = frame_->content();
  undo_settle(window);
  session_ = QApplication::focusWidget();
  sessionLevels_ = window.undoLevels.size();
  frame_->size_to_content();
  taking_ = false;
  follow();
}

void InspectorPanel::take_fields() {
  DocumentWindow& window = frame_->content();
  const FieldValues values = form_->values();
  clear_fault();
  if (const auto fault = check_chunk_fields(window, entry(), values)) return show_fault(*fault);
  if (!begin_change(1)) return;
  Editing editing{*this, *form_, window, entry(), context_.services};
  const ChunkTag tag = window.list.record(entry()).tag;
  const Extent canvas = document_size(window.list, window.document);
  bool changed = false;
  bool taken = apply_edited(editing, values, changed);
  if (changed && is_image_entry(window.document.kind, tag))
    taken = fill_grown_canvas(window, entry(), canvas) && taken;
  if (changed) close_entry_edit(window, tag);
  if (!taken) give_back();
  end_change();
}

void InspectorPanel::take_bytes() {
  DocumentWindow& window = frame_->content();
  const ChunkRecord record = with_content(window.list.record(entry()), bytes_->view().bytes());
  if (!begin_change(1)) return;
  if (put_content(window, entry(), record, context_.services) == Edited::Changed)
    close_entry_edit(window, record.tag);
  else
    give_back();
  end_change();
}

void InspectorPanel::take_for_frames() {
  DocumentWindow& window = frame_->content();
  const Field* field = find_field(form_->fields(), touchedField_.toStdString());
  if (!field) return;
  clear_fault();
  const FieldValue value = *form_->values().find(field->name);
  const FrameList chosen = frames();
  if (!begin_change(chosen.size())) return;
  const auto fault = apply_to_frames(window, chosen, *field, value);
  if (!fault) return end_change();
  undo_settle(window);
  show_fault(*fault);
}

/// The fields show again what the entry holds.
void InspectorPanel::give_back() {
  if (wanted().rows == shown_.rows) show_values();
}

bool InspectorPanel::event(QEvent* event) {
  // Keys that would delete what is selected mean the field that has the keyboard, whether it takes them or
  // not.
  if (event->type() == QEvent::ShortcutOverride)
    if (auto* key = static_cast<QKeyEvent*>(event);
        key->key() == Qt::Key_Delete || key->matches(QKeySequence::Cut))
      event->accept();
  return DockPanel::event(event);
}

void InspectorPanel::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return take();
  if (event->key() != Qt::Key_Escape || !frame_ || !form_) return DockPanel::keyPressEvent(event);
  later_.stop();
  const bool typed = pending_ || bytesPending_ || !fault().isEmpty();
  typed ? show_values() : frame_->setFocus();
}

}  // namespace vellum
