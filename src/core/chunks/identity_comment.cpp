#include "core/chunks/identity_comment.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>

#include "base/file.h"
#include "base/text.h"

namespace vellum {
namespace {

constexpr std::size_t kFileLimit = 16'383;

/// The bytes as UTF-8. A character that the limit cut is dropped.
std::string utf8_of(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kLongestCut = 3;
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  for (std::size_t cut = 0; cut <= std::min(kLongestCut, text.size()); ++cut)
    if (is_utf8(text.substr(0, text.size() - cut))) return std::string(text.substr(0, text.size() - cut));
  return utf8_from_latin1(text);
}

/// As a text of the format: line ends as CR LF, tabs as blanks, no other control characters.
std::string plain_text(std::string_view utf8) {
  std::string text;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    const bool pair = byte == '\n' && i > 0 && utf8[i - 1] == '\r';
    if ((byte == '\r' || byte == '\n') && !pair) text += "\r\n";
    if (byte == '\t') text += ' ';
    if (byte >= 32 && byte != 127) text += utf8[i];
  }
  return text;
}

/// The full name of the account (the part of its GECOS field in front of the first comma), else its login
/// name.
std::string account_name() {
  const passwd* entry = getpwuid(getuid());
  if (!entry) return {};
  const std::string gecos = entry->pw_gecos ? entry->pw_gecos : "";
  const std::string name = gecos.substr(0, gecos.find(','));
  return name.empty() ? entry->pw_name : name;
}

std::string identity_text(const std::filesystem::path& path) {
  std::string text = "FILE IDENTITY\r\nCreated or modified by\r\n";
  std::string reason;
  const auto file = path.empty() ? std::nullopt : read_start(path, reason, kFileLimit);
  text += file ? plain_text(utf8_of(*file)) : account_name();
  if (!text.ends_with("\r\n")) text += "\r\n";
  return text + "Vellumcraft 15\r\n";
}

/// Whether the text behind the keyword is this one, byte for byte.
bool says_the_same(const ChunkRecord& record, const TextPayload& comment) {
  const auto behind_keyword = [](std::span<const std::uint8_t> payload) {
    return std::span(std::ranges::find(payload, std::uint8_t{0}), payload.end());
  };
  return record.tag == comment.tag &&
         std::ranges::equal(behind_keyword(raw_payload(record)), behind_keyword(comment.payload));
}

}  // namespace

std::optional<TextPayload> identity_comment(const ChunkList& list, const std::filesystem::path& file) {
  const TextPayload comment = text_payload("Comment", identity_text(file));
  for (std::size_t i = 0; i < list.size(); ++i)
    if (says_the_same(list.record(i), comment)) return std::nullopt;
  return comment;
}

}  // namespace vellum
