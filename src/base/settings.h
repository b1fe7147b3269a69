// Settings that the base reads. Who uses one clamps it to its range.
#pragma once

namespace vellum::settings {

inline int PictureMemoryMegabytes =
    0;  ///< for the rows of pictures, to 1,048,576; 0: a quarter of the machine's

inline int MaximumDecodedMegabytes =
    0;  ///< that one document may be decoded to, to 1,048,576; 0: by the machine (base/limits.h)

}  // namespace vellum::settings
