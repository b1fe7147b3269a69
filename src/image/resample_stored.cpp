#include "image/resample_stored.h"

#include <bit>
#include <optional>
#include <vector>

#include "base/parallel.h"
#include "image/png_bands.h"
#include "image/resample_passes.h"
#include "image/resample_sums.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

/// Rows that are in memory at the same time, as one part of those of the image.
constexpr std::uint32_t kWorthIt = 4;

/// Which source rows each band of target rows needs: `begin` to in front of `end`, neither ever less than for
/// the band above.
struct BandNeeds {
  std::vector<std::uint32_t> begin, end;
  std::uint32_t longest = 0;

  explicit BandNeeds(const ResampleAxis& down) {
    const auto height = static_cast<std::uint32_t>(down.positions.size());
    const std::size_t count = (height + DownFirst::kRows - 1) / DownFirst::kRows;
    begin.assign(count, UINT32_MAX);
    end.assign(count, 0);
    for (std::uint32_t y = 0; y < height; ++y) {
      const ResampleAxis::Position& position = down.positions[y];
      const std::size_t band = y / DownFirst::kRows;
      begin[band] = std::min(begin[band], position.first);
      end[band] = std::max(end[band], position.first + position.count);
    }
    for (std::size_t band = 1; band < count; ++band) end[band] = std::max(end[band], end[band - 1]);
    for (std::size_t band = count - 1; band > 0; --band)
      begin[band - 1] = std::min(begin[band - 1], begin[band]);
    for (std::size_t band = 0; band < count; ++band) longest = std::max(longest, end[band] - begin[band]);
  }
};

Picture resample_bands(PngBands& bands, std::uint32_t width, std::uint32_t bits, const ResampleAxis& across,
                       const ResampleAxis& down) {
  const BandNeeds needs(down);
  // Those that one band of the target needs, and those that come meanwhile.
  const std::uint32_t slots = std::bit_ceil(2 * needs.longest + 2 * bands.rows_of_one());
  if (slots > bands.end(bands.count() - 1) / kWorthIt) return {};
  const FastAxis fast_across(across), fast_down(down);
  Picture result = create_rows(fast_across.size(), fast_down.size(), nullptr, bits);
  if (!result) return {};
  const EditRows rows(result);
  const std::size_t bytes = std::size_t{width} * bits / 8;
  std::vector<std::uint8_t> ring(slots * bytes);
  const SourceRows source(ring.data(), bytes, slots);
  std::vector<std::optional<DownFirst>> workers(parallel_width());
  const RelayWork work{
      .items = needs.begin.size(),
      .work =
          [&](std::size_t worker, std::size_t item) {
            if (!bands.sound()) return;
            std::optional<DownFirst>& own = workers[worker];
            if (!own) own.emplace(fast_across, fast_down, width, bits);
            const auto top = static_cast<std::uint32_t>(item) * DownFirst::kRows;
            own->make(source, top, std::min(fast_down.size(), top + DownFirst::kRows), rows);
          },
      .needs =
          [&](std::size_t item) { return (needs.end[item] + bands.rows_of_one() - 1) / bands.rows_of_one(); },
      .spares =
          [&](std::size_t band) {
            // Rows from here on keep their slots when the band gets its own.
            const std::uint32_t oldest = bands.end(band) > slots ? bands.end(band) - slots : 0;
            return static_cast<std::size_t>(std::ranges::lower_bound(needs.begin, oldest) -
                                            needs.begin.begin());
          },
  };
  parallel_relay(
      bands.count(), PngBands::kAhead, [&](std::size_t band) { bands.inflate(band); },
      [&](std::size_t band) {
        bands.put(band, [&](std::uint32_t y) { return &ring[bytes * (y & source.mask)]; });
      },
      work);
  return bands.sound() ? result : Picture();
}

}  // namespace

Picture resample_stored(const Picture& source, const ResampleAxis& across, const ResampleAxis& down) {
  const auto stored = stored_image_of(source.handle());
  if (!stored || source.handle().at_hand() || !stored->intact()) return {};
  const PngHeader& header = stored->header();
  if (!png_goes_in_bands(header) || png_picture_bits(header) != source.bits()) return {};
  PngBands bands(header, stored->pieces());
  Picture result = resample_bands(bands, source.width(), source.bits(), across, down);
  if (!result || !stored->intact()) return {};
  stored->keep_whole();
  return result;
}

}  // namespace vellum
