#include "shell/setup/setup_fields.h"
#include "shell/widgets/work_background.h"

#include <array>

namespace vellum {
namespace {

constexpr FieldType kFlagType = FieldType::Flag;
constexpr std::int64_t kRgb = 0xFFFFFF;
constexpr std::int64_t kMostMegabytes = 1 << 20;

SettingField flag(const char* key, const char* label, const char* tip, bool restart = false) {
  return {.field = {.name = key, .label = label, .type = kFlagType, .most = 1, .tip = tip},
          .restart = restart};
}

SettingField number(const char* key, const char* label, std::int64_t least, std::int64_t most,
                    const char* tip, std::optional<std::int64_t> page_default = {}, bool restart = false) {
  return {.field = {.name = key, .label = label, .least = least, .most = most, .tip = tip},
          .pageDefault = page_default,
          .restart = restart};
}

SettingField list(const char* key, const char* label, std::span<const FieldChoice> choices, const char* tip) {
  return {.field = {.name = key, .label = label, .type = FieldType::Choice, .choices = choices, .tip = tip}};
}

SettingField color(const char* key, const char* label, const char* tip) {
  return {.field = {.name = key, .label = label, .type = FieldType::Color, .most = kRgb, .tip = tip}};
}

SettingField path(const char* key, const char* label, const char* browse, const char* tip) {
  return {.field = {.name = key,
                    .label = label,
                    .type = FieldType::Text,
                    .most = kSettingTextLimit,
                    .look = FieldLook::Path,
                    .tip = tip},
          .browse = browse};
}

/// The names of the built-in palettes: the place in this list is the palette's id.
std::span<const FieldChoice> palette_choices() {
  constexpr int kFirstName = 1550;
  static const auto choices = [] {
    std::array<FieldChoice, 9> made{};
    for (std::size_t id = 0; id < made.size(); ++id)
      made[id] = {static_cast<std::int64_t>(id), string_text(kFirstName + static_cast<int>(id)).data()};
    return made;
  }();
  return choices;
}

constexpr FieldChoice kViewModes[] = {{0, "Text only"}, {1, "10%"},  {2, "25%"},  {3, "50%"},
                                      {4, "75%"},       {5, "100%"}, {6, "150%"}, {7, "200%"}};
constexpr FieldChoice kAnimationTypes[] = {{0, "Animated PNG"}, {1, "MNG"}, {2, "WebP"}};
constexpr FieldChoice kPaintColors[] = {
    {0, "As it is"}, {1, "Match to the palette"}, {2, "Dither to the palette"}};
constexpr FieldChoice kButtonLooks[] = {{0, "Classic"}, {1, "Soft"}, {2, "Flat"}};
constexpr FieldChoice kEditorViews[] = {{0, "Own picture"}, {1, "On the canvas"}, {2, "Onion skin"}};
constexpr FieldChoice kEditorGrounds[] = {
    {0, "Checkers"}, {1, "Document's color"}, {2, "Black"}, {3, "White"}};
const SettingField kFiles[] = {
    flag("AllowAdvancedPalettes", "Advanced palettes in Animation Wizard",
         "Shows what can be chosen for the colors of paletted animations"),
    flag("ClassicCaptionWindow", "Classic caption window", "Captions are edited in the older window"),
    flag("AnnotatePromptSave", "Ask about changed captions",
         "A caption that is left with another text may be kept among the earlier ones"),
    flag("ImproveAnimationWizardPalette", "Black and white in superpalettes",
         "The darkest and the lightest color of a superpalette become pure where they nearly are"),
    flag("ImageJpegExifOrientation", "Correct image orientation in JPEGs",
         "Photos that a camera took upright are turned when they are read"),
    flag("KeepStoredImages", "Keep images as they are stored",
         "Saving copies the images that nobody changed, and doesn't pack them again"),
    flag("AutoUpdateTime", "Keep the time of saving", "A tIME chunk gets the time of each save"),
    flag("APNGOpen", "Open animated PNGs as animations",
         "Without it, they are stills whose frames are chunks"),
    flag("APNGIncludeTextChunks", "Texts of animated PNGs", "They are read and written"),
    flag("AutomaticMngToPng", "Open MNGs as animated PNGs",
         "An MNG becomes an animated PNG that isn't saved yet"),
    flag("AddInstructionsToNew", "Instructions in new documents",
         "They begin with a comment that says how to go on"),
    flag("CreateBackups", "Create backups", "Saving keeps the file that was there as \"Backup of ...\""),
    flag("FastRemap", "Fast color matching",
         "Colors are matched to palettes a little less exactly, and faster"),
    flag("RememberFileHistoryEnable", "File menu thumbnails*",
         "The last files of the File menu show pictures", true),
    flag("IdentifyFiles", "Identify files", "Saved files get a comment that says who made them"),
    flag("MoviePreserveTime", "Preserve movie running times",
         "Frames of a movie that are left out give their time to the ones before them"),
    flag("CrushSWFTrueColour", "SWF crush true color", "Frames of SWF files are reduced to 256 colors"),
    flag("WarnWatermark", "Warn before watermarking files", "Asks before files are changed"),
    flag("WarnBadPalChunk", "Warn for improper palettes", "Tells when a palette stands where none belongs"),
    flag("WarnMerge", "Warn merging different color types",
         "Tells when images must be converted to be merged"),
    flag("WarnGifTransparency", "Warn on export GIF transparency",
         "Tells when partly transparent pixels are lost in a GIF"),
    flag("WizardPreserveTransparency", "Wizard preserve transparency",
         "Transparent pixels of images stay transparent in the Animation Wizard"),
    flag("MovieCompression", "Write compressed AVI/MOV files", "Without it, movies are large and exact"),
    flag("WEBPLossless", "WebP lossless", "Every pixel of a WebP file comes back as it was"),
    flag("WebPAllowMixed", "WebP allow mixed",
         "Each frame of a WebP animation is written with or without loss, whichever is smaller"),
    number("AVIQualityFactor", "AVI/MOV quality factor:", 10, 10000, "10 to 10000; more is better and larger",
           6500),
    number("PngCompression", "PNG compression:", 1, 9, "1 is fastest, 9 smallest"),
    number("WEBPQualityFactor", "WebP quality factor", 5, 100, "5 to 100; more is better and larger"),
    number("NewAnimationWizardItemHeight", "Animation wizard thumbnails:", 32, 128,
           "Height of thumbnails in pixels, 32 to 128"),
    number("ANIMaskThreshold", "ANI mask threshold:", 1, 254,
           "1 to 254: pixels with less alpha are transparent in cursors"),
    number("RememberFileHistoryCount", "File menu size*", 0, 20,
           "How many files the File menu remembers, 0 to 20", {}, true),
    number("PictureMemoryMegabytes", "Memory for pictures:", 0, kMostMegabytes,
           "Megabytes; 0 is a quarter of the machine's memory"),
    number(
        "MaximumDecodedMegabytes", "Largest document:", 0, kMostMegabytes,
        "Megabytes that pictures of a document may take; 0 is what this machine and the file make plausible"),
    list("DefaultPalette", "Default palette:", palette_choices(), "The palette of new paletted images"),
    color("WizardTransparentMaskColor", "Wizard transparent mask:",
          "Stands for transparent pixels in paletted frames of the Animation Wizard"),
    path("IdentificationFile", "Identification text file:", "Browse",
         "The comment of saved files; without a file it is your name"),
};

const SettingField kDisplay[] = {
    flag("ViewWindowSizeAdjust", "Adjust oversize View windows ",
         "What is larger than the screen is made to fit"),
    flag("NewAnimationWizardPreviewSizeas", "Animation Wizard preview size as",
         "The preview of a picture opens at its own size"),
    flag("NewAnimationWizardExactThumbnails", "Animation Wizard thumbnails in their aspect",
         "Without it, they fill their squares"),
    flag("NewAnimationWizardThumbnailDetails", "Animation Wizard details",
         "Size and colors stand below the names of files"),
    flag("NewAnimationWizardTightThumbnails", "Animation Wizard tight rows", "No gaps between rows of files"),
    flag("ClickOutsideAnimToClose", "Click outside View to close",
         "A click beside the animation ends the view"),
    flag("DisplayInterlace", "Display interlace", "Interlaced images are shown pass by pass"),
    flag("FavoritesDoubleClickOpen", "Double-click open in Favorites", "Without it, a double click views"),
    flag("HistoryEnable", "Enable history lists", "Fields remember what was typed into them"),
    flag("IncludeFloppyDisks", "Include floppy disks in drive trees", "Removable media are shown too"),
    flag("MaximizePaint", "Maximize paint and manual", "They open as large as the screen"),
    flag("WarnKillChunk", "Notify when chunks can't be deleted", "Headers and ends have to stay"),
    flag("OptimumVerticalWindows", "Optimum vertical windows", "New document windows take the full height"),
    flag("WarnReconstruct", "Prompt before Reconstruct", "Asks before an animation is put together anew"),
    flag("FileTipShow", "Show document tips", "Rows of a list tell more when the pointer rests on them"),
    flag("ShowStartupWindow", "Show startup window", "The picture that the program starts with"),
    flag("ShowTipOfTheDay", "Show tip of the day", "One tip a day, when the program starts"),
    flag("SearchForPaintbrush", "Search for paintbrush",
         "Looks for well-known paint programs when none is chosen"),
    flag("UseWindowsThumbnailCache", "Use the Windows thumbnail cache",
         "The thumbnails that the desktop keeps for all programs are used"),
    flag("ViewModeProgressBar", "View mode progress bar", "The viewer shows how far the animation is"),
    flag("ViewModeToolbar", "View mode tool bar", "The viewer has buttons"),
    flag("ClassicPlayback", "View by the classic rules",
         "Frames are laid on each other as in earlier versions, and not as their format says"),
    flag("WarnKillIDAT", "Warn before deleting IDATs", "Tells what a PNG can't be without"),
    flag("WarnMultipleDelete", "Warn before deleting multiple chunks", "Asks before several are deleted"),
    flag("WarnKillPLTE", "Warn before deleting PLTEs", "Tells what a paletted PNG can't be without"),
    flag("WarnShowManual", "Warn before displaying manual.", "Asks before the guide opens"),
    flag("WarnOverlayNoTransparent", "Warn for non-transparent overlays",
         "Tells when an overlay hides all that is below it"),
    flag("WatchFolders", "Watch Animation Wizard folders", "Its lists follow what happens in the folders"),
    number("InterlaceDelay", "Interlace delay:", 1, 10000, "Milliseconds between two passes, 1 to 10000", 5),
    number("ViewStackSize", "View stack size:", 1024, 32700, "Nested loops of an MNG, 1024 to 32700"),
    number("HistoryMaximumCount", "Maximum history:", 4, 64, "Lines that a field remembers, 4 to 64", 20),
    number("EditListMaximum", "Edit list maximum count:", 2, 128,
           "Sets of values that a dialog remembers, 2 to 128", 16),
    number("MaximumPreviewDimension", "Maximum preview dimension*:", 0, 10000,
           "Pixels: previews of larger pictures are made from smaller copies, 0 to 10000; 0 is no limit",
           1024, true),
    number("UndoLevels", "Undo levels:", 4, 32, "How many changes can be taken back, 4 to 32"),
    list("DefaultViewMode", "Default view mode:", kViewModes,
         "Size of the thumbnails in new document windows"),
    list("PaintColorManagement", "Paint color management:", kPaintColors,
         "What happens to new colors that a paint program brings back to a paletted document"),
    list("DefaultAnimationType", "Default animation type:", kAnimationTypes, "What new animations are"),
    color("DefaultBackgroundColour", "Default background color:", "The ground of new images"),
};

const SettingField kApplication[] = {
    flag("FindHidesRows", "Find shows matching rows only",
         "Without it, rows that match are marked among all others"),
    flag("MonoListText", "Rows of one color", "The text behind a row's label is as black as the label"),
    flag("LiveButtons", "Live buttons", "Buttons of the toolbar light up under the pointer"),
    flag("ShowFileOpenPreview", "Previews in file dialogs", "The dialog that asks for images shows them"),
    list("ImageEditorView", "Image editor shows:", kEditorViews,
         "A frame alone, on its canvas, or among its neighbors"),
    list("ImageEditorGround", "Image editor ground:", kEditorGrounds, "What lies behind the frame"),
    list("MDIClientBackground", "Application background:", background_choices(),
         "What lies behind the document windows"),
    path("MDIClientImage", "Background image:", "Browse...", "Shown where the background is \"Image\""),
    color("MDIClientColor", "Background color:", "The color of plain, shaded and patterned backgrounds"),
    list("SoftButtons", "Soft buttons:", kButtonLooks, "How the buttons of the toolbar look"),
};

const SetupPageRow kPages[] = {
    {"Files", kFiles, 2}, {"Display", kDisplay, 2}, {"Application", kApplication, 1}};

}  // namespace

std::span<const SetupPageRow> setup_pages() { return kPages; }

}  // namespace vellum
