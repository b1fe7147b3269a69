// Settings that the desktop program alone reads. Plain variables of the interface thread; who uses one clamps
// it to its range. They stand here because the table of settings can't look into the wings below it.
#pragma once

#include <string>

namespace vellum::settings {

/// A window edge that was never stored.
inline constexpr int kUnsetEdge = 0x7FFFFFFF;

// The main window; edges and sizes in pixels
inline int StartMaximized = 1;  ///< flag: the main window was maximized when the program ended
inline int StickyWindowLeft = kUnsetEdge, StickyWindowTop = kUnsetEdge;  ///< edges of the main window
inline int StickyWindowRight = kUnsetEdge, StickyWindowBottom = kUnsetEdge;
inline int MDIClientBackground = 13;   ///< 0 desktop, 1 to 12 textures, 13 plain color, 14 image
inline int MDIClientColor = 0x808080;  ///< color
inline std::string MDIClientImage;     ///< empty: Vellumcraft Background.bmp in the pictures folder
inline int SoftButtons = 1;            ///< 0 to 2: look of the toolbar
inline int LiveButtons = 1;            ///< flag: toolbar buttons light up under the pointer
inline std::string DockLayoutWide, DockLayoutSmall;  ///< docks on large and small screens, as Qt keeps them
inline int DialogDelay = 500;                        ///< ms, 0 to 10000: shorter work shows no progress
inline std::string ApplicationPath;                  ///< folder of the program, for information

// Start
inline int ShowStartupWindow = 1;  ///< flag
inline int LogoDelay = 8000;       ///< ms
inline int ShowTipOfTheDay = 1;    ///< flag
inline int TipOfTheDay = 0;        ///< next tip
inline int LastTipDate = 0;        ///< yyyymmdd
inline int ShowWelcomeWizard = 1;  ///< flag
inline int WarnShowManual = 0;     ///< flag

// Document windows
inline int FileWindowX = 420;           ///< least width of a document window, in pixels
inline int FileWindowY = 0;             ///< height of a new document window in pixels; 0: free
inline int OptimumVerticalWindows = 1;  ///< flag: new document windows take the full height
inline int MonoListText = 0;            ///< flag: both columns of the list have one color
inline int AntiAliasMode = 2;           ///< 0 none, 1 fast, 2 best: scaling of thumbnails and previews
inline int FileTipShow = 1;             ///< flag: rows tell more under the pointer
inline int FileTipDelay = 750;          ///< ms, 100 to 5000
inline int FindHidesRows = 1;           ///< flag: the find bar shows the rows that match and no others
inline int ImageEditorView = 1;         ///< 0 own picture, 1 on the canvas, 2 onion skin
inline int ImageEditorGround = 0;       ///< behind it: 0 checkers, 1 of the document, 2 black, 3 white
inline int GridWide = 1, GridDeep = 1;  ///< pixels of a step of the pixel grid, 1 to 256
inline int StripOptions = 7;  ///< bits: 1 numbers, 2 delays, 4 checkers, 8 canvases, 16 vertical, 32 gaps

// Open and save
inline std::string OpenPath;        ///< folder of the open dialog; empty: the documents folder
inline std::string OpenImportPath;  ///< the same for imports
inline std::string OpenExportPath;  ///< the same for exports
inline std::string RecentFolder;    ///< folder that was chosen last
inline int OpenFilterIndex = 0;
inline int ImageFileOpenIndex = 0;         ///< filter of the image dialog
inline int ImportFilterIndex = 0;          ///< the same, in paletted documents
inline int ImportFilterIndex24 = 0;        ///< the same, in true color documents
inline int ShowFileOpenPreview = 1;        ///< flag
inline int MaximumPreviewDimension = 800;  ///< pixels a side of previews, 0 to 10000; 0: no limit
inline int RememberFileHistoryEnable = 1;  ///< flag: the File menu shows thumbnails of its files
inline int RememberFileHistorySize = 48;   ///< pixels of those thumbnails, 16 to 96
inline int UseWindowsThumbnailCache = 1;   ///< flag: the desktop's shared thumbnails are used

// Folder trees and the document browser
inline int AlternateFolderGraphics = 0;  ///< flag: folder trees have the program's icons, not the desktop's
inline int IncludeFloppyDisks = 0;       ///< flag: folder trees show removable media
inline std::string DocumentBrowserPath;  ///< empty: the pictures folder
inline int DocumentBrowserFlags = 3;     ///< bits: 1 thumbnails, 2 details, 4 animations only, 8 subfolders
inline int BrowserWide = 0;              ///< pixels of its tree; 0: as it comes

// Viewer
inline int MinViewWidth = 96;            ///< pixels
inline int MinViewDepth = 96;            ///< height in pixels
inline int ViewModeProgressBar = 1;      ///< flag
inline int ViewModeToolbar = 1;          ///< flag
inline int ViewWindowSizeAdjust = 1;     ///< flag: larger ones are fitted to the screen
inline int ClickOutsideAnimToClose = 0;  ///< flag

// Colors and painting
inline int ForeColour = 0x000000;   ///< color that was chosen last
inline int BackColour = 0xFFFFFF;   ///< color chosen before it
inline std::string PaintbrushName;  ///< of the chosen editor
inline std::string PaintbrushPath;
inline int PaintbrushSupportsAlpha = 1;  ///< flag
inline int UseWindowsPaintbrush = 1;     ///< flag: the desktop's own program for the file type
inline int SearchForPaintbrush = 1;      ///< flag: known editors are looked for when none is chosen
inline int MaximizePaint = 0;            ///< flag
inline int PaintColorManagement = 0;     ///< 0 as it is, 1 match to the palette, 2 dither to it
inline int AppToFrontDelay = 500;        ///< ms, 0 to 5000

// Dialogs
inline int SetupPageIndex = 0;            ///< tab that was open last
inline int AnnotatePromptSave = 1;        ///< flag: a caption that was changed and not used is asked about
inline int PropertiesSort = 0;            ///< column
inline int PropertiesFileSizeEnable = 1;  ///< flag: the size is found by writing to memory
inline int PropertiesDimensionYellow = 640, PropertiesDimensionRed = 1024;  ///< pixels
inline int PropertiesFileYellow = 512, PropertiesFileRed = 2048;            ///< KB
inline int PropertiesMemYellow = 16384, PropertiesMemRed = 65536;           ///< KB

// Favorites; sizes in pixels, 0: as it comes
inline std::string FavoritesGalleryCurrent = "Favorites";
inline std::string FavoritesDefaultPin = "Favorites";  ///< gallery that new ones go to
inline std::string FavoritesDestination;               ///< folder that files were copied to last
inline int FavoritesDialogWide = 0, FavoritesDialogDeep = 0;
inline int FavoritesDoubleClickOpen = 1;   ///< flag: opens; off: views
inline int FavoritesRecycleGalleries = 1;  ///< flag: deleted galleries go to the trash

// Animation wizard's window; sizes in pixels, 0: as it comes
inline std::string NewAnimationWizardPath;  ///< folder shown; empty: the pictures folder
inline int NewAnimationWizardDialogWide = 0, NewAnimationWizardDialogDeep = 0;
inline int NewAnimationWizardTreeWide = 0, NewAnimationWizardFilesWide = 0;
inline int NewAnimationWizardSelFilesWide = 0;
inline int NewAnimationWizardItemHeight = 48;        ///< pixels, 32 to 128
inline int NewAnimationWizardFileThumbnails = 1;     ///< flag
inline int NewAnimationWizardSelFileThumbnails = 1;  ///< flag
inline int NewAnimationWizardExactThumbnails = 1;    ///< flag
inline int NewAnimationWizardThumbnailDetails = 1;   ///< flag
inline int NewAnimationWizardTightThumbnails = 1;    ///< flag
inline int NewAnimationWizardPreviewSizeas = 0;      ///< flag: the preview opens at the picture's own size
inline int NewAnimationWizardWelcome = 1;            ///< flag
inline std::string Language;                         ///< code of the texts' language; empty: the desktop's
inline int WatchFolders = 1;                         ///< flag: its lists follow the folders

}  // namespace vellum::settings
