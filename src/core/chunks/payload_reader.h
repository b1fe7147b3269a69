// A payload read from front to back, and the lines that its reading gives.
#pragma once

#include <algorithm>

#include "base/byte_order.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_reading.h"

namespace vellum {

/// Reading behind the end gives zeros and marks the payload as damaged; a damaged one takes no more lines.
class PayloadReader {
 public:
  explicit PayloadReader(std::span<const std::uint8_t> payload) : left_(payload) {}

  bool damaged() const { return damaged_; }
  void set_damaged() { damaged_ = true; }
  std::size_t left() const { return left_.size(); }
  bool more() const { return !damaged_ && !left_.empty(); }

  std::span<const std::uint8_t> bytes(std::size_t count) {
    if (count > left_.size()) {
      damaged_ = true;
      left_ = {};
      return {};
    }
    const auto taken = left_.first(count);
    left_ = left_.subspan(count);
    return taken;
  }
  std::uint32_t u8() { return number(1); }
  std::uint32_t u16() { return number(2); }
  std::uint32_t u32() { return number(4); }
  std::int32_t i32() { return static_cast<std::int32_t>(number(4)); }

  std::string_view rest() { return as_text(bytes(left_.size())); }
  /// Up to a NUL, which is passed over; damaged without one.
  std::string_view until_nul() {
    const auto nul = std::ranges::find(left_, std::uint8_t{0});
    if (nul == left_.end()) damaged_ = true;
    return nul == left_.end() ? std::string_view() : ended_text(nul);
  }
  /// Up to a NUL or the end.
  std::string_view until_nul_or_end() {
    const auto nul = std::ranges::find(left_, std::uint8_t{0});
    return nul == left_.end() ? rest() : ended_text(nul);
  }

  void line(std::string_view name, std::string value) {
    if (!damaged_) lines_.push_back({std::string(name), std::move(value)});
  }
  void line(std::string_view name, std::int64_t value) { line(name, std::to_string(value)); }
  /// A number with its meaning from a table that is indexed by it.
  void named(std::string_view name, std::uint32_t value, std::span<const char* const> names) {
    line(name, value < names.size() ? std::string(translated(names[value]))
                                    : translated("unknown (") + std::to_string(value) + ")");
  }
  /// A text in Latin-1, as keywords and names are.
  void text(std::string_view name, std::string_view latin1) { line(name, utf8_from_latin1(latin1)); }

  std::vector<ReadingLine> take_lines() { return std::move(lines_); }

 private:
  using Place = std::span<const std::uint8_t>::iterator;

  static std::string_view as_text(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
  std::string_view ended_text(Place nul) {
    const auto text = bytes(static_cast<std::size_t>(nul - left_.begin()));
    bytes(1);
    return as_text(text);
  }
  std::uint32_t number(std::size_t count) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes(count)) value = value << 8 | byte;
    return value;
  }

  std::span<const std::uint8_t> left_;
  std::vector<ReadingLine> lines_;
  bool damaged_ = false;
};

// One function a tag.
void read_international_text(PayloadReader& p);
void read_physical_size(PayloadReader& p);
void read_significant_bits(PayloadReader& p);
void read_histogram(PayloadReader& p);
void read_suggested_palette(PayloadReader& p);
void read_offset(PayloadReader& p);
void read_calibration(PayloadReader& p);
void read_scale(PayloadReader& p);
void read_profile(PayloadReader& p);
void read_bare_profile(PayloadReader& p);
void read_xmp(PayloadReader& p);
void read_rendering_intent(PayloadReader& p);
void read_chromaticities(PayloadReader& p);
void read_code_points(PayloadReader& p);
void read_mastering_display(PayloadReader& p);
void read_light_level(PayloadReader& p);
void read_exif(PayloadReader& p);

void read_clip(PayloadReader& p);
void read_clone(PayloadReader& p);
void read_discard(PayloadReader& p);
void read_save(PayloadReader& p);
void read_seek(PayloadReader& p);
void read_needed(PayloadReader& p);
void read_export(PayloadReader& p);
void read_priority(PayloadReader& p);
void read_global_physical_size(PayloadReader& p);
void read_magnify(PayloadReader& p);
void read_paste(PayloadReader& p);
void read_basis(PayloadReader& p);
void read_delta_header(PayloadReader& p);

}  // namespace vellum
