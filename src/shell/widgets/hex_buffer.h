// The bytes behind a hex view, with undo and redo of their own.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vellum {

class HexBuffer {
 public:
  static constexpr std::size_t kMostBytes = 0x7FFFFFFF;  // PNG standard: a chunk's length has 31 bits
  static constexpr std::size_t kMostUndoBytes = std::size_t{256} << 20;

  HexBuffer() = default;
  explicit HexBuffer(std::vector<std::uint8_t> bytes, std::size_t most = kMostBytes)
      : bytes_(std::move(bytes)), most_(most) {}

  std::span<const std::uint8_t> bytes() const { return bytes_; }
  std::size_t size() const { return bytes_.size(); }

  /// Puts `inserted` in the place of `removed` bytes at `at`. `joined`: undone together with the step before.
  /// False, and nothing changed, when the result would be too long.
  bool replace(std::size_t at, std::size_t removed, std::span<const std::uint8_t> inserted,
               bool joined = false);

  bool can_undo() const { return !undo_.empty(); }
  bool can_redo() const { return !redo_.empty(); }
  /// Where the bytes changed; nothing when there is no step.
  std::optional<std::size_t> undo();
  std::optional<std::size_t> redo();

  /// The first place at or behind `from` where `wanted` stands, searching on from the beginning at the end.
  std::optional<std::size_t> find(std::span<const std::uint8_t> wanted, std::size_t from) const;

 private:
  struct Step {
    std::size_t at;
    std::vector<std::uint8_t> removed, inserted;
    bool joined;
  };
  void put(std::size_t at, std::size_t removed, std::span<const std::uint8_t> inserted);
  void hold_undo();

  std::vector<std::uint8_t> bytes_;
  std::vector<Step> undo_, redo_;
  std::size_t most_ = kMostBytes;
  std::size_t undoBytes_ = 0;
};

/// "01 AB ff" or "01abff"; nothing when other characters or half a byte stand in it.
std::optional<std::vector<std::uint8_t>> parse_hex(std::string_view text);
/// "01 AB FF".
std::string hex_text(std::span<const std::uint8_t> bytes);

}  // namespace vellum
