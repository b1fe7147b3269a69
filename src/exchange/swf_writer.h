// The tags of an SWF file as bytes (SWF 6): bitmaps, where they stand, sounds.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "image/picture.h"

namespace vellum {

using SwfBytes = std::vector<std::uint8_t>;

/// Pixels that a side may have: 163,835 twips of a twentieth each.
inline constexpr std::uint32_t kMostSwfSide = 8191;
/// Frames that the header can count.
inline constexpr std::uint64_t kMostSwfFrames = 65535;

/// What stands behind the signature and the length: size, frames a second (in 256ths), their number.
void put_swf_head(SwfBytes& out, std::uint32_t width, std::uint32_t height, std::uint32_t rate256,
                  std::uint32_t frames);
/// Signature, version and length of a file whose bytes behind them are packed.
SwfBytes swf_signature(std::uint32_t length);

void put_swf_background(SwfBytes& out, Colour color);
/// The picture (32 bits, straight alpha) as the bitmap of a number, and a rectangle of the next number that
/// shows it. `crushed`: at most 256 colors with their alphas. False without memory.
bool put_swf_picture(SwfBytes& out, std::uint16_t number, const Picture& picture, bool crushed);
void put_swf_place(SwfBytes& out, std::uint16_t depth, std::uint16_t number, std::uint32_t x,
                   std::uint32_t y);
void put_swf_remove(SwfBytes& out, std::uint16_t depth);
void put_swf_show(SwfBytes& out);
/// It stays at this frame.
void put_swf_stop(SwfBytes& out);
void put_swf_end(SwfBytes& out);

/// A sound as the tags that define and start it, made of a WAV file of PCM samples or an MP3 file; empty
/// where it is neither.
SwfBytes swf_sound(std::span<const std::uint8_t> file, std::uint16_t number);

}  // namespace vellum
