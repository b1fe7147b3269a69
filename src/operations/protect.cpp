// Protection matrix: a picture cut into tiles, and a page whose table puts them together below covers.
#include <algorithm>

#include "base/file.h"
#include "base/limits.h"
#include "base/page_text.h"
#include "base/text.h"
#include "core/build/convert_records.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

constexpr Field kFields[] = {
    {.name = "folder", .label = "Folder", .type = FieldType::Text},
    {.name = "tile",
     .label = "Tile size",
     .least = 16,
     .most = 1024,
     .initial = 128,
     .setting = &settings::MatrixTileSize},
    {.name = "least",
     .label = "Thinnest tile",
     .least = 1,
     .most = 512,
     .tip = "A last column or row that would be thinner joins its neighbor",
     .initial = 16,
     .setting = &settings::MatrixTileMinimum},
    {.name = "minimumSize",
     .label = "Smallest picture",
     .least = 16,
     .most = 4096,
     .tip = "Pictures with a shorter side are refused",
     .initial = 64,
     .setting = &settings::MatrixMinimumSize},
    {.name = "start",
     .label = "First number",
     .most = 99999,
     .initial = 1,
     .setting = &settings::MatrixCountStart},
    {.name = "imagePath",
     .label = "Address of the tiles",
     .type = FieldType::Text,
     .most = 260,
     .tip = "Put before their names in the page",
     .textSetting = &settings::MatrixImagePath},
    {.name = "whole",
     .label = "Whole page",
     .type = FieldType::Flag,
     .tip = "Without it the table alone, for a page of yours",
     .initial = 1,
     .setting = &settings::MatrixWriteHeader},
    {.name = "cover",
     .label = "Cover picture",
     .type = FieldType::Text,
     .look = FieldLook::Path,
     .tip = "What a browser saves; empty: a transparent pixel",
     .textSetting = &settings::MatrixDefaultTile},
};

constexpr const char* kWhole[] = {"whole"};
constexpr CompoundOption kOptions[] = {
    {.name = "fragment", .form = nullptr, .help = "The table alone", .fields = kWhole, .value = 0}};

Picture picture_of_document(const DocumentWindow& window) {
  const auto entries = frame_entries(window);
  return entries.empty() ? Picture() : picture_of(window.list.record(entries.front()));
}

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  if (values.text("folder").empty()) return fault_of("folder", StringId::NoFolder);
  const Picture picture = picture_of_document(window);
  const std::int64_t least = values.number("minimumSize");
  if (picture && (picture.width() < least || picture.height() < least))
    return fault_of("minimumSize", StringId::TooSmallForMatrix);
  return std::nullopt;
}

/// Where tiles begin on one side, and behind the last of them its end.
std::vector<std::uint32_t> cuts(std::uint32_t side, std::uint32_t tile, std::uint32_t least) {
  std::vector<std::uint32_t> at{0};
  for (std::uint32_t next = tile; next < side && side - next >= std::min(least, tile); next += tile)
    at.push_back(next);
  at.push_back(side);
  return at;
}

struct Tiles {
  Picture picture;
  std::vector<std::uint8_t> transparency;
  std::vector<std::uint32_t> across, down;
  std::string stem;
  std::uint32_t first = 1;

  std::size_t columns() const { return across.size() - 1; }
  std::size_t count() const { return columns() * (down.size() - 1); }
  std::uint32_t width(std::size_t tile) const {
    return across[tile % columns() + 1] - across[tile % columns()];
  }
  std::uint32_t height(std::size_t tile) const { return down[tile / columns() + 1] - down[tile / columns()]; }
  std::string name(std::size_t tile) const {
    return stem + format_text("_%05u.png", static_cast<unsigned>(first + tile));
  }
};

bool write_text(const fs::path& path, std::string_view text, Host& host) {
  SafeFile file(path);
  return (file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) && file.commit()) ||
         host.fail({FaultKind::Misuse, 0, -1, -1, file.reason()});
}

bool write_still(const fs::path& path, const Picture& picture, const std::vector<std::uint8_t>& transparency,
                 Host& host) {
  DocumentWindow still;
  if (!picture || !make_still(still, {}, picture, transparency)) throw std::bad_alloc();
  SafeFile file(path);
  if (!file.ok()) return host.fail({FaultKind::Misuse, 0, -1, -1, file.reason()});
  return write_document(still, DocumentKind::PING, file_sink(file), save_options(), host) ==
         WriteResult::Done;
}

/// The name that the cover has in the folder.
std::string cover_name(const Tiles& tiles, const std::string& cover) {
  return tiles.stem + "_cover" + (cover.empty() ? ".png" : fs::path(cover).extension().string());
}

bool write_cover(const fs::path& path, const std::string& cover, OperationRun& run) {
  if (cover.empty()) return write_still(path, PictureCreateAlpha(1, 1), {}, run.host);
  std::string reason;
  const auto bytes = read_file(cover, reason, kMaximumFileBytes);
  if (!bytes) {
    run.host.show(StringId::ErrorReadingFile, {}, cover + ": " + reason);
    run.told = true;
    return false;
  }
  SafeFile file(path);
  return (file.write(*bytes) && file.commit()) ||
         run.host.fail({FaultKind::Misuse, 0, -1, -1, file.reason()});
}

/// An address that stands in single quotes of a style, which stands in an attribute.
std::string in_quotes(std::string_view address) {
  std::string out;
  for (const char c : address) out += c == '\'' ? "%27" : c == '\\' ? "%5C" : std::string(1, c);
  return html_text(out);
}

std::string page_of(const Tiles& tiles, const OperationRun& run, const std::string& cover) {
  const std::string place = in_quotes(run.values.text("imagePath")), title = html_text(tiles.stem);
  const std::string over = place + url_part(cover);
  std::string table = "<table style=\"border-collapse: collapse\">\n";
  for (std::size_t tile = 0; tile < tiles.count(); ++tile) {
    const std::string width = std::to_string(tiles.width(tile)), height = std::to_string(tiles.height(tile));
    if (tile % tiles.columns() == 0) table += "<tr>\n";
    table += "<td style=\"padding: 0; background-image: url('" + place + url_part(tiles.name(tile)) +
             "')\"><img src=\"" + over + "\" width=\"" + width + "\" height=\"" + height +
             "\" alt=\"\" style=\"display: block\"></td>\n";
    if (tile % tiles.columns() + 1 == tiles.columns()) table += "</tr>\n";
  }
  table += "</table>\n";
  if (run.number("whole") == 0) return table;
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + title +
         "</title>\n</head>\n<body>\n" + table + "</body>\n</html>\n";
}

/// Asks once about files that are there. False when they are to stay.
bool may_write(const Tiles& tiles, const fs::path& folder, const fs::path& page, const std::string& cover,
               Host& host) {
  std::error_code error;
  bool there = fs::exists(folder / page, error) || fs::exists(folder / cover, error);
  for (std::size_t i = 0; i < tiles.count() && !there; ++i) there = fs::exists(folder / tiles.name(i), error);
  if (!there || !host.ask) return true;
  const StringId id = StringId::TilesExistQuestion;
  return host.ask({id, {}, std::string(string_text(id)), {}, nullptr}, false) == Answer::Yes;
}

bool write_tiles(const Tiles& tiles, const fs::path& folder, Host& host) {
  const Progress progress(host, string_text(StringId::Writing));
  for (std::size_t i = 0; i < tiles.count(); ++i) {
    if (host.stopped()) return false;
    const auto left = static_cast<std::int32_t>(tiles.across[i % tiles.columns()]),
               top = static_cast<std::int32_t>(tiles.down[i / tiles.columns()]);
    const Picture tile =
        PictureCrop(tiles.picture, {left, top, left + static_cast<std::int32_t>(tiles.width(i)),
                                    top + static_cast<std::int32_t>(tiles.height(i))});
    if (!write_still(folder / tiles.name(i), tile, tiles.transparency, host)) return false;
    progress.step(i + 1, tiles.count());
  }
  return true;
}

bool run(OperationRun& run) {
  Tiles tiles;
  tiles.picture = picture_of_document(run.draft);
  if (!tiles.picture) return false;
  tiles.transparency = document_transparency(run.draft.list);
  const auto number = [&](const char* name) { return static_cast<std::uint32_t>(run.number(name)); };
  tiles.across = cuts(tiles.picture.width(), number("tile"), number("least"));
  tiles.down = cuts(tiles.picture.height(), number("tile"), number("least"));
  tiles.stem = fs::path(document_title(run.draft.document)).stem().string();
  tiles.first = number("start");
  const fs::path folder = run.values.text("folder"), page = tiles.stem + ".html";
  const std::string& given = run.values.text("cover");
  const std::string cover = cover_name(tiles, given);
  if (!may_write(tiles, folder, page, cover, run.host)) return run.told = true, false;
  std::error_code error;
  fs::create_directories(folder, error);
  const bool written = write_cover(folder / cover, given, run) && write_tiles(tiles, folder, run.host) &&
                       write_text(folder / page, page_of(tiles, run, cover), run.host);
  if (written) {
    run.host.set_status(filled(StringId::FilesWritten, {std::to_string(tiles.count() + 2)}));
    return true;
  }
  if (!run.told && !run.host.stopped()) {
    run.host.show(StringId::ErrorWritingFile, {}, run.host.take_fault());
    run.told = true;
  }
  return false;
}

constexpr DocumentKind kStills[] = {DocumentKind::PING};

}  // namespace

constinit const Operation kProtect{
    .parameters = {.name = "protect",
                   .title = "Protection Matrix",
                   .help = "A picture as tiles, and a page that puts them together below covers",
                   .command = 315,
                   .kinds = kStills,
                   .page = "protectionmatrix",
                   .stateFile = "ProtectState.txt",
                   .fields = kFields,
                   .folder = "folder",
                   .options = kOptions,
                   .check = check},
    .result = OperationResult::Files,
    .run = run,
};

}  // namespace vellum
