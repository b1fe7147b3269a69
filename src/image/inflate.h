// zlib streams (RFC 1950) into memory of a known size, and text of an unknown one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace vellum {

/// Inflates the stream into `out`. Returns the bytes that it gave: all of `out`, or fewer when the stream
/// ends (with the right check value) before. Bytes of the stream beyond a full `out` are not looked at. Empty
/// when the stream is damaged or cut. `exact` tells whether all of the stream, with its check value, gave all
/// of `out`.
std::optional<std::size_t> inflate_into(std::span<const std::uint8_t> stream, std::span<std::uint8_t> out,
                                        bool* exact = nullptr);

/// The whole content of the stream. Empty when it is damaged, cut, or longer than `limit` bytes (`over_limit`
/// is then set).
std::optional<std::string> inflate_text(std::span<const std::uint8_t> stream, std::size_t limit,
                                        bool& over_limit);

/// Whether a stream of this length can hold `content` bytes at all: deflate packs at most 1032 to 1 (RFC
/// 1951: 258 bytes in two bits). Asked before memory is taken.
constexpr bool can_inflate_to(std::uint64_t stream_bytes, std::uint64_t content) {
  return content / 1032 <= stream_bytes;
}

}  // namespace vellum
