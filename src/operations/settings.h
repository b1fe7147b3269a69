// Settings of the operations on pictures and animations.
#pragma once

#include <string>

namespace vellum::settings {

// Color and balance: percent, -100 to 100
inline int ColorBalRed = 0, ColorBalGreen = 0, ColorBalBlue = 0;
inline int ColorBalBrightness = 0, ColorBalContrast = 0;

// Palettes and conversion
inline std::string ColourTableFile;       ///< palette file that was used last
inline int ConvertMonoThreshold = 128;    ///< 1 to 254: grey from here on is white
inline int ConvertPaletteDither = 1;      ///< flag
inline int WidePaletteSize = 256;         ///< colors, 2 to 256
inline int WidePaletteSorted = 1;         ///< flag: by luminance
inline int WidePaletteQ15 = 0;            ///< flag: colors are counted at 15 bits
inline int WidePaletteSketch = 0;         ///< flag: for drawings, rare colors are merged
inline int WidePaletteBest = 0;           ///< flag: colors are moved to where those of the images are
inline int SupercompressionOptions = 58;  ///< bits: see operations/supercompress.h

// Frames taken out, put together, cut apart
inline int DepopulateMode = 0;            ///< 0 keep, then skip; 1 skip, then keep
inline int DepopulateKeepValue = 1;       ///< frames, 1 to 1000
inline int DepopulateSkipValue = 1;       ///< frames, 1 to 1000
inline int DepopulatePreserve = 1;        ///< flag: the running time stays
inline int ExtractNumbered = 1;           ///< flag: names of extracted images are numbered
inline int BlockExtractSequential = 1;    ///< flag: by frame; off: by the entry's number in the list
inline int CombineBackground = 0xFFFFFF;  ///< color
inline int CombineLoop = 1;               ///< flag
inline int CombineReconstruct = 1;        ///< flag: whole canvases are joined
inline int CellWide = 0, CellDeep = 0;    ///< pixels of a strip's cell, 0 to 4096; 0: as the canvas
inline int WarnReconstruct = 1;           ///< flag
inline int WarnOverlayNoTransparent = 1;  ///< flag: an overlay that hides all is told

// Size and place
inline int FlipRotateMode = 0;        ///< 0 to 7
inline int FlipRotateAngle = 45;      ///< degrees clockwise, -359 to 359
inline int FlipRotateShear = 15;      ///< degrees, -60 to 60
inline int FlipRotateDither = 0;      ///< flag
inline int ScaleByFactor = 1;         ///< flag: by factor; off: by size
inline int ScaleFactorX = 100;        ///< percent, 1 to 1000
inline int ScaleFactorY = 100;        ///< percent, 1 to 1000
inline int ScaleWidth = 160;          ///< pixels, 1 to 1,000,000, of a WebP to 16383
inline int ScaleDepth = 100;          ///< height in pixels, as the width
inline int ScaleConstant = 1;         ///< flag: the proportions stay
inline int ScaleModeAntialias = 1;    ///< flag
inline int ScaleFilterType = 0;       ///< index into the filters
inline int TileAnimationWidth = 320;  ///< pixels, 1 to 16383
inline int TileAnimationDepth = 240;  ///< height in pixels, 1 to 16383
inline int TrimMode = 0;              ///< 0 color, 1 transparency, 2 size, 3 percent
inline int TrimNorth = 1, TrimEast = 1, TrimSouth = 1, TrimWest = 1;  ///< flag
inline int TrimColor = 0xFFFFFF;                                      ///< color
inline int TrimTol = 0;             ///< difference in each channel, 0 to 255
inline int TrimSize = 0;            ///< pixels, 0 to 10000
inline int TrimPercent = 0;         ///< 0 to 49
inline int TrimPreserveOffset = 0;  ///< flag: frames keep their places
inline int TrimSetBackground = 0;   ///< flag: the background becomes the trimmed color

// Frame and shadow
inline int FrameThickness = 8;           ///< pixels, 1 to 500
inline int FrameColor = 0x000000;        ///< color
inline int FrameAbsolute = 0;            ///< flag: to a given size
inline int FrameWidth = 320;             ///< pixels, 1 to 16383
inline int FrameDepth = 240;             ///< height in pixels, 1 to 16383
inline int FrameFirstOnly = 0;           ///< flag
inline int ShadowDirection = 3;          ///< 0 north, clockwise to 7 northwest
inline int ShadowOffset = 6;             ///< pixels, 0 to 100
inline int ShadowOpacity = 50;           ///< percent
inline int ShadowSoftness = 4;           ///< pixels, 0 to 50
inline int ShadowBackground = 0xFFFFFF;  ///< color
inline int ShadowRemoveAlpha = 0;        ///< flag

inline int ClassicCaptionWindow = 0;  ///< flag: the classic form of the caption dialog

// Caption, classic form: sizes in points, distances in pixels
inline std::string CaptionFontName = "Arial";
inline int CaptionSize = 14;          ///< 4 to 400
inline int CaptionBold = 0;           ///< flag
inline int CaptionItal = 0;           ///< flag
inline int CaptionAntialias = 1;      ///< flag
inline int CaptionCharspacing = 0;    ///< -10 to 50
inline int CaptionLinespacing = 0;    ///< -10 to 50
inline int CaptionJustification = 1;  ///< 0 left, 1 center, 2 right
inline int CaptionGutter = 6;         ///< 0 to 100
inline int CaptionBlack = 0x000000;   ///< color of the text
inline int CaptionWhite = 0xFFFFFF;   ///< color of the strip

// Caption, newer form
inline std::string AnnotateExFontName = "Arial";
inline int AnnotateExPointSizeFont = 14;     ///< points, 4 to 400
inline int AnnotateExForeground = 0x000000;  ///< color
inline int AnnotateExBackground = 0xFFFFFF;  ///< color
inline int AnnotateExPadding = 8;            ///< pixels, 0 to 200
inline int AnnotateExFrame = 0x808080;       ///< color
inline int AnnotateExBorderFrameSize = 0;    ///< pixels, 0 to 50
/// Bits: 1 bold, 2 italic, 4 antialias, 8 above the image, 16 inside it, 32 left, 64 right, 128 first frame
/// only, 256 no background.
inline int AnnotateExFlags = 4;

// Watermark: sizes in points, distances in pixels
inline std::string WatermarkFontName = "Arial";
inline int WatermarkFontSize = 24;            ///< 4 to 400
inline int WatermarkFontBold = 1;             ///< flag
inline int WatermarkFontItal = 0;             ///< flag
inline int WatermarkAntialias = 1;            ///< flag
inline int WatermarkCharspace = 0;            ///< -10 to 50
inline int WatermarkLinespace = 0;            ///< -10 to 50
inline int WatermarkJust = 8;                 ///< one of nine places, row by row
inline int WatermarkGutter = 8;               ///< 0 to 500
inline int WatermarkTextColor = 0xFFFFFF;     ///< color
inline int WatermarkKeylineUse = 0;           ///< flag
inline int WatermarkKeylineColor = 0x000000;  ///< color
inline int WatermarkHighlight = 0;            ///< percent: strength of a light edge
inline int WatermarkShadow = 0;               ///< percent: strength of a dark edge
inline int WatermarkAdjust01Highlight = 224;  ///< grey above which there is no light edge
inline int WatermarkAdjust01Shadow = 32;      ///< grey below which there is no dark edge
inline int WatermarkFileDateFlags = 0;        ///< bits: 1 file name, 2 file date, 4 file time, 8 today
inline int WatermarkCRC = 0;                  ///< flag: the file's CRC stands behind the text
inline int WarnWatermark = 1;                 ///< flag
inline int PosOnlyWatermark = 0;              ///< flag: position marks in place of a text
inline int PosOnlyOpacity = 50;               ///< percent, 1 to 100; of both forms
inline std::string PosOnlyText = "For position only";
inline std::string PosOnlyFontName = "Arial";
inline int PosOnlySize = 36;          ///< 4 to 400
inline int PosOnlyBold = 1;           ///< flag
inline int PosOnlyItal = 0;           ///< flag
inline int PosOnlyBlack = 0x000000;   ///< color
inline int PosOnlyWhite = 0xFFFFFF;   ///< color
inline int PosOnlyFlags = 7;          ///< bits: 1 border, 2 cross, 4 text
inline int PosOnlyRoundLineCaps = 1;  ///< flag

// Social media
inline int SocialMediaDestination = 0;          ///< row of the table of destinations
inline int SocialMediaProcess = 2;              ///< 0 color, 1 gradient, 2 blurred image, 3 image average
inline int SocialMediaColor1 = 0xFFFFFF;        ///< color
inline int SocialMediaColor2 = 0x808080;        ///< color
inline int SocialMediaGradientType = 0;         ///< 0 linear, 1 radial, 2 angle
inline int SocialMediaGradientAngle = 90;       ///< degrees, 0 to 359
inline int SocialMediaGradientX = 50;           ///< percent
inline int SocialMediaGradientY = 50;           ///< percent
inline int SocialMediaBlur = 24;                ///< pixels, 0 to 100
inline int SocialMediaHSBHue = 0;               ///< degrees, -180 to 180
inline int SocialMediaHSBSat = 0;               ///< percent, -100 to 100
inline int SocialMediaHSBBri = 0;               ///< percent, -100 to 100
inline int SocialMediaFrameSize = 90;           ///< percent of the free area, 10 to 100
inline int SocialMediaFrameMargin = 40;         ///< pixels, 0 to 500
inline int SocialMediaHorzPos = 50;             ///< percent
inline int SocialMediaVertPos = 50;             ///< percent
inline int SocialMediaKeylineEnable = 0;        ///< flag
inline int SocialMediaKeylineSize = 2;          ///< pixels, 1 to 50
inline int SocialMediaKeylineColor = 0x000000;  ///< color
inline int SocialMediaShadowEnable = 1;         ///< flag
inline int SocialMediaShadowColor = 0x000000;   ///< color
inline int SocialMediaShadowOffset = 8;         ///< pixels, 0 to 100
inline int SocialMediaShadowOpacity = 50;       ///< percent
inline int SocialMediaShadowSoftness = 12;      ///< pixels, 0 to 50

// Protection matrix
inline int MatrixTileSize = 128;       ///< pixels, 16 to 1024
inline int MatrixTileMinimum = 16;     ///< pixels, 1 to 512: a thinner last row joins its neighbor
inline int MatrixMinimumSize = 64;     ///< pixels, 16 to 4096: smaller pictures are refused
inline int MatrixCountStart = 1;       ///< number of the first tile, 0 to 99999
inline std::string MatrixImagePath;    ///< put before the names in the page
inline int MatrixWriteHeader = 1;      ///< flag: a whole page; off: the table alone
inline std::string MatrixDefaultTile;  ///< cover picture; empty: transparent
inline std::string MatrixLibrary;      ///< file of groups; empty: vlmkit.mtx beside the configuration
inline int MatrixTileIndex = 0;        ///< group in use

}  // namespace vellum::settings
