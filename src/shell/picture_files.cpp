#include "shell/picture_files.h"

#include "base/text.h"
#include "core/frame_layer.h"
#include "core/open_document.h"
#include "image/graphic_file.h"

namespace vellum {
namespace {

bool passes_over(const std::filesystem::path& file, Host& host) {
  if (!host.ask) return true;
  const auto id = StringId::CorruptedGraphicQuestion;
  return host.ask({id, {}, std::string(string_text(id)), file.string(), nullptr}, false) == Answer::Yes;
}

/// An MNG is no graphic file but a document.
Picture first_image_of_document(const std::filesystem::path& file) {
  DocumentWindow window;
  Host nobody;
  if (!open_document(window, file, nobody)) return {};
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      return frame_layer_of(frame_source_of(window), window.list.record(i)).picture;
  return {};
}

}  // namespace

Picture first_picture(const std::filesystem::path& file) {
  return equal_ignoring_case(file.extension().string(), ".mng") ? first_image_of_document(file)
                                                                : GraphicFileRead(file.string());
}

std::vector<Picture> read_picture_files(const std::vector<std::filesystem::path>& files, Host& host) {
  std::vector<Picture> pictures;
  const Progress progress(host, string_text(StringId::Loading));
  for (std::size_t i = 0; i < files.size() && !host.stopped(); ++i) {
    progress.step(i, files.size());
    const Picture picture = first_picture(files[i]);
    if (picture)
      pictures.push_back(picture);
    else if (!passes_over(files[i], host))
      break;
  }
  return pictures;
}

}  // namespace vellum
