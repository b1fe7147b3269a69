#include "core/chunks/identity_comment.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>

#include "base/file.h"
#include "base/text.h"

namespace vellum {
namespace {

constexpr std::size_t kFileLimit = 16'383;
constexpr std::string_view kKeyword("Comment\0", 8);

/// These bytes as a text of the format: line ends as CR LF, tabs as blanks, no other control
/// characters.
std::string plain_text(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::uint8_t byte = bytes[i];
    const bool pair = byte == '\n' && i > 0 && bytes[i - 1] == '\r';
    if ((byte == '\r' || byte == '\n') && !pair) text += "\r\n";
    if (byte == '\t') text += ' ';
    if (byte >= 32 && byte != 127) text += static_cast<char>(byte);
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
  text += file ? plain_text(*file) : latin1_from_utf8(account_name());
  if (!text.ends_with("\r\n")) text += "\r\n";
  return text + "Vellumcraft 15\r\n";
}

/// Whether the text behind the keyword is this one, byte for byte.
bool has_text(const ChunkRecord& record, std::string_view text) {
  const auto raw = raw_payload(record);
  const std::string_view bytes(reinterpret_cast<const char*>(raw.data()), raw.size());
  const auto nul = bytes.find('\0');
  return record.tag == tag::tEXt && nul != std::string_view::npos && bytes.substr(nul + 1) == text;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> identity_comment(const ChunkList& list,
                                                          const std::filesystem::path& file) {
  const std::string text = identity_text(file);
  for (std::size_t i = 0; i < list.size(); ++i)
    if (has_text(list.record(i), text)) return std::nullopt;
  std::vector<std::uint8_t> payload(kKeyword.begin(), kKeyword.end());
  payload.insert(payload.end(), text.begin(), text.end());
  return payload;
}

}  // namespace vellum
