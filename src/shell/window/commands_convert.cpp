// Commands that write images as picture files.
#include "base/fields.h"
#include "base/text.h"
#include "core/edit/insert_chunk.h"
#include "image/graphic_file.h"
#include "shell/dialogs/convert_dialogs.h"
#include "shell/look/text.h"
#include "shell/services/picture_files.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

bool has_images(MainWindow& main, DocumentFrame& frame) {
  if (!frame_entries(frame.content()).empty()) return true;
  main.services().host.show(StringId::NoImagesHere);
  return false;
}

/// Asks about files that are there already; empty when the user cancelled.
std::optional<std::vector<std::filesystem::path>> settle_names(std::vector<std::filesystem::path> names,
                                                               Host& host) {
  std::error_code error;
  if (std::ranges::none_of(names, [&](const auto& name) { return std::filesystem::exists(name, error); }))
    return names;
  Choice choice{.title = StringId::ExtractTitle,
                .text = StringId::FilesExist,
                .answers = {StringId::OverwriteAll, StringId::KeepBoth, StringId::CancelAnswer},
                .chosen = 0};
  if (host.choose && !host.choose(choice)) return std::nullopt;
  if (choice.chosen == 2) return std::nullopt;
  return choice.chosen == 1 ? free_names(std::move(names)) : names;
}

/// Without numbers several frames have the names that the user gives them; empty when one wasn't given.
std::optional<std::vector<std::filesystem::path>> extraction_names(const DocumentWindow& window,
                                                                   const Extraction& extraction,
                                                                   Services& services) {
  auto names = extracted_names(window, extraction);
  if (extraction.numbered || names.size() < 2) return settle_names(std::move(names), services.host);
  for (std::filesystem::path& name : names) {
    const auto chosen = choose_picture_file(services, text_of(StringId::ExtractTitle), name.string());
    if (!chosen) return std::nullopt;
    name = *chosen;
  }
  return names;
}

}  // namespace

void extract_command(MainWindow& main, DocumentFrame& frame) {
  if (!has_images(main, frame)) return;
  const auto extraction = ask_for_extraction(&main, frame.content(), main.services());
  if (!extraction) return;
  const auto names = extraction_names(frame.content(), *extraction, main.services());
  if (!names) return;
  Host& host = main.services().host;
  const std::size_t written = extract_frames(frame.content(), *extraction, *names, host);
  host.set_status(filled(StringId::FilesWritten, {std::to_string(written)}));
}

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
