#include "core/chunks/text_chunk.h"

#include <algorithm>

#include "base/limits.h"
#include "base/text.h"
#include "core/chunks/compressed_text.h"
#include "image/deflate.h"
#include "image/inflate.h"

namespace vellum {
namespace {

constexpr int kTextLevel = 9;  // texts are short: the smallest form costs nothing

std::string_view as_text(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
std::span<const std::uint8_t> as_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// What stands in front of the next NUL, which is taken off `rest` with it; all of it where there is none.
std::string_view take_string(std::string_view& rest) {
  const std::size_t end = std::min(rest.find('\0'), rest.size());
  const std::string_view taken = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return taken;
}

TextChunk latin1_chunk(std::string_view payload, bool compressed) {
  TextChunk text;
  text.compressed = compressed;
  text.keyword = utf8_from_latin1(take_string(payload));
  text.text = with_line_feeds(utf8_from_latin1(payload));
  return text;
}

/// Keyword, NUL, compression flag, method, language, NUL, translated keyword, NUL, text.
std::optional<TextChunk> read_international(std::string_view payload) {
  if (std::count(payload.begin(), payload.end(), '\0') < 3) return std::nullopt;
  TextChunk text;
  text.keyword = utf8_from_latin1(take_string(payload));
  if (payload.size() < 4 || payload[0] < 0 || payload[0] > 1) return std::nullopt;
  text.compressed = payload[0] == 1;
  payload.remove_prefix(2);
  text.language = take_string(payload);
  text.translatedKeyword = take_string(payload);
  bool over_limit = false;
  const auto inflated =
      text.compressed ? inflate_text(as_bytes(payload), kMaximumTextBytes, over_limit) : std::nullopt;
  if (text.compressed && !inflated) return std::nullopt;
  text.text = with_line_feeds(inflated ? *inflated : std::string(payload));
  return text;
}

std::string international_payload(const TextChunk& text) {
  std::string payload = latin1_from_utf8(text.keyword) + '\0' + (text.compressed ? '\1' : '\0') + '\0' +
                        text.language + '\0' + text.translatedKeyword + '\0';
  const std::string content = with_line_feeds(text.text);
  if (!text.compressed) return payload + content;
  const auto packed = deflate_bytes(as_bytes(content), kTextLevel);
  return payload.append(as_text(packed));
}

}  // namespace

std::optional<TextChunk> read_text_chunk(const ChunkRecord& record) {
  const std::string_view payload = as_text(raw_payload(record));
  if (record.tag == tag::tEXt) return latin1_chunk(payload, false);
  if (record.tag == tag::iTXt) return read_international(payload);
  if (record.tag != tag::zTXt) return std::nullopt;
  // `size` tells the compressed length or the inflated one: the text ends at its NUL or with the block.
  const auto block = record.data.bytes();
  const auto keyword = inflatable_keyword(block);
  if (!keyword) return std::nullopt;
  const std::string_view all = as_text(block);
  return latin1_chunk(all.substr(0, std::min(all.find('\0', *keyword + 1), all.size())), true);
}

bool write_text_chunk(ChunkRecord& record, const TextChunk& text) {
  if (record.tag == tag::iTXt) return put_payload(record, as_bytes(international_payload(text)));
  const std::string payload =
      latin1_from_utf8(text.keyword) + '\0' + latin1_from_utf8(with_line_feeds(text.text));
  record.tag = text.compressed ? tag::zTXt : tag::tEXt;
  return put_payload(record, as_bytes(payload));
}

TextPayload text_payload(std::string_view keyword, std::string_view text) {
  const bool latin1 = !first_beyond_latin1(text);
  std::string payload(keyword);
  payload.append(latin1 ? 1 : 5, '\0');  // iTXt: flag, method, and two empty texts
  payload += latin1 ? latin1_from_utf8(text) : std::string(text);
  return {latin1 ? tag::tEXt : tag::iTXt, {payload.begin(), payload.end()}};
}

ChunkRecord record_of_text(TextChunk text) {
  text.text.resize(std::min(text.text.find('\0'), text.text.size()));
  ChunkRecord record;
  record.tag = first_beyond_latin1(text.text) ? tag::iTXt : tag::tEXt;
  write_text_chunk(record, text);
  return record;
}

std::size_t deflated_text_bytes(const TextChunk& text, bool latin1) {
  const std::string content = with_line_feeds(text.text);
  return deflate_bytes(as_bytes(latin1 ? latin1_from_utf8(content) : content), kTextLevel).size();
}

std::optional<std::size_t> first_beyond_latin1(std::string_view utf8) {
  std::size_t characters = 0;
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0xC3) return characters;
    if ((byte & 0xC0) != 0x80) ++characters;
  }
  return std::nullopt;
}

std::string within_latin1(std::string_view utf8) { return utf8_from_latin1(latin1_from_utf8(utf8)); }

std::string with_line_feeds(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') result += text[i];
    if (text[i] == '\r' && (i + 1 == text.size() || text[i + 1] != '\n')) result += '\n';
  }
  return result;
}

}  // namespace vellum
