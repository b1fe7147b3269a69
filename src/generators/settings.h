// Settings of the generators. Delays and pauses are ms from 1 (pauses 0) to 32767 where nothing else is said.
#pragma once

#include <string>

namespace vellum::settings {

// Banner, common to its types
inline int BannerType = 3;  ///< 0 embossed, glow, scanners, simple, soft, teletype, texture, 7 wave
inline std::string BannerTheText = "Your text here";
inline std::string BannerFont = "Arial";
inline int BannerPointsize = 36;  ///< 6 to 400
inline int BannerBold = 1;        ///< flag
inline int BannerItalic = 0;      ///< flag
inline int BannerCharspace = 0;   ///< pixels, -10 to 50

// Banner: frames of a movement are 2 to 200 cells, offsets 0 to 32 pixels
inline int BannerEmbossedAntialias = 1;            ///< flag
inline int BannerEmbossedBackcolour24 = 0xC0C0C0;  ///< color
inline int BannerEmbossedCells = 20;
inline int BannerEmbossedDelay = 100;
inline int BannerEmbossedOffset = 2;
inline int BannerEmbossedPause = 2000;
inline int BannerEmbossedRolling = 0;                   ///< flag
inline int BannerEmbossedShadowcolour24 = 0x808080;     ///< color
inline int BannerEmbossedHighlightcolour24 = 0xFFFFFF;  ///< color
inline int BannerEmbossedTransparent = 0;               ///< flag
inline int BannerEmbossedUseHighlight = 1;              ///< flag
inline int BannerEmbossedUseShadow = 1;                 ///< flag

inline int BannerGlowAntialias = 1;  ///< flag
inline int BannerGlowCells = 20;
inline int BannerGlowDelay = 100;
inline int BannerGlowOffset = 6;  ///< pixels of blur
inline int BannerGlowPause = 2000;
inline int BannerGlowRolling = 0;              ///< flag
inline int BannerGlowSteps = 8;                ///< levels of brightness, 1 to 64
inline int BannerGlowTextcolour24 = 0xFFFFFF;  ///< color
inline int BannerGlowTubecolour24 = 0xFF00FF;  ///< color
inline int BannerGlowType = 1;                 ///< 0 steady, 1 pulse, 2 flicker, 3 letter by letter

inline int BannerScannersAntialias = 1;            ///< flag
inline int BannerScannersBackcolour24 = 0x000000;  ///< color
inline int BannerScannersCells = 20;
inline int BannerScannersDelay = 100;
inline int BannerScannersDropshadow = 1;   ///< flag
inline int BannerScannersLeadingedge = 0;  ///< flag
inline int BannerScannersOffset = 3;
inline int BannerScannersPause = 2000;
inline int BannerScannersShadowcolour24 = 0x808080;   ///< color
inline int BannerScannersScancolour24 = 0x00FFFF;     ///< color
inline int BannerScannersScattercolour24 = 0x0080FF;  ///< color
inline int BannerScannersTextcolour24 = 0x0000FF;     ///< color
inline int BannerScannersTransparent = 0;             ///< flag
inline int BannerScannersWide = 24;                   ///< pixels of the beam, 1 to 500

inline int BannerSimpleAntialias = 1;            ///< flag
inline int BannerSimpleBackcolour24 = 0xFFFFFF;  ///< color
inline int BannerSimpleCells = 20;
inline int BannerSimpleDelay = 100;
inline int BannerSimpleDropshadow = 1;  ///< flag
inline int BannerSimpleOffset = 3;
inline int BannerSimplePause = 2000;
inline int BannerSimpleRolling = 0;                ///< flag
inline int BannerSimpleShadowcolour24 = 0x808080;  ///< color
inline int BannerSimpleTextcolour24 = 0x0000FF;    ///< color
inline int BannerSimpleTransparent = 0;            ///< flag

inline int BannerSoftAntialias = 1;            ///< flag
inline int BannerSoftBackcolour24 = 0xFFFFFF;  ///< color
inline int BannerSoftCells = 20;
inline int BannerSoftDelay = 100;
inline int BannerSoftExtra = 2;  ///< pixels of blur beyond the offset, 0 to 20
inline int BannerSoftOffset = 3;
inline int BannerSoftPause = 2000;
inline int BannerSoftRolling = 0;                ///< flag
inline int BannerSoftShadowcolour24 = 0x808080;  ///< color
inline int BannerSoftTextcolour24 = 0x0000FF;    ///< color

inline int BannerTeletypeAntialias = 1;            ///< flag
inline int BannerTeletypeBackcolour24 = 0xFFFFFF;  ///< color
inline int BannerTeletypeDelay = 100;
inline int BannerTeletypeDropshadow = 1;  ///< flag
inline int BannerTeletypeOffset = 3;
inline int BannerTeletypePause = 2000;
inline int BannerTeletypeShadowcolour24 = 0x808080;  ///< color
inline int BannerTeletypeTextcolour24 = 0x0000FF;    ///< color
inline int BannerTeletypeTransparent = 0;            ///< flag

inline int BannerTextureNumber = 0;                     ///< 0 to 15
inline int BannerTextureTheOutlinecolour24 = 0x000000;  ///< color
inline int BannerTextureAntialias = 1;                  ///< flag
inline int BannerTextureBackcolour24 = 0xFFFFFF;        ///< color
inline int BannerTextureCells = 20;
inline int BannerTextureDelay = 100;
inline int BannerTextureDropshadow = 1;  ///< flag
inline int BannerTextureOffset = 3;
inline int BannerTextureOutline = 1;  ///< flag
inline int BannerTexturePause = 2000;
inline int BannerTextureRolling = 0;                ///< flag
inline int BannerTextureShadowcolour24 = 0x808080;  ///< color
inline int BannerTextureTransparent = 0;            ///< flag

inline int BannerWaveAntialias = 1;            ///< flag
inline int BannerWaveBackcolour24 = 0xFFFFFF;  ///< color
inline int BannerWaveCells = 20;
inline int BannerWaveCrestcolour24 = 0xFFFF00;  ///< color
inline int BannerWaveDelay = 100;
inline int BannerWaveDropshadow = 1;  ///< flag
inline int BannerWaveFrequency = 2;   ///< waves over the text, 1 to 20
inline int BannerWaveOffset = 3;
inline int BannerWaveShadowcolour24 = 0x808080;  ///< color
inline int BannerWaveTransparent = 0;            ///< flag
inline int BannerWaveTroughcolour24 = 0xFF0000;  ///< color

// Button
inline std::string ButtonTheText = "Button";
inline std::string ButtonFont = "Arial";
inline int ButtonPointsize = 16;             ///< 6 to 200
inline int ButtonBold = 1;                   ///< flag
inline int ButtonItalic = 0;                 ///< flag
inline int ButtonAntialias = 1;              ///< flag
inline int ButtonTextcolour = 0x000000;      ///< color
inline int ButtonMaterialcolour = 0xC0C0C0;  ///< color
inline int ButtonBackcolour = 0xFFFFFF;      ///< color
inline int ButtonTransparent = 1;            ///< flag
inline int ButtonPadding = 12;               ///< pixels, 0 to 200
inline int ButtonDepth = 4;                  ///< pixels of the bevel, 0 to 50
inline int ButtonRoundness = 30;             ///< percent
inline int ButtonBrightFactor = 40;          ///< percent
inline int ButtonDarkFactor = 40;            ///< percent
inline int ButtonDropshadow = 0;             ///< flag
inline int ButtonOffset = 3;                 ///< pixels of the shadow, 0 to 32
inline int ButtonHighlight = 1;              ///< flag: the text has edges
inline int ButtonTextHighFactor = 50;        ///< percent
inline int ButtonTextShadowFactor = 50;      ///< percent

// LED sign
inline std::string LEDText = "Your text here";
inline int LEDEffect = 0;           ///< 0 to 6
inline int LEDLoop = 1;             ///< flag
inline int LEDSmoothScroll = 0;     ///< flag
inline int LEDFitFrame = 0;         ///< flag: as wide as the text
inline int LEDCompact = 0;          ///< flag: narrow glyphs
inline int LEDSignCharacters = 16;  ///< visible, 4 to 64
inline int LEDSignCompact = 0;      ///< flag: small dots
inline int LEDSignDelay = 60;
inline int LEDSignPause = 1000;
inline int LEDSignJumpby = 1;             ///< dots a frame, 1 to 16
inline int LEDSignDarkPixels = 1;         ///< flag: dots that are off are drawn
inline int LEDDarkPixelColor = 0x404040;  ///< color
inline int LEDColorBlack = 0x000000;      ///< color
inline int LEDColorBlue = 0xFF0000;       ///< color
inline int LEDColorCyan = 0xFFFF00;       ///< color
inline int LEDColorGreen = 0x00FF00;      ///< color
inline int LEDColorMagenta = 0xFF00FF;    ///< color
inline int LEDColorRed = 0x0000FF;        ///< color
inline int LEDColorWhite = 0xFFFFFF;      ///< color
inline int LEDColorYellow = 0x00FFFF;     ///< color

// Status panel
inline std::string DisplaySignText = "Status: ready";
inline int DisplaySignColumns = 20;   ///< 4 to 80
inline int DisplaySignFitToText = 0;  ///< flag
inline int DisplaySignEffect = 0;     ///< 0 to 5
inline int DisplaySignDelay = 100;
inline int DisplaySignPause = 1500;
inline int DisplaySignLoop = 1;                 ///< flag
inline int DisplaySignShowCursor = 1;           ///< flag
inline int DisplaySignColorBack = 0x86AD9E;     ///< color
inline int DisplaySignColorDefault = 0x000000;  ///< color
inline int DisplaySignColorBlue = 0xFF0000;     ///< color
inline int DisplaySignColorCyan = 0xFFFF00;     ///< color
inline int DisplaySignColorGreen = 0x00FF00;    ///< color
inline int DisplaySignColorMagenta = 0xFF00FF;  ///< color
inline int DisplaySignColorRed = 0x0000FF;      ///< color
inline int DisplaySignColorWhite = 0xFFFFFF;    ///< color
inline int DisplaySignColorYellow = 0x00FFFF;   ///< color
inline int DisplaySignSoftShadow = 1;           ///< flag
inline int DisplaySignShadowSoft = 1;           ///< pixels of blur, 0 to 8
inline int DisplaySignShadowOffset = 2;         ///< pixels, 0 to 8
inline int DisplaySignShadowDensity = 40;       ///< percent

// Throbbers: angles in degrees
inline int SpinnerType = 0;    ///< 0 spokes, 1 arc, 2 dots, 3 pulsar, 4 strings
inline int SpinnerSize = 64;   ///< pixels, 8 to 512
inline int SpinnerMargin = 4;  ///< pixels, 0 to 100
inline int SpinnerDelay = 80;
inline int SpinnerStartAngle = 0;         ///< 0 to 359
inline int SpinnerIncAngle = 30;          ///< a frame, 1 to 180
inline int SpinnerSpokes = 12;            ///< 3 to 60
inline int SpinnerLineThick = 5;          ///< pixels, 1 to 64
inline int SpinnerArcSize = 270;          ///< 10 to 350
inline int SpinnerStartColor = 0x000000;  ///< color
inline int SpinnerEndColor = 0xC0C0C0;    ///< color
inline int SpinnerBackColorEnd = 1;       ///< flag: the background is the end color
inline int SpinnerBackground = 0xFFFFFF;  ///< color
inline int SpinnerTransparent = 1;        ///< flag
inline int SpinnerPulsarArcsize = 60;     ///< 5 to 180
inline int SpinnerPulsarArcrange = 40;    ///< percent
inline int SpinnerStringsEnableSec = 1;   ///< flag
inline int SpinnerStringsIncPri = 15;     ///< 1 to 180
inline int SpinnerStringsIncSec = 30;     ///< 1 to 180
inline int SpinnerStringsSizePri = 100;   ///< percent, 5 to 100
inline int SpinnerStringsSizeSec = 50;    ///< percent, 5 to 100

// Photo stack
inline int PhotostackMattFrameColor = 0xFFFFFF;  ///< color of the photos' edges

// Spin
inline std::string SpinFile;  ///< picture to turn
inline int SpinCount = 24;    ///< steps, 3 to 180
inline int SpinDelay = 10;
inline int SpinDirection = 1;          ///< flag: clockwise
inline int SpinBackcolour = 0x000000;  ///< color
inline int SpinLoop = 1;               ///< flag
inline int SpinFrame = 110;            ///< 110 largest frame, 111 smallest, 112 as the source
inline int SpinTransparent = 0;        ///< flag

// Transition: steps and sizes in pixels
inline int TransitionType = 0;                  ///< row of the table of effects
inline int TransitionDelay = 10;                ///< 1 to 1000
inline int TransitionPause = 10;                ///< 0 to 1000
inline int TransitionMattcolour = 0x808080;     ///< color
inline int TransitionPalette = 5;               ///< id of a built-in palette, 0 to 8
inline int TransitionDither = 1;                ///< flag
inline int TransitionCustompalette = 1;         ///< flag: a palette made for the frames
inline int TransitionTruecolour = 1;            ///< flag
inline int TransitionHorizontalStep = 8;        ///< 1 to 100
inline int TransitionVerticalStep = 8;          ///< 1 to 100
inline int TransitionBlockSpacing = 16;         ///< 4 to 200
inline int TransitionRasterSize = 4;            ///< 1 to 100
inline int TransitionTileSize = 6;              ///< 4 to 100
inline int TransitionTileBlockSize = 45;        ///< tiles a frame, 10 to 5000
inline int TransitionSandstormBlockSize = 500;  ///< pixels a frame, 100 to 10000
inline int TransitionDissolveStep = 24;         ///< 4 to 128
inline int TransitionRadarStartAngle = 0;       ///< degrees, 0 to 359
inline int TransitionRadarStepAngle = 10;       ///< degrees, 0 to 359

// Animation wizard
inline int NewAnimationWizardDelay = 100;          ///< ticks of the document, 1 to 32760
inline int NewAnimationWizardLoop = 1;             ///< flag: for ever
inline int NewAnimationWizardPaletteOption = 0;    ///< index into the palette choices
inline int ImproveAnimationWizardPalette = 1;      ///< flag: the palette gets pure black and white
inline int WizardPreserveTransparency = 1;         ///< flag
inline int WizardTransparentMaskColor = 0x808080;  ///< color of transparent pixels in paletted frames

// Graphic matrix: sizes in pixels
inline int GRMatrixMatrix = 3;            ///< row of the table of grids
inline int GRMatrixMode = 0;              ///< 0 in order, 1 random, 2 one picture over all cells
inline int GRMatrixTransform = 0;         ///< 0 fit, 1 fill, 2 stretch
inline int GRMatrixThumbnailFactor = 25;  ///< percent, 1 to 100
inline int GRMatrixGuttersize = 4;        ///< 0 to 100
inline int GRMatrixEdgemode = 0;          ///< 0 none, 1 line, 2 rounded, 3 bevel
inline int GRMatrixEdgesize = 4;          ///< 0 to 50
inline int GRMatrixBackcolor = 0xFFFFFF;  ///< color
inline int GRMatrixAnimation = 1;         ///< 0 all cells at once, 1 one by one, 2 random, 3 still
inline int GRMatrixDelay = 60;
inline int GRMatrixPause = 1500;
inline int GRMatrixRandomSeed = 0;       ///< 0: from the time
inline int GRMatrixTransition = 5;       ///< row of the table of its transitions
inline int GRMatrixBlindsSize = 12;      ///< 2 to 200
inline int GRMatrixBlockSize = 12;       ///< 2 to 200
inline int GRMatrixBlockStep = 8;        ///< blocks a frame, 1 to 1000
inline int GRMatrixDiamondSize = 24;     ///< 4 to 200
inline int GRMatrixDiamondStep = 3;      ///< 1 to 100
inline int GRMatrixDisappearFac = 80;    ///< percent a frame, 10 to 95
inline int GRMatrixDissolveSteps = 10;   ///< frames, 2 to 128
inline int GRMatrixDotSize = 16;         ///< 4 to 200
inline int GRMatrixDotStep = 2;          ///< 1 to 100
inline int GRMatrixDuststormSteps = 16;  ///< frames, 2 to 128
inline int GRMatrixExpandStep = 10;      ///< percent a frame, 1 to 50
inline int GRMatrixPanesSize = 32;       ///< 4 to 400
inline int GRMatrixPanesSteps = 8;       ///< frames, 2 to 64

}  // namespace vellum::settings
