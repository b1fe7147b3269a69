#include "exchange/movie_import.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/fields.h"
#include "base/limits.h"
#include "base/memory_budget.h"
#include "base/text.h"
#include "base/translation.h"
#include "image/held_picture.h"
#include "image/superpalette.h"
#include "image/to_colors.h"
#include "operations/changed_parts.h"

namespace vellum {
namespace {

/// From here on a person is asked.
constexpr std::uint64_t kManyFrames = 1000;
constexpr std::int64_t kUsualLength = 40;  ///< ms of a last frame that nothing is known of

bool is_same_picture(const Picture& a, const Picture& b) {
  if (a.handle().data() == b.handle().data()) return true;
  if (a.width() != b.width() || a.height() != b.height() || a.bits() != b.bits()) return false;
  const std::size_t bytes = (std::size_t{a.width()} * a.bits() + 7) / 8;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    if (std::memcmp(a.row(y), b.row(y), bytes) != 0) return false;
  return true;
}

std::uint64_t bytes_of(const Picture& picture) {
  return std::uint64_t{picture.stride()} * picture.height() + Picture::kHeaderBytes;
}

std::uint64_t memory_limit() { return std::min(memory_budget(), maximum_decoded_bytes()); }

/// Whether so many frames are worth a question, and what was said.
bool is_wanted(std::uint64_t frames, std::uint64_t bytes, Host& host) {
  if ((frames <= kManyFrames && bytes <= memory_limit()) || !host.ask) return true;
  const std::string text = filled(StringId::MovieQuestion, {grouped(frames), grouped(bytes >> 20) + " MB"});
  return host.ask({StringId::MovieQuestion, {}, text, {}, nullptr}, false) == Answer::Yes;
}

/// Which frames stay, and the milliseconds that each of them stands.
class Choosing {
 public:
  Choosing(const MovieImport& import, const MovieFacts& facts) : import_(import), facts_(facts) {}

  /// The next frame begins at `time` (ms). Gives the time that the one in front of it gets.
  std::uint32_t begins(std::int64_t time) {
    const std::uint32_t length = last_ < 0 ? 0 : length_to(time);
    last_ = std::max(last_, time);
    return length;
  }
  bool stays() {
    const std::uint64_t group = std::uint64_t{import_.keep} + import_.skip, place = number_++ % group;
    return import_.skipFirst ? place >= import_.skip : place < import_.keep;
  }
  /// The time of the last frame, where the movie or the range ends.
  std::uint32_t ends() {
    const std::int64_t usual =
        facts_.rate > 0 ? std::max<std::int64_t>(1, std::llround(1000 / facts_.rate)) : kUsualLength;
    std::int64_t end = facts_.duration / 1000 > last_ ? (facts_.duration + 500) / 1000 : last_ + usual;
    if (import_.to > 0) end = std::min<std::int64_t>(end, import_.to);
    return last_ < 0 ? 0 : length_to(std::max(end, last_ + 1));
  }

 private:
  /// What rounding took from one frame the next one gets; none is shorter than a millisecond.
  std::uint32_t length_to(std::int64_t time) {
    const std::int64_t begin = std::max(told_, last_), end = std::max(begin + 1, time);
    told_ = end;
    return static_cast<std::uint32_t>(std::min<std::int64_t>(end - begin, 0x7FFFFFFF));
  }

  const MovieImport& import_;
  const MovieFacts& facts_;
  std::int64_t last_ = -1, told_ = 0;
  std::uint64_t number_ = 0;
};

/// Walks the frames of the range: `take` gets those that stay, as pictures, and `stands` the time of what
/// lies in front, whether that stayed or not. False when `take` says so, or the user stopped it.
bool walk(MovieReader& reader, const MovieImport& import, Host& host,
          const std::function<bool(Picture picture)>& take,
          const std::function<void(std::uint32_t, bool)>& stands) {
  const Progress progress(host, string_text(StringId::ReadingMovie));
  Choosing choosing(import, reader.facts);
  const std::uint64_t end =
      import.to > 0 ? import.to : std::max<std::int64_t>(1, reader.facts.duration / 1000);
  bool stayed = false;
  while (const auto time = reader.next()) {
    if (host.stopped()) return false;
    const std::int64_t milliseconds = (*time + 500) / 1000;
    if (milliseconds < import.from) continue;
    if (import.to > 0 && milliseconds >= import.to) break;
    stands(choosing.begins(milliseconds), stayed);
    stayed = choosing.stays();
    if (stayed) {
      Picture picture = reader.picture();
      if (!picture) throw std::bad_alloc();
      if (!take(std::move(picture))) return false;
    }
    progress.step(static_cast<std::uint64_t>(milliseconds) - import.from,
                  std::max<std::uint64_t>(end - std::min<std::uint64_t>(import.from, end), 1));
  }
  stands(choosing.ends(), stayed);
  return true;
}

/// One palette of all frames that stay. Nothing when the user stopped it.
std::optional<GivenColors> common_colors(MovieReader& reader, const MovieImport& import, Host& host) {
  Superpalette palette;
  const auto take = [&](const Picture& picture) {
    palette.add(picture);
    return true;
  };
  if (!walk(reader, import, host, take, [](std::uint32_t, bool) {})) return std::nullopt;
  const std::uint32_t most = reader.facts.alpha ? 255 : 256;
  const PaletteColors found = palette.colors(most);
  GivenColors colors;
  if (reader.facts.alpha) {
    // The first entry is what is transparent.
    std::copy_n(found.palette.begin(), 3 * std::size_t{most}, colors.palette.begin() + 3);
    colors.count = found.count + 1;
    colors.alpha = {0};
  } else {
    colors.palette = found.palette;
    colors.count = std::max(found.count, 1u);
  }
  return colors;
}

/// A frame whose rows may be packed away while it waits.
struct WaitingFrame {
  StreamedFrame frame;  ///< without its picture
  HeldPicture picture;

  StreamedFrame whole() const {
    StreamedFrame made = frame;
    made.picture = picture.picture();
    return made;
  }
};

/// The frames that stay, gathered.
class Gathering {
 public:
  Gathering(const MovieImport& import, bool cut, std::optional<GivenColors> colors, Host& host)
      : import_(import), cut_(cut), colors_(std::move(colors)), host_(host) {}

  bool asked = false, refused = false;

  bool take(Picture picture) {
    if (colors_) {
      // Indexes of a palette have 8 bits in all frames.
      picture = in_eight_bits(to_colors(picture, *colors_, false));
      if (!picture) throw std::bad_alloc();
    }
    if (pending_ && import_.merge && is_same_picture(pending_, picture)) return true;
    flush();
    pending_ = std::move(picture);
    return is_room();
  }
  void stands(std::uint32_t length, bool stayed) {
    if (!stayed && !import_.preserve) return;
    if (import_.duration > 0) length = stayed ? import_.duration : 0;
    delay_ += length;
  }
  std::vector<WaitingFrame> finish() {
    flush();
    return std::move(frames_);
  }

 private:
  Picture in_eight_bits(const Picture& picture) const {
    if (!picture || picture.bits() == 8) return picture;
    Picture wide = PictureCreate(picture.width(), picture.height(), &colors_->palette, 8);
    for (std::uint32_t y = 0; wide && y < picture.height(); ++y)
      for (std::uint32_t x = 0; x < picture.width(); ++x)
        PicturePutPixel(wide, x, y, PictureGetPixel(picture, x, y));
    return wide;
  }

  /// The time that was told since belongs to the frame that waits, and in front of all to the first.
  void flush() {
    if (!pending_) return;
    StreamedFrame frame;
    frame.picture = pending_;
    if (cut_ && before_) static_cast<FrameLayer&>(frame) = changed_part(before_, pending_);
    if (!frame.picture) throw std::bad_alloc();
    if (cut_) before_ = pending_;
    if (colors_ && !colors_->alpha.empty()) frame.transparency = colors_->alpha;
    frame.delay = static_cast<std::uint32_t>(std::min<std::uint64_t>(delay_, 0x7FFFFFFF));
    delay_ = 0;
    bytes_ += bytes_of(frame.picture);
    WaitingFrame waiting;
    waiting.picture.block = block_to_keep(std::exchange(frame.picture, {}));
    waiting.frame = std::move(frame);
    frames_.push_back(std::move(waiting));
  }

  bool is_room() {
    const std::uint64_t bytes = bytes_ + bytes_of(pending_);
    if (bytes > maximum_decoded_bytes())
      return host_.fail(
          {FaultKind::Limit, 0, -1, -1, translated("its frames take more memory than a document may")});
    if (asked || (frames_.size() < kManyFrames && bytes <= memory_limit())) return true;
    asked = true;
    refused = !is_wanted(frames_.size() + 1, bytes, host_);
    return !refused;
  }

  const MovieImport& import_;
  bool cut_;
  std::optional<GivenColors> colors_;
  Host& host_;
  std::vector<WaitingFrame> frames_;
  Picture pending_, before_;
  std::uint64_t delay_ = 0, bytes_ = 0;
};

}  // namespace

std::uint64_t expected_frames(const MovieFacts& facts, const MovieImport& import) {
  if (facts.frames == 0) return 0;
  double share = 1;
  if (facts.duration > 0) {
    const double whole = static_cast<double>(facts.duration) / 1000;
    const double end = import.to > 0 ? std::min<double>(import.to, whole) : whole;
    share = std::clamp((end - import.from) / whole, 0.0, 1.0);
  }
  const double group = static_cast<double>(import.keep) + import.skip;
  return static_cast<std::uint64_t>(
      std::ceil(static_cast<double>(facts.frames) * share * import.keep / group - 1e-9));
}

bool import_movie(MovieReader& reader, const MovieImport& import, DocumentKind kind, DocumentWindow& window,
                  Host& host, bool& told) {
  const std::uint64_t each = std::uint64_t{reader.facts.width} * reader.facts.height *
                             (import.palette       ? 1
                              : reader.facts.alpha ? 4
                                                   : 3);
  const std::uint64_t expected = expected_frames(reader.facts, import);
  const bool many = expected > kManyFrames || (each > 0 && expected > memory_limit() / each);
  if (many && !is_wanted(expected, expected * each, host)) return told = true, false;
  const auto rewind = [&] {
    return reader.seek(std::int64_t{import.from} * 1000) ||
           host.fail({FaultKind::Damaged, 0, -1, -1, translated("it can't be read from its beginning")});
  };
  if (import.from > 0 && !rewind()) return false;
  std::optional<GivenColors> colors;
  if (import.palette) {
    colors = common_colors(reader, import, host);
    if (!colors || !rewind()) return false;
  }
  Gathering gathering(import, import.cut && kind != DocumentKind::WEBP, std::move(colors), host);
  gathering.asked = many;
  const bool walked = walk(
      reader, import, host, [&](Picture picture) { return gathering.take(std::move(picture)); },
      [&](std::uint32_t length, bool stayed) { gathering.stands(length, stayed); });
  told = gathering.refused;
  if (!walked) return false;
  const auto frames = gathering.finish();
  if (frames.empty()) {
    if (reader.damaged())
      return host.fail({FaultKind::Damaged, 0, -1, -1, translated("none of its frames can be read")});
    host.show(StringId::NothingInRange);
    return told = true, false;
  }
  if (reader.damaged()) host.add_note(string_text(StringId::MovieDamaged));
  const FrameStream stream{{reader.facts.width, reader.facts.height},
                           frames.size(),
                           import.loop ? 0u : 1u,
                           [&](std::size_t frame) { return frames[frame].whole(); }};
  return build_from_stream(window, stream, kind, host) || host.stopped() ||
         (host.show(StringId::MemoryError), told = true, false);
}

}  // namespace vellum
