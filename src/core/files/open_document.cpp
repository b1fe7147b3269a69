#include "core/files/open_document.h"

#include <algorithm>
#include <array>

#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/settings.h"

namespace vellum {
namespace {

using Reader = bool (*)(DocumentWindow&, std::span<const std::uint8_t>, Host&);

/// Who reads files of an extension.
struct ReaderRow {
  std::string_view extension;  ///< with its dot, in any case
  Reader reader;
};

constexpr ReaderRow kReaders[] = {
    {".mng", read_mng},
    {".webp", read_webp},
};

/// The extension alone picks the reader; every other one means PNG.
Reader reader_for(const std::filesystem::path& path) {
  for (const ReaderRow& row : kReaders)
    if (equal_ignoring_case(path.extension().native(), row.extension)) return row.reader;
  return read_png;
}

/// What the first bytes of a file tell: `size` bytes at `offset` are `bytes`.
struct ContentRow {
  std::size_t offset;
  std::string_view bytes;
  std::string_view name;  ///< with its article
  bool picture;           ///< a format that is inserted as an image and not opened
  Reader reader;          ///< who reads it; null: nobody
};

using namespace std::string_view_literals;

constexpr ContentRow kContents[] = {
    {0, "\x89PNG\r\n\x1a\n"sv, "a PNG", false, read_png},
    {0, "\x8AMNG\r\n\x1a\n"sv, "an MNG", false, read_mng},
    {0, "\x8BJNG\r\n\x1a\n"sv, "a JNG", false, nullptr},
    {8, "WEBP"sv, "a WebP", false, read_webp},
    {0, "GIF8"sv, "a GIF", true, nullptr},
    {0, "\xFF\xD8\xFF"sv, "a JPEG", true, nullptr},
    {0, "BM"sv, "a BMP", true, nullptr},
    {0, "\x0A\x05\x01"sv, "a PCX", true, nullptr},
    {8, "ACON"sv, "an ANI", false, nullptr},
    {8, "AVI "sv, "an AVI", false, nullptr},
};

/// What the content is, where it is not what `reader` reads.
std::string content_text(std::span<const std::uint8_t> file, Reader reader) {
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  for (const ContentRow& row : kContents) {
    const bool riff = row.offset == 0 || bytes.starts_with("RIFF");
    if (!riff || bytes.size() < row.offset || !bytes.substr(row.offset).starts_with(row.bytes)) continue;
    if (row.reader == reader) return {};
    std::string text = with_value(string_text(StringId::ContentIs), row.name);
    if (row.picture) text.append("\n").append(string_text(StringId::OpenPictureHint));
    return text;
  }
  return {};
}

bool report_failure(Host& host, std::span<const std::uint8_t> file, Reader reader) {
  std::string more = host.take_fault();
  const std::string content = content_text(file, reader);
  if (!more.empty() && !content.empty()) more += '\n';
  host.show(StringId::FileCorrupted, StringId::ErrorReadingFile, more + content);
  return false;
}

}  // namespace

bool open_document(DocumentWindow& window, const std::filesystem::path& path, Host& host) {
  std::string reason;
  const auto file = read_file(path, reason, kMaximumFileBytes);
  if (!file) {
    host.show(StringId::ErrorReadingFile, {}, path.string() + ": " + reason);
    return false;
  }
  Document& document = window.document;
  document.fileName = path;
  document.thumbScale = std::clamp(settings::DefaultViewMode, 0, 7);
  const Reader reader = reader_for(path);
  bool read = false;
  try {
    read = reader(window, *file, host);
  } catch (const std::bad_alloc&) {
    host.fail({FaultKind::Limit, 0, -1, -1, "memory is exhausted"});
  }
  if (!read) return report_failure(host, *file, reader);
  document.HasFileName = true;
  document.dirty = false;
  std::error_code error;
  document.fileTime = std::filesystem::last_write_time(path, error);
  return true;
}

}  // namespace vellum
