// A web gallery: pages with thumbnails of pictures and animations, in a folder.
#pragma once

#include <filesystem>
#include <functional>
#include <span>

#include "base/host.h"
#include "batch/batch_row.h"
#include "operations/parameters.h"

namespace vellum {

/// What a person may say of it; the field "destination" is the folder.
extern const Parameters kGallery;

struct GalleryReport {
  std::vector<BatchRow> rows;                ///< of each file, in order; the target is its thumbnail
  std::vector<std::filesystem::path> pages;  ///< in order
};

/// Makes the folder and writes into it; files there that an earlier run hasn't made stay as they are. `row`
/// is called for each file in order. Nothing, after a message, when there are no files, a page can't be
/// written, or the user said no; what was written until a stop stays.
std::optional<GalleryReport> build_gallery(std::span<const std::filesystem::path> files,
                                           const FieldValues& values, Host& host,
                                           const std::function<void(const BatchRow&)>& row = {});

/// One file of a gallery, as its page shows it.
struct GalleryItem {
  std::string name, description, button;  ///< UTF-8, as they are
  std::string link;                       ///< address
  std::string download;                   ///< address of the original
  std::string image;                      ///< address of the thumbnail, or its data
  std::uint32_t width = 0, height = 0;    ///< of the thumbnail
};

/// The page of a number, from 0, of so many; `items` are those of the page and `first` the number of the
/// first of them among all, from 0. `css` are the rules.
std::string gallery_page(std::span<const GalleryItem> items, std::size_t first, std::size_t page,
                         std::size_t pages, const FieldValues& values, const std::string& css,
                         const std::string& icon, const std::string& header, const std::string& footer);
/// The rules of the style sheet.
std::string gallery_css(const FieldValues& values);
/// "index.html", "index_2.html".
std::string gallery_page_name(const FieldValues& values, std::size_t page);

}  // namespace vellum
