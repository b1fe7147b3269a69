// Makes the files that the fuzz targets begin with: small documents of every kind and form with every chunk
// that has a content of its own, the same for each operation, blocks of the clipboard, payloads, palettes,
// settings; and the dictionaries.   make_seeds FOLDER_OF_FUZZ
#include <fstream>
#include <set>

#include "base/byte_order.h"
#include "base/text.h"
#include "configuration/config_file.h"
#include "configuration/favorites.h"
#include "configuration/setting_table.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_reading.h"
#include "core/chunks/chunk_table.h"
#include "core/edit/clipboard_block.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "core/files/recovery_copy.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"
#include "fuzz_rows.h"
#include "image/graphic_file.h"
#include "image/palette_file.h"
#include "operations/operation.h"
#include "operations/tile_groups.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum::fuzz {
namespace {

namespace fs = std::filesystem;
using testing::small_document;

using Bytes = std::vector<std::uint8_t>;

void write(const fs::path& path, std::string_view text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string_view text_of(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Bytes file_of(DocumentWindow window) {
  const testing::ScratchFolder scratch;
  const fs::path path = scratch / testing::kFileNames.at(window.document.kind);
  Host host;
  return save_document(window, path, host) ? testing::file_bytes(path) : Bytes();
}

/// Everything that can be inserted by name and has a content of its own.
void insert_all_chunks(DocumentWindow& window) {
  for (const ChunkTag tag : insertable_tags(window)) {
    Host host;
    window.document.caret = static_cast<std::int32_t>(window.list.size()) - 1;
    insert_chunk(window, tag, {{}, 3}, host);
  }
}

/// Name of the target, kind.
constexpr std::pair<const char*, DocumentKind> kTargets[] = {{"png", DocumentKind::PING},
                                                             {"apng", DocumentKind::APNG},
                                                             {"mng", DocumentKind::MING},
                                                             {"webp", DocumentKind::WEBP}};

void make_documents(const fs::path& seeds) {
  for (const auto& [target, kind] : kTargets)
    for (const std::uint8_t type : {0, 2, 3, 6}) {
      if (kind == DocumentKind::WEBP && (type == 0 || type == 3)) continue;
      for (const bool all : {false, true}) {
        DocumentWindow window = small_document(kind, kind == DocumentKind::PING ? 1 : 3, type);
        if (all) insert_all_chunks(window);
        const std::string file(text_of(file_of(window)));
        write(seeds / target / ("type" + std::to_string(type) + (all ? "-chunks" : "")), file);
        if (all && type != 0) write(seeds / "check" / (std::string(target) + std::to_string(type)), file);
      }
    }
}

/// The forms of a still PNG that our writer doesn't choose for such pictures.
void make_png_forms(const fs::path& seeds) {
  constexpr std::pair<unsigned, unsigned> kForms[] = {{1, 0}, {2, 0}, {4, 0}, {16, 0}, {16, 2}, {1, 3},
                                                      {2, 3}, {4, 3}, {8, 4}, {16, 4}, {16, 6}};
  for (const auto& [depth, type] : kForms) {
    std::vector<testing::ChunkText> chunks = {{"IHDR", testing::header_payload(5, 3, depth, type)}};
    if (type == 3) chunks.push_back({"PLTE", std::string(6, '\x40')});
    chunks.push_back({"IDAT", testing::zero_image(5, 3, depth, type)});
    chunks.push_back({"IEND", ""});
    write(seeds / "png" / ("type" + std::to_string(type) + "-depth" + std::to_string(depth)),
          text_of(testing::png_file(chunks)));
  }
}

void make_rows(const fs::path& seeds) {
  const auto rows = operation_table();
  for (std::size_t row = 0; row < rows.size(); ++row)
    for (std::size_t reader = 0; reader < 3; ++reader) {
      const auto [target, kind] = kTargets[reader + 1];
      if (!takes_kind(rows[row]->parameters, kind) ||
          rows[row]->parameters.name == std::string_view("social"))
        continue;
      Bytes bytes(kRowsHead, kInitialValue);
      bytes[0] = static_cast<std::uint8_t>(reader);
      bytes[1] = static_cast<std::uint8_t>(row);
      bytes[2] = kAllFrames;
      const Bytes file = file_of(small_document(kind, 3, row % 2 == 0 ? 6 : 2));
      bytes.insert(bytes.end(), file.begin(), file.end());
      write(seeds / "rows" / (std::string(rows[row]->parameters.name) + '-' + target), text_of(bytes));
    }
}

/// Files of other formats, where an import of their name reads them from bytes.
void make_exports(const fs::path& seeds) {
  const testing::ScratchFolder scratch;
  for (const Exporter* row : exporter_table()) {
    const Importer* reader = find_importer("import-" + std::string(row->parameters.name));
    if (!reader || reader->fromFile) continue;
    for (const std::uint8_t type : {2, 3, 6}) {
      const DocumentKind kind = row->parameters.kinds.front();
      Host host;
      const DocumentWindow window = small_document(kind, is_animation(kind) ? 3 : 1, type);
      if (export_document(*row, window, initial_values(row->parameters.fields), scratch / "a", host))
        write(seeds / row->parameters.name / ("type" + std::to_string(type)),
              text_of(testing::file_bytes(scratch / "a")));
    }
  }
}

/// Blocks of the clipboard, and payloads behind their tags.
void make_blocks_and_payloads(const fs::path& seeds) {
  for (const auto& [target, kind] : kTargets) {
    DocumentWindow window = small_document(kind, 1, kind == DocumentKind::WEBP ? 6 : 3);
    insert_all_chunks(window);
    ChunkBlock block;
    block.source.kind = kind;
    for (std::size_t i = 0; i < window.list.size(); ++i) {
      const ChunkRecord& record = window.list.record(i);
      if (place_of(record.tag, kind) != ChunkPlace::Fixed) block.records.push_back(record);
      if (!has_chunk_reading(record.tag, DocumentKind::MING) || !record.data) continue;
      Bytes bytes(4);
      write_be32(bytes.data(), record.tag);
      const auto payload = raw_payload(record);
      bytes.insert(bytes.end(), payload.begin(), payload.end());
      write(seeds / "reading" / tag_letters(record.tag).substr(0, record.tag == tag::XMP ? 3 : 4),
            text_of(bytes));
    }
    write(seeds / "clipboard" / target, text_of(write_chunk_block(block)));
  }
  PaletteColors colors;
  colors.count = 3;
  for (const PaletteForm& form : palette_forms())
    write(seeds / "reading" / ("palette." + std::string(form.extension)), text_of(form.bytes(colors)));
}

/// Texts that a gallery of favorites and the groups of the protection matrix can be, and bytes that choose
/// the values, frames and looks of a movie.
void make_texts_and_movies(const fs::path& seeds) {
  write(seeds / "favorites/paths", favorites_text({"/a/one.png", "/b/two words.mng", "/c/\xC3\xA9.webp"}));
  write(seeds / "favorites/ends", favorites_text({}) + "\r/a\r\r\n;/b\n/c\n");
  const auto* protect = find_operation("protect");
  write(seeds / "groups/two", tile_groups_text({{"First", initial_values(protect->parameters.fields)},
                                                {"Second one", initial_values(protect->parameters.fields)}}));
  for (int kind = 0; kind < 3; ++kind) {
    std::string bytes = {0,          0, 3, '\xE8', 0,  1, char(kind == 0 ? 0x0C : 0x4D), 0, 1,
                         char(kind), 7, 5, 0,      40, 12};
    for (int frame = 0; frame < 12; ++frame) bytes += {char(0), char(40), char(frame / 2)};
    const std::string file(text_of(file_of(small_document(DocumentKind::APNG, 3, kind == 1 ? 3 : 6))));
    write(seeds / "swf" / std::to_string(kind), std::string{char(kind), 0, 0} + file);
    write(seeds / "movie_import" / std::to_string(kind), bytes);
  }
}

/// What the program keeps for itself, and bytes that choose edits.
void make_kept_and_edits(const fs::path& seeds) {
  for (const auto& [target, kind] : kTargets) {
    DocumentWindow window = small_document(kind, is_animation(kind) ? 3 : 1, 6);
    Host host;
    undo_push(window, host);
    insert_all_chunks(window);
    fs::create_directories(seeds / "recovery");
    write_recovery_copy(window, seeds / "recovery" / target, 0);
    std::string choices;
    for (int i = 0; i < 90; ++i) choices += static_cast<char>(7 * i + static_cast<int>(kind));
    write(seeds / "edits" / target, choices);
  }
  write(seeds / "histories/files", "/a/one.png\n/b/two words.mng\n");
}

/// Documents behind the bytes that say what is done with them; pictures in each format; what dialogs hold and
/// what is typed.
void make_playing_and_pictures(const fs::path& seeds) {
  for (std::size_t reader = 0; reader < 3; ++reader)
    for (const char wanted : {0, 1, 2, 3}) {
      const auto [target, kind] = kTargets[reader + 1];
      const std::string head{static_cast<char>(reader), wanted};
      const std::string file(text_of(file_of(small_document(kind, 3, wanted % 2 == 0 ? 6 : 2))));
      for (const char* name : {"play", "convert", "reconstruct"})
        write(seeds / name / (std::string(target) + static_cast<char>('0' + wanted)), head + file);
    }
  const testing::ScratchFolder scratch;
  const Palette palette = {255, 0, 0, 0, 255, 0, 0, 0, 255};
  char writer = 0;
  for (const GraphicFileModule& module : graphic_file_modules()) {
    ++writer;
    for (const std::uint32_t bits : {1, 4, 8, 24, 32}) {
      Picture picture = PictureCreate(9, 7, &palette, bits);
      for (std::uint32_t x = 0; x < 7; ++x) PicturePutPixel(picture, x, x, bits > 8 ? 0xFF336699 : 1);
      const fs::path file = scratch / ("a." + std::string(module.extension));
      if (GraphicFileWrite(file.string(), picture))
        write(seeds / "picture" / (std::string(module.extension) + std::to_string(bits)),
              std::string{writer} + std::string(text_of(testing::file_bytes(file))));
    }
  }
  std::string rows(2000, 0);
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = static_cast<char>(i * i >> 3);
  for (char form = 0; form < 11; ++form)
    write(seeds / "bands" / std::to_string(form), std::string{form, 20, 30, 3, 6, 0, 0, 7} + rows);
  write(seeds / "dialog_state/lines",
        "DlgItem_000001=CHKB,1\nDlgItem_000012=TEDT,two\\nlines\r\nDlgItem_-1=SPNF,0.50\n");
  for (std::size_t row = 0; row < operation_table().size(); ++row) {
    std::string typed(1, static_cast<char>(row));
    for (const Field& field : operation_table()[row]->parameters.fields)
      typed += "--" + std::string(field.name) + '\0' + field_value_text(field, initial_value(field)) + '\0';
    write(seeds / "command_line" / operation_table()[row]->parameters.name, typed);
  }
}

void make_dictionaries(const fs::path& folder) {
  std::set<std::string> tags;
  for (const ChunkRow& row : chunk_table()) tags.insert('"' + tag_letters(row.tag) + "\"\n");
  std::string all;
  for (const std::string& tag : tags) all += tag;
  write(folder / "chunks.dict", all);
  std::string names;
  for (const SettingRow& row : setting_table()) names += '"' + std::string(row.name) + " = \"\n";
  write(folder / "configuration.dict", names);
}

}  // namespace
}  // namespace vellum::fuzz

int main(int count, char** arguments) {
  using namespace vellum;
  using namespace vellum::fuzz;
  if (count != 2) return 2;
  const fs::path folder = arguments[1], seeds = folder / "seeds";
  settings::AutoUpdateTime = settings::IdentifyFiles = 0;
  fs::remove_all(seeds);
  make_documents(seeds);
  make_png_forms(seeds);
  make_rows(seeds);
  make_exports(seeds);
  make_blocks_and_payloads(seeds);
  make_texts_and_movies(seeds);
  make_kept_and_edits(seeds);
  make_playing_and_pictures(seeds);
  write(seeds / "configuration/defaults", config_text(0));
  make_dictionaries(folder);
}
