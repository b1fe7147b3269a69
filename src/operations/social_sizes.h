// The sizes that destinations of social media want: those that are known, and a person's own ones from a
// file.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/fields.h"

namespace vellum {

struct SocialSize {
  std::uint32_t width, height;
  std::uint64_t most = 0;  ///< bytes that the destination accepts; 0: no bound is known
};

inline constexpr std::int64_t kDocumentSize = 10, kOwnSize = 11;
inline constexpr std::uint32_t kMostSocialSide = 16383;

/// Those that are known.
inline constexpr FieldChoice kSocialDestinations[] = {{0, "Square post 1080 x 1080"},
                                                      {1, "Portrait post 1080 x 1350"},
                                                      {2, "Story or reel 1080 x 1920"},
                                                      {3, "Landscape post 1200 x 630"},
                                                      {4, "Wide post 1600 x 900"},
                                                      {5, "Pin 1000 x 1500"},
                                                      {6, "Video cover 1280 x 720"},
                                                      {7, "Profile picture 400 x 400"},
                                                      {8, "Banner 1500 x 500"},
                                                      {9, "Message sticker 512 x 512"},
                                                      {kDocumentSize, "Document size", "document"},
                                                      {kOwnSize, "Own size", "own"}};

/// Own destinations, one a line: "NAME;WIDTHxHEIGHT" or "NAME;WIDTHxHEIGHT;KILOBYTES". Empty lines and those
/// that begin with "#" are passed over. The programs set the path when they start; empty: there are none.
inline std::filesystem::path socialSizesFile;

/// Numbered from 0; the file is read again when it has changed. The choices live as long as the program. Any
/// number of threads may ask.
std::span<const FieldChoice> social_destinations();
/// Nothing for the size of the document, and one of one's own.
std::optional<SocialSize> social_size(std::int64_t destination);
/// Tells the first line of the file that can't be read ("Line 3 of ..."); empty where there is none.
std::string social_sizes_fault();

/// "NAME;1080x1080;512" as name and size; nothing where it isn't one.
std::optional<std::pair<std::string, SocialSize>> parse_social_size(std::string_view line);

}  // namespace vellum
