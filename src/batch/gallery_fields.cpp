// What a person may say of a web gallery.
#include "batch/gallery.h"
#include "exchange/settings.h"

namespace vellum {
namespace {

using namespace settings;

constexpr const char *kPages = "Pages", *kItems = "Items", *kTitle = "Title", *kFiles = "Files";

constexpr FieldChoice kFormats[] = {{0, "As source"}, {1, "PNG"}, {2, "JPEG"}, {3, "GIF"}, {4, "WebP"}};
constexpr FieldChoice kStyles[] = {{0, "Fit"}, {1, "Fill"}, {2, "First frame only"}};
constexpr FieldChoice kSides[] = {{0, "Left"}, {1, "Center"}, {2, "Right"}};

constexpr Field text(const char* page, const char* name, const char* label, const char* initial,
                     std::string* setting, const char* tip = nullptr) {
  return {.name = name,
          .label = label,
          .type = FieldType::Text,
          .most = 260,
          .page = page,
          .tip = tip,
          .initialText = initial,
          .textSetting = setting};
}
constexpr Field path(const char* page, const char* name, const char* label, std::string* setting,
                     const char* by = nullptr) {
  return {.name = name,
          .label = label,
          .type = FieldType::Text,
          .look = FieldLook::Path,
          .page = page,
          .enabledBy = by,
          .textSetting = setting};
}
constexpr Field whole(const char* page, const char* name, const char* label, int least, int most, int initial,
                      int* setting, const char* by = nullptr) {
  return {.name = name,
          .label = label,
          .least = least,
          .most = most,
          .page = page,
          .enabledBy = by,
          .initial = initial,
          .setting = setting};
}
constexpr Field flag(const char* page, const char* name, const char* label, int initial, int* setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Flag,
          .most = 1,
          .page = page,
          .initial = initial,
          .setting = setting};
}
constexpr Field color(const char* page, const char* name, const char* label, int initial, int* setting,
                      const char* by = nullptr) {
  return {.name = name,
          .label = label,
          .type = FieldType::Color,
          .most = 0xFFFFFF,
          .page = page,
          .enabledBy = by,
          .initial = initial,
          .setting = setting};
}
constexpr Field choice(const char* page, const char* name, const char* label,
                       std::span<const FieldChoice> choices, int initial, int* setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Choice,
          .choices = choices,
          .page = page,
          .initial = initial,
          .setting = setting};
}

constexpr const char* kFonts = "Arial, Helvetica, sans-serif";

constexpr Field kFields[] = {
    color(kPages, "back", "Background", 0xFFFFFF, &WebGalleryPageBack),
    text(kPages, "font", "Font", kFonts, &WebGalleryPageFontName),
    whole(kPages, "topMargin", "Top margin", 0, 500, 16, &WebGalleryPageTopMargin),
    whole(kPages, "perPage", "Items on a page", 1, 500, 20, &WebGalleryPageItemPer),
    flag(kPages, "externalCss", "Rules in a file of their own", 0, &WebGalleryPageExternalCss),
    path(kPages, "importCss", "Rules of yours", &WebGalleryPageImportCss),
    flag(kPages, "favicon", "Icon", 1, &WebGalleryPageFaviconEnable),
    flag(kPages, "header", "Header", 0, &WebGalleryPageHeaderEnable),
    path(kPages, "headerPath", "Header file", &WebGalleryPageHeaderPath, "header"),
    flag(kPages, "footer", "Footer", 0, &WebGalleryPageFooterEnable),
    path(kPages, "footerPath", "Footer file", &WebGalleryPageFooterPath, "footer"),
    whole(kPages, "pagerRange", "Page numbers shown", 1, 50, 10, &WebGalleryPagePagerRange),
    whole(kPages, "pagerSize", "Their size", 6, 72, 14, &WebGalleryPagePagerTextSize),
    color(kPages, "pagerActive", "Color of this page", 0x0000FF, &WebGalleryPagePagerActiveColor),
    color(kPages, "pagerInactive", "Color of the others", 0x808080, &WebGalleryPagePagerInactiveColor),

    whole(kItems, "thumb", "Thumbnail size", 32, 1024, 160, &WebGalleryPageThumbsize),
    choice(kItems, "thumbStyle", "Thumbnails", kStyles, 0, &WebGalleryPageThumbstyle),
    whole(kItems, "itemMargin", "Margin", 0, 200, 8, &WebGalleryPageItemMargin),
    text(kItems, "itemFont", "Font", kFonts, &WebGalleryPageItemFontName),
    color(kItems, "itemColor", "Text", 0, &WebGalleryPageItemTextColor),
    whole(kItems, "nameSize", "Name: size", 6, 72, 14, &WebGalleryPageItemNameSize),
    flag(kItems, "nameStrong", "Name: bold", 1, &WebGalleryPageItemNameStrong),
    flag(kItems, "nameEm", "Name: italic", 0, &WebGalleryPageItemNameEm),
    whole(kItems, "descriptionSize", "Description: size", 6, 72, 12, &WebGalleryPageItemDescriptionSize),
    flag(kItems, "descriptionStrong", "Description: bold", 0, &WebGalleryPageItemDescriptionStrong),
    flag(kItems, "descriptionEm", "Description: italic", 0, &WebGalleryPageItemDescriptionEm),
    flag(kItems, "itemIndex", "Numbers", 0, &WebGalleryPageItemIndexEnable),
    flag(kItems, "inline", "Thumbnails in the page itself", 0, &WebGalleryPageItemInlineGraphics),
    color(kItems, "alphaBack", "Behind transparency", 0xFFFFFF, &WebGalleryPageItemAlphaBack),
    flag(kItems, "itemFrame", "Frame", 1, &WebGalleryPageItemFrameEnable),
    color(kItems, "frameFore", "Frame: line", 0x808080, &WebGalleryPageItemFrameFore, "itemFrame"),
    color(kItems, "frameBack", "Frame: ground", 0xFFFFFF, &WebGalleryPageItemFrameBack, "itemFrame"),
    whole(kItems, "frameThick", "Frame: thickness", 0, 20, 1, &WebGalleryPageItemFrameThick, "itemFrame"),
    whole(kItems, "frameRound", "Frame: corners", 0, 100, 6, &WebGalleryPageItemFrameRound, "itemFrame"),
    flag(kItems, "itemShadow", "Shadow", 1, &WebGalleryPageItemShadow),
    flag(kItems, "graphicFrame", "Picture: frame", 0, &WebGalleryPageGraphicFrameEnable),
    color(kItems, "graphicFrameColor", "Picture: line", 0, &WebGalleryPageGraphicFrameColor, "graphicFrame"),
    flag(kItems, "graphicShadow", "Picture: shadow", 0, &WebGalleryPageGraphicShadowEnable),

    text(kTitle, "title", "Title", "Gallery", &WebGalleryPageTitleText),
    text(kTitle, "titleFont", "Font", kFonts, &WebGalleryPageTitleFontName),
    whole(kTitle, "titleSize", "Size", 6, 200, 28, &WebGalleryPageTitleFontSize),
    color(kTitle, "titleColor", "Color", 0, &WebGalleryPageTitleColor),
    flag(kTitle, "titleStrong", "Bold", 1, &WebGalleryPageTitleStrong),
    flag(kTitle, "titleEm", "Italic", 0, &WebGalleryPageTitleEm),
    choice(kTitle, "titleSide", "Place", kSides, 1, &WebGalleryPageTitleJust),
    flag(kTitle, "titleShadow", "Shadow", 0, &WebGalleryPageTitleShadow),
    flag(kTitle, "titleFrame", "Frame", 0, &WebGalleryPageTitleFrameEnable),
    color(kTitle, "titleFrameFore", "Frame: line", 0x808080, &WebGalleryPageTitleFrameFore, "titleFrame"),
    color(kTitle, "titleFrameBack", "Frame: ground", 0xFFFFFF, &WebGalleryPageTitleFrameBack, "titleFrame"),
    whole(kTitle, "titleFrameThick", "Frame: thickness", 0, 20, 1, &WebGalleryPageTitleFrameThick,
          "titleFrame"),
    whole(kTitle, "titleFrameRound", "Frame: corners", 0, 100, 6, &WebGalleryPageTitleFrameRound,
          "titleFrame"),

    path(kFiles, "destination", "Folder", &WebGalleryPageDestinationPath),
    text(kFiles, "baseName", "Name of the pages", "index", &WebGalleryPageBaseName),
    text(kFiles, "imageDir", "Folder of thumbnails", "images", &WebGalleryPageImageDir),
    text(kFiles, "downloadDir", "Folder of originals", "downloads", &WebGalleryPageDownloadDir),
    choice(kFiles, "thumbFormat", "Format of thumbnails", kFormats, 0, &WebGalleryPageThumbnailFormat),
    text(kFiles, "descriptionExt", "Descriptions end in", ".txt", &WebGalleryPageDescriptionExt,
         "Texts beside the pictures"),
    text(kFiles, "urlExt", "Addresses end in", ".url", &WebGalleryUrlExtension,
         "Beside the pictures: where a click leads"),
    text(kFiles, "buttonExt", "Button labels end in", ".btn", &WebGalleryButtonExtension,
         "Beside the pictures: what the button of the original says"),
    flag(kFiles, "closeProgress", "Close the list when all is well", 0, &WebGalleryCloseProgress),
};

/// One part of a path: no folders, nothing hidden.
bool is_part(const std::string& name) {
  return !name.empty() && name.front() != '.' && name.find('/') == std::string::npos;
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  for (const char* name : {"baseName", "imageDir", "downloadDir"})
    if (!is_part(values.text(name))) return fault_of(name, StringId::NoFileName);
  if (values.text("destination").empty()) return fault_of("destination", StringId::NoFolder);
  return std::nullopt;
}

}  // namespace

constinit const Parameters kGallery{
    .name = "gallery",
    .title = "Web gallery",
    .help = "Pages of pictures with thumbnails, in a folder",
    .command = 275,
    .page = "webgallery",
    .fields = kFields,
    .check = check,
};

}  // namespace vellum
