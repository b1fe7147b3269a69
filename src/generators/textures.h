// The textures that letters of banners are filled with.
#pragma once

#include "base/fields.h"
#include "image/picture.h"

namespace vellum {

/// Their names, in the order of their numbers.
inline constexpr FieldChoice kTextures[] = {{0, "Brick"},  {1, "Canvas"}, {2, "Checker"}, {3, "Clouds"},
                                            {4, "Fire"},   {5, "Gold"},   {6, "Granite"}, {7, "Grass"},
                                            {8, "Marble"}, {9, "Metal"},  {10, "Paper"},  {11, "Rainbow"},
                                            {12, "Sand"},  {13, "Steel"}, {14, "Water"},  {15, "Wood"}};

/// A tile of 24 bits, which goes on without a seam on all sides.
Picture texture_picture(std::size_t number);

}  // namespace vellum
