#include "shell/window/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QTimer>
#include <QVBoxLayout>
#include <new>

#include "base/text.h"
#include "configuration/config_file.h"
#include "core/build/convert_records.h"
#include "core/chunks/chunk_fields.h"
#include "core/edit/undo.h"
#include "core/files/open_document.h"
#include "core/model/document_notes.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "exchange/importer.h"
#include "operations/convert_colors.h"
#include "shell/look/icon.h"
#include "shell/look/text.h"
#include "shell/services/favorite_files.h"
#include "shell/services/file_dialogs.h"
#include "shell/services/saving.h"
#include "shell/window/context_menu.h"
#include "shell/window/recent_menu.h"
#include "shell/window/row_drag.h"
#include "shell/window/start_up.h"

namespace vellum {
namespace {

constexpr int kEditCommand = 205, kViewCommand = 56, kDismissCommand = 209;
constexpr int kRetryInterval = 50;  // milliseconds until a queued file is tried again

Services desktop_services(MainWindow& window, DesktopHost& desktop) {
  return {desktop.record(),
          [&window] { return ask_for_open(&window); },
          [&window](const SaveChoice& choice) { return ask_for_save(&window, choice); },
          [&window](bool several) { return ask_for_pictures(&window, several); },
          [] { return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ShiftModifier); },
          [&desktop] { return desktop.busy(); },
          [&window](const FileChoice& choice) { return ask_for_file(&window, choice); },
          [&window](const std::filesystem::path& path) { window.recent().remember(path); },
          [](const Document& document) { return document.HasFileName && is_favorite(document.fileName); },
          [] { return QGuiApplication::queryKeyboardModifiers().testFlag(Qt::ControlModifier); }};
}

QString selection_text(std::size_t selected) {
  if (selected == 0) return text_of(StringId::NoChunksSelected);
  if (selected == 1) return text_of(StringId::OneChunkSelected);
  return text_of(StringId::ChunksSelected).replace(QStringLiteral("%d"), QString::number(selected));
}

QString document_text(DocumentFrame& frame) {
  const Extent size = document_size(frame.entries(), frame.document());
  return QStringLiteral("%1   %2 \u00d7 %3")
      .arg(kind_text(frame.document().kind))
      .arg(size.width)
      .arg(size.height);
}

/// An MNG as an animated PNG that was never saved. Where that can't be, it stays as it is.
void become_animated_png(DocumentWindow& content, Host& host) {
  DocumentWindow converted;
  if (!convert_document(content, converted, DocumentKind::APNG, host)) {
    host.add_note(host.take_fault());
    return;
  }
  Document& document = content.document;
  document.kind = converted.document.kind;
  document.defaultImage = converted.document.defaultImage;
  document.fileName.replace_extension(kind_row(DocumentKind::APNG).extensions.front());
  document.HasFileName = false;
  document.dirty = true;
  content.list = converted.list;
}

}  // namespace

MainWindow::MainWindow()
    : area_(*new WorkArea(recent_, this)),
      tabs_(*new DocumentTabs(area_, this)),
      status_(*new StatusLine(this)),
      commands_(*new CommandBar(*this)),
      desktop_(*this, status_),
      services_(desktop_services(*this, desktop_)),
      docks_(*new Docks(
          *this, {services_, thumbnails_, [this](int command) { run(command); }, drag_rows, is_drag_of})) {
  convertImages = convert_to_header;
  take_imports();
  services_.host.note = [this](std::string_view text) { take_note(text); };
  setObjectName(QStringLiteral("Vellumcraft"));
  setWindowIcon(program_icon("vellumcraft"));
  auto* middle = new QWidget(this);
  auto* column = new QVBoxLayout(middle);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(&tabs_);
  column->addWidget(&area_, 1);
  setCentralWidget(middle);
  setStatusBar(&status_);
  setAcceptDrops(true);
  connect_parts();
  refresh();
}

// The document windows outlive the members of this class, and the area tells of each that goes.
MainWindow::~MainWindow() {
  area_.disconnect(this);
  for (DocumentFrame* frame : area_.documents()) frame->disconnect(this);
  docks_.set_document(nullptr);
  delete &docks_;
}

void MainWindow::connect_parts() {
  connect(&commands_, &CommandBar::triggered, this, &MainWindow::run);
  connect(&area_, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* window) {
    if (window && window->widget()) window->widget()->setFocus();
    refresh();
  });
  connect(&area_.empty_state(), &EmptyState::open_wanted, this, [this] { run(58); });
  connect(&area_.empty_state(), &EmptyState::recent_wanted, this, &MainWindow::run);
  QMenu* windows = commands_.menu(Menu::Window);
  connect(windows, &QMenu::aboutToShow, this, &MainWindow::fill_window_list);
  show_in_menu(recent_, *commands_.menu(Menu::Recent), [this](int command) { run(command); });
  connect(&recent_, &RecentFiles::changed, this, &MainWindow::refresh_later);
  name_docks();
  connect(&docks_, &Docks::changed, this, &MainWindow::check_docks);
}

void MainWindow::name_docks() {
  for (const DockRow& row : dock_table()) {
    commands_.action(row.command)->setCheckable(true);
    commands_.action(row.command)->setStatusTip(tr(row.tip));
  }
}

void MainWindow::check_docks() {
  for (const DockRow& row : dock_table())
    commands_.action(row.command)->setChecked(docks_.is_seen(row.command));
}

QMenu* MainWindow::createPopupMenu() {
  auto* menu = new QMenu(this);
  for (const DockRow& row : dock_table()) menu->addAction(commands_.action(row.command));
  return menu;
}

void MainWindow::connect_list(DocumentFrame& frame) {
  ChunkListView& list = frame.list();
  connect(&list, &ChunkListView::edit_wanted, this, [this] { run(kEditCommand); });
  connect(&list, &ChunkListView::menu_wanted, &frame, [this, &frame](std::size_t row, QPoint place) {
    if (services_.busy() || area_.active() != &frame) return;
    frame.document().RightClickChunk = static_cast<std::int32_t>(row);
    refresh();
    make_context_menu(*this, frame, row)->popup(place);
  });
  connect(&list, &ChunkListView::drag_wanted, &frame, [this, &frame] {
    if (!services_.busy()) drag_rows(frame, false);
  });
  list.is_favorite = [this, &frame] {
    return services_.is_favorite && services_.is_favorite(frame.document());
  };
  list.may_drop = [this, &frame](const QMimeData& dragged) {
    return !services_.busy() && !QApplication::activeModalWidget() && may_drop_on(frame, dragged);
  };
  list.drop = [this, &frame](const QMimeData& dropped, std::size_t row) {
    drop_on(*this, frame, dropped, row);
  };
  list.is_own = [&frame](const QMimeData& dragged) { return is_drag_of(frame, dragged); };
  list.put_here = [this, &frame](std::size_t position, bool copy) {
    put_rows_later(*this, frame, position, copy);
  };
}

void MainWindow::run(int number) {
  if (const std::string* path = recent_.file_of(number)) return run_recent(std::filesystem::path(*path));
  const CommandRow* row = find_command(number);
  if (!row || services_.busy()) return;
  docks_.settle();
  if (!command_enabled(*row, state())) return;
  DocumentFrame* frame = area_.active();
  if (row->run.on_program)
    row->run.on_program(*this);
  else if (frame)
    row->run.on_document(*this, *frame);
  for (DocumentFrame* open : area_.documents()) undo_settle(open->content());
  refresh();
}

void MainWindow::run_recent(const std::filesystem::path& path) {
  if (!services_.busy() && !open(path)) recent_.forget(path);
}

DocumentFrame* MainWindow::add_document(DocumentWindow content) try {
  auto* frame = new DocumentFrame(std::move(content), thumbnails_);
  frame->may_close = [this](DocumentFrame& closing) { return may_close(closing); };
  connect(frame, &DocumentFrame::changed, this, &MainWindow::refresh_later);
  connect(frame, &QMdiSubWindow::windowStateChanged, this, &MainWindow::refresh_later);
  connect(frame, &QObject::destroyed, this, &MainWindow::refresh_later);
  connect(frame, &DocumentFrame::notes_dismissed, this, [this] { run(kDismissCommand); });
  connect_list(*frame);
  area_.add(frame);
  return frame;
} catch (const std::bad_alloc&) {
  services_.host.show(StringId::TaskWindowError);
  return nullptr;
}

bool MainWindow::open(const std::filesystem::path& path) {
  DocumentWindow content;
  content.document.fileName = path;
  DocumentFrame* frame = add_document(std::move(content));
  if (!frame) return false;
  // The window is seen before a long load begins.
  repaint();
  bool opened = false;
  {
    const QuietList quiet(frame->entries());
    DocumentWindow& opening = frame->content();
    opened = open_document(opening, path, services_.host);
    if (opened && opening.document.kind == DocumentKind::MING && settings::AutomaticMngToPng != 0)
      become_animated_png(opening, services_.host);
  }
  if (opened) {
    recent_.remember(std::filesystem::absolute(path).lexically_normal());
    frame->size_to_content();
  } else {
    frame->close_without_question();
  }
  refresh();
  return opened;
}

void MainWindow::open_later(const std::filesystem::path& path, bool view) {
  QTimer::singleShot(0, this, [this, path, view] {
    if (services_.busy())
      QTimer::singleShot(kRetryInterval, this, [this, path, view] { open_later(path, view); });
    else if (open(path) && view)
      run(kViewCommand);
  });
}

CommandState MainWindow::state() const {
  DocumentFrame* frame = area_.active();
  if (!frame) return {};
  return {true,
          frame->document().kind,
          frame->entries().size(),
          frame->entries().selected_count(),
          frame->document().undoAvailable,
          !frame->content().redoLevels.empty(),
          !frame->document().notes.empty()};
}

/// What was found while a document was read, written or changed stays on it.
void MainWindow::take_note(std::string_view text) {
  DocumentFrame* frame = area_.active();
  if (!frame) return services_.host.set_status(text);
  add_note(frame->document(), text);
  refresh_later();
}

void MainWindow::refresh_later() {
  if (std::exchange(refreshPending_, true)) return;
  QTimer::singleShot(0, this, &MainWindow::refresh);
}

void MainWindow::refresh() {
  refreshPending_ = false;
  const CommandState now = state();
  DocumentFrame* frame = area_.active();
  commands_.enable(now);
  commands_.show_scale(frame ? frame->document().thumbScale : std::clamp(settings::DefaultViewMode, 0, 7));
  show_undo_names(frame);
  refresh_status(now, frame);
  refresh_title(frame);
  if (frame) frame->show_notes();
  tabs_.refresh();
  docks_.set_document(frame);
  check_docks();
  emit refreshed();
}

void MainWindow::show_undo_names(DocumentFrame* frame) {
  const DocumentWindow* window = frame ? &frame->content() : nullptr;
  const bool undo = window && !window->undoLevels.empty(), redo = window && !window->redoLevels.empty();
  commands_.show_undo(undo ? window->undoLevels.back().name : std::string(),
                      redo ? window->redoLevels.back().name : std::string());
}

void MainWindow::settings_changed() {
  commands_.refresh_look();
  area_.viewport()->update();
  recent_.reload();
  refresh();
}

void MainWindow::refresh_status(const CommandState& now, DocumentFrame* frame) {
  status_.set_selection(frame ? selection_text(now.selected) : QString());
  status_.set_document(frame && now.entries > 0 ? document_text(*frame) : QString());
}

void MainWindow::refresh_title(DocumentFrame* frame) {
  title_ = QStringLiteral("Vellumcraft");
  if (frame) {
    frame->update_title();
    const std::filesystem::path name = document_title(frame->document());
    title_.prepend(plain_title(path_text(name.filename())) + QStringLiteral("[*] - "));
  }
  setWindowTitle(title_);
  setWindowModified(frame && frame->document().dirty);
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  // A maximized document window appends its own title.
  if (event->type() == QEvent::WindowTitleChange && windowTitle() != title_) setWindowTitle(title_);
}

bool MainWindow::may_close(DocumentFrame& frame) {
  if (services_.busy()) return false;
  docks_.settle();
  if (frame.document().dirty) area_.setActiveSubWindow(&frame);
  return settle_changes(frame.content(), services_);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  record_window_place(*this);
  docks_.remember();
  config_save_changes();
  for (DocumentFrame* frame : area_.documents())
    if (services_.busy() || !frame->close()) {
      event->ignore();
      return;
    }
  QMainWindow::closeEvent(event);
}

/// The open documents below the menu's commands.
void MainWindow::fill_window_list() {
  QMenu* menu = commands_.menu(Menu::Window);
  const QString mark = QStringLiteral("document");
  for (QAction* action : menu->actions())
    if (action->objectName() == mark) delete action;
  const auto frames = tabs_.documents();
  if (frames.empty()) return;
  menu->addSeparator()->setObjectName(mark);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    DocumentFrame* frame = frames[i];
    const std::filesystem::path name = document_title(frame->document());
    const QString digit = i < 9 ? QStringLiteral("&%1 ").arg(i + 1) : QString();
    QAction* action = menu->addAction(digit + menu_text(path_text(name.filename())));
    action->setObjectName(mark);
    action->setCheckable(true);
    action->setChecked(frame == area_.active());
    connect(action, &QAction::triggered, frame, [this, frame] { area_.setActiveSubWindow(frame); });
  }
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (services_.busy() || QApplication::activeModalWidget() || dragged_files(*event->mimeData()).empty())
    return;
  area_.empty_state().set_inviting(true);
  event->setDropAction(Qt::CopyAction);
  event->accept();
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent*) { area_.empty_state().set_inviting(false); }

void MainWindow::dropEvent(QDropEvent* event) {
  area_.empty_state().set_inviting(false);
  event->setDropAction(Qt::CopyAction);
  event->accept();
  raise();
  activateWindow();
  // The other program waits for the end of the drop, so files are opened behind it.
  for (const auto& file : dragged_files(*event->mimeData())) open_later(file);
}

}  // namespace vellum
