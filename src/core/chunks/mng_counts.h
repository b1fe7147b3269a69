// The counts that an MNG's header tells of its content (MNG 1.0, "MHDR").
#pragma once

#include "core/model/document.h"

namespace vellum {

inline constexpr std::uint32_t kMngForEver = 0x7FFFFFFF;  ///< a count or time without end

struct MngCounts {
  std::uint32_t frames = 0;    ///< image entries
  std::uint32_t layers = 0;    ///< these and the background
  std::uint32_t playTime = 0;  ///< ticks, finite loops multiplied out; kMngForEver for endless ones
  std::uint32_t profile = 0;   ///< what a decoder must understand
};
MngCounts count_mng(const DocumentWindow& window);

/// A header's profile that says of the images at least what they are; 0, which says nothing, stays.
std::uint32_t profile_with_images(std::uint32_t profile, const ChunkList& list);

/// Whether images are moved, shown, copied or made by chunks that playing here passes over.
bool has_unplayed_chunks(const ChunkList& list);

/// The bits of a simplicity profile: set means that the thing may be there.
enum MngProfile : std::uint32_t {
  kProfileValid = 1,
  kSimpleFeatures = 2,
  kComplexFeatures = 4,
  kInternalTransparency = 8,
  kJng = 16,
  kDeltaPng = 32,
  kTransparencyValid = 64,  ///< the next three bits are told
  kBackgroundTransparency = 128,
  kSemiTransparency = 256,
  kStoredObjects = 512,
};

/// Index of the ENDL that closes the LOOP at `index`, or of the LOOP that the ENDL there closes: of the same
/// level, loops between them passed over. kNoEntry where there is none.
std::size_t loop_partner(const ChunkList& list, std::size_t index);

}  // namespace vellum
