// Frames of an animated PNG (APNG extension).
#include <algorithm>

#include "base/byte_order.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/checking.h"

namespace vellum {
namespace {

constexpr std::size_t kControlBytes = 26;

/// A frame control with the data behind it.
struct FrameLook {
  const StreamChunk* control = nullptr;
  std::vector<std::span<const std::uint8_t>> data;
  bool ofImage = false;  ///< its pixels are those of IDAT
};

struct AnimationLook {
  Checking& checking;
  ChunkSpan chunks;
  const PngHeader& header;
  std::uint32_t palette;
  const StreamChunk* announced = nullptr;
  bool imageSeen = false;
  std::uint32_t sequence = 0;
  std::vector<FrameLook> frames{};

  void look_at_sequence(const StreamChunk& chunk) {
    const std::uint32_t found = read_be32(chunk.data.data());
    if (found != sequence)
      checking.find(RuleId::Sequence_wrong, chunk,
                    format_text(translated("%u in place of %u"), found, sequence));
    sequence = found + 1;
  }

  void look_at_announcement(const StreamChunk& chunk) {
    if (imageSeen) checking.find(RuleId::Animation_control_late, chunk);
    if (chunk.data.size() == 8 && !announced) announced = &chunk;
  }

  void look_at_control(const StreamChunk& chunk) {
    if (chunk.data.size() != kControlBytes)
      return checking.find(RuleId::Frame_control_length, chunk,
                           std::to_string(chunk.data.size()) + translated(" bytes"));
    look_at_sequence(chunk);
    frames.push_back({&chunk, {}, !imageSeen});
    look_at_fields(chunk);
  }

  void look_at_fields(const StreamChunk& chunk) {
    const auto value = [&](std::size_t at) { return read_be32(&chunk.data[at]); };
    const std::uint64_t width = value(4), height = value(8), x = value(12), y = value(16);
    const unsigned dispose = chunk.data[24], blend = chunk.data[25];
    if (width == 0 || height == 0) checking.find(RuleId::Frame_empty, chunk);
    if (x + width > header.width || y + height > header.height)
      checking.find(RuleId::Frame_outside, chunk,
                    format_text(translated("%llu x %llu at %llu, %llu on %u x %u"),
                                static_cast<unsigned long long>(width),
                                static_cast<unsigned long long>(height), static_cast<unsigned long long>(x),
                                static_cast<unsigned long long>(y), header.width, header.height));
    else if (!imageSeen && (width != header.width || height != header.height))
      checking.find(RuleId::Frame_first_partial, chunk);
    if (dispose > 2) checking.find(RuleId::Dispose_unknown, chunk, std::to_string(dispose));
    if (blend > 1) checking.find(RuleId::Blend_unknown, chunk, std::to_string(blend));
    if (dispose == 2 && frames.size() == 1) checking.find(RuleId::Dispose_first_previous, chunk);
  }

  void look_at_data(const StreamChunk& chunk) {
    if (chunk.data.size() < 4)
      return checking.find(RuleId::Payload_length, chunk,
                           std::to_string(chunk.data.size()) + translated(" bytes"));
    look_at_sequence(chunk);
    if (!imageSeen) return checking.find(RuleId::Frame_data_early, chunk);
    if (frames.empty() || frames.back().ofImage) return checking.find(RuleId::Data_without_frame, chunk);
    frames.back().data.push_back(chunk.data.subspan(4));
  }

  void walk() {
    for (const StreamChunk& chunk : chunks) {
      if (chunk.tag == tag::IDAT) imageSeen = true;
      if (chunk.tag == tag::acTL) look_at_announcement(chunk);
      if (chunk.tag == tag::fcTL) look_at_control(chunk);
      if (chunk.tag == tag::fdAT) look_at_data(chunk);
    }
  }

  void look_at_frames() {
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const FrameLook& frame = frames[i];
      // Of several controls in front of the image the last is that of its frame.
      const bool has_image = frame.ofImage && (i + 1 == frames.size() || !frames[i + 1].ofImage);
      if (frame.data.empty() && !has_image) checking.find(RuleId::Frame_without_data, *frame.control);
      if (frame.data.empty()) continue;
      PngHeader own = header;
      own.width = read_be32(&frame.control->data[4]);
      own.height = read_be32(&frame.control->data[8]);
      if (!png_header_fault(own)) check_image_data(checking, *frame.control, own, frame.data, palette);
    }
  }

  void look_at_count() {
    const std::uint32_t told = announced ? read_be32(announced->data.data()) : 0;
    if (!announced) return checking.find(RuleId::Animation_not_announced, *frames_begin());
    if (told == 0 || frames.empty())
      checking.find(RuleId::Frames_none, *announced);
    else if (told != frames.size())
      checking.find(RuleId::Frames_counted_wrong, *announced,
                    format_text(translated("%u told, %zu there"), told, frames.size()));
  }

  const StreamChunk* frames_begin() const {
    return &*std::ranges::find_if(chunks, [](const StreamChunk& c) {
      return c.tag == tag::fcTL || c.tag == tag::fdAT || c.tag == tag::acTL;
    });
  }
};

}  // namespace

void check_frames_of_apng(Checking& checking, ChunkSpan chunks, const PngHeader& header,
                          std::uint32_t palette) {
  const auto of_animation = [](const StreamChunk& chunk) {
    return chunk.tag == tag::acTL || chunk.tag == tag::fcTL || chunk.tag == tag::fdAT;
  };
  if (std::ranges::none_of(chunks, of_animation)) return;
  AnimationLook look{checking, chunks, header, palette};
  look.walk();
  if (look.announced) checking.kind = DocumentKind::APNG;
  look.look_at_count();
  look.look_at_frames();
}

}  // namespace vellum
