// The three text chunks (PNG standard, "Textual information") as texts, all of them UTF-8 with LF line ends.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/model/chunk_record.h"

namespace vellum {

struct TextChunk {
  std::string keyword, text;
  bool compressed = false;
  std::string language = {}, translatedKeyword = {};  ///< iTXt alone
};

/// Empty for a record that is no text chunk, and for one whose content can't be told: a zTXt that was kept
/// compressed, an iTXt that is cut or damaged.
std::optional<TextChunk> read_text_chunk(const ChunkRecord& record);

/// Makes the payload anew. A tEXt or zTXt becomes the other as `compressed` says; characters that Latin-1
/// lacks become "?". False when memory is exhausted.
bool write_text_chunk(ChunkRecord& record, const TextChunk& text);

/// A chunk of a text as it stands, line ends too.
struct TextPayload {
  ChunkTag tag = 0;
  std::vector<std::uint8_t> payload;
};
/// A tEXt, or an iTXt where Latin-1 has not all characters. The keyword is ASCII, the text UTF-8.
TextPayload text_payload(std::string_view keyword, std::string_view text);

/// A tEXt or zTXt with this text, as `compressed` says; an iTXt where Latin-1 lacks one of its characters. A
/// NUL ends the text.
ChunkRecord record_of_text(TextChunk text);

/// Bytes of the text as it would be deflated.
std::size_t deflated_text_bytes(const TextChunk& text, bool latin1);

/// How many characters stand in front of the first one that Latin-1 lacks; empty when it has all of them.
std::optional<std::size_t> first_beyond_latin1(std::string_view utf8);
/// The text with "?" for those.
std::string within_latin1(std::string_view utf8);

/// CR LF and single CRs as LF.
std::string with_line_feeds(std::string_view text);

}  // namespace vellum
