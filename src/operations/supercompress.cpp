#include "operations/supercompress.h"

#include <algorithm>
#include <cmath>

#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/chunk_table.h"
#include "core/chunks/mng_counts.h"
#include "core/edit/edit_closing.h"
#include "core/files/save_document.h"
#include "image/picture_rows.h"
#include "image/webp_container.h"
#include "operations/same_animation.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

struct PassRow {
  unsigned bit;
  bool (*run)(Supercompression& work);
  bool shapes;  ///< it changes what frames draw, which a check behind it puts right
};

/// In the order in which they run. The last two prove by themselves what they do, or change no pixel.
constexpr PassRow kPasses[] = {
    {kPalettePass, palette_pass, true},
    {kPrunePass, prune_pass, true},
    {kRedundancyPass, redundancy_pass, true},
    {kTextPass, text_pass, false},
    {kDeepPass, deep_pass, false},
    {kRecompressPass, recompress_pass, false},
};

/// Those that rest on what is seen.
constexpr unsigned kDrawingPasses = kPrunePass | kRedundancyPass | kDeepPass | kMergePass;
constexpr unsigned kStatedPasses = kTextPass | kPalettePass | kPrunePass | kRedundancyPass;

// ------------------------------------------------------------------------------------------- what can be
// done

struct Findings {
  bool texts = false, paletted = false, differing = false, transparent = false, lost = false;
};

Findings look_at(const DocumentWindow& window) {
  Findings found;
  const DocumentKind kind = window.document.kind;
  std::optional<Picture> first;
  for (std::size_t i = 1; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    found.texts |= record.tag == tag::tEXt || record.tag == tag::zTXt;
    found.transparent |= kind == DocumentKind::APNG && record.tag == tag::tRNS && record.size > 0;
    if (!is_image_entry(kind, record.tag)) continue;
    const Picture picture = picture_of(record);
    if (!has_rows(picture)) {
      found.lost = true;
      continue;
    }
    found.paletted |= picture.bits() <= 8;
    if (kind != DocumentKind::MING) continue;
    found.transparent |= record.image->transBytes > 0;
    if (!first) first = picture;
    const bool same = first->bits() == picture.bits() && palette_of(*first) == palette_of(picture);
    found.differing |= !same;
  }
  return found;
}

// ------------------------------------------------------------------------------------------------- bytes

/// `window` keeps the streams, so that saving it doesn't pack them again.
std::uint64_t bytes_as_saved(DocumentWindow& window) {
  std::uint64_t bytes = 0;
  Host silent;
  SaveOptions options = save_options();
  options.keepStreams = true;
  const auto result = write_document(window, window.document.kind, counting_sink(bytes), options, silent);
  return result == WriteResult::Done ? bytes : UINT64_MAX;
}

std::string change_text(std::uint64_t before, std::uint64_t after) {
  const double percent = before == 0 ? 0 : 100.0 * static_cast<double>(after) / static_cast<double>(before);
  return filled(StringId::BytesBeforeAndAfter,
                {grouped(before), grouped(after), std::to_string(std::lround(percent))});
}

/// The result in place of the document; else that document again.
void keep_if_smaller(Supercompression& work, const DocumentWindow& source, std::uint64_t before) {
  // How small WebP is shows when it is saved.
  if (work.draft.document.kind == DocumentKind::WEBP) return;
  const std::uint64_t after = bytes_as_saved(work.draft);
  if (work.tell) work.tell(change_text(before, after));
  if (after <= before) return;
  work.draft.document = source.document;
  work.draft.list = source.list;
  work.say(StringId::FileStaysAsItIs);
}

/// Whether something of a WebP was written with loss: without, it never becomes smaller.
bool has_loss(const std::filesystem::path& path) {
  constexpr std::uint32_t kLossy = 0x56503820;  // "VP8 "
  std::string reason;
  const auto file = read_file(path, reason, kMaximumFileBytes);
  if (!file) return false;
  const auto lossy = [](const WebpChunk& chunk) { return chunk.tag == kLossy; };
  const auto chunks = webp_chunks(*file);
  return std::ranges::any_of(chunks, [&](const WebpChunk& chunk) {
    return lossy(chunk) || std::ranges::any_of(webp_frame_chunks(chunk), lossy);
  });
}

/// The bytes, or without them what the file `source` holds.
bool put_file(const std::vector<std::uint8_t>* bytes, const std::filesystem::path& source,
              const std::filesystem::path& target, std::string& reason) {
  std::error_code error;
  if (!bytes) {
    if (std::filesystem::equivalent(source, target, error) || replace_by_copy(source, target, error))
      return true;
    reason = error.message();
    return false;
  }
  SafeFile file(target);
  const bool written = file.ok() && file.write(*bytes) && file.commit();
  reason = file.reason();
  return written;
}

/// Runs a pass, and the check behind those that need it.
bool run_pass(Supercompression& work, const PassRow& pass) {
  const DocumentWindow before{work.draft.document, work.draft.list, {}};
  const auto put_back = [&] {
    work.draft.document = before.document;
    work.draft.list = before.list;
    return false;
  };
  if (!pass.run(work)) return put_back();
  if (pass.bit != kRecompressPass) finish_edit(work.draft, false);
  if (!pass.shapes) return true;
  const auto restored = restore_differing_frames(work.source, work.draft, work.host);
  if (restored && *restored > 0) work.say(StringId::FramesKeptAsTheyWere, {std::to_string(*restored)});
  if (restored) return true;
  put_back();
  if (!work.host.stopped()) work.say(StringId::NotTheSame);
  return !work.host.stopped();
}

}  // namespace

SupercompressOffer supercompress_offer(const DocumentWindow& window, unsigned options) {
  const Findings found = look_at(window);
  const bool mng = window.document.kind == DocumentKind::MING;
  SupercompressOffer offer{.hasTexts = found.texts, .lost = found.lost};
  offer.enabled = kPrunePass | kRecompressPass | kDeepPass | kMergePass;
  if (mng) offer.enabled |= kRedundancyPass;
  if (found.texts) offer.enabled |= kTextPass;
  if (found.paletted && !found.transparent) offer.enabled |= kPalettePass;
  offer.checked = options & offer.enabled & kStatedPasses;
  if (!found.paletted) offer.checked &= ~kRedundancyPass;
  if (found.paletted && found.differing && found.transparent) {
    offer.enabled &= ~(kPrunePass | kRedundancyPass);
    offer.checked &= ~(kPrunePass | kRedundancyPass);
    offer.mayStart = false;
  }
  return offer;
}

std::uint64_t document_bytes(const DocumentWindow& window) {
  std::error_code error;
  const auto size = window.document.HasFileName && !window.document.dirty
                        ? std::filesystem::file_size(window.document.fileName, error)
                        : 0;
  if (size != 0 && !error) return size;
  DocumentWindow copy{window.document, window.list, {}};
  return bytes_as_saved(copy);
}

SupercompressResult supercompress(DocumentWindow& draft, unsigned passes, const TellStatus& tell, Host& host,
                                  std::uint64_t now) try {
  const SupercompressOffer offer = supercompress_offer(draft, kStatedPasses);
  if (passes & kMergePass) passes |= kDeepPass;
  passes &= offer.enabled;
  if (draft.document.kind == DocumentKind::MING && passes & kDrawingPasses &&
      has_unplayed_chunks(draft.list)) {
    if (tell)
      tell(translated("Chunks such as MOVE, SHOW and MAGN place the images; frames keep their pixels."));
    passes &= ~kDrawingPasses;
  }
  const DocumentWindow source{draft.document, draft.list, {}};
  SourceCanvases canvases(source);
  Supercompression work{draft, tell, host, passes, canvases};
  const Progress whole_of_it(host, string_text(StringId::Searching));
  SupercompressResult result{.whole = true};
  for (const PassRow& pass : kPasses) {
    if (!(work.passes & pass.bit) || !result.whole) continue;
    result.whole = run_pass(work, pass);
    result.ran |= result.whole;
  }
  if (host.stopped()) work.say(StringId::StoppedHere);
  if (!result.ran) work.say(StringId::NothingAchieved);
  if (result.ran) keep_if_smaller(work, source, now);
  return result;
} catch (const std::bad_alloc&) {
  if (tell) tell(std::string(string_text(StringId::MemoryError)));
  if (tell) tell(std::string(string_text(StringId::SupercompressAborted)));
  return {};
}

bool save_supercompressed(DocumentWindow& window, const std::filesystem::path& source,
                          const std::filesystem::path& target, Host& host) {
  SaveOptions options = save_options();
  if (window.document.kind == DocumentKind::WEBP) options.webpLossless = options.webpSmallest = true;
  std::vector<std::uint8_t> bytes;
  std::string reason;
  std::error_code error;
  const auto now = std::filesystem::file_size(source, error);
  const bool lossy = window.document.kind == DocumentKind::WEBP && has_loss(source);
  const bool written = !lossy && write_document(window, window.document.kind, memory_sink(bytes), options,
                                                host) == WriteResult::Done;
  const bool smaller = written && (error || bytes.size() < now);
  host.set_status(smaller ? change_text(now, bytes.size())
                          : std::string(string_text(StringId::FileStaysAsItIs)));
  if (put_file(smaller ? &bytes : nullptr, source, target, reason)) return true;
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, reason);
  return false;
}

}  // namespace vellum
