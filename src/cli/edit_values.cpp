#include "cli/edit_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_fields.h"
#include "core/chunks/text_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "image/graphic_file.h"

namespace vellum::cli {
namespace {

bool fail(Host& host, const std::string& reason) {
  host.show(StringId::InsertError, {}, reason);
  return false;
}

std::optional<std::uint32_t> number_of(std::string_view text) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

bool insert_bytes(DocumentWindow& window, ChunkTag tag, std::span<const std::uint8_t> bytes, Host& host) {
  ChunkRecord record;
  record.tag = tag;
  record.data = ChunkHandle::copy_of(bytes);
  record.size = static_cast<std::int32_t>(bytes.size());
  return insert_record(window, record, host);
}

bool insert_hex(DocumentWindow& window, ChunkTag tag, std::string_view digits, Host& host) {
  std::vector<std::uint8_t> bytes(digits.size() / 2);
  bool good = digits.size() % 2 == 0;
  for (std::size_t i = 0; good && i < bytes.size(); ++i) {
    const char* at = digits.data() + 2 * i;
    const auto [end, error] = std::from_chars(at, at + 2, bytes[i], 16);
    good = error == std::errc() && end == at + 2;
  }
  return good ? insert_bytes(window, tag, bytes, host)
              : fail(host, translated("the bytes are not pairs of hexadecimal digits"));
}

bool insert_file(DocumentWindow& window, ChunkTag tag, const std::string& path, Host& host) {
  std::string reason;
  const auto file = read_file(path, reason, kMaximumTextBytes);
  return file ? insert_bytes(window, tag, *file, host) : fail(host, path + ": " + reason);
}

bool insert_image(DocumentWindow& window, ChunkTag, const std::string& value, Host& host) {
  const Picture picture = read_picture_file(value, host);
  return picture && insert_pictures(window, {&picture, 1}, host);
}

bool insert_text(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host) {
  const auto parting = value.find('=');
  if (parting == std::string::npos) return fail(host, translated("a text is given as Keyword=text"));
  const std::string keyword = value.substr(0, parting);
  if (first_beyond_latin1(keyword) || !is_valid_keyword(latin1_from_utf8(keyword)))
    return fail(host, translated("the keyword is not valid"));
  const TextChunk text{.keyword = keyword,
                       .text = value.substr(parting + 1),
                       .compressed = tag == tag::zTXt,
                       .language = {},
                       .translatedKeyword = {}};
  ChunkRecord record = record_of_text(text);
  if (tag == tag::iTXt) {
    record.tag = tag;
    write_text_chunk(record, text);
  }
  if (!insert_record(window, record, host)) return false;
  if (record.tag != tag && record.tag == tag::iTXt) host.add_note(string_text(StringId::BecameInternational));
  return true;
}

bool insert_gamma(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host) {
  double gamma = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), gamma);
  if (error != std::errc() || end != value.data() + value.size() || !(gamma >= 0.01 && gamma <= 100))
    return fail(host, translated("a gamma is a number from 0.01 to 100"));
  std::uint8_t bytes[4];
  write_be32(bytes, static_cast<std::uint32_t>(std::lround(100'000 / gamma)));
  return insert_bytes(window, tag, bytes, host);
}

bool insert_number(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host) {
  NewChunkArgument argument;
  const auto number = number_of(value);
  if (!number || *number > 0x7FFFFFFF)
    return fail(host, translated("the value is a whole number from 0 to 2147483647"));
  argument.number = *number;
  return insert_chunk(window, tag, argument, host);
}

bool insert_position(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host) {
  const auto comma = value.find(',');
  const auto x = number_of(value.substr(0, comma));
  const auto y = comma == std::string::npos ? std::nullopt : number_of(value.substr(comma + 1));
  if (!x || !y || std::max(*x, *y) > 0xFFFF)
    return fail(host, translated("a position is X,Y, each from 0 to 65535"));
  NewChunkArgument argument;
  argument.number = *x | *y << 16;
  return insert_chunk(window, tag, argument, host);
}

/// The bytes of a profile, from a file or in hexadecimal, under a name.
bool insert_profile(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host) {
  const auto parting = value.find('=');
  if (parting == std::string::npos) return fail(host, translated("a profile is given as Name=@FILE"));
  const std::int32_t caret = window.document.caret;
  std::string reason;
  const std::size_t at = insert_chunk(window, tag, {}, host) ? caret_entry(window) : kNoEntry;
  if (at == kNoEntry) return false;
  FieldValues values = read_chunk_fields(window, at);
  values.set("name", value.substr(0, parting));
  values.set("profile", value.substr(parting + 1));
  const auto fault = check_chunk_fields(window, at, values);
  if (!fault && apply_chunk_fields(window, at, values, host) == Applied::Changed) return true;
  undo_take_back(window);
  window.document.caret = caret;
  return fail(host, fault ? fault->text : host.take_fault());
}

/// The default content, where it says something.
bool insert_default(DocumentWindow& window, ChunkTag tag, Host& host) {
  if (!has_default_content(tag))
    return fail(host, translated("the bytes of this chunk are given as hex:... or @FILE"));
  if (!insert_chunk(window, tag, {}, host)) return false;
  const std::size_t at = caret_entry(window);
  const auto fault = window.list.record(at).tag == tag
                         ? check_chunk_fields(window, at, read_chunk_fields(window, at))
                         : std::nullopt;
  if (!fault) return true;
  undo_take_back(window);
  return fail(host, fault->text);
}

struct ValueRow {
  ChunkTag tag;
  bool (*insert)(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host);
};

constexpr ValueRow kValues[] = {
    {tag::IDAT, insert_image},  {tag::PNGI, insert_image},    {tag::WEBI, insert_image},
    {tag::tEXt, insert_text},   {tag::zTXt, insert_text},     {tag::iTXt, insert_text},
    {tag::gAMA, insert_gamma},  {tag::iCCP, insert_profile},  {tag::LOOP, insert_number},
    {tag::FRAM, insert_number}, {tag::DEFI, insert_position},
};

}  // namespace

bool insert_value(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host) {
  if (value.empty()) return insert_default(window, tag, host);
  if (value.starts_with("hex:")) return insert_hex(window, tag, std::string_view(value).substr(4), host);
  if (value.starts_with("@")) return insert_file(window, tag, value.substr(1), host);
  const auto row = std::ranges::find(kValues, tag, &ValueRow::tag);
  return row == std::end(kValues)
             ? fail(host, translated("the bytes of this chunk are given as hex:... or @FILE"))
             : row->insert(window, tag, value, host);
}

}  // namespace vellum::cli
