// The Insert menus, and the list that the toolbar drops down.
#include <QMenu>

#include "core/insert_chunk.h"
#include "shell/commands.h"
#include "shell/editing.h"
#include "shell/main_window.h"
#include "shell/picture_files.h"

namespace vellum {
namespace {

/// One item of the toolbar's list. Its labels are not those of the menus.
struct PopupRow {
  DocumentKind kind;
  const char* label;
  int number;
  void (*run)(MainWindow&, DocumentFrame&);
};

constexpr PopupRow kPopup[] = {
    {DocumentKind::PING, "&Background (BKGD)", 1022, insert_command<tag::bKGD>},
    {DocumentKind::PING, "&Compressed text (ZTXT)", 1025, insert_command<tag::zTXt>},
    {DocumentKind::PING, "Gamma (GAMA)", 1027, insert_command<tag::gAMA>},
    {DocumentKind::PING, "&Image (IDAT)", 1020, insert_images_command},
    {DocumentKind::PING, "&Palette (PLTE)", 1021, insert_command<tag::PLTE>},
    {DocumentKind::PING, "T&ext (TEXT)", 1024, insert_command<tag::tEXt>},
    {DocumentKind::PING, "&Time (TIME)", 1023, insert_command<tag::tIME>},
    {DocumentKind::PING, "T&ransparency (TRNS)", 1026, insert_command<tag::tRNS>},
    {DocumentKind::APNG, "&Background (BKGD)", 1022, insert_command<tag::bKGD>},
    {DocumentKind::APNG, "&Compressed text (ZTXT)", 1025, insert_command<tag::zTXt>},
    {DocumentKind::APNG, "&Image (IDAT)", 1020, insert_images_command},
    {DocumentKind::APNG, "&Palette (PLTE)", 1021, insert_command<tag::PLTE>},
    {DocumentKind::APNG, "T&ext (TEXT)", 1024, insert_command<tag::tEXt>},
    {DocumentKind::APNG, "T&ransparency (TRNS)", 1026, insert_command<tag::tRNS>},
    {DocumentKind::MING, "&Background (BACK)", 1050, insert_command<tag::BACK>},
    {DocumentKind::MING, "&Compressed text (ZTXT)", 1025, insert_command<tag::zTXt>},
    {DocumentKind::MING, "&Image", 1055, insert_images_command},
    {DocumentKind::MING, "&Loop (LOOP)", 1053, insert_command<tag::LOOP>},
    {DocumentKind::MING, "Loop &end (ENDL)", 1054, insert_command<tag::ENDL>},
    {DocumentKind::MING, "Te&rmination (TERM)", 1056, insert_command<tag::TERM>},
    {DocumentKind::MING, "T&ext (TEXT)", 1024, insert_command<tag::tEXt>},
    {DocumentKind::MING, "&Time (TIME)", 1023, insert_command<tag::tIME>},
    {DocumentKind::WEBP, "&Image (WEBP IDAT)", 1060, insert_images_command},
};

}  // namespace

void insert_chunk_command(MainWindow& main, DocumentFrame& frame, ChunkTag tag) {
  if (!insert_chunk(frame.content(), tag, {}, main.services().host)) return;
  frame.show_caret();
  edit_new_entry(main, frame);
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

void insert_popup_command(MainWindow& main, DocumentFrame& frame) {
  auto* menu = new QMenu(&main);
  menu->setObjectName(QStringLiteral("insert"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (const PopupRow& row : kPopup) {
    if (row.kind != frame.document().kind) continue;
    QAction* action = menu->addAction(QString::fromUtf8(row.label));
    action->setData(row.number);
    QObject::connect(action, &QAction::triggered, &frame, [&main, &frame, run = row.run] {
      if (main.services().busy()) return;
      run(main, frame);
      main.refresh();
    });
  }
  const QWidget* button = main.commands().tool_button(60);
  menu->popup(button ? button->mapToGlobal(button->rect().bottomLeft()) : QCursor::pos());
}

}  // namespace vellum
