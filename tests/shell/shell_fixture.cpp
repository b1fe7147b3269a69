#include "shell_fixture.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTabBar>

#include "core/build/convert_records.h"
#include "core/model/chunk_layout.h"
#include "shell/help/guide.h"
#include "shell/look/icon.h"
#include "shell/look/program_style.h"
#include "shell/look/style.h"
#include "shell/widgets/dialog_frame.h"
#include "shell/widgets/screen_room.h"

namespace vellum::testing {
namespace {

constexpr QSize kSmallScreen(800, 560);  // 800 x 600 without a window's title

ChunkRecord header_record(std::uint32_t width, std::uint32_t height) {
  ChunkRecord record;
  record.tag = tag::IHDR;
  record.size = 13;
  record.width = width;
  record.height = height;
  record.bitDepth = 8;
  record.colorType = 2;
  return record;
}

ChunkRecord image_record(std::uint32_t width, std::uint32_t height) {
  ChunkRecord record;
  record.tag = tag::IDAT;
  record.data = sample_picture(width, height, 24).handle();
  record.frameControl.frameWidth = width;
  record.frameControl.frameHeight = height;
  return record;
}

ChunkRecord text_record() {
  static constexpr std::uint8_t payload[] = "Title\0A text";
  ChunkRecord record;
  record.tag = tag::tEXt;
  record.data = ChunkHandle::copy_of(payload);
  record.size = sizeof payload - 1;
  return record;
}

ChunkRecord plain_record(ChunkTag tag) {
  ChunkRecord record;
  record.tag = tag;
  return record;
}

DocumentWindow document_of(DocumentKind kind, const std::vector<ChunkRecord>& records) {
  DocumentWindow window;
  window.document.kind = kind;
  window.document.thumbScale = 5;
  for (const ChunkRecord& record : records) chunk_list_append(window.list, window.document, record);
  chunk_list_close_change(window.list, window.document);
  return window;
}

}  // namespace

Services Answers::services() {
  Services services;
  services.host.message = [this](const Message& message) { messages.push_back(message); };
  services.host.ask = [this](const Message& message, bool) {
    questions.push_back(message);
    if (answers.empty()) return Answer::Yes;
    const Answer answer = answers.front();
    answers.pop_front();
    return answer;
  };
  services.choose_open = [this] { return open; };
  services.choose_save = [this](const SaveChoice& choice) {
    saveChoices.push_back(choice);
    return save;
  };
  services.choose_pictures = [this](bool several) {
    severalPictures = several;
    return pictures;
  };
  services.shift_held = [this] { return shift; };
  services.busy = [this] { return busy; };
  services.choose_file = [this](const FileChoice&) { return file; };
  services.control_held = [this] { return control; };
  return services;
}

Picture sample_picture(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  Palette palette{};
  for (std::size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<std::uint8_t>(i * 89 + 13);
  Picture picture = PictureCreate(width, height, &palette, bits);
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x)
      PicturePutPixel(picture, x, y, bits < 24 ? x + y * 3 : make_colour(x * 61, y * 83, x * 7 + y * 5, 255));
  return picture;
}

DocumentWindow still_document(std::uint32_t width, std::uint32_t height) {
  return document_of(DocumentKind::PING,
                     {header_record(width, height), image_record(width, height), plain_record(tag::IEND)});
}

DocumentWindow animated_document(std::size_t frames, std::uint32_t width, std::uint32_t height) {
  std::vector<ChunkRecord> records = {header_record(width, height), plain_record(tag::acTL)};
  records.insert(records.end(), frames, image_record(width, height));
  records.push_back(plain_record(tag::IEND));
  return document_of(DocumentKind::APNG, records);
}

DocumentWindow document_of(DocumentKind kind, Host& host) {
  if (kind == DocumentKind::PING) return still_document();
  if (kind == DocumentKind::APNG) return animated_document(2);
  DocumentWindow converted;
  EXPECT_TRUE(convert_document(animated_document(2), converted, kind, host));
  return converted;
}

DocumentWindow long_document(std::size_t rows) {
  std::vector<ChunkRecord> records = {header_record(40, 30), image_record(40, 30)};
  records.insert(records.end(), rows - 3, text_record());
  records.push_back(plain_record(tag::IEND));
  return document_of(DocumentKind::PING, records);
}

QPalette dark_palette() {
  QPalette dark(QColor(45, 45, 48), QColor(45, 45, 48));
  dark.setColor(QPalette::Base, QColor(30, 30, 32));
  dark.setColor(QPalette::Text, QColor(225, 225, 225));
  dark.setColor(QPalette::WindowText, QColor(225, 225, 225));
  dark.setColor(QPalette::ButtonText, QColor(225, 225, 225));
  dark.setColor(QPalette::Link, QColor(110, 170, 255));
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
    dark.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
  return dark;
}

namespace {

/// What a screen reader says of a control.
QString told_name(QWidget* widget) {
  QAccessibleInterface* told = QAccessible::queryAccessibleInterface(widget);
  if (told && told->isValid()) return told->text(QAccessible::Name);
  // Qt still has that of a control that is gone and stood at the same address.
  const auto* button = qobject_cast<QAbstractButton*>(widget);
  return button && widget->accessibleName().isEmpty() ? button->text() : widget->accessibleName();
}

}  // namespace

void expect_named(const QWidget& window) {
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    // Parts of Qt's own controls, and what is told by its tabs.
    const QWidget* parent = widget->parentWidget();
    if (widget->objectName().startsWith(QLatin1String("qt_")) || qobject_cast<QTabBar*>(widget) ||
        widget->inherits("QComboBoxListView") || qobject_cast<const QAbstractSpinBox*>(parent) ||
        qobject_cast<const QComboBox*>(parent) || widget->focusProxy() ||
        !(widget->focusPolicy() & Qt::TabFocus))
      continue;
    EXPECT_FALSE(told_name(widget).trimmed().isEmpty())
        << window.windowTitle().toStdString() << ": " << widget->metaObject()->className() << ' '
        << widget->objectName().toStdString() << " in " << parent->metaObject()->className();
  }
}

void expect_presentable(QWidget& window) {
  const std::string title = window.windowTitle().toStdString();
  expect_named(window);
  EXPECT_LE(window.width(), kSmallScreen.width()) << title;
  EXPECT_LE(window.height(), kSmallScreen.height()) << title;
  for (const QPushButton* button : window.findChildren<QPushButton*>()) {
    if (!button->isVisible() || !qobject_cast<QDialogButtonBox*>(button->parentWidget())) continue;
    const QRect place(button->mapTo(&window, QPoint()), button->size());
    EXPECT_TRUE(window.rect().contains(place)) << title << ": " << button->text().toStdString();
  }
  for (const QDialogButtonBox* box : window.findChildren<QDialogButtonBox*>())
    if (QPushButton* help = box->button(QDialogButtonBox::Help); help && help->isEnabled()) help->click();
  for (const QLabel* label : window.findChildren<QLabel*>()) {
    if (label->text().isEmpty() || !label->isEnabled()) continue;
    const QPalette palette = label->palette();
    const QColor ink = palette.color(label->foregroundRole()),
                 ground = palette.color(label->backgroundRole());
    EXPECT_EQ(ink.alpha(), 255) << title << ": " << label->text().toStdString();
    EXPECT_GE(style::contrast(ink, ground), 4.5) << title << ": " << label->text().toStdString();
  }
}

std::set<std::size_t> selected_rows(const ChunkList& list) {
  std::set<std::size_t> rows;
  for (std::size_t i = 0; i < list.size(); ++i)
    if (list.entry(i).selected) rows.insert(i);
  return rows;
}

void WindowTest::SetUp() {
  const auto note = main_.services().host.note;
  main_.services() = answers_.services();
  main_.services().host.note = note;  // what a window shows of itself
  main_.resize(1000, 700);
  main_.show();
  settle();
}

void WindowTest::settle() { QTest::qWait(1); }

DocumentFrame& WindowTest::add(DocumentWindow content) {
  DocumentFrame* frame = main_.add_document(std::move(content));
  settle();
  return *frame;
}

}  // namespace vellum::testing

int main(int argc, char** argv) {
  // What the program remembers in tests is not what its user's program remembers.
  const vellum::testing::ScratchFolder folder;
  qputenv("XDG_CONFIG_HOME", (folder / "config").string().c_str());
  qputenv("XDG_STATE_HOME", (folder / "state").string().c_str());
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setStyle(new vellum::ProgramStyle);
  application.installEventFilter(new vellum::ScreenRoom(vellum::testing::kSmallScreen, &application));
  vellum::register_icons();
  // Whatever a dialog's Help asks for is a page of the guide.
  const QString guide = QString::fromStdString((vellum::testing::source_folder() / "docs/guide").string());
  vellum::showHelp = [guide](const QString& topic) {
    EXPECT_EQ(vellum::page_of_topic(guide, topic), topic.toLower() + QStringLiteral(".md"));
  };
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
