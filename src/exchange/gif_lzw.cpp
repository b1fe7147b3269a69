#include "exchange/gif_lzw.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/parallel.h"
#include "image/lanes.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostCodes = 4096;

/// Bits, lowest first, in blocks of at most 255 bytes with their lengths in front (GIF89a, 15 and appendix
/// F).
class BlockWriter {
 public:
  explicit BlockWriter(Bytes& out) : out_(out) {}

  void put(std::uint32_t code, std::uint32_t width) {
    bits_ |= std::uint64_t{code} << held_;
    held_ += width;
    for (; held_ >= 8; held_ -= 8, bits_ >>= 8) put_byte(static_cast<std::uint8_t>(bits_));
  }
  void finish() {
    if (held_ > 0) put_byte(static_cast<std::uint8_t>(bits_));
    flush();
    out_.push_back(0);
  }

 private:
  void put_byte(std::uint8_t byte) {
    block_[count_++] = byte;
    if (count_ == block_.size()) flush();
  }
  void flush() {
    if (count_ == 0) return;
    out_.push_back(static_cast<std::uint8_t>(count_));
    out_.insert(out_.end(), block_.begin(), block_.begin() + static_cast<std::ptrdiff_t>(count_));
    count_ = 0;
  }

  Bytes& out_;
  std::array<std::uint8_t, 255> block_{};
  std::size_t count_ = 0;
  std::uint64_t bits_ = 0;
  std::uint32_t held_ = 0;
};

/// Strings of the dictionary by the code of all but their last pixel and that pixel. 5003 places are a prime
/// a fifth above the 4096 codes.
class Dictionary {
 public:
  static constexpr std::uint32_t kPlaces = 5003;

  Dictionary() { clear(); }
  void clear() { places_.fill(kEmpty); }

  /// The code of the string, or where it goes.
  VELLUM_INLINE bool find(std::uint32_t prefix, std::uint8_t pixel, std::uint32_t& code) {
    const std::uint32_t key = prefix << 8 | pixel;
    std::uint32_t place = wrapped(prefix + kStarts[pixel]);
    while (places_[place] != kEmpty) {
      if (places_[place] >> kCodeBits == key) {
        code = places_[place] & (kMostCodes - 1);
        return true;
      }
      place = wrapped(place + kStarts[pixel] / 2 + 1);
    }
    place_ = place, key_ = key;
    return false;
  }
  void insert(std::uint32_t prefix, std::uint8_t pixel, std::uint32_t code) {
    std::uint32_t known = 0;
    if (!find(prefix, pixel, known)) add(code);
  }
  /// Adds what `find` didn't find.
  void add(std::uint32_t code) { places_[place_] = key_ << kCodeBits | code; }

 private:
  static constexpr std::uint32_t kCodeBits = 12;
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFF;  // no string has the last code as its prefix
  static std::uint32_t wrapped(std::uint32_t place) { return place < kPlaces ? place : place - kPlaces; }
  /// Where the strings that end in a pixel begin to lie.
  static constexpr auto kStarts = [] {
    std::array<std::uint32_t, 256> starts{};
    for (std::uint32_t pixel = 0; pixel < 256; ++pixel) starts[pixel] = pixel * 3079 % kPlaces;
    return starts;
  }();

  std::array<std::uint32_t, kPlaces> places_{};  ///< the string, and below it its code
  std::uint32_t place_ = 0, key_ = 0;
};

/// Data that are made of strings which the dictionary has, not always the longest: of the pixels' choices and
/// the lengths at hand those are taken that reach farthest with the string behind them.
class SmallerLzw {
 public:
  SmallerLzw(Bytes& out, std::span<const PixelChoice> pixels, std::uint32_t bits,
             const std::vector<std::size_t>* clears)
      : writer_(out),
        pixels_(pixels),
        least_(std::max(bits, 2u)),
        clears_(clears),
        next_(first_code()),
        width_(least_ + 1) {
    out.push_back(static_cast<std::uint8_t>(least_));
  }

  /// Gives the indexes that were written.
  std::vector<std::uint8_t> write() {
    std::vector<std::uint8_t> written(pixels_.size());
    writer_.put(1u << least_, width_);
    for (std::size_t at = 0; at < pixels_.size();) {
      const String string = chosen(at);
      if (coming_) learn(*coming_, string.first);
      spell(string, written.data() + at);
      writer_.put(string.code, width_);
      at += string.length;
      expect(string);
      if (at < pixels_.size() && is_to_begin_anew(at)) begin_anew();
    }
    writer_.put((1u << least_) + 1, width_);
    writer_.finish();
    return written;
  }

 private:
  struct String {
    std::uint32_t code = 0;
    std::size_t length = 0;
    std::uint8_t first = 0;
  };
  /// The string that a reader learns with the next code: a known one and one pixel more.
  struct Coming {
    std::uint32_t prefix, code;
  };
  struct Node {
    std::uint32_t code;
    std::uint8_t first;
  };

  std::uint32_t first_code() const { return (1u << least_) + 2; }

  void expect(const String& string) {
    coming_.reset();
    if (next_ == kMostCodes) return;
    if (next_ == 1u << width_) ++width_;
    coming_ = Coming{string.code, next_++};
  }

  void learn(const Coming& coming, std::uint8_t pixel) {
    strings_.insert(coming.prefix, pixel, coming.code);
    prefixes_[coming.code] = static_cast<std::uint16_t>(coming.prefix);
    pixels_of_[coming.code] = pixel;
  }

  void spell(const String& string, std::uint8_t* out) const {
    std::uint32_t code = string.code;
    for (std::size_t i = string.length; i-- > 1; code = prefixes_[code]) out[i] = pixels_of_[code];
    out[0] = string.first;
  }

  void begin_anew() {
    writer_.put(1u << least_, width_);
    strings_.clear();
    next_ = first_code();
    width_ = least_ + 1;
    coming_.reset();
  }

  bool is_to_begin_anew(std::size_t at) {
    if (!clears_) return !coming_;
    const std::size_t before = next_clear_;
    while (next_clear_ < clears_->size() && (*clears_)[next_clear_] <= at) ++next_clear_;
    return next_clear_ > before;
  }

  /// The nodes one pixel farther than those.
  void grow(const std::vector<Node>& from, std::size_t at, const std::optional<Coming>& coming,
            std::vector<Node>& to) {
    to.clear();
    for (const Node& node : from)
      for_each_choice(at, [&](std::uint8_t pixel) {
        std::uint32_t code = 0;
        if (strings_.find(node.code, pixel, code))
          to.push_back({code, node.first});
        else if (coming && coming->prefix == node.code && pixel == node.first)
          to.push_back({coming->code, node.first});
      });
  }

  void for_each_choice(std::size_t at, const auto& take) const {
    const PixelChoice& pixel = pixels_[at];
    for (std::size_t i = 0; i < pixel.size(); ++i)
      if (i == 0 || std::find(pixel.begin(), pixel.begin() + i, pixel[i]) == pixel.begin() + i)
        take(pixel[i]);
  }

  /// The strings that begin at a pixel, one of each length up to the longest.
  void strings_at(std::size_t at, const std::optional<Coming>& coming, std::vector<String>& strings) {
    strings.clear();
    nodes_.clear();
    for_each_choice(at, [&](std::uint8_t pixel) { nodes_.push_back({pixel, pixel}); });
    for (std::size_t length = 1; !nodes_.empty(); ++length) {
      strings.push_back({nodes_[0].code, length, nodes_[0].first});
      if (at + length == pixels_.size()) break;
      grow(nodes_, at + length, coming, grown_);
      nodes_.swap(grown_);
    }
  }

  String chosen(std::size_t at) {
    strings_at(at, coming_, here_);
    String best = here_.back();
    const std::size_t longest = best.length;
    if (at + longest >= pixels_.size()) return best;
    std::size_t reach = 0;
    for (std::size_t length = longest; length > 0 && length + kShorter > longest; --length) {
      const String& string = here_[length - 1];
      const auto coming = next_ < kMostCodes ? std::optional(Coming{string.code, next_}) : std::nullopt;
      strings_at(at + length, coming, behind_);
      if (length + behind_.back().length <= reach) continue;
      reach = length + behind_.back().length;
      best = string;
    }
    return best;
  }

  static constexpr std::size_t kShorter = 4;

  BlockWriter writer_;
  Dictionary strings_;
  std::span<const PixelChoice> pixels_;
  std::uint32_t least_;
  const std::vector<std::size_t>* clears_;
  std::size_t next_clear_ = 0;
  std::uint32_t next_, width_;
  std::optional<Coming> coming_;
  std::array<std::uint16_t, kMostCodes> prefixes_{};  ///< of codes: all but the last pixel
  std::array<std::uint8_t, kMostCodes> pixels_of_{};  ///< and that
  std::vector<Node> nodes_, grown_;
  std::vector<String> here_, behind_;
};

/// The bits that pixels take when codes begin with them, up to each step.
std::vector<std::uint64_t> costs_from(std::span<const std::uint8_t> indexes, std::uint32_t bits,
                                      std::size_t step) {
  const std::uint32_t least = std::max(bits, 2u);
  Dictionary strings;
  std::uint32_t next = (1u << least) + 2, width = least + 1, prefix = indexes[0];
  std::uint64_t sum = width;
  std::vector<std::uint64_t> costs;
  for (std::size_t at = 1; at < indexes.size(); ++at) {
    if (at % step == 0) costs.push_back(sum + width);
    std::uint32_t code = 0;
    if (strings.find(prefix, indexes[at], code)) {
      prefix = code;
      continue;
    }
    sum += width;
    if (next < kMostCodes) {
      if (next == 1u << width) ++width;
      strings.add(next++);
    }
    prefix = indexes[at];
  }
  costs.push_back(sum + width);
  return costs;
}

}  // namespace

void put_lzw(Bytes& out, std::span<const std::uint8_t> indexes, std::uint32_t bits) {
  const std::uint32_t least = std::max(bits, 2u), clear = 1u << least, end = clear + 1;
  out.push_back(static_cast<std::uint8_t>(least));
  BlockWriter writer(out);
  Dictionary strings;
  std::uint32_t next = end + 1, width = least + 1;
  writer.put(clear, width);
  if (!indexes.empty()) {
    std::uint32_t prefix = indexes[0];
    for (const std::uint8_t pixel : indexes.subspan(1)) {
      std::uint32_t code = 0;
      if (strings.find(prefix, pixel, code)) {
        prefix = code;
        continue;
      }
      writer.put(prefix, width);
      if (next < kMostCodes) {
        // A reader knows this string one code later.
        if (next == 1u << width) ++width;
        strings.add(next++);
      } else {
        writer.put(clear, width);
        strings.clear();
        next = end + 1;
        width = least + 1;
      }
      prefix = pixel;
    }
    writer.put(prefix, width);
    if (next == 1u << width && width < 12) ++width;
  }
  writer.put(end, width);
  writer.finish();
}

std::vector<std::uint8_t> put_smaller_lzw(Bytes& out, std::span<const PixelChoice> pixels, std::uint32_t bits,
                                          const std::vector<std::size_t>* clears) {
  return SmallerLzw(out, pixels, bits, clears).write();
}

std::vector<std::size_t> best_clears(std::span<const std::uint8_t> indexes, std::uint32_t bits) {
  constexpr std::size_t kMostPlaces = 32, kLeastStep = 512;
  const std::size_t step = std::max((indexes.size() + kMostPlaces - 1) / kMostPlaces, kLeastStep),
                    places = (indexes.size() + step - 1) / step;
  std::vector<std::vector<std::uint64_t>> costs(places);
  parallel_for(places, [&](std::size_t i) { costs[i] = costs_from(indexes.subspan(i * step), bits, step); });
  std::vector<std::uint64_t> least(places + 1, UINT64_MAX);
  std::vector<std::size_t> from(places + 1);
  least[0] = 0;
  for (std::size_t i = 0; i < places; ++i)
    for (std::size_t k = 0; k < costs[i].size(); ++k)
      if (const std::uint64_t cost = least[i] + costs[i][k]; cost < least[i + k + 1])
        least[i + k + 1] = cost, from[i + k + 1] = i;
  std::vector<std::size_t> clears;
  for (std::size_t i = from[places]; i > 0; i = from[i]) clears.push_back(i * step);
  std::ranges::reverse(clears);
  return clears;
}

}  // namespace vellum
