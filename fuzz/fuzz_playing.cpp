// Any bytes at all as a document that is played, converted or reconstructed: a byte for the reader, a byte
// for what is wanted, then the file.
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "fuzz_readers.h"
#include "image/settings.h"
#include "operations/convert_kind.h"
#include "operations/frames.h"
#include "operations/reconstruct.h"
#include "playback/player.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

constexpr std::uint64_t kMostPixels = 4'000;  ///< larger canvases only make the fuzzer slow
constexpr std::size_t kMostShown = 60;

/// Whether no sample of the pictures differs by more than `most`.
bool same_pixels(const Picture& a, const Picture& b, int most = 0) {
  if (!a || !b) return !a && !b;
  if (a.width() != b.width() || a.height() != b.height() || a.bits() != b.bits()) return false;
  const auto near = [most](int x, int y) { return std::abs(x - y) <= most; };
  for (std::uint32_t y = 0; y < a.height(); ++y)
    if (!std::equal(a.row(y), a.row(y) + a.stride(), b.row(y), near)) return false;
  return true;
}

/// What was kept and what is composed again are the same canvases, and so is each frame that is sought alone.
void play(const DocumentWindow& window, std::uint8_t wanted) {
  Compositor kept(window.list, window.document), forgetful(window.list, window.document, 0);
  kept.set_ground({static_cast<Ground::Kind>(wanted % 3), 0x336699});
  forgetful.set_ground({static_cast<Ground::Kind>(wanted % 3), 0x336699});
  for (std::size_t step = 0; step < kMostShown; ++step) {
    const auto a = kept.next(), b = forgetful.next();
    check(a.has_value() == b.has_value());
    if (!a) break;
    check(a->entry == b->entry && a->ordinal < kept.frames() && same_pixels(a->picture, b->picture));
    if (step % 7 == wanted % 7) check(same_pixels(kept.frame(a->ordinal).picture, a->picture));
  }
  std::uint64_t now = 0;
  Player player(window.list, window.document, [&now] { return now; });
  const auto paint = [&](const ShownFrame& frame) { check(frame.ordinal < player.compositor().frames()); };
  player.play();
  for (std::size_t beat = 0; beat < kMostShown; ++beat) {
    if (beat % 11 == 10) player.seek(wanted * beat % 13);
    if (beat % 13 == 12) beat % 2 == 0 ? player.step_back(paint) : player.play();
    now += player.tick(paint).value_or(1);
  }
}

/// A document of another kind is written, and reads back with as many images; a still has one.
void convert(const DocumentWindow& window, std::uint8_t wanted) {
  constexpr DocumentKind kKinds[] = {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING,
                                     DocumentKind::WEBP};
  const DocumentKind kind = kKinds[wanted % 4];
  if (kind == window.document.kind) return;
  Host host;
  DocumentWindow to, again;
  if (!convert_kind(window, to, {kind, wanted >= 128}, host)) return check(host.has_fault && to.list.empty());
  static const std::string stem = scratch_file("");
  const std::string path = stem + std::string(kind_row(kind).extensions.front());
  if (!save_document(to, path, host)) return;
  check(open_document(again, path, host));
  check(again.document.kind == kind && frame_entries(again).size() == frame_entries(to).size());
}

/// Whole canvases show what the frames showed.
void reconstruct(const DocumentWindow& before, std::uint8_t) {
  DocumentWindow after;
  after.document = before.document;
  after.list = before.list;
  Host host;
  if (!reconstruct_frames(after, CanvasDepth::AsNeeded, host)) return;
  check(is_independent(after) && frame_entries(after).size() == frame_entries(before).size());
  // Where nothing is transparent canvases lie on the document's color, and so are compared on it. What is
  // half transparent is rounded once more.
  const int most = has_transparency(before) ? 2 : 0;
  Compositor shown(before.list, before.document), whole(after.list, after.document);
  for (std::size_t step = 0; step < kMostShown; ++step) {
    const auto a = shown.next(Compositor::Rounds::One), b = whole.next(Compositor::Rounds::One);
    check(a.has_value() == b.has_value());
    if (!a) break;
    check(a->ordinal == b->ordinal && a->delay == b->delay && same_pixels(a->picture, b->picture, most));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return -1;
  const Reader& reader = kReaders[data[0] % std::size(kReaders)];
  const Input file(data + 2, size - 2);
  Host host;
  DocumentWindow window;
  if (!read_small_document(reader, file, kMostPixels, window, host)) return 0;
  constexpr std::string_view kTarget = VELLUM_FUZZ_TARGET;
  if (kTarget == "play") play(window, data[1]);
  if (kTarget == "convert") convert(window, data[1]);
  if (kTarget == "reconstruct") reconstruct(window, data[1]);
  return 0;
}
