// Changing many frames at a time: times, places, disposal, order and number.
#pragma once

#include "base/host.h"
#include "core/chunks/chunk_fields.h"
#include "core/model/frame_time.h"
#include "core/model/frame_values.h"
#include "operations/frames.h"

namespace vellum {

/// What an action did. It has made the closing calls where it changed anything, and takes no undo level.
struct Managed {
  std::size_t changed = 0;  ///< frames that are no longer what they were
  std::size_t held = 0;     ///< frames whose value was held to what their file can tell
};

/// The times of these frames together in milliseconds, rounded to the nearest.
std::uint64_t total_time_ms(const DocumentWindow& window, const FrameList& frames);

inline constexpr std::int64_t kMostDelayMs = 60'000'000;  ///< longest delay that forms and options take
inline constexpr std::int64_t kMostTotalMs = 1'000'000'000'000;  ///< longest time of all frames
inline constexpr std::int64_t kMostScale = 10'000, kMostAdded = 60'000;

Managed set_delays(DocumentWindow& window, const FrameList& frames, std::uint32_t milliseconds);
/// Per cent, 1 to `kMostScale`. Fractions stay exact where two numbers of 16 bits can tell them.
Managed scale_delays(DocumentWindow& window, const FrameList& frames, std::uint32_t percent);
/// The result is never below 0.
Managed add_to_delays(DocumentWindow& window, const FrameList& frames, std::int32_t milliseconds);
/// Scales the delays so that their sum is the total, to the last unit: the error of one frame is carried to
/// the next. Frames without any time share it evenly.
Managed set_total_time(DocumentWindow& window, const FrameList& frames, std::uint64_t milliseconds);
/// Each frame takes this time (25 frames a second: 1/25). Where a file tells whole units alone, the error is
/// carried along, so that the animation keeps the pace.
Managed set_frame_rate(DocumentWindow& window, const FrameList& frames, FrameDelay delay);

/// The closing calls of a change of frames, for who changes one by its fields. Afterwards the first frame of
/// an animated PNG fills the canvas. `counted`: a time, the order or the number changed.
void finish_frames(DocumentWindow& window, bool counted);

/// The first frame of an animated PNG fills the canvas and stays where it is; it grows when another frame
/// comes to lie beyond it.
Managed set_positions(DocumentWindow& window, const FrameList& frames, FrameOffset place);
Managed move_frames_by(DocumentWindow& window, const FrameList& frames, FrameOffset distance);
/// One of the nine places of a canvas, row by row.
Managed align_frames(DocumentWindow& window, const FrameList& frames, std::size_t place);

/// 0 None, 1 Background, 2 Previous (animated PNG only).
bool has_disposal(DocumentKind kind, std::uint32_t dispose);
Managed set_disposal(DocumentWindow& window, const FrameList& frames, std::uint32_t dispose);
/// 0 Source, 1 Over; of animated PNG files.
Managed set_blending(DocumentWindow& window, const FrameList& frames, std::uint32_t blend);

/// Each copy stands directly behind its frame.
Managed duplicate_frames(DocumentWindow& window, const FrameList& frames);
/// Moves the frames up or down by one among the frames; entries between them stay where they are, and a run
/// that has come to the end stays too. `frames` are then the new numbers.
Managed shift_frames(DocumentWindow& window, FrameList& frames, bool down);
/// Nothing is deleted, and the user told why, when no frame would be left.
Managed delete_frames(DocumentWindow& window, const FrameList& frames, Host& host);

/// tEXt, zTXt and iTXt. The number of chunks that went.
std::size_t delete_texts(DocumentWindow& window);
/// All chunks that neither the images nor the order in which they play need.
std::size_t delete_all_but_images(DocumentWindow& window);

/// Makes a changed copy of a document's list its list, in one step; nothing happens, and `dirty` stays, where
/// no entry differs. True when something did.
bool take_draft(DocumentWindow& window, const DocumentWindow& draft);

/// How often the animation is played, 0 for ever. An MNG: its LOOP in front of the first image, else its
/// TERM, which is made where there is none. False when the number is too large for the kind.
bool set_document_plays(DocumentWindow& window, std::uint32_t plays);
std::uint32_t most_plays(DocumentKind kind);
/// Ticks to a second of an MNG; all delays keep their time.
bool set_ticks(DocumentWindow& window, std::uint32_t ticks, Host& host, std::string& reason);

}  // namespace vellum
