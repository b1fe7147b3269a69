#include "core/files/first_picture.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/limits.h"
#include "base/translation.h"
#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/files/read_mng.h"
#include "core/model/kind_table.h"
#include "core/model/tags.h"
#include "image/chunk_stream.h"

namespace vellum {
namespace {

constexpr const char* kTooManyPixels = "it has more pixels than are wanted";
/// Made when it is told: the language is not known yet when the program begins.
GraphicReading no_image() { return {{}, GraphicFault::Damaged, translated("it holds no image")}; }

GraphicReading first_image(const DocumentWindow& window) {
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      return {frame_layer_of(frame_source_of(window), window.list.record(i)).picture, {}, {}};
  return no_image();
}

/// An MNG up to the end of its first image: nobody has to decode the others for that one. Empty without one,
/// and for other files. `pixels`: what its header says.
std::vector<std::uint8_t> up_to_first_image(std::span<const std::uint8_t> file, std::uint64_t& pixels) {
  if (file.size() < kMngSignature.size() ||
      !std::ranges::equal(file.first(kMngSignature.size()), kMngSignature))
    return {};
  const auto chunks = gather_chunks(file, kMngSignature.size(), tag::MEND).chunks;
  const auto header = std::ranges::find(chunks, std::uint32_t{tag::IHDR}, &StreamChunk::tag);
  const auto end = std::find_if(header, chunks.end(), [](const auto& c) { return c.tag == tag::IEND; });
  if (end == chunks.end() || header->data.size() < 8) return {};
  pixels = std::uint64_t{read_be32(header->data.data())} * read_be32(header->data.data() + 4);
  constexpr std::size_t kAround = 12;  // length, type and check value
  const auto front = file.first(static_cast<std::size_t>(end->offset) + kAround + end->data.size());
  std::vector<std::uint8_t> cut(front.begin(), front.end());
  append_chunk(cut, tag::MEND, {});
  return cut;
}

/// An MNG is no graphic file but a document.
GraphicReading first_image_of_document(const std::filesystem::path& file, std::uint64_t most_pixels) {
  DocumentWindow window;
  Host listener;
  GraphicReading reading = no_image();
  listener.message = [&](const Message& message) { reading.told = message.more; };
  std::string reason;
  std::uint64_t pixels = 0;
  if (const auto bytes = read_file(file, reason, kMaximumFileBytes)) {
    const auto front = up_to_first_image(*bytes, pixels);
    if (pixels > most_pixels) return {{}, GraphicFault::TooLarge, translated(kTooManyPixels)};
    if (!front.empty() && read_mng(window, front, listener, nullptr)) return first_image(window);
    window = {};
  }
  return open_document(window, file, listener) ? first_image(window) : reading;
}

}  // namespace

GraphicReading first_picture(const std::filesystem::path& file, std::uint32_t enough,
                             std::uint64_t most_pixels) {
  std::uint32_t width = 0, height = 0;
  if (most_pixels != std::numeric_limits<std::uint64_t>::max() &&
      GraphicFileInfo(file.string(), &width, &height, nullptr, nullptr) &&
      std::uint64_t{width} * height > most_pixels)
    return {{}, GraphicFault::TooLarge, translated(kTooManyPixels)};
  const GraphicReading reading = read_graphic_file(file.string(), Part::Whole, enough);
  if (reading.fault != GraphicFault::UnknownKind) return reading;
  const GraphicReading first = first_image_of_document(file, most_pixels);
  return first.picture || has_extension_of(file, DocumentKind::MING) ? first : reading;
}

}  // namespace vellum
