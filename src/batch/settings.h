// Settings of the batch processor.
#pragma once

#include <string>

namespace vellum::settings {

// The run
inline int BatchProcessorProcess = 0;       ///< 0 to 11: the operation
inline std::string BatchProcessorDestPath;  ///< folder of the results; empty: the documents folder
inline int BPAutoUpsample = 1;              ///< flag: paletted animations are promoted where it is needed
inline int BPOverwriteMode = 1;             ///< 0 overwrite, 1 ask, 2 keep both
inline int BPUsePrefixes = 1;               ///< flag: names of results begin with the operation's prefix
inline int BPUseRecycleBin = 1;             ///< flag: deleted files go to the trash
inline std::string BPPrefixCaption = "Caption_";
inline std::string BPPrefixColorbal = "ColorBalance_";
inline std::string BPPrefixDepopulate = "Depopulate_";
inline std::string BPPrefixFlipRot = "FlipRotate_";
inline std::string BPPrefixFrame = "Frame_";
inline std::string BPPrefixReconstruct = "Reconstruct_";
inline std::string BPPrefixResize = "Resize_";
inline std::string BPPrefixReverse = "Reverse_";
inline std::string BPPrefixShadow = "Shadow_";
inline std::string BPPrefixTextOverlay = "TextOverlay_";
inline std::string BPPrefixTile = "Tile_";
inline std::string BPPrefixTrim = "Trim_";

// Its window: sizes in pixels, 0: as it comes
inline std::string BatchProcessorPath;       ///< folder shown; empty: the pictures folder
inline int BatchProcessorSpecialFolder = 0;  ///< where the tree begins: 0 the computer; see FolderPlace
inline int BatchProcessorDialogWide = 0, BatchProcessorDialogDeep = 0;
inline int BatchProcessorFilesWide = 0, BatchProcessorTreeWide = 0;
inline int BatchProcessorItemHeight = 96;     ///< pixels
inline int BatchProcessorMatt = 0xFFFFFF;     ///< color behind thumbnails
inline int BatchProcessorTHNL = 0;            ///< flag: thumbnails are kept beside the pictures
inline int BatchProcessorHiddenTHNL = 0;      ///< flag: those files are hidden
inline int BPCloseProgressWhenDone = 0;       ///< flag
inline int BPSetupPageIndex = 0;              ///< tab that was open last
inline int BPDestWidth = 0, BPDestDepth = 0;  ///< size of the destination dialog
inline int BPDestHistoryMax = 16;             ///< 1 to 64 lines
inline int BPDriveMapFloppies = 0;            ///< flag: the tree of the destination shows removable media
inline int BPEditFieldDelay = 500;            ///< ms of rest after which a typed path is taken

}  // namespace vellum::settings
