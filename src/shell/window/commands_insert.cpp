// The Insert menus, and the list that the toolbar drops down.
#include <QMenu>

#include "core/edit/insert_chunk.h"
#include "shell/dialogs/insert_dialog.h"
#include "shell/look/text.h"
#include "shell/services/picture_files.h"
#include "shell/window/commands.h"
#include "shell/window/editing.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// One item of the toolbar's list. Neither its labels nor what it offers are those of the menus.
struct PopupRow {
  DocumentKind kind;
  const char* label;
  int number;
};

constexpr PopupRow kPopup[] = {
    {DocumentKind::PING, "&Background (BKGD)", 1022},
    {DocumentKind::PING, "&Compressed text (ZTXT)", 1025},
    {DocumentKind::PING, "Gamma (GAMA)", 1027},
    {DocumentKind::PING, "&Image (IDAT)", 1020},
    {DocumentKind::PING, "&Palette (PLTE)", 1021},
    {DocumentKind::PING, "T&ext (TEXT)", 1024},
    {DocumentKind::PING, "&Time (TIME)", 1023},
    {DocumentKind::PING, "T&ransparency (TRNS)", 1026},
    {DocumentKind::PING, "&Other chunk...", 1070},
    {DocumentKind::APNG, "&Background (BKGD)", 1022},
    {DocumentKind::APNG, "&Compressed text (ZTXT)", 1025},
    {DocumentKind::APNG, "&Image (IDAT)", 1020},
    {DocumentKind::APNG, "&Palette (PLTE)", 1021},
    {DocumentKind::APNG, "T&ext (TEXT)", 1024},
    {DocumentKind::APNG, "T&ransparency (TRNS)", 1026},
    {DocumentKind::APNG, "&Other chunk...", 1070},
    {DocumentKind::MING, "&Background (BACK)", 1050},
    {DocumentKind::MING, "&Compressed text (ZTXT)", 1025},
    {DocumentKind::MING, "&Image", 1055},
    {DocumentKind::MING, "&Loop (LOOP)", 1053},
    {DocumentKind::MING, "Loop &end (ENDL)", 1054},
    {DocumentKind::MING, "Te&rmination (TERM)", 1056},
    {DocumentKind::MING, "T&ext (TEXT)", 1024},
    {DocumentKind::MING, "&Time (TIME)", 1023},
    {DocumentKind::MING, "&Other chunk...", 1071},
    {DocumentKind::WEBP, "&Image (WEBP IDAT)", 1060},
    {DocumentKind::WEBP, "&Other chunk...", 1072},
};

}  // namespace

void insert_chunk_command(MainWindow& main, DocumentFrame& frame, ChunkTag tag) {
  if (!insert_chunk(frame.content(), tag, {}, main.services().host)) return;
  frame.show_caret();
  edit_new_entry(main, frame);
}

void insert_other_command(MainWindow& main, DocumentFrame& frame) {
  if (const auto tag = ask_for_chunk(&main, frame.content(), main.services()))
    insert_chunk_command(main, frame, *tag);
}

void insert_images_command(MainWindow& main, DocumentFrame& frame) {
  DocumentWindow& window = frame.content();
  Host& host = main.services().host;
  const DocumentKind kind = window.document.kind;
  // Told before pictures are asked for, which would be in vain.
  if (const auto refusal = insert_refusal(window, image_tag(kind))) return host.show(*refusal);
  const auto files = main.services().choose_pictures(is_animation(kind));
  const std::vector<Picture> pictures = read_picture_files(files, host);
  if (!pictures.empty() && insert_pictures(window, pictures, host)) frame.show_caret();
}

void fill_insert_menu(QMenu& menu, MainWindow& main, DocumentFrame& frame) {
  for (const PopupRow& row : kPopup) {
    if (row.kind != frame.document().kind) continue;
    QAction* action = menu.addAction(shown(row.label));
    action->setData(row.number);
    const auto run = find_command(row.number)->run.on_document;
    QObject::connect(action, &QAction::triggered, &frame, [&main, &frame, run] {
      if (main.services().busy()) return;
      run(main, frame);
      main.refresh();
    });
  }
}

void insert_popup_command(MainWindow& main, DocumentFrame& frame) {
  auto* menu = new QMenu(&main);
  menu->setObjectName(QStringLiteral("insert"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  fill_insert_menu(*menu, main, frame);
  const QWidget* button = main.commands().tool_button(60);
  menu->popup(button ? button->mapToGlobal(button->rect().bottomLeft()) : QCursor::pos());
}

}  // namespace vellum
