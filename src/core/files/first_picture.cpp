#include "core/files/first_picture.h"

#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/model/kind_table.h"

namespace vellum {
namespace {

/// An MNG is no graphic file but a document.
GraphicReading first_image_of_document(const std::filesystem::path& file) {
  DocumentWindow window;
  Host listener;
  GraphicReading reading{{}, GraphicFault::Damaged, "it holds no image"};
  listener.message = [&](const Message& message) { reading.told = message.more; };
  if (!open_document(window, file, listener)) return reading;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      return {frame_layer_of(frame_source_of(window), window.list.record(i)).picture, {}, {}};
  return reading;
}

}  // namespace

GraphicReading first_picture(const std::filesystem::path& file, std::uint32_t enough) {
  const GraphicReading reading = read_graphic_file(file.string(), Part::Whole, enough);
  if (reading.fault != GraphicFault::UnknownKind) return reading;
  const GraphicReading first = first_image_of_document(file);
  return first.picture || has_extension_of(file, DocumentKind::MING) ? first : reading;
}

}  // namespace vellum
