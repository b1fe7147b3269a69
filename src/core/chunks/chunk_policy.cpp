#include "core/chunks/chunk_policy.h"

#include <algorithm>
#include <string_view>

#include "base/string_table.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/compressed_text.h"

namespace vellum {
namespace {

using Payload = std::vector<std::uint8_t>;

constexpr std::size_t kLongestKeyword = 79;  // PNG standard, "Keywords and text strings"
constexpr std::size_t kWholeTermination = 10;

bool is_printable(std::uint8_t byte) { return (byte >= 32 && byte < 127) || byte > 160; }

/// The keyword without what the standard forbids in one; empty where nothing is left.
std::string clean_keyword(std::span<const std::uint8_t> bytes) {
  std::string clean;
  for (const std::uint8_t byte : bytes)
    if (is_printable(byte) && !(byte == ' ' && (clean.empty() || clean.back() == ' ')))
      clean += static_cast<char>(byte);
  clean.resize(std::min(clean.size(), kLongestKeyword));
  if (clean.ends_with(' ')) clean.pop_back();
  return clean;
}

/// A payload that begins with a keyword and a NUL. One without a NUL is a keyword alone where that is short
/// enough; else nobody knows where it would end.
void mend_keyword(Payload& payload) {
  const auto nul = std::ranges::find(payload, std::uint8_t{0});
  if (nul == payload.end() && payload.size() > kLongestKeyword) return;
  const std::string clean = clean_keyword({payload.begin(), nul});
  if (clean.empty()) return;
  Payload mended(clean.begin(), clean.end());
  if (nul == payload.end()) mended.push_back(0);
  mended.insert(mended.end(), nul, payload.end());
  payload = std::move(mended);
}

void mend_text(Payload& payload) {
  mend_keyword(payload);
  const auto keyword_end = std::ranges::find(payload, std::uint8_t{0});
  if (keyword_end == payload.end()) return;
  while (payload.end() - keyword_end > 1 && payload.back() == 0) payload.pop_back();
}

/// One that was kept as it is in the file stays so.
void mend_compressed_text(Payload& payload) {
  if (inflatable_keyword(payload)) mend_keyword(payload);
}

/// Only a repetition has more than its action (MNG 1.0, "TERM"); what it lacks reads as zeros.
void mend_termination(Payload& payload) {
  if (!payload.empty()) payload.resize(payload[0] == 3 ? kWholeTermination : 1);
}

template <std::size_t... Lengths>
void cut_to_known(Payload& payload) {
  std::size_t known = payload.size();
  ((known = payload.size() >= Lengths ? Lengths : known), ...);
  payload.resize(known);
}

/// How a chunk is repaired, and whether a reader is harmed by one that can't be.
struct PolicyRow {
  ChunkTag tag;
  void (*mend)(Payload&);  ///< null: only a payload that is longer than its one length is cut
  bool harms;              ///< by a wrong content, as every chunk does by a wrong length
};

// Texts harm nobody, whatever is in them; what tells how pixels are shown does, and so does a division by
// zero.
constexpr PolicyRow kPolicy[] = {
    {tag::tEXt, mend_text, false},
    {tag::zTXt, mend_compressed_text, false},
    {tag::iTXt, mend_keyword, false},
    {tag::iCCP, mend_keyword, true},
    {tag::sPLT, mend_keyword, true},
    {tag::pCAL, mend_keyword, true},
    {tag::gAMA, nullptr, true},
    {tag::sBIT, nullptr, true},
    {tag::PLTE, nullptr, true},
    {tag::bKGD, nullptr, true},
    {tag::hIST, nullptr, true},
    {tag::tRNS, nullptr, true},
    {tag::TERM, mend_termination, true},
    {tag::BACK, cut_to_known<6, 7, 9, 10>, true},
    {tag::DEFI, cut_to_known<2, 3, 4, 12, 28>, true},
    {tag::SHOW, cut_to_known<2, 4, 5>, true},
};

bool length_fits(ChunkTag tag, const Payload& payload, DocumentKind kind) {
  const ChunkRow* row = chunk_row(tag, kind);
  return !row || is_text(tag) || (payload.size() >= row->shortest && payload.size() <= row->longest);
}

void mend(const PolicyRow* policy, ChunkTag tag, Payload& payload, DocumentKind kind) {
  const ChunkRow* row = chunk_row(tag, kind);
  if (policy && policy->mend)
    policy->mend(payload);
  else if (row && row->shortest == row->longest && payload.size() > row->longest)
    payload.resize(row->longest);
}

}  // namespace

Mending mend_chunk(ChunkTag tag, Payload& payload, const PngContext& context, DocumentKind kind) {
  if (kind == DocumentKind::MING && serves_all_images(tag))
    return payload.empty() ? Mending::Good : mend_chunk(tag, payload, context, DocumentKind::PING);
  if (is_valid_chunk(tag, payload, context, kind)) return Mending::Good;
  const auto found = std::ranges::find(kPolicy, tag, &PolicyRow::tag);
  const PolicyRow* policy = found == std::end(kPolicy) ? nullptr : found;
  Payload mended = payload;
  mend(policy, tag, mended, kind);
  if (is_valid_chunk(tag, mended, context, kind)) {
    payload = std::move(mended);
    return Mending::Repaired;
  }
  const bool harms = !chunk_row(tag, kind) || !length_fits(tag, payload, kind) || (policy && policy->harms);
  return harms ? Mending::LeftOut : Mending::Kept;
}

std::string mending_note(Mending mending, ChunkTag tag, std::size_t entry) {
  static constexpr StringId texts[] = {StringId{}, StringId::ChunkRepaired, StringId::ChunkKept,
                                       StringId::ChunkLeftOut};
  if (mending == Mending::Good) return {};
  const std::string who = tag_letters(tag) + translated(" (entry ") + std::to_string(entry + 1) + ")";
  return with_value(string_text(texts[static_cast<std::size_t>(mending)]), who);
}

}  // namespace vellum
