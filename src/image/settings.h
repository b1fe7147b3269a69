// Settings that the picture code reads. Plain variables of the interface thread; who uses one clamps it to
// its range.
#pragma once

namespace vellum::settings {

inline int FastRemap = 0;                       ///< flag: colors are matched by a table of 32768 cells
inline int ImageJpegExifOrientation = 1;        ///< flag: turn JPEG files by their EXIF orientation
inline int WEBPQualityFactor = 75;              ///< 0 to 100
inline int WEBPLossless = 0;                    ///< flag
inline int WebPAllowMixed = 0;                  ///< flag: WebP frames with or without loss, the smaller
inline int PngCompression = 9;                  ///< 0 (stored) to 9 (smallest)
inline int DefaultBackgroundColour = 0xFFFFFF;  ///< color: 0xBBGGRR

}  // namespace vellum::settings
