#include "core/files/first_picture.h"

#include "base/text.h"
#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "image/graphic_file.h"

namespace vellum {
namespace {

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

}  // namespace vellum
