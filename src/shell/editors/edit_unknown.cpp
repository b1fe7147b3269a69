#include "shell/editors/edit_unknown.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>

#include "core/chunks/chunk_reading.h"
#include "core/chunks/chunk_validity.h"
#include "core/model/chunk_description.h"
#include "shell/editors/editor_pages.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kReadingDelay = 150;  // ms behind the last key until a long payload is read again
constexpr std::size_t kMostRead = std::size_t{4} << 20;  // bytes that are decoded while one types
constexpr int kReadingRows = 6;

/// 0 for a text that is no tag.
ChunkTag tag_of(const QString& text) {
  const QByteArray letters = text.toLatin1();
  if (letters.size() != 4) return 0;
  ChunkTag tag = 0;
  for (const char letter : letters) tag = tag << 8 | static_cast<unsigned char>(letter);
  return is_valid_tag(tag) ? tag : 0;
}

struct UnknownEditor {
  UnknownEditor(QWidget* parent, const DocumentWindow& of, std::size_t entry, Services& using_services);

  QWidget* make_page();
  QWidget* make_head();
  QLayout* make_files();
  void show_reading();
  void append();
  void load();
  std::string check() const;
  /// The record as it is typed now.
  ChunkRecord typed() const;
  bool changed() const;
  bool may_be_taken();

  const DocumentWindow& window;
  std::size_t index;
  const ChunkRecord& record;
  DocumentKind kind;
  Services& services;
  QDialog dialog;
  QLineEdit* name;
  QLabel* properties;
  QPlainTextEdit* reading;
  HexPanel* bytes;
  QTimer later;
};

UnknownEditor::UnknownEditor(QWidget* parent, const DocumentWindow& of, std::size_t entry,
                             Services& using_services)
    : window(of),
      index(entry),
      record(of.list.record(entry)),
      kind(of.document.kind),
      services(using_services),
      dialog(parent) {
  auto* pages = new QTabWidget(&dialog);
  pages->addTab(make_page(), QObject::tr("&Content"));
  const auto payload = [this] {
    const auto now = bytes->view().bytes();
    return std::optional(std::vector<std::uint8_t>(now.begin(), now.end()));
  };
  pages->addTab(new RawPage(record.tag, payload), QObject::tr("&Raw"));
  finish_editor(
      dialog, pages, record.tag, services, [this] { return check(); }, [this] { return may_be_taken(); });
  const auto content = raw_payload(record);
  bytes->view().set_bytes({content.begin(), content.end()});
  later.setSingleShot(true);
  later.setInterval(kReadingDelay);
  QObject::connect(&later, &QTimer::timeout, &dialog, [this] { show_reading(); });
  QObject::connect(name, &QLineEdit::textChanged, &dialog, [this] { show_reading(); });
  QObject::connect(&bytes->view(), &HexView::changed, &dialog, [this] { later.start(); });
  show_reading();
  bytes->view().setFocus();
}

QWidget* UnknownEditor::make_head() {
  auto* head = new QWidget(&dialog);
  auto* form = new QFormLayout(head);
  form->setContentsMargins(0, 0, 0, 0);
  name = new QLineEdit(to_qt(tag_letters(record.tag)), head);
  name->setObjectName(QStringLiteral("tag"));
  name->setMaxLength(4);
  name->setFixedWidth(name->fontMetrics().horizontalAdvance(QStringLiteral("WWWWWW")));
  properties = new QLabel(head);
  properties->setTextFormat(Qt::PlainText);
  form->addRow(QObject::tr("Na&me"), name);
  form->addRow(QString(), properties);
  return head;
}

QWidget* UnknownEditor::make_page() {
  auto* page = new QWidget(&dialog);
  reading = new QPlainTextEdit(page);
  reading->setReadOnly(true);
  reading->setAccessibleName(QObject::tr("Decoded content"));
  reading->setTabChangesFocus(true);
  reading->setMinimumHeight(kReadingRows * reading->fontMetrics().height());
  bytes = new HexPanel(page);
  bytes->setObjectName(QStringLiteral("content"));
  auto* parts = new QSplitter(Qt::Vertical, page);
  parts->setChildrenCollapsible(false);
  parts->addWidget(reading);
  parts->addWidget(bytes);
  parts->setStretchFactor(1, 1);
  parts->setSizes({reading->minimumHeight(), bytes->sizeHint().height()});
  auto* layout = new QVBoxLayout(page);
  layout->setSpacing(style::kGap);
  layout->addWidget(make_head());
  layout->addWidget(parts, 1);
  layout->addLayout(make_files());
  return page;
}

QLayout* UnknownEditor::make_files() {
  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& text, auto work) {
    auto* button = new QPushButton(text, &dialog);
    button->setAutoDefault(false);
    QObject::connect(button, &QPushButton::clicked, &dialog, work);
    row->addWidget(button);
  };
  add(QObject::tr("&Load..."), [this] { load(); });
  add(QObject::tr("&Append..."), [this] { append(); });
  add(QObject::tr("&Save..."), [this] { save_bytes(services, QObject::tr("Save"), bytes->view().bytes()); });
  row->addStretch(1);
  return row;
}

void UnknownEditor::load() {
  const auto content = load_bytes(services, QObject::tr("Load"));
  if (content && !bytes->view().replace(0, bytes->view().bytes().size(), *content))
    services.host.show(StringId::ChunkTooLong);
}

void UnknownEditor::append() {
  const auto content = load_bytes(services, QObject::tr("Append"));
  if (content && !bytes->view().replace(bytes->view().bytes().size(), 0, *content))
    services.host.show(StringId::ChunkTooLong);
}

void UnknownEditor::show_reading() {
  const ChunkTag tag = tag_of(name->text());
  properties->setText(tag == 0 ? text_of(StringId::ChunkNameRule) : to_qt(reading_text(tag_properties(tag))));
  const auto content = bytes->view().bytes();
  const bool short_enough = content.size() <= kMostRead;
  const auto lines =
      tag != 0 && short_enough ? chunk_reading(tag, content, kind) : std::vector<ReadingLine>();
  reading->setVisible(tag != 0 && has_chunk_reading(tag, kind) && short_enough);
  reading->setPlainText(to_qt(reading_text(lines)));
}

std::string UnknownEditor::check() const {
  const ChunkTag tag = tag_of(name->text());
  const bool allowed = tag != 0 && (tag == record.tag || !has_own_editor(tag));
  return allowed ? std::string() : std::string(string_text(StringId::ChunkNameRule));
}

ChunkRecord UnknownEditor::typed() const {
  ChunkRecord now = with_content(record, bytes->view().bytes());
  now.tag = tag_of(name->text());
  return now;
}

bool UnknownEditor::changed() const {
  return tag_of(name->text()) != record.tag ||
         !std::ranges::equal(bytes->view().bytes(), raw_payload(record));
}

bool UnknownEditor::may_be_taken() {
  return !changed() || keeps_anyway(window, index, typed(), services.host);
}

Edited put(DocumentWindow& window, std::size_t index, ChunkRecord record, Services& services) {
  if (!record.data) {
    services.host.show(StringId::AllocationError);
    return Edited::Cancelled;
  }
  record.description = chunk_description(record);
  return chunk_list_put(window.list, index, record) ? Edited::Changed : Edited::Cancelled;
}

}  // namespace

ChunkRecord with_content(const ChunkRecord& record, std::span<const std::uint8_t> bytes) {
  ChunkRecord now = record;
  now.data = ChunkHandle::copy_of(bytes);
  now.size = static_cast<std::int32_t>(bytes.size());
  return now;
}

Edited put_content(DocumentWindow& window, std::size_t index, const ChunkRecord& record, Services& services) {
  if (std::ranges::equal(raw_payload(record), raw_payload(window.list.record(index)))) return Edited::Same;
  if (!keeps_anyway(window, index, record, services.host)) return Edited::Cancelled;
  return put(window, index, record, services);
}

Edited edit_unknown(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services) {
  if (index >= window.list.size()) return Edited::Cancelled;
  UnknownEditor editor(parent, window, index, services);
  if (editor.dialog.exec() != QDialog::Accepted) return Edited::Cancelled;
  if (!editor.changed()) return Edited::Same;
  return put(window, index, editor.typed(), services);
}

}  // namespace vellum
