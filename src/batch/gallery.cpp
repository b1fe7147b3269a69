#include "batch/gallery.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <set>

#include "base/file.h"
#include "base/limits.h"
#include "base/page_text.h"
#include "base/parallel.h"
#include "base/text.h"
#include "core/build/convert_records.h"
#include "core/build/frame_stream.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"
#include "exchange/as_animated_png.h"
#include "exchange/exporter.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/resample.h"
#include "operations/build_stills.h"
#include "operations/frames.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

constexpr std::uint64_t kMostSidecar = 1 << 16, kMostPage = 1 << 22;
enum Style { kFit, kFill, kFirstFrame };
enum Format { kAsSource, kPng, kJpeg, kGif, kWebp };

/// The text of a small file; empty without one.
std::string small_file(const fs::path& path, std::uint64_t most) {
  std::string reason;
  const auto bytes = read_file(path, reason, most);
  return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size()) : std::string();
}

/// "a.txt" or "a.png.txt" beside "a.png".
std::string sidecar(const fs::path& file, const std::string& extension) {
  fs::path beside = file;
  if (extension.empty() || beside.replace_extension(extension) == file) return {};
  std::error_code error;
  if (!fs::exists(beside, error)) beside = fs::path(file) += extension;
  return std::string(trimmed(small_file(beside, kMostSidecar)));
}

/// An address as it stands alone or behind "URL="; nothing for one that would run something.
std::string address_in(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string_view line = trimmed(std::string_view(text).substr(at, end - at));
    at = end + 1;
    if (line.empty() || line.front() == '[') continue;
    const std::string_view address = line.starts_with("URL=") ? line.substr(4) : line;
    const std::size_t colon = address.find(':');
    const std::string scheme = colon == std::string_view::npos ? "" : lower_case(address.substr(0, colon));
    const bool is_scheme = !scheme.empty() && scheme.find_first_of("/?#") == std::string::npos;
    if (is_scheme && scheme != "http" && scheme != "https" && scheme != "mailto" && scheme != "ftp")
      return {};
    return std::string(address);
  }
  return {};
}

/// Letters, digits and "-_." of a name; other runs become one hyphen.
std::string safe_name(const std::string& name) {
  std::string out;
  for (const char c : name) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.';
    if (plain || (!out.empty() && out.back() != '-')) out += plain ? c : '-';
  }
  while (!out.empty() && (out.back() == '-' || out.back() == '.')) out.pop_back();
  out.erase(0, out.find_first_not_of("-."));
  return out.empty() ? "item" : out.substr(0, 100);
}

/// What an earlier run has made in the folder, which alone may be written over.
class Made {
 public:
  Made(fs::path folder, const std::string& base)
      : folder_(std::move(folder)), list_(folder_ / ("." + base + ".gallery")) {
    const std::string text = small_file(list_, kMaximumTextBytes);
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find('\n', at), text.size());
      names_.insert(text.substr(at, end - at));
      at = end + 1;
    }
  }
  bool has(const fs::path& name) const { return names_.contains(name.generic_string()); }
  /// Whether a name is free, or that of a file of ours.
  bool is_ours(const fs::path& name) const {
    std::error_code error;
    return has(name) || !fs::exists(fs::symlink_status(folder_ / name, error));
  }
  void add(const fs::path& name) { names_.insert(name.generic_string()); }
  bool store() const {
    std::string text;
    for (const std::string& name : names_)
      if (!name.empty()) text += name + '\n';
    SafeFile file(list_);
    return file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) && file.commit();
  }

 private:
  fs::path folder_, list_;
  std::set<std::string> names_;
};

struct Work {
  const FieldValues& values;
  fs::path folder;
  std::uint32_t side = 160;
  int style = kFit, format = kAsSource;
  Colour ground = 0xFFFFFF;
};

/// One file on its way. What is shared with others is settled before they are worked on side by side.
struct Item {
  BatchRow row;
  std::string stem;      ///< safe and single
  std::string original;  ///< name of the original in its folder
  fs::path image;        ///< of the thumbnail, below the folder
  fs::path shown;        ///< what a click leads to, below the folder
  GalleryItem page;
};

/// The picture in a square of the side: as large as fits, or filling it.
Picture thumbnail(const Picture& picture, const Work& work) {
  const Picture color = picture.bits() == 32 ? picture : PictureToTrueColor(picture);
  if (!color) return {};
  const double across = static_cast<double>(work.side) / color.width(),
               down = static_cast<double>(work.side) / color.height();
  const double factor = std::min(work.style == kFill ? std::max(across, down) : std::min(across, down), 1.0);
  const auto scaled = [&](std::uint32_t length) {
    return std::max(1u, static_cast<std::uint32_t>(std::lround(length * factor)));
  };
  const Picture small =
      PictureResample(color, scaled(color.width()), scaled(color.height()), ResampleFilter::Automatic);
  if (!small || work.style != kFill) return small;
  const auto left = static_cast<std::int32_t>(small.width() - std::min(small.width(), work.side)) / 2,
             top = static_cast<std::int32_t>(small.height() - std::min(small.height(), work.side)) / 2;
  return PictureCrop(small, {left, top, left + static_cast<std::int32_t>(std::min(small.width(), work.side)),
                             top + static_cast<std::int32_t>(std::min(small.height(), work.side))});
}

bool save_still(const Picture& picture, const fs::path& path, const std::string& extension, const Work& work,
                Host& host) {
  if (extension != ".png") {
    const Picture flat =
        extension == ".jpg" && picture.bits() == 32 ? PictureFlatten(picture, work.ground) : picture;
    return flat && GraphicFileWrite(path.string(), flat);
  }
  DocumentWindow still;
  return make_still(still, {}, picture) && save_document(still, path, host);
}

bool save_animation(DocumentWindow& window, const fs::path& path, const std::string& extension, Host& host) {
  if (extension != ".gif") return save_document(window, path, host);
  const Exporter& gif = *find_exporter("gif");
  FieldValues values = initial_values(gif.parameters.fields);
  values.set("optimize", std::int64_t{1});
  return export_document(gif, window, values, path, host);
}

/// The extension of a thumbnail of such a source.
std::string thumbnail_extension(const fs::path& source, bool moves, const Work& work) {
  constexpr const char* kExtensions[] = {"", ".png", ".jpg", ".gif", ".webp"};
  if (work.format != kAsSource) return kExtensions[work.format];
  const std::string own = lower_case(source.extension().string());
  if (own == ".gif" || own == ".webp") return own;
  return own == ".jpg" && !moves ? own : ".png";
}

/// Whether the file is an animation that its thumbnail shows moving.
bool moves_in(const DocumentWindow& window, const Work& work) {
  return is_animation(window.document.kind) && frame_entries(window).size() > 1 &&
         work.style != kFirstFrame && work.format != kJpeg;
}

BatchResult make_moving(const DocumentWindow& window, Item& item, const Work& work, Host& host) {
  FrameStream stream = canvas_frames(window);
  const Picture first = thumbnail(stream.frame(0).picture, work);
  if (!first) return BatchResult::ObjectError;
  stream.canvas = {first.width(), first.height()};
  stream.frame = [&work, frame = std::move(stream.frame)](std::size_t number) {
    StreamedFrame made = frame(number);
    made.picture = made.picture ? thumbnail(made.picture, work) : Picture();
    return made;
  };
  DocumentWindow made;
  const std::string extension = item.image.extension().string();
  const DocumentKind kind = extension == ".webp" ? DocumentKind::WEBP : DocumentKind::APNG;
  if (!build_from_stream(made, stream, kind, host))
    return host.stopped() ? BatchResult::Aborted : BatchResult::ObjectError;
  item.page.width = first.width();
  item.page.height = first.height();
  return save_animation(made, work.folder / item.image, extension, host) ? BatchResult::Ok
                                                                         : BatchResult::BadWrite;
}

BatchResult make_thumbnail_of(Item& item, const DocumentWindow* window, const Work& work, Host& host) {
  if (window && moves_in(*window, work)) return make_moving(*window, item, work, host);
  const Picture picture = first_shown(window, item.row.source, work.side);
  const Picture small = picture ? thumbnail(picture, work) : Picture();
  if (!small) return BatchResult::BadRead;
  item.page.width = small.width();
  item.page.height = small.height();
  return save_still(small, work.folder / item.image, item.image.extension().string(), work, host)
             ? BatchResult::Ok
             : BatchResult::BadWrite;
}

/// Copies the original where it is newer than what is there.
BatchResult copy_original(const Item& item, const Work& work) {
  std::error_code error;
  const fs::path target = work.folder / work.values.text("downloadDir") / item.original;
  const auto there = fs::last_write_time(target, error);
  const bool known = !error;
  if (known && fs::last_write_time(item.row.source, error) <= there && !error) return BatchResult::Ok;
  std::error_code failed;
  return replace_by_copy(item.row.source, target, failed) ? BatchResult::Ok : BatchResult::BadWrite;
}

BatchResult do_item(Item& item, const Work& work, Host& host) {
  std::string reason;
  if (!read_start(item.row.source, reason, 1)) return item.row.reason = reason, BatchResult::BadRead;
  DocumentWindow window;
  bool opened = false;
  if (has_document_extension(item.row.source)) {
    opened = open_document(window, item.row.source, host);
    if (!opened) return BatchResult::BadRead;
  } else if (lower_case(item.row.source.extension().string()) == ".gif") {
    // One that doesn't move is a picture.
    Host quiet = host;
    quiet.message = nullptr;
    opened = open_document(window, item.row.source, quiet);
  }
  const std::string extension = thumbnail_extension(item.row.source, opened && moves_in(window, work), work);
  item.image += extension;
  item.row.target = work.folder / item.image;
  if (const BatchResult made = make_thumbnail_of(item, opened ? &window : nullptr, work, host);
      made != BatchResult::Ok)
    return made;
  if (const BatchResult copied = copy_original(item, work); copied != BatchResult::Ok) return copied;
  if (!opened || window.document.kind != DocumentKind::MING) return BatchResult::Ok;
  // Browsers show no MNG.
  item.shown = fs::path(work.values.text("imageDir")) / (item.stem + "_full.png");
  SafeFile file(work.folder / item.shown);
  return file.ok() && write_as_animated_png(window, file_sink(file), host) ? BatchResult::Ok
                                                                           : BatchResult::BadWrite;
}

/// A name that none of the others has, and no file of somebody else.
std::string single_stem(const std::string& wanted, const fs::path& source, const Work& work, const Made& made,
                        std::set<std::string>& taken) {
  for (std::size_t i = 1;; ++i) {
    const std::string stem = i == 1 ? wanted : wanted + "-" + std::to_string(i);
    bool is_free = !taken.contains(lower_case(stem));
    for (const char* extension : {".png", ".jpg", ".gif", ".webp", "_full.png"})
      is_free = is_free && made.is_ours(fs::path(work.values.text("imageDir")) / (stem + extension));
    const std::string original = stem + safe_name("x" + source.extension().string()).substr(1);
    is_free = is_free && made.is_ours(fs::path(work.values.text("downloadDir")) / original);
    if (!is_free) continue;
    taken.insert(lower_case(stem));
    return stem;
  }
}

std::vector<Item> settle_items(std::span<const fs::path> files, const Work& work, Made& made) {
  std::vector<Item> items(files.size());
  std::set<std::string> taken{"favicon"};
  for (std::size_t i = 0; i < files.size(); ++i) {
    Item& item = items[i];
    item.row.source = files[i];
    item.stem = single_stem(safe_name(files[i].stem().string()), files[i], work, made, taken);
    item.original = item.stem + safe_name("x" + files[i].extension().string()).substr(1);
    item.image = fs::path(work.values.text("imageDir")) / item.stem;
    item.shown = fs::path(work.values.text("downloadDir")) / item.original;
    item.page.name = files[i].stem().string();
    item.page.description = sidecar(files[i], work.values.text("descriptionExt"));
    item.page.button = sidecar(files[i], work.values.text("buttonExt"));
    if (item.page.button.empty()) item.page.button = "Download";
    item.page.link = address_in(sidecar(files[i], work.values.text("urlExt")));
  }
  return items;
}

void finish_item(Item& item, const Work& work, Made& made) {
  made.add(item.image);
  made.add(fs::path(work.values.text("downloadDir")) / item.original);
  if (item.shown.parent_path() == work.values.text("imageDir")) made.add(item.shown);
  item.page.download = url_path(fs::path(work.values.text("downloadDir")) / item.original);
  if (item.page.link.empty()) item.page.link = url_path(item.shown);
  item.page.image = url_path(item.image);
  if (work.values.number("inline") == 0) return;
  const std::string bytes = small_file(work.folder / item.image, kMaximumFileBytes);
  const std::string kind = item.image.extension().string().substr(1);
  item.page.image = "data:image/" + (kind == "jpg" ? "jpeg" : kind) + ";base64," +
                    base64({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

/// Some at a time side by side, told in their order. False when the user stopped it.
bool do_items(std::vector<Item>& items, const Work& work, Host& host,
              const std::function<void(const BatchRow&)>& told) {
  const Progress progress(host, string_text(StringId::BuildingGallery));
  const std::size_t step = 2 * parallel_width();
  for (std::size_t first = 0; first < items.size(); first += step) {
    if (host.stopped()) return false;
    const std::size_t count = std::min(step, items.size() - first);
    parallel_for(count, [&](std::size_t i) {
      Item& item = items[first + i];
      Host own;
      own.message = [&item](const Message& message) {
        if (message.option || !item.row.reason.empty()) return;
        item.row.reason = message.more.empty() ? message.text : message.text + " (" + message.more + ")";
      };
      item.row.result = do_item(item, work, own);
      if (item.row.result == BatchResult::Ok) item.row.reason.clear();
    });
    for (std::size_t i = 0; i < count && told; ++i) told(items[first + i].row);
    progress.step(first + count, items.size());
  }
  return true;
}

bool write_text(const fs::path& path, std::string_view text, Host& host) {
  SafeFile file(path);
  if (file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) && file.commit())
    return true;
  host.show(StringId::ErrorWritingFile, {}, path.string() + ": " + file.reason());
  return false;
}

/// The rules, and behind them those of the user's own; none of them ends the element that holds them.
std::string rules_of(const FieldValues& values) {
  std::string css = gallery_css(values) + small_file(values.text("importCss"), kMostPage);
  for (std::size_t at = css.find("</"); at != std::string::npos; at = css.find("</", at + 3))
    css.insert(at + 1, "\\");
  return css;
}

std::string part_of(const FieldValues& values, const char* enabled, const char* path) {
  return values.number(enabled) != 0 ? small_file(values.text(path), kMostPage) + "\n" : std::string();
}

/// The first thumbnail in the size of an icon; empty without one.
std::string write_icon(const std::vector<Item>& items, const Work& work, Made& made) {
  constexpr std::uint32_t kIcon = 48;
  const fs::path name = fs::path(work.values.text("imageDir")) / "favicon.png";
  if (work.values.number("favicon") == 0 || !made.is_ours(name)) return {};
  for (const Item& item : items) {
    if (item.row.result != BatchResult::Ok) continue;
    Work small{work.values, work.folder, kIcon, kFit, kPng, work.ground};
    const Picture picture = read_still(work.folder / item.image).picture;
    const Picture icon = picture ? thumbnail(picture, small) : Picture();
    Host nobody;
    if (!icon || !save_still(icon, work.folder / name, ".png", small, nobody)) return {};
    made.add(name);
    return url_path(name);
  }
  return {};
}

/// Asks about pages that somebody else has written. False when they are to stay.
bool may_write(const Work& work, std::size_t pages, const Made& made, Host& host) {
  bool ours = work.values.number("externalCss") == 0 || made.is_ours(work.values.text("baseName") + ".css");
  for (std::size_t i = 0; i < pages; ++i) ours = ours && made.is_ours(gallery_page_name(work.values, i));
  if (ours || !host.ask) return true;
  const StringId id = StringId::TilesExistQuestion;
  return host.ask({id, {}, std::string(string_text(id)), {}, nullptr}, false) == Answer::Yes;
}

bool write_pages(std::span<const GalleryItem> items, const std::string& icon, const Work& work, Made& made,
                 GalleryReport& report, Host& host) {
  const auto each = static_cast<std::size_t>(work.values.number("perPage"));
  const std::size_t pages = (items.size() + each - 1) / each;
  const std::string css = rules_of(work.values), header = part_of(work.values, "header", "headerPath"),
                    footer = part_of(work.values, "footer", "footerPath");
  if (work.values.number("externalCss") != 0) {
    const std::string name = work.values.text("baseName") + ".css";
    if (!write_text(work.folder / name, css, host)) return false;
    made.add(name);
  }
  for (std::size_t page = 0; page < pages; ++page) {
    const std::size_t first = page * each;
    const std::string name = gallery_page_name(work.values, page);
    const std::string text = gallery_page(items.subspan(first, std::min(each, items.size() - first)), first,
                                          page, pages, work.values, css, icon, header, footer);
    if (!write_text(work.folder / name, text, host)) return false;
    made.add(name);
    report.pages.push_back(work.folder / name);
  }
  return true;
}

}  // namespace

std::optional<GalleryReport> build_gallery(std::span<const fs::path> files, const FieldValues& values,
                                           Host& host, const std::function<void(const BatchRow&)>& told) {
  if (const auto fault = check_values(kGallery, values, {})) {
    if (host.message) host.message({fault->id, {}, fault->text, {}, nullptr});
    return std::nullopt;
  }
  if (files.empty()) return host.show(StringId::NoGalleryItems), std::nullopt;
  Work work{values,
            values.text("destination"),
            static_cast<std::uint32_t>(values.number("thumb")),
            static_cast<int>(values.number("thumbStyle")),
            static_cast<int>(values.number("thumbFormat")),
            static_cast<Colour>(values.number("alphaBack"))};
  std::error_code error;
  for (const char* below : {"imageDir", "downloadDir"}) {
    fs::create_directories(work.folder / values.text(below), error);
    if (error)
      return host.show(StringId::ErrorWritingFile, {}, work.folder.string() + ": " + error.message()),
             std::nullopt;
  }
  Made made(work.folder, values.text("baseName"));
  const auto each = static_cast<std::size_t>(values.number("perPage"));
  if (!may_write(work, (files.size() + each - 1) / each, made, host)) return std::nullopt;
  std::vector<Item> items = settle_items(files, work, made);
  const bool done = do_items(items, work, host, told);
  GalleryReport report;
  std::vector<GalleryItem> shown;
  for (Item& item : items) {
    report.rows.push_back(item.row);
    if (!done || item.row.result != BatchResult::Ok) continue;
    finish_item(item, work, made);
    shown.push_back(item.page);
  }
  if (!done) return std::nullopt;
  const std::string icon = write_icon(items, work, made);
  const bool written = shown.empty() || write_pages(shown, icon, work, made, report, host);
  if (!made.store()) return host.show(StringId::ErrorWritingFile, {}, work.folder.string()), std::nullopt;
  return written ? std::optional(report) : std::nullopt;
}

}  // namespace vellum
