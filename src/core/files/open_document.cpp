#include "core/files/open_document.h"

#include <algorithm>

#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/build/convert_records.h"
#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/model/document_notes.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "image/graphic_file.h"

namespace vellum {
namespace {

using Reader = bool (*)(DocumentWindow&, std::span<const std::uint8_t>, Host&,
                        std::shared_ptr<const FileContent> owner);
using UncheckedReader = bool (*)(DocumentWindow&, std::span<const std::uint8_t>, Host&,
                                 std::shared_ptr<const FileContent> owner, UncheckedImages*);

/// Who reads files of a kind. A PNG tells by itself whether it is an animation.
struct ReaderRow {
  DocumentKind kind;
  Reader reader;
  UncheckedReader unchecked;  ///< null where images depend on each other
};

constexpr ReaderRow kReaders[] = {{DocumentKind::PING, read_png, read_png_unchecked},
                                  {DocumentKind::MING, read_mng, read_mng_unchecked},
                                  {DocumentKind::WEBP, read_webp, nullptr}};

using namespace std::string_view_literals;

/// What the first bytes of a file tell: `bytes` lie at `offset`, for RIFF forms behind its head.
struct ContentRow {
  std::size_t offset;
  std::string_view bytes;
  std::string_view name;  ///< with its article
  DocumentKind kind;      ///< None: no document
};

ContentRow content_of(DocumentKind kind, std::string_view name) {
  return {kind_row(kind).signatureAt, kind_row(kind).signature, name, kind};
}

/// Files that are read as documents, and others that people take for them.
const std::vector<ContentRow>& contents() {
  static const std::vector<ContentRow> rows = {
      content_of(DocumentKind::PING, "a PNG"),     content_of(DocumentKind::MING, "an MNG"),
      content_of(DocumentKind::WEBP, "a WebP"),    {0, "\x8BJNG\r\n\x1a\n"sv, "a JNG", DocumentKind::None},
      {0, "GIF8"sv, "a GIF", DocumentKind::None},  {0, "\xFF\xD8\xFF"sv, "a JPEG", DocumentKind::None},
      {0, "BM"sv, "a BMP", DocumentKind::None},    {0, "\x0A\x05\x01"sv, "a PCX", DocumentKind::None},
      {8, "ACON"sv, "an ANI", DocumentKind::None}, {8, "AVI "sv, "an AVI", DocumentKind::None},
  };
  return rows;
}

const ContentRow* find_content(std::span<const std::uint8_t> file) {
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  for (const ContentRow& row : contents())
    if ((row.offset == 0 || bytes.starts_with("RIFF")) && bytes.size() >= row.offset &&
        bytes.substr(row.offset).starts_with(row.bytes))
      return &row;
  return nullptr;
}

/// What a file is read as: by its name where that ends as one of a kind does, else by its content; PNG where
/// neither tells.
DocumentKind kind_to_read(const std::filesystem::path& path, const ContentRow* content) {
  for (const ReaderRow& row : kReaders)
    if (has_extension_of(path, row.kind)) return row.kind;
  return content && content->kind != DocumentKind::None ? content->kind : DocumentKind::PING;
}

bool report_failure(Host& host, const ContentRow* content, DocumentKind kind) {
  // A file that is too large for this machine may be right.
  const bool too_large = host.has_fault && host.fault.kind == FaultKind::Limit;
  std::string more = host.take_fault();
  if (too_large) {
    host.show(StringId::ErrorReadingFile, {}, more);
    return false;
  }
  if (content && content->kind != kind)
    more +=
        (more.empty() ? "" : "\n") + with_value(string_text(StringId::ContentIs), translated(content->name));
  host.show(StringId::FileCorrupted, StringId::ErrorReadingFile, more);
  return false;
}

/// A healthy picture of another format: whoever is asked may have it as the image of a new document.
bool offer_document(DocumentWindow& window, const Picture& picture, const ContentRow& content, Host& host) {
  Choice choice{StringId::PictureTitle,
                StringId::PictureQuestion,
                {StringId::MakeDocumentOfIt, StringId::CancelAnswer}};
  if (!host.choose) {
    host.show(StringId::PictureQuestion, StringId::ErrorReadingFile,
              with_value(string_text(StringId::ContentIs), translated(content.name)));
    return false;
  }
  if (!host.choose(choice) || choice.chosen != 0) return false;
  DocumentWindow from;
  from.document.fileName = window.document.fileName;
  window.document.fileName.replace_extension();
  window.document.fileName += kind_row(DocumentKind::PING).extensions.front();
  return make_still(window, from, picture) || report_failure(host, nullptr, DocumentKind::PING);
}

}  // namespace

bool open_document(DocumentWindow& window, const std::filesystem::path& path, Host& host,
                   UncheckedImages* unchecked) {
  std::string reason;
  const auto file = map_file(path, reason, kMaximumMappedBytes, unchecked ? kWorthPassing : worthMapping);
  if (!file) {
    host.show(StringId::ErrorReadingFile, {}, path.string() + ": " + reason);
    return false;
  }
  Document& document = window.document;
  document.fileName = path;
  document.thumbScale = std::clamp(settings::DefaultViewMode, 0, 7);
  const KeptNotes kept(document, host);
  const ContentRow* content = find_content(*file);
  const DocumentKind kind = kind_to_read(path, content);
  if (importForeign && (!content || content->kind == DocumentKind::None))
    if (const auto imported = importForeign(window, path, *file, host)) return *imported;
  if (content && content->kind == DocumentKind::None) {
    const GraphicReading reading = read_graphic_bytes(*file);
    if (reading.picture) return offer_document(window, reading.picture, *content, host);
    if (reading.fault == GraphicFault::TooLarge) {
      host.show(StringId::ErrorReadingFile, {}, reading_text(path, reading));
      return false;
    }
  }
  bool read = false;
  try {
    const ReaderRow& row = *std::ranges::find(kReaders, kind, &ReaderRow::kind);
    const auto owner = std::make_shared<const FileContent>(*file);
    read = unchecked && row.unchecked ? row.unchecked(window, *file, host, owner, unchecked)
                                      : row.reader(window, *file, host, owner);
  } catch (const std::bad_alloc&) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
  }
  if (!read) return report_failure(host, content, kind);
  document.HasFileName = true;
  document.dirty = false;
  std::error_code error;
  document.fileTime = std::filesystem::last_write_time(path, error);
  return true;
}

}  // namespace vellum
