#include "core/check/check_file.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/crc.h"
#include "base/fields.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/checking.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostOfARule = 100;

/// Two of the three letters behind the first byte, where the eight are not right: it was one once.
bool has_letters(std::span<const std::uint8_t> file, std::string_view letters) {
  const std::string_view head(reinterpret_cast<const char*>(file.data()),
                              std::min<std::size_t>(file.size(), 8));
  return head.find(letters) != std::string_view::npos;
}

bool begins_with(std::span<const std::uint8_t> file, std::span<const std::uint8_t> bytes) {
  return file.size() >= bytes.size() && std::ranges::equal(file.first(bytes.size()), bytes);
}

void check_png(Checking& checking, std::span<const std::uint8_t> file) {
  checking.kind = DocumentKind::PING;
  check_frames(checking, file, tag::IEND);
  check_png_image(checking, checking.chunks);
}

struct FormatRow {
  std::string_view letters;
  std::span<const std::uint8_t> signature;
  void (*check)(Checking&, std::span<const std::uint8_t>);
};
constexpr std::uint8_t kRiff[] = {'R', 'I', 'F', 'F'};
constexpr FormatRow kFormats[] = {
    {"PNG", kPngSignature, check_png}, {"MNG", kMngSignature, check_mng}, {"RIFF", kRiff, check_webp}};

std::string crc_text(const StreamChunk& chunk) {
  return format_text(translated("stored %08X, computed %08X"), chunk.storedCrc,
                     chunk_crc(chunk.tag, chunk.data));
}

bool is_letter(std::uint32_t c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

void check_frame(Checking& checking, const StreamChunk& chunk) {
  if (!crc_agrees(chunk)) checking.find(RuleId::Crc_wrong, chunk, crc_text(chunk));
  const bool letters = is_letter(chunk.tag >> 24) && is_letter(chunk.tag >> 16 & 255) &&
                       is_letter(chunk.tag >> 8 & 255) && is_letter(chunk.tag & 255);
  if (!letters)
    checking.find(RuleId::Type_invalid, chunk, format_text(translated("bytes %08X"), chunk.tag));
  else if (!is_valid_tag(chunk.tag))
    checking.find(RuleId::Type_reserved, chunk);
}

/// What stands at `at`, which is no whole chunk.
void tell_cut(Checking& checking, std::span<const std::uint8_t> file, std::uint64_t at) {
  const auto rest = file.subspan(static_cast<std::size_t>(at));
  if (rest.empty()) return;
  const std::uint32_t length = rest.size() < 4 ? 0 : read_be32(rest.data());
  const ChunkTag tag = rest.size() < 8 ? 0 : read_be32(&rest[4]);
  const auto number = static_cast<std::uint32_t>(checking.chunks.size() + 1);
  if (length > 0x7FFFFFFF)
    return checking.add({RuleId::Length_too_large, tag, number, at, std::to_string(length)});
  checking.add({RuleId::Chunk_cut, tag, number, at,
                format_text(translated("%llu bytes with type and check value, %zu there"), 12ULL + length,
                            rest.size())});
}

}  // namespace

void Checking::add(Finding finding) {
  if (times_[static_cast<std::size_t>(finding.rule)]++ < kMostOfARule)
    findings_.push_back(std::move(finding));
  else
    ++leftOut_;
}

std::uint32_t Checking::number_of(const StreamChunk& chunk) const {
  const bool own = !chunks.empty() && &chunk >= chunks.data() && &chunk < chunks.data() + chunks.size();
  return own ? static_cast<std::uint32_t>(&chunk - chunks.data() + 1) : 0;
}

FileCheck Checking::take() {
  std::ranges::stable_sort(findings_, {}, &Finding::offset);
  FileCheck check{kind, std::move(findings_), leftOut_};
  for (const StreamChunk& chunk : chunks) check.chunks.push_back(chunk.tag);
  return check;
}

std::size_t FileCheck::count(Severity severity) const {
  return static_cast<std::size_t>(std::ranges::count_if(
      findings, [severity](const Finding& finding) { return rule(finding.rule).severity == severity; }));
}

std::string FileCheck::counts_text() const {
  constexpr std::pair<Severity, StringId> kCounted[] = {{Severity::Error, StringId::OneError},
                                                        {Severity::Warning, StringId::OneWarning},
                                                        {Severity::Note, StringId::OneNote}};
  std::string text;
  for (const auto& [severity, one] : kCounted)
    if (const std::size_t found = count(severity))
      text += (text.empty() ? "" : ", ") + count_text(one, found);
  return text;
}

void check_frames(Checking& checking, std::span<const std::uint8_t> file, ChunkTag end) {
  GatheredChunks gathered = gather_chunks(file, std::size_t{8}, end);
  checking.chunks = std::move(gathered.chunks);
  for (const StreamChunk& chunk : checking.chunks) check_frame(checking, chunk);
  if (!gathered.complete) {
    tell_cut(checking, file, gathered.end);
    checking.add({RuleId::End_missing, end, 0, file.size(), {}});
  } else if (gathered.end < file.size()) {
    checking.add({RuleId::Bytes_behind_end, 0, 0, gathered.end,
                  grouped(file.size() - gathered.end) + translated(" bytes")});
  }
}

FileCheck check_file(std::span<const std::uint8_t> file) {
  Checking checking;
  for (const FormatRow& format : kFormats) {
    if (!begins_with(file, format.signature)) continue;
    format.check(checking, file);
    return checking.take();
  }
  for (const FormatRow& format : kFormats) {
    if (!has_letters(file, format.letters)) continue;
    checking.kind = format.letters == "MNG" ? DocumentKind::MING : DocumentKind::PING;
    checking.find(RuleId::Signature_damaged);
    return checking.take();
  }
  checking.find(RuleId::Unknown_format, file.empty() ? translated("the file is empty") : "");
  return checking.take();
}

}  // namespace vellum
