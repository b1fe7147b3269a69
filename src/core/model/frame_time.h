// Times of frames as fractions of a second, each kind with the numbers that its file has for them.
#pragma once

#include "core/model/document.h"

namespace vellum {

/// Products of three numbers of 32 bits.
__extension__ using Wide = unsigned __int128;

/// A time as one frame tells it: seconds as a fraction.
struct FrameTime {
  std::uint64_t num = 0, den = 1;
};
FrameTime frame_time(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks);

/// Units to a second in which a kind counts: ticks of an MNG, else milliseconds.
std::uint64_t time_unit(DocumentKind kind, std::uint32_t ticks);

/// Gives the frame a time, rounded where its file can't tell it exactly. A fraction of an animated PNG keeps
/// its denominator where that does. True when the time was held to the longest, or lost more than half a
/// unit.
bool set_frame_time(ChunkRecord& record, DocumentKind kind, std::uint32_t ticks, FrameTime time);

/// Gives times to frames in their order. What a file can't tell of one is added to the next, so that no frame
/// comes late because of it.
struct FrameClock {
  DocumentKind kind = DocumentKind::None;
  std::uint32_t ticks = 1000;  ///< of an MNG
  double carried = 0;          ///< seconds
  std::size_t rounded = 0;     ///< frames whose times can't be told exactly, but to a unit
  std::size_t cut = 0;         ///< frames whose times are longer than the longest

  void put_time(ChunkRecord& record, FrameTime time);
};

/// Gives `to` the time of both. False where its file can't tell that, which leaves it as near as it can be.
bool add_frame_time(ChunkRecord& to, const ChunkRecord& from, DocumentKind kind, std::uint32_t ticks);

}  // namespace vellum
