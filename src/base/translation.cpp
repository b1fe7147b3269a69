#include "base/translation.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/text.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMagic = 0x950412DE;
constexpr std::size_t kHeader = 20, kRow = 8;  // bytes of the file's header, and of a row of its tables
constexpr std::uint64_t kLongestCatalog = 16 << 20;
constexpr std::string_view kEnglish = "en", kFile = "LC_MESSAGES/vellumcraft.mo";
constexpr std::string_view kNameLine = "X-Language-Name: ";

/// A compiled catalog: two tables of lengths and offsets, of which that of the sources is sorted.
struct Catalog {
  std::string code;
  std::vector<std::uint8_t> bytes;
  std::uint32_t count = 0, sources = 0, translations = 0;

  std::string_view text(std::uint32_t table, std::uint32_t row) const {
    const std::uint8_t* at = bytes.data() + table + row * kRow;
    return {reinterpret_cast<const char*>(bytes.data()) + read_le32(at + 4), read_le32(at)};
  }
};

bool whole_table(const Catalog& catalog, std::uint32_t table) {
  const std::uint64_t size = catalog.bytes.size();
  if (table > size || std::uint64_t{catalog.count} * kRow > size - table) return false;
  for (std::uint32_t row = 0; row < catalog.count; ++row) {
    const std::uint8_t* at = catalog.bytes.data() + table + row * kRow;
    const std::uint64_t end = std::uint64_t{read_le32(at)} + read_le32(at + 4);
    if (end >= size || catalog.bytes[end] != 0) return false;
  }
  return true;
}

std::unique_ptr<Catalog> read_catalog(const std::filesystem::path& file, std::string_view code) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return nullptr;
  std::string reason;
  auto bytes = read_file(file, reason, kLongestCatalog);
  if (!bytes || bytes->size() < kHeader || read_le32(bytes->data()) != kMagic) return nullptr;
  auto catalog = std::make_unique<Catalog>();
  catalog->code = code;
  catalog->bytes.assign(bytes->data(), bytes->data() + bytes->size());
  catalog->count = read_le32(catalog->bytes.data() + 8);
  catalog->sources = read_le32(catalog->bytes.data() + 12);
  catalog->translations = read_le32(catalog->bytes.data() + 16);
  const bool whole = whole_table(*catalog, catalog->sources) && whole_table(*catalog, catalog->translations);
  return whole ? std::move(catalog) : nullptr;
}

/// The first row is that of the empty text: what the catalog says of itself.
std::string name_of(const Catalog& catalog) {
  const std::string_view about = catalog.count > 0 ? catalog.text(catalog.translations, 0) : "";
  const std::size_t at = about.find(kNameLine);
  if (at == std::string_view::npos) return catalog.code;
  const std::string_view line = about.substr(at + kNameLine.size());
  return std::string(line.substr(0, line.find('\n')));
}

// Views of texts live as long as the program, so a catalog that was in use is never given up.
std::atomic<const Catalog*> inUse = nullptr;

void take(std::unique_ptr<Catalog> catalog) {
  static std::mutex lock;
  static std::vector<std::unique_ptr<Catalog>> kept;
  const std::lock_guard hold(lock);
  inUse = catalog.get();
  if (catalog) kept.push_back(std::move(catalog));
}

std::optional<std::string_view> find(std::string_view source) {
  const Catalog* catalog = inUse.load(std::memory_order_acquire);
  if (!catalog || source.empty()) return std::nullopt;
  std::uint32_t least = 0, most = catalog->count;
  while (least < most) {
    const std::uint32_t middle = least + (most - least) / 2;
    if (catalog->text(catalog->sources, middle) < source)
      least = middle + 1;
    else
      most = middle;
  }
  if (least == catalog->count || catalog->text(catalog->sources, least) != source) return std::nullopt;
  return catalog->text(catalog->translations, least);
}

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

/// "de_AT.UTF-8@euro" gives "de_AT" and "de".
void add_locale(std::vector<std::string>& codes, std::string_view locale) {
  const std::string code(locale.substr(0, locale.find_first_of(".@")));
  if (code.empty()) return;
  // A code is a part of a path.
  if (code.find('/') != std::string::npos || code == "..") return;
  codes.push_back(code);
  if (const std::size_t land = code.find('_'); land != std::string::npos)
    codes.push_back(code.substr(0, land));
}

bool is_plain(std::string_view locale) {
  return locale.empty() || locale == "POSIX" || locale == "C" || locale.starts_with("C.");
}

}  // namespace

std::string_view translated(std::string_view source) { return find(source).value_or(source); }

const char* translated(const char* source) {
  if (!source || !inUse.load(std::memory_order_relaxed)) return source;
  const auto text = find(source);
  return text ? text->data() : source;
}

std::string inside_sentence(std::string_view source) {
  const std::string small = lower_case(source);
  if (const auto text = find(small)) return std::string(*text);
  return std::string(find(source).value_or(small));
}

bool is_translated(std::string_view source) { return find(source).has_value(); }

std::vector<std::filesystem::path> catalog_folders() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  return {program.parent_path().parent_path() / "share/locale"};
}

std::vector<Language> languages(std::span<const std::filesystem::path> folders) {
  std::vector<Language> found;
  std::error_code error;
  for (const auto& folder : folders)
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
      const std::string code = entry.path().filename();
      if (const auto catalog = read_catalog(entry.path() / kFile, code))
        found.push_back({code, name_of(*catalog)});
    }
  std::ranges::sort(found, {}, &Language::code);
  const auto same_code = [](const Language& a, const Language& b) { return a.code == b.code; };
  found.erase(std::unique(found.begin(), found.end(), same_code), found.end());
  found.insert(found.begin(), {std::string(kEnglish), "English"});
  return found;
}

std::vector<std::string> wished_languages(std::string_view wanted) {
  std::vector<std::string> codes;
  add_locale(codes, wanted);
  if (!wanted.empty()) return codes;
  std::string_view locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (locale = variable(name); !locale.empty()) break;
  // Who has asked for no language at all doesn't get one by LANGUAGE either.
  if (is_plain(locale)) return codes;
  for (std::string_view list = variable("LANGUAGE"); !list.empty();) {
    const std::size_t end = std::min(list.find(':'), list.size());
    add_locale(codes, list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  add_locale(codes, locale);
  return codes;
}

void use_language(std::span<const std::string> wished, std::span<const std::filesystem::path> folders) {
  for (const std::string& code : wished) {
    if (code == kEnglish) break;
    for (const auto& folder : folders)
      if (auto catalog = read_catalog(folder / code / kFile, code)) return take(std::move(catalog));
  }
  take(nullptr);
}

std::string_view language_in_use() {
  const Catalog* catalog = inUse.load(std::memory_order_acquire);
  return catalog ? std::string_view(catalog->code) : kEnglish;
}

}  // namespace vellum
