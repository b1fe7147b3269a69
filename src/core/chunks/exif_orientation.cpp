#include "core/chunks/exif_orientation.h"

#include "base/byte_order.h"

namespace vellum {
namespace {

constexpr std::uint16_t kOrientationTag = 274, kShort = 3;
constexpr std::size_t kEntryBytes = 12;

using Bytes = std::span<const std::uint8_t>;

/// Numbers in the byte order that the payload states.
struct Order {
  bool little;
  std::uint16_t read16(const std::uint8_t* at) const {
    return little ? static_cast<std::uint16_t>(at[0] | at[1] << 8) : read_be16(at);
  }
  std::uint32_t read32(const std::uint8_t* at) const { return little ? read_le32(at) : read_be32(at); }
  void append(std::vector<std::uint8_t>& bytes, std::uint32_t value, int count) const {
    for (int i = 0; i < count; ++i)
      bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (little ? i : count - 1 - i)));
  }
};

/// The first directory: `entries` of 12 bytes from `first` on, then four bytes of the next one's offset.
struct Directory {
  Order order;
  std::size_t first = 0, entries = 0;
  std::size_t orientation = 0;  ///< offset of the value; 0: none
  std::size_t end() const { return first + kEntryBytes * entries; }
};

std::optional<Directory> directory_of(Bytes payload) {
  if (payload.size() < 8) return std::nullopt;
  const bool little = payload[0] == 'I' && payload[1] == 'I';
  if (!little && (payload[0] != 'M' || payload[1] != 'M')) return std::nullopt;
  Directory directory{{little}};
  const Order& order = directory.order;
  const std::uint64_t at = order.read32(&payload[4]);
  if (order.read16(&payload[2]) != 42 || at < 8 || at + 2 > payload.size()) return std::nullopt;
  directory.first = static_cast<std::size_t>(at) + 2;
  directory.entries = order.read16(&payload[directory.first - 2]);
  if (directory.end() > payload.size()) return std::nullopt;
  for (std::size_t i = directory.first; i < directory.end(); i += kEntryBytes)
    if (order.read16(&payload[i]) == kOrientationTag && order.read16(&payload[i + 2]) == kShort)
      directory.orientation = i + 8;
  return directory;
}

}  // namespace

std::optional<std::uint16_t> exif_orientation(Bytes payload) {
  const auto directory = directory_of(payload);
  if (!directory) return std::nullopt;
  const std::uint16_t value = directory->orientation == 0
                                  ? std::uint16_t{0}
                                  : directory->order.read16(&payload[directory->orientation]);
  return value <= 8 ? value : std::uint16_t{0};
}

std::vector<std::uint8_t> with_exif_orientation(Bytes payload, std::uint16_t value) {
  std::vector<std::uint8_t> bytes(payload.begin(), payload.end());
  const auto directory = directory_of(payload);
  if (!directory) return bytes;
  const Order& order = directory->order;
  const auto put = [&](std::size_t at, std::uint32_t number, int count) {
    std::vector<std::uint8_t> digits;
    order.append(digits, number, count);
    std::copy(digits.begin(), digits.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
  };
  if (directory->orientation != 0) {
    put(directory->orientation, value, 2);
    return bytes;
  }
  if (bytes.size() % 2 != 0) bytes.push_back(0);  // a directory begins at an even offset
  put(4, static_cast<std::uint32_t>(bytes.size()), 4);
  order.append(bytes, static_cast<std::uint32_t>(directory->entries + 1), 2);
  bool added = false;  // entries are sorted by tag
  const auto add = [&] {
    order.append(bytes, kOrientationTag, 2);
    order.append(bytes, kShort, 2);
    order.append(bytes, 1, 4);
    order.append(bytes, value, 2);
    order.append(bytes, 0, 2);
    added = true;
  };
  for (std::size_t i = directory->first; i < directory->end(); i += kEntryBytes) {
    if (!added && order.read16(&payload[i]) > kOrientationTag) add();
    bytes.insert(bytes.end(), payload.begin() + static_cast<std::ptrdiff_t>(i),
                 payload.begin() + static_cast<std::ptrdiff_t>(i + kEntryBytes));
  }
  if (!added) add();
  const bool next = directory->end() + 4 <= payload.size();
  order.append(bytes, next ? order.read32(&payload[directory->end()]) : 0, 4);
  return bytes;
}

}  // namespace vellum
