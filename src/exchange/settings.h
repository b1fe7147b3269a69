// Settings of imports, exports and publishing.
#pragma once

#include <string>

namespace vellum::settings {

// GIF
inline int GIFDither = 0;            ///< flag
inline int GIFTransparency = 128;    ///< 0 to 255: alpha below it is transparent
inline int GIFMaskColor = 0xFFFFFF;  ///< color of transparent pixels
inline int GIFOptimize = 0;          ///< flag: frames are cut to what changes
inline int GIFBest = 0;              ///< flag: colors are moved to where those of the frames are
inline int WarnGifTransparency = 1;  ///< flag: alpha that is lost is told

// ANI cursors
inline int ANIAddDiagnostic = 1;    ///< flag: an import gets a comment with what the file says of itself
inline int ANIHotX = 16;            ///< pixels, 0 to 32
inline int ANIHotY = 16;            ///< pixels, 0 to 32
inline int ANIMaskThreshold = 127;  ///< 1 to 254: alpha below it is transparent

// Movies
inline int AVIQualityFactor = 8500;        ///< 10 to 10000
inline int AVIRoundUp = 1;                 ///< flag: width and height become multiples of 4
inline int MovieCompression = 1;           ///< flag: AVI and MOV files are compressed
inline std::string VideoCompressionCodec;  ///< name of an encoder; empty: the file type's usual one
inline int SaveMovieIncludeSound = 0;      ///< flag
inline std::string SaveMovieSoundPath;     ///< empty: default.wav in the documents folder
inline int WaveOpenIsPreview = 1;          ///< flag: the sound dialog plays what is selected
inline int MovieFrameDuration = 0;         ///< ms, 0 to 60000; 0: as in the movie
inline int MoviePreserveTime = 1;         ///< flag: a frame that is left out gives its time to the one before
inline int MovieDepopulateFlag = 0;       ///< flag: an import leaves frames out
inline int MovieDepopulateMode = 0;       ///< 0 keep, then skip; 1 skip, then keep
inline int MovieDepopulateKeepValue = 1;  ///< frames, 1 to 1000
inline int MovieDepopulateSkipValue = 1;  ///< frames, 1 to 1000
inline int MovieOptions = 1;  ///< bits: 1 merge equal frames, 2 cut frames, 4 one palette, 8 loop for ever

// SWF
inline int CrushSWFTrueColour = 1;         ///< flag: frames are reduced to 256 colors
inline int SWFBackgroundColor = 0xFFFFFF;  ///< color
inline int SWFIncludeSound = 0;            ///< flag
inline std::string SWFSoundPath;           ///< PCM or MP3
inline int SWFWriteHtml = 1;               ///< flag: a page is written beside the file

// Inline graphics
inline int ILGFilterIndex = 0;     ///< 0 page, 1 fragment, 2 style sheet
inline int InlineGraphicsPNG = 1;  ///< flag: as animated PNG; off: as GIF

// Print
inline int PrinterResolution = 150;  ///< pixels an inch, 72 to 1200
inline int PrinterGutter = 12;       ///< pixels, 0 to 100
inline int PrinterAnnotate = 1;      ///< flag: number, size and delay stand under each frame
inline int PrinterShowFooter = 1;    ///< flag
inline std::string PrinterFontName = "Arial";
inline int PrinterLargeFontSize = 14;  ///< points, 4 to 72
inline int PrinterSmallFontSize = 8;   ///< points, 4 to 72

// Web gallery: what is written
inline std::string WebGalleryPath;                 ///< folder shown; empty: the pictures folder
inline std::string WebGalleryPageDestinationPath;  ///< empty: the documents folder
inline std::string WebGalleryPageTempPath;         ///< folder of the preview; empty: the temporary folder
inline std::string WebGalleryPageBaseName = "index";
inline std::string WebGalleryPageImageDir = "images";
inline std::string WebGalleryPageDownloadDir = "downloads";
inline std::string WebGalleryPageDescriptionExt = ".txt";  ///< of texts beside the pictures
inline std::string WebGalleryUrlExtension = ".url";        ///< of addresses beside the pictures
inline std::string WebGalleryButtonExtension = ".btn";     ///< of button labels beside the pictures
inline int WebGalleryPageThumbnailFormat = 0;              ///< 0 as source, 1 PNG, 2 JPEG, 3 GIF, 4 WebP
inline int WebGalleryCloseProgress = 0;                    ///< flag
inline int WebGalleryPageIndex = 0;                        ///< tab that was open last

// Web gallery: pages
inline int WebGalleryPageBack = 0xFFFFFF;  ///< color
inline std::string WebGalleryPageFontName = "Arial, Helvetica, sans-serif";
inline int WebGalleryPageTopMargin = 16;                 ///< pixels, 0 to 500
inline int WebGalleryPageItemPer = 20;                   ///< items on a page, 1 to 500
inline int WebGalleryPageExternalCss = 0;                ///< flag: the rules stand in a file of their own
inline std::string WebGalleryPageImportCss;              ///< file of rules that come last
inline int WebGalleryPageFaviconEnable = 1;              ///< flag
inline int WebGalleryPageHeaderEnable = 0;               ///< flag
inline std::string WebGalleryPageHeaderPath;             ///< empty: MyHeader.html in the documents folder
inline int WebGalleryPageFooterEnable = 0;               ///< flag
inline std::string WebGalleryPageFooterPath;             ///< empty: MyFooter.html in the documents folder
inline int WebGalleryPagePagerRange = 10;                ///< page numbers shown, 1 to 50
inline int WebGalleryPagePagerTextSize = 14;             ///< pixels, 6 to 72
inline int WebGalleryPagePagerActiveColor = 0x0000FF;    ///< color
inline int WebGalleryPagePagerInactiveColor = 0x808080;  ///< color

// Web gallery: items
inline int WebGalleryPageThumbsize = 160;  ///< pixels, 32 to 1024
inline int WebGalleryPageThumbstyle = 0;   ///< 0 fit, 1 fill, 2 first frame only
inline int WebGalleryPageItemMargin = 8;   ///< pixels, 0 to 200
inline std::string WebGalleryPageItemFontName = "Arial, Helvetica, sans-serif";
inline int WebGalleryPageItemTextColor = 0x000000;      ///< color
inline int WebGalleryPageItemNameSize = 14;             ///< pixels, 6 to 72
inline int WebGalleryPageItemNameStrong = 1;            ///< flag
inline int WebGalleryPageItemNameEm = 0;                ///< flag
inline int WebGalleryPageItemDescriptionSize = 12;      ///< pixels, 6 to 72
inline int WebGalleryPageItemDescriptionStrong = 0;     ///< flag
inline int WebGalleryPageItemDescriptionEm = 0;         ///< flag
inline int WebGalleryPageItemIndexEnable = 0;           ///< flag: a number stands before the name
inline int WebGalleryPageItemInlineGraphics = 0;        ///< flag: thumbnails stand in the page itself
inline int WebGalleryPageItemAlphaBack = 0xFFFFFF;      ///< color behind transparent thumbnails
inline int WebGalleryPageItemFrameEnable = 1;           ///< flag
inline int WebGalleryPageItemFrameFore = 0x808080;      ///< color
inline int WebGalleryPageItemFrameBack = 0xFFFFFF;      ///< color
inline int WebGalleryPageItemFrameThick = 1;            ///< pixels, 0 to 20
inline int WebGalleryPageItemFrameRound = 6;            ///< pixels, 0 to 100
inline int WebGalleryPageItemShadow = 1;                ///< flag
inline int WebGalleryPageGraphicFrameEnable = 0;        ///< flag
inline int WebGalleryPageGraphicFrameColor = 0x000000;  ///< color
inline int WebGalleryPageGraphicShadowEnable = 0;       ///< flag

// Web gallery: title
inline std::string WebGalleryPageTitleText = "Gallery";
inline std::string WebGalleryPageTitleFontName = "Arial, Helvetica, sans-serif";
inline int WebGalleryPageTitleFontSize = 28;         ///< pixels, 6 to 200
inline int WebGalleryPageTitleColor = 0x000000;      ///< color
inline int WebGalleryPageTitleStrong = 1;            ///< flag
inline int WebGalleryPageTitleEm = 0;                ///< flag
inline int WebGalleryPageTitleJust = 1;              ///< 0 left, 1 center, 2 right
inline int WebGalleryPageTitleShadow = 0;            ///< flag
inline int WebGalleryPageTitleFrameEnable = 0;       ///< flag
inline int WebGalleryPageTitleFrameFore = 0x808080;  ///< color
inline int WebGalleryPageTitleFrameBack = 0xFFFFFF;  ///< color
inline int WebGalleryPageTitleFrameThick = 1;        ///< pixels, 0 to 20
inline int WebGalleryPageTitleFrameRound = 6;        ///< pixels, 0 to 100

}  // namespace vellum::settings
