// Sounds of SWF files: PCM samples of WAV files at a rate that the format has, and MP3 files as they are.
#include <algorithm>
#include <cmath>

#include "base/byte_order.h"
#include "exchange/riff.h"
#include "exchange/swf_writer.h"

namespace vellum {
namespace {

constexpr std::uint16_t kDefineSound = 14, kStartSound = 15;
constexpr std::uint32_t kRates[] = {5512, 11025, 22050, 44100};

struct Samples {
  std::uint32_t rate = 0, channels = 0;
  std::vector<std::int16_t> values;  ///< one of each channel after the other
};

/// One sample of 8 to 32 bits as one of 16.
std::int16_t sample_at(const std::uint8_t* bytes, std::uint32_t bits) {
  if (bits == 8) return static_cast<std::int16_t>((bytes[0] - 128) * 256);
  const std::uint8_t* high = bytes + bits / 8 - 2;
  return static_cast<std::int16_t>(read_le16(high));
}

bool read_wav(std::span<const std::uint8_t> file, Samples& samples) {
  const auto outer = riff_chunks(file);
  const RiffChunk* wave = find_chunk(outer, "RIFF", "WAVE");
  if (!wave) return false;
  const auto chunks = riff_chunks(wave->data);
  const RiffChunk *format = find_chunk(chunks, "fmt "), *data = find_chunk(chunks, "data");
  if (!format || !data || format->data.size() < 16) return false;
  constexpr std::uint32_t kPcm = 1, kExtensible = 0xFFFE;
  const std::uint32_t kind = read_le16(format->data.data()), bits = read_le16(format->data.data() + 14);
  const std::uint32_t channels = read_le16(format->data.data() + 2);
  samples.rate = read_le32(format->data.data() + 4);
  samples.channels = std::min(channels, 2u);
  if ((kind != kPcm && kind != kExtensible) || channels == 0 || samples.rate < 1'000 ||
      samples.rate > 768'000 || (bits != 8 && bits != 16 && bits != 24 && bits != 32))
    return false;
  const std::size_t step = std::size_t{channels} * bits / 8;
  for (std::size_t at = 0; at + step <= data->data.size(); at += step)
    for (std::uint32_t c = 0; c < samples.channels; ++c)
      samples.values.push_back(sample_at(data->data.data() + at + std::size_t{c} * bits / 8, bits));
  return !samples.values.empty();
}

/// At the highest rate that the format has, where it has not this one.
void resample(Samples& samples) {
  if (std::ranges::find(kRates, samples.rate) != std::end(kRates)) return;
  const std::uint32_t wanted = kRates[3], channels = samples.channels;
  const std::size_t count = samples.values.size() / channels;
  const auto made = static_cast<std::size_t>(std::uint64_t{count} * wanted / samples.rate);
  std::vector<std::int16_t> values(std::max<std::size_t>(made, 1) * channels);
  for (std::size_t i = 0; i < values.size() / channels; ++i) {
    const double at = static_cast<double>(i) * samples.rate / wanted;
    const auto before = std::min(static_cast<std::size_t>(at), count - 1);
    const std::size_t after = std::min(before + 1, count - 1);
    for (std::uint32_t c = 0; c < channels; ++c) {
      const double a = samples.values[before * channels + c], b = samples.values[after * channels + c];
      values[i * channels + c] = static_cast<std::int16_t>(std::lround(a + (b - a) * (at - std::floor(at))));
    }
  }
  samples.values = std::move(values);
  samples.rate = wanted;
}

SwfBytes sound_tags(std::uint16_t number, std::uint32_t coding, std::uint32_t rate, bool stereo,
                    std::uint32_t samples, std::span<const std::uint8_t> data) {
  const auto row = static_cast<std::uint32_t>(std::ranges::find(kRates, rate) - std::begin(kRates));
  SwfBytes out;
  const auto put = [&](std::uint32_t value, int bytes) {
    for (; bytes-- > 0; value >>= 8) out.push_back(static_cast<std::uint8_t>(value));
  };
  put(kDefineSound << 6 | 63, 2);
  put(static_cast<std::uint32_t>(7 + data.size()), 4);
  put(number, 2);
  put(coding << 4 | row << 2 | 2 | (stereo ? 1 : 0), 1);
  put(samples, 4);
  out.insert(out.end(), data.begin(), data.end());
  put(kStartSound << 6 | 3, 2);
  put(number, 2);
  put(0, 1);
  return out;
}

struct Mp3Frame {
  std::size_t bytes = 0;
  std::uint32_t rate = 0, samples = 0;
  bool stereo = false;
};

/// The frame of layer III that begins here; no bytes where none does.
Mp3Frame mp3_frame(std::span<const std::uint8_t> file, std::size_t at) {
  constexpr std::uint32_t kBits[2][16] = {
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}};
  constexpr std::uint32_t kBase[] = {44100, 48000, 32000, 0};
  if (at + 4 > file.size()) return {};
  const std::uint32_t head = read_be32(file.data() + at);
  const std::uint32_t version = head >> 19 & 3, layer = head >> 17 & 3;
  if (head >> 21 != 0x7FF || layer != 1 || version == 1) return {};
  const bool first = version == 3;
  Mp3Frame frame;
  frame.rate = kBase[head >> 10 & 3] / (first ? 1 : version == 2 ? 2 : 4);
  const std::uint32_t kilobits = kBits[first ? 0 : 1][head >> 12 & 15];
  if (frame.rate == 0 || kilobits == 0) return {};
  frame.samples = first ? 1152 : 576;
  frame.bytes = frame.samples / 8 * kilobits * 1000 / frame.rate + (head >> 9 & 1);
  frame.stereo = (head >> 6 & 3) != 3;
  return frame;
}

SwfBytes mp3_sound(std::span<const std::uint8_t> file, std::uint16_t number) {
  std::size_t at = 0;
  // In front may stand a description, whose length has seven bits a byte.
  if (file.size() > 10 && file[0] == 'I' && file[1] == 'D' && file[2] == '3')
    at = 10 + (std::size_t{file[6]} << 21 | std::size_t{file[7]} << 14 | std::size_t{file[8]} << 7 | file[9]);
  const Mp3Frame first = at < file.size() ? mp3_frame(file, at) : Mp3Frame{};
  if (first.bytes == 0 || std::ranges::find(kRates, first.rate) == std::end(kRates)) return {};
  const std::size_t begin = at;
  std::uint32_t samples = 0;
  for (Mp3Frame frame = first; frame.bytes > 0 && frame.rate == first.rate && at + frame.bytes <= file.size();
       frame = mp3_frame(file, at)) {
    at += frame.bytes;
    samples += frame.samples;
  }
  if (samples == 0) return {};
  SwfBytes data(2);  // no samples to pass over
  data.insert(data.end(), file.begin() + static_cast<std::ptrdiff_t>(begin),
              file.begin() + static_cast<std::ptrdiff_t>(at));
  constexpr std::uint32_t kMp3 = 2;
  return sound_tags(number, kMp3, first.rate, first.stereo, samples, data);
}

}  // namespace

SwfBytes swf_sound(std::span<const std::uint8_t> file, std::uint16_t number) {
  Samples samples;
  if (!read_wav(file, samples)) return mp3_sound(file, number);
  resample(samples);
  std::vector<std::uint8_t> data;
  for (const std::int16_t value : samples.values) {
    data.push_back(static_cast<std::uint8_t>(value));
    data.push_back(static_cast<std::uint8_t>(static_cast<std::uint16_t>(value) >> 8));
  }
  constexpr std::uint32_t kPcm = 3;
  return sound_tags(number, kPcm, samples.rate, samples.channels == 2,
                    static_cast<std::uint32_t>(samples.values.size() / samples.channels), data);
}

}  // namespace vellum
