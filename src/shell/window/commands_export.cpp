// The image of one row as a picture file.
#include "base/text.h"
#include "core/edit/insert_chunk.h"
#include "image/graphic_file.h"
#include "operations/extract_frames.h"
#include "shell/forms/form_dialog.h"
#include "shell/services/picture_files.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

/// JPEG quality, 1 to 100; nothing when the user cancelled.
std::optional<std::int64_t> ask_for_quality(QWidget* parent, Services& services) {
  FieldValues values;
  values.set("quality", std::int64_t{75});
  FormDialog dialog(QObject::tr("JPEG"), QStringLiteral("EXTRACT"),
                    {{.name = "quality", .label = "Quality", .least = 1, .most = 100}}, values, services.host,
                    parent);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.form().values().number("quality");
}

}  // namespace

void export_image_command(MainWindow& main, DocumentFrame& frame) {
  const DocumentWindow& window = frame.content();
  Services& services = main.services();
  const std::int32_t clicked = window.document.RightClickChunk;
  const std::size_t entry = clicked >= 0 ? static_cast<std::size_t>(clicked) : caret_entry(window);
  if (entry >= window.list.size() || !is_image_entry(window.document.kind, window.list.record(entry).tag))
    return services.host.show(StringId::NoFrameSelected);
  const auto entries = frame_entries(window);
  const auto number = static_cast<unsigned>(std::ranges::find(entries, entry) - entries.begin() + 1);
  const std::filesystem::path title = document_title(window.document);
  const auto path = choose_picture_file(services, QObject::tr("Export image"),
                                        title.stem().string() + format_text("_%05u.png", number));
  if (!path) return;
  const std::string extension = lower_case(path->extension().string()).substr(1);
  std::filesystem::path name = *path;
  if (extension == "jpg") {
    const auto quality = ask_for_quality(&main, services);
    if (!quality) return;
    name += "/Q:" + std::to_string(*quality);
  }
  const Colour background = document_background(window.list, window.document);
  write_picture_file(name, picture_for_file(own_picture(window, entry), extension, background, false),
                     services.host);
}

}  // namespace vellum
