#include "support/documents.h"

#include <regex>
#include <utility>

#include "base/byte_order.h"
#include "base/text.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/new_document.h"
#include "core/settings.h"
#include "image/chunk_stream.h"
#include "image/deflate.h"
#include "image/picture_operations.h"
#include "image/png_header.h"
#include "support/judge.h"

namespace vellum::testing {

Recorder::Recorder() {
  host.message = [this](const Message& message) {
    auto& list = message.option ? warnings : messages;
    list.push_back(message.more.empty() ? message.text : message.text + "\n" + message.more);
  };
  host.ask = [this](const Message& message, bool) {
    messages.push_back(message.text);
    return answer;
  };
  host.status = [this](std::string_view text) { status.emplace_back(text); };
  host.note = [this](std::string_view text) { notes.emplace_back(text); };
}

std::vector<std::uint8_t> png_file(const std::vector<ChunkText>& chunks) {
  std::vector<std::uint8_t> file(kPngSignature.begin(), kPngSignature.end());
  for (const ChunkText& chunk : chunks) {
    const auto* tag = reinterpret_cast<const std::uint8_t*>(chunk.tag.data());
    append_chunk(file, read_be32(tag),
                 {reinterpret_cast<const std::uint8_t*>(chunk.payload.data()), chunk.payload.size()});
  }
  return file;
}

std::string be32(std::uint32_t value) { return be16(value >> 16) + be16(value & 0xFFFF); }

std::string be16(std::uint32_t value) { return {static_cast<char>(value >> 8), static_cast<char>(value)}; }

std::string header_payload(unsigned width, unsigned height, unsigned depth, unsigned type,
                           unsigned interlace) {
  return be32(width) + be32(height) +
         std::string{static_cast<char>(depth), static_cast<char>(type), 0, 0, static_cast<char>(interlace)};
}

std::string zero_image(unsigned width, unsigned height, unsigned depth, unsigned type) {
  const PngHeader header{width, height, static_cast<std::uint8_t>(depth), static_cast<std::uint8_t>(type), 0,
                         0,     0};
  const std::vector<std::uint8_t> zeros(static_cast<std::size_t>(png_filtered_bytes(header)));
  const auto stream = deflate_bytes(zeros, 9);
  return {stream.begin(), stream.end()};
}

std::string frame_control(unsigned sequence, unsigned width, unsigned height, unsigned x, unsigned y,
                          unsigned delay, unsigned per, unsigned dispose, unsigned blend) {
  return be32(sequence) + be32(width) + be32(height) + be32(x) + be32(y) + be16(delay) + be16(per) +
         std::string{static_cast<char>(dispose), static_cast<char>(blend)};
}

std::string tags_of(const ChunkList& list) {
  std::string tags;
  for (std::size_t i = 0; i < list.size(); ++i) tags += (i == 0 ? "" : " ") + tag_letters(list.record(i).tag);
  return tags;
}

ChunkRecord record_of(ChunkTag tag, const std::string& payload) {
  ChunkRecord record;
  record.tag = tag;
  record.data = ChunkHandle::copy_of({reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size()});
  record.size = static_cast<std::int32_t>(payload.size());
  return record;
}

std::vector<std::uint8_t> rgba_of(const DocumentWindow& window, const Picture& picture) {
  // By the PNG standard, "tRNS": a table of alpha, one grey sample, or three samples.
  ChunkRecord transparency, header;
  const bool has = chunk_find_first(window.list, tag::tRNS, &transparency) != kNoEntry;
  chunk_find_first(window.list, tag::IHDR, &header);
  const auto raw = has ? raw_payload(transparency) : std::span<const std::uint8_t>();
  const auto key = [&](std::size_t i) -> int {
    if (raw.size() < 2 * i + 2) return -1;
    return header.bitDepth == 16 ? raw[2 * i] : raw[2 * i] == 0 ? raw[2 * i + 1] : -1;
  };
  Palette palette;
  PictureGetPalette(picture, palette);
  std::vector<std::uint8_t> rgba;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const Colour value = PictureGetPixel(picture, x, y);
      std::uint8_t pixel[4] = {red_of(value), green_of(value), blue_of(value), 255};
      if (picture.bits() == 32) pixel[3] = alpha_of(value);
      if (picture.bits() == 24 && header.colorType == 2 && raw.size() == 6 && pixel[0] == key(0) &&
          pixel[1] == key(1) && pixel[2] == key(2))
        pixel[3] = 0;
      if (picture.bits() <= 8) {
        for (unsigned c = 0; c < 3; ++c) pixel[c] = palette[3 * value + c];
        if (header.colorType == 3 && value < raw.size()) pixel[3] = raw[value];
        if (header.colorType == 0 && static_cast<int>(value) == key(0)) pixel[3] = 0;
      }
      rgba.insert(rgba.end(), pixel, pixel + 4);
    }
  return rgba;
}

Picture first_image(const DocumentWindow& window) {
  if (const Picture image(window.document.defaultImage); image) return image;
  const auto images = images_of(window);
  return images.empty() ? Picture() : images.front();
}

std::vector<Picture> images_of(const DocumentWindow& window) {
  std::vector<Picture> pictures;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      pictures.push_back(picture_of(window.list.record(i)));
  return pictures;
}

Picture small_picture(std::uint32_t width, std::uint32_t height, std::uint32_t bits, unsigned seed) {
  Palette palette;
  for (std::size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<std::uint8_t>(i * 37 + seed * 11);
  Picture picture = PictureCreate(width, height, &palette, bits);
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x)
      PicturePutPixel(picture, x, y, (x * 7919 + y * 104729 + seed * 1299709) * 2654435761u);
  return picture;
}

DocumentWindow small_document(DocumentKind kind, std::size_t images, std::uint8_t color_type) {
  const int instructions = std::exchange(settings::AddInstructionsToNew, 0);
  DocumentWindow window;
  NewDocument parameters;
  parameters.kind = kind;
  parameters.width = 6;
  parameters.height = 4;
  parameters.colorType = color_type;
  new_document(window, parameters);
  settings::AddInstructionsToNew = instructions;
  Host host;
  const std::uint32_t bits = color_type == 3 ? 8 : color_type > 3 ? 32 : 24;
  // The header takes the form of the first image that is inserted: one of greys has to be there before.
  if (color_type == 0 && images > 0) add_blank_image(window);
  for (std::size_t i = chunk_count_images(window.list, kind); i < images; ++i) {
    const Picture picture = small_picture(6, 4, bits, static_cast<unsigned>(i));
    insert_pictures(window, {&picture, 1}, host);
  }
  window.undoLevels.clear();
  window.document.undoAvailable = window.document.dirty = false;
  return window;
}

std::string objections(const std::filesystem::path& file) {
  std::vector<std::string> command = {"pngcheck", "-q", file};
  if (equal_ignoring_case(file.extension().native(), ".webp")) command = {"webpinfo", "-quiet", file};
  const ToolResult judged = run_tool(command);
  // Chunks of the third edition of the PNG standard, which the judge doesn't know.
  static const std::regex later("unknown, public chunk (cICP|mDCV|cLLI|eXIf)");
  const bool younger = std::regex_search(judged.output, later);
  return !judged.there || judged.status == 0 || younger ? "" : judged.output + " ";
}

}  // namespace vellum::testing
