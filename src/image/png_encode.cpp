#include "image/png_encode.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/parallel.h"
#include "image/deflate.h"
#include "image/png_filter.h"
#include "image/png_rows.h"
#include "image/png_stored.h"

namespace vellum {
namespace {

/// Filtered bytes of a part: large, since each part starts with an empty window, yet enough parts for all
/// cores.
constexpr std::uint64_t kPartBytes = std::uint64_t{6} << 20;
/// Each part costs the smallest level some kilobytes, for it learns anew what the image is like.
constexpr std::uint64_t kSmallestPartBytes = std::uint64_t{12} << 20;
constexpr int kSmallestLevel = 9;
/// Parts that are only copied need no window.
constexpr std::uint64_t kStoredPartBytes = std::uint64_t{1} << 20;
constexpr int kStoredLevel = 0;

std::uint64_t part_bytes(int level) {
  if (level == kStoredLevel) return kStoredPartBytes;
  return level < kSmallestLevel ? kPartBytes : kSmallestPartBytes;
}

/// Rows `first` to `end` of one pass.
struct Segment {
  const PngPass* pass;
  std::uint32_t first, end;
};

/// Consecutive rows of the stream that are packed together.
using Part = std::vector<Segment>;

/// What all parts of an image are made from.
struct Job {
  const PngHeader& header;
  const Picture& picture;
  PngRowWriter write;
  const std::uint16_t* key;
  int level;
  PngFilterChoice choice;
};

/// The image in parts of whole rows, of about the same number of filtered bytes each.
std::vector<Part> parts_of(const PngHeader& header, const PngPasses& passes, int level) {
  const std::uint64_t total = png_filtered_bytes(header);
  std::uint64_t count = std::max<std::uint64_t>(1, total / part_bytes(level));
  if (count > 1) count -= count % 2;  // even, so that two cores end together
  const std::uint64_t wanted = (total + count - 1) / count;
  std::vector<Part> parts(1);
  std::uint64_t filled = 0;
  for (const PngPass& pass : passes) {
    const std::uint64_t row_bytes = png_row_bytes(header, pass.width) + 1;
    for (std::uint32_t y = 0; y < pass.height;) {
      if (filled >= wanted) {
        parts.emplace_back();
        filled = 0;
      }
      const std::uint64_t room = (wanted - filled + row_bytes - 1) / row_bytes;
      const auto end = static_cast<std::uint32_t>(std::min<std::uint64_t>(pass.height, y + room));
      parts.back().push_back({&pass, y, end});
      filled += row_bytes * (end - y);
      y = end;
    }
  }
  return parts;
}

/// Picks the pixels of a pass out of a picture row, packed as a row of their own.
void gather(const std::uint8_t* row, std::uint32_t bits, const PngPass& pass, std::uint8_t* pixels) {
  if (bits >= 8) {
    const std::size_t bytes = bits / 8;
    for (std::size_t i = 0; i < pass.width; ++i)
      std::memcpy(pixels + i * bytes, row + (pass.x0 + i * pass.dx) * bytes, bytes);
    return;
  }
  std::memset(pixels, 0, (std::size_t{pass.width} * bits + 7) / 8);
  for (std::size_t i = 0; i < pass.width; ++i) {
    const std::size_t x = pass.x0 + i * pass.dx;
    const unsigned value = row[x * bits / 8] >> (8 - bits - x * bits % 8) & ((1u << bits) - 1);
    pixels[i * bits / 8] =
        static_cast<std::uint8_t>(pixels[i * bits / 8] | value << (8 - bits - i * bits % 8));
  }
}

/// Makes the sample rows of one pass.
class SampleRows {
 public:
  SampleRows(const Job& job, const PngPass& pass) : job_(job), pass_(pass), pixels_(job.picture.stride()) {}
  void make(std::uint32_t y, std::uint8_t* samples) {
    const std::uint8_t* row = job_.picture.row(pass_.y0 + y * pass_.dy);
    if (pass_.dx != 1) {
      gather(row, job_.picture.bits(), pass_, pixels_.data());
      row = pixels_.data();
    }
    job_.write(row, samples, pass_.width, job_.key);
  }

 private:
  const Job& job_;
  const PngPass& pass_;
  std::vector<std::uint8_t> pixels_;
};

/// Filters the rows of a segment. `room()` tells where a row goes, `done(row)` hears of it.
template <class Room, class Done>
void filter_segment(const Job& job, const Segment& segment, const Room& room, const Done& done) {
  const auto bytes = static_cast<std::size_t>(png_row_bytes(job.header, segment.pass->width));
  const std::size_t distance = png_filter_distance(job.header);
  std::vector<std::uint8_t> prior(bytes), current(bytes), scratch(2 * bytes);
  SampleRows rows(job, *segment.pass);
  if (segment.first > 0) rows.make(segment.first - 1, prior.data());
  for (std::uint32_t y = segment.first; y < segment.end; ++y) {
    rows.make(y, current.data());
    const std::span<std::uint8_t> row(room(), bytes + 1);
    png_filter_row(job.choice, current.data(), prior.data(), bytes, distance, row.data(), scratch.data());
    done(row);
    current.swap(prior);
  }
}

std::size_t filtered_bytes(const Job& job, const Part& part) {
  std::size_t size = 0;
  for (const Segment& segment : part)
    size += static_cast<std::size_t>(png_row_bytes(job.header, segment.pass->width) + 1) *
            (segment.end - segment.first);
  return size;
}

std::vector<std::uint8_t> filtered_part(const Job& job, const Part& part) {
  std::vector<std::uint8_t> filtered(filtered_bytes(job, part));
  std::uint8_t* out = filtered.data();
  for (const Segment& segment : part)
    filter_segment(
        job, segment, [&] { return out; }, [&](std::span<const std::uint8_t> row) { out += row.size(); });
  return filtered;
}

DeflatePiece pack_part(const Job& job, const Part& part, bool last) {
  return deflate_piece(filtered_part(job, part), job.level, last);
}

StoredStream stored_parts(const Job& job, std::span<const Part> parts) {
  std::vector<std::size_t> bytes;
  for (const Part& part : parts) bytes.push_back(filtered_bytes(job, part));
  return StoredStream(std::move(bytes));
}

/// Hands over the rows of a part as they are filtered.
GivePart rows_of_parts(const Job& job, std::span<const Part> parts) {
  return [&job, parts](std::size_t i, const TakeBytes& take) {
    std::vector<std::uint8_t> row(static_cast<std::size_t>(png_row_bytes(job.header, job.header.width)) + 1);
    for (const Segment& segment : parts[i])
      filter_segment(
          job, segment, [&] { return row.data(); }, take);
  };
}

constexpr std::uint32_t kBandRows = 8;

/// Rows from all over the image, not those at its borders, where rows have nothing above and pictures are
/// often plain; all rows of an image that is lower than that.
Part bands_of(const PngPass& pass, std::uint32_t bands) {
  Part part;
  if (pass.height < 2 * bands * kBandRows) return {{&pass, 0, pass.height}};
  for (std::uint32_t i = 0; i < bands; ++i) {
    const auto middle = static_cast<std::uint32_t>(std::uint64_t{pass.height} * (2 * i + 1) / (2 * bands));
    part.push_back({&pass, middle - kBandRows / 2, middle + kBandRows / 2});
  }
  return part;
}

constexpr int kLeast = -1;  ///< PngFilterChoice::fixed: each row by itself

/// What a trial takes some rows of, and which ways it tries beside the choice of each row.
struct FilterTrial {
  std::uint32_t bands;
  std::span<const int> ways;
  std::size_t margin;  ///< a way must be smaller by one part in so many: small samples err
};
constexpr int kWays[] = {3, 2, 0, 1, 4};  // what wins most often first
/// Most photographs gain by Average, and that is all a quick level has the time for.
constexpr FilterTrial kQuickTrial{4, {kWays, 1}, 64};
/// Frames of drawn animations, which are largely transparent or plain, gain by Up or by no filter.
constexpr FilterTrial kLargeTrial{16, {kWays, 3}, std::size_t{1} << 20};
constexpr FilterTrial kSmallTrial{16, kWays, std::size_t{1} << 20};

/// The filter that makes all rows together smaller than the choice of each row does, or that choice: by
/// packing some of them quickly. Small images are worth it at the smallest level alone.
int filter_by_trial(const Job& job, const PngPasses& passes) {
  constexpr std::uint64_t kLarge = std::uint64_t{64} << 10;
  constexpr int kQuick = 2;
  const PngFilterChoice& choice = job.choice;
  const PngPass& pass = *passes.begin();
  const bool large = png_filtered_bytes(job.header) >= kLarge, smallest = job.level == kSmallestLevel;
  const FilterTrial& trial = !smallest ? kQuickTrial : large ? kLargeTrial : kSmallTrial;
  if (choice.none_only || !choice.horizontal || !choice.vertical || passes.count != 1 ||
      (!smallest && (!large || pass.height < 2 * trial.bands * kBandRows)))
    return kLeast;
  const Part bands = bands_of(pass, trial.bands);
  const auto packed_bytes = [&](int way) {
    Job one = job;
    one.choice.fixed = way;
    return deflate_piece(filtered_part(one, bands), kQuick, true).packed.size();
  };
  int best = kLeast;
  std::size_t fewest = packed_bytes(kLeast);
  for (const int way : trial.ways)
    if (const std::size_t bytes = packed_bytes(way); bytes > 0 && bytes + fewest / trial.margin < fewest) {
      fewest = bytes;
      best = way;
    }
  return best;
}

bool fit(const PngHeader& header, const Picture& picture) {
  return !png_header_fault(header) && picture.width() == header.width && picture.height() == header.height;
}

/// What level 0 makes of an image; false where header and picture do not fit each other.
struct StoredRows {
  StoredRows(const PngHeader& header, const Picture& picture,
             const std::optional<std::array<std::uint16_t, 3>>& key)
      : job{header,
            picture,
            fit(header, picture) ? png_row_writer(picture.bits(), header) : nullptr,
            key ? key->data() : nullptr,
            kStoredLevel,
            {.none_only = true}},
        passes(job.write ? png_passes(header) : PngPasses{}),
        parts(parts_of(header, passes, kStoredLevel)) {}
  explicit operator bool() const { return job.write != nullptr; }

  Job job;
  PngPasses passes;
  std::vector<Part> parts;
};

}  // namespace

std::vector<std::uint8_t> png_encode(const PngHeader& header, const Picture& picture, int level,
                                     std::optional<std::array<std::uint16_t, 3>> key) {
  if (level == kStoredLevel) {
    const ChunkHandle stored = png_encode_block(header, picture, level, key);
    return stored ? std::vector(stored.data(), stored.data() + stored.size()) : std::vector<std::uint8_t>();
  }
  if (!fit(header, picture)) return {};
  Job job{header, picture, png_row_writer(picture.bits(), header), key ? key->data() : nullptr, level, {}};
  if (!job.write) return {};
  // As libpng: rows of indexes and of less than a byte a sample do not gain by filters.
  job.choice = {header.colorType == 3 || header.bitDepth<8, header.width> 1, header.height > 1};
  const PngPasses passes = png_passes(header);
  const std::vector<Part> parts = parts_of(header, passes, level);
  job.choice.fixed = filter_by_trial(job, passes);
  std::vector<DeflatePiece> pieces(parts.size());
  parallel_for(parts.size(),
               [&](std::size_t i) { pieces[i] = pack_part(job, parts[i], i + 1 == parts.size()); });
  for (const DeflatePiece& piece : pieces)
    if (piece.packed.empty()) return {};
  return join_pieces(pieces, level);
}

ChunkHandle png_encode_block(const PngHeader& header, const Picture& picture, int level,
                             std::optional<std::array<std::uint16_t, 3>> key) {
  if (level != kStoredLevel) {
    const auto stream = png_encode(header, picture, level, key);
    return stream.empty() ? ChunkHandle() : ChunkHandle::copy_of(stream, 0);
  }
  const StoredRows rows(header, picture, key);
  if (!rows) return {};
  return stored_stream(stored_parts(rows.job, rows.parts), rows_of_parts(rows.job, rows.parts));
}

bool png_write_stored(const PngHeader& header, const Picture& picture,
                      const std::function<bool(std::span<const std::uint8_t>)>& write,
                      std::optional<std::array<std::uint16_t, 3>> key) {
  const StoredRows rows(header, picture, key);
  return rows &&
         write_stored_stream(stored_parts(rows.job, rows.parts), rows_of_parts(rows.job, rows.parts), write);
}

namespace {

Part whole_image(const PngPasses& passes) {
  Part whole;
  for (const PngPass& pass : passes) whole.push_back({&pass, 0, pass.height});
  return whole;
}

Part some_bands(const PngPasses& passes) {
  Part bands;
  for (const PngPass& pass : passes)
    std::ranges::copy(bands_of(pass, std::max(pass.height / (4 * kBandRows), 1u)), std::back_inserter(bands));
  return bands;
}

std::vector<std::uint8_t> filtered(const PngHeader& header, const Picture& picture, PngFiltering filtering,
                                   const std::optional<std::array<std::uint16_t, 3>>& key,
                                   Part (*part_of)(const PngPasses&)) {
  if (!fit(header, picture)) return {};
  Job job{header, picture, png_row_writer(picture.bits(), header), key ? key->data() : nullptr, 9, {}};
  if (!job.write) return {};
  job.choice = {false, header.width > 1, header.height > 1,
                filtering == PngFiltering::Least ? -1 : static_cast<int>(filtering)};
  const PngPasses passes = png_passes(header);
  return filtered_part(job, part_of(passes));
}

}  // namespace

std::vector<std::uint8_t> png_filtered(const PngHeader& header, const Picture& picture,
                                       PngFiltering filtering,
                                       std::optional<std::array<std::uint16_t, 3>> key) {
  return filtered(header, picture, filtering, key, whole_image);
}

std::vector<std::uint8_t> png_filtered_bands(const PngHeader& header, const Picture& picture,
                                             PngFiltering filtering,
                                             std::optional<std::array<std::uint16_t, 3>> key) {
  return filtered(header, picture, filtering, key, some_bands);
}

}  // namespace vellum
