// Every bound that protects memory, in one place. Passing one fails with the message of the reader or the
// operation that met it, never by exhaustion.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vellum {

/// Largest file that is read as a whole, and largest one that is mapped, in bytes.
inline constexpr std::uint64_t kMaximumFileBytes = std::uint64_t{4} << 30;
inline constexpr std::uint64_t kMaximumMappedBytes = std::uint64_t{1} << 40;
/// Largest width and height of a picture or canvas, in pixels (libpng's own default limit).
inline constexpr std::uint32_t kMaximumDimension = 1'000'000;
/// Largest picture, in bytes with its header and color table.
inline constexpr std::uint64_t kMaximumPictureBytes = std::uint64_t{2} << 30;
/// Most bytes that the pictures of one document may take together when it is read.
inline constexpr std::uint64_t kMaximumDocumentBytes = std::uint64_t{8} << 30;
/// The same where pictures can be let go and made again.
inline constexpr std::uint64_t kMaximumKeptBytes = std::uint64_t{1} << 40;
/// Most bytes that one compressed text may inflate to.
inline constexpr std::size_t kMaximumTextBytes = std::size_t{16} << 20;
/// Most bytes that all compressed texts of one file may inflate to together.
inline constexpr std::size_t kMaximumTextBytesOfFile = std::size_t{64} << 20;
/// Most bytes of composed frames that a view keeps; beyond that frames are composed again when they are
/// shown.
inline constexpr std::uint64_t kMaximumComposedBytes = std::uint64_t{1} << 30;
/// Most bytes of pictures and payloads that undo levels alone hold.
inline constexpr std::uint64_t kMaximumUndoBytes = std::uint64_t{1} << 30;
/// Largest copy of a changed document that is kept for recovery, in bytes.
inline constexpr std::uint64_t kMaximumRecoveryBytes = std::uint64_t{4} << 30;
/// Bytes that a copy for recovery leaves free on its disk.
inline constexpr std::uint64_t kRecoveryLeavesFree = std::uint64_t{256} << 20;
/// Most entries of a chunk list.
inline constexpr std::size_t kMaximumEntries = 1'000'000;

}  // namespace vellum
