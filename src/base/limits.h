// Every bound that protects memory and time, in one place. Passing one fails with the message of the reader
// or the operation that met it, never by exhaustion. docs/guide/limits.md tells people.
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
/// Most bytes of pictures that can be let go and made again: they take time and hardly memory.
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
/// Most bytes of canvases that the frames of one file are composed to without asking how long the file is:
/// that takes time and no memory, since each can be composed again.
inline constexpr std::uint64_t kUnquestionedCanvasBytes = std::uint64_t{4} << 30;
/// Steps of an animation that the command line shows where nobody asks for a number: a LOOP counts to 2^31.
inline constexpr std::uint64_t kMaximumSteps = 1'000'000;
/// Most images that are told apart when the loops of an animation are written out.
inline constexpr std::size_t kMaximumUnrolled = 10'000;
/// Most scans of a progressive JPEG, and most pixels that all of them together may pass over without its
/// bytes being asked; beyond that so many a byte.
inline constexpr int kMaximumScans = 500;
inline constexpr std::uint64_t kUnquestionedScanPixels = std::uint64_t{1} << 30;
inline constexpr std::uint64_t kScanPixelsOfAByte = 20'000;

// --- what a file may be decoded to ---

/// Pictures up to this many bytes are made without asking how long their file is.
inline constexpr std::uint64_t kUnquestionedBytes = std::uint64_t{256} << 20;
/// Beyond that a file may ask for so many times its size.
inline constexpr std::uint64_t kMaximumExpansion = 1000;

/// What a pixel of an animation's canvas takes when it plays: 16 bits a channel.
inline constexpr std::uint64_t kPlayedPixelBytes = 8;

/// Most bytes of memory that the pictures of one document may take: half of what is free on the machine (and
/// in the group of processes that it runs in), or `MaximumDecodedMegabytes` where that is set.
std::uint64_t maximum_decoded_bytes();
/// Why pictures of so many bytes are refused; null where there is memory for them.
const char* memory_fault(std::uint64_t bytes);
/// Why a file of `file_bytes` that asks for pictures of `bytes` is refused; null where it may: the sizes are
/// plausible (never asked where `MaximumDecodedMegabytes` is set), and there is memory.
const char* decoding_fault(std::uint64_t bytes, std::uint64_t file_bytes);

}  // namespace vellum
