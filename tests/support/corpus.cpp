#include "support/corpus.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>

namespace vellum::testing {
namespace {

const std::filesystem::path& corpus_folder() {
  static const std::filesystem::path folder = source_folder() / ".." / "shared" / "corpus";
  return folder;
}

std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> cells;
  std::istringstream stream(line);
  for (std::string cell; std::getline(stream, cell, '\t');) cells.push_back(cell);
  return cells;
}

std::vector<TableRow> read_table(const char* name) {
  std::vector<TableRow> result;
  std::ifstream file(corpus_folder() / name);
  std::string line;
  if (!std::getline(file, line)) return result;
  const auto names = split(line);
  while (std::getline(file, line)) {
    const auto cells = split(line);
    TableRow row;
    for (std::size_t i = 0; i < names.size(); ++i) row[names[i]] = i < cells.size() ? cells[i] : "";
    result.push_back(std::move(row));
  }
  return result;
}

template <class Wanted>
std::vector<TableRow> rows_where(const std::vector<TableRow>& table, const Wanted& wanted) {
  std::vector<TableRow> rows;
  std::ranges::copy_if(table, std::back_inserter(rows), wanted);
  return rows;
}

}  // namespace

std::filesystem::path source_folder() { return VELLUM_SOURCE_DIR; }
std::filesystem::path program_folder() { return std::filesystem::path(VELLUM_BINARY_DIR) / "bin"; }

std::vector<std::uint8_t> file_bytes(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string file_text(const std::filesystem::path& file) {
  const auto bytes = file_bytes(file);
  return {bytes.begin(), bytes.end()};
}

/// Memory where there is enough of it: saving waits until the disk has what it was given.
std::filesystem::path scratch_place() {
  const std::filesystem::path memory = "/dev/shm";
  std::error_code error;
  const bool large = std::filesystem::space(memory, error).available >= std::uintmax_t{1} << 30;
  return !error && large && !getenv("TMPDIR") ? memory : std::filesystem::temp_directory_path();
}

ScratchFolder::ScratchFolder() {
  std::string pattern = (scratch_place() / "vellum-test-XXXXXX").string();
  if (const char* made = mkdtemp(pattern.data())) path_ = made;
}

ScratchFolder::~ScratchFolder() {
  std::error_code error;
  if (!path_.empty()) std::filesystem::remove_all(path_, error);
}

std::vector<TableRow> corpus_rows(const std::vector<std::string>& kinds) {
  static const std::vector<TableRow> index = read_table("INDEX.tsv");
  return rows_where(
      index, [&](const TableRow& row) { return std::ranges::find(kinds, row.at("kind")) != kinds.end(); });
}

std::vector<TableRow> corpus_frames(const std::string& path) {
  static const std::vector<TableRow> frames = read_table("FRAMES.tsv");
  return rows_where(frames, [&](const TableRow& row) { return row.at("path") == path; });
}

std::filesystem::path corpus_file(const TableRow& row) { return corpus_folder() / row.at("path"); }

// RFC 1321.
std::string md5_of(const void* data, std::size_t size) {
  static constexpr std::array<int, 16> shifts = {7, 12, 17, 22, 5, 9, 14, 20, 4, 11, 16, 23, 6, 10, 15, 21};
  std::string message(static_cast<const char*>(data), size);
  message += '\x80';
  while (message.size() % 64 != 56) message += '\0';
  for (int i = 0; i < 8; ++i) message += static_cast<char>(std::uint64_t{size} * 8 >> (8 * i));
  std::array<std::uint32_t, 4> state = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
  static const auto sines = [] {
    std::array<std::uint32_t, 64> table{};
    for (int i = 0; i < 64; ++i)
      table[static_cast<std::size_t>(i)] =
          static_cast<std::uint32_t>(std::floor(std::fabs(std::sin(i + 1.0)) * 4294967296.0));
    return table;
  }();
  for (std::size_t block = 0; block < message.size(); block += 64) {
    std::array<std::uint32_t, 16> words{};
    std::memcpy(words.data(), message.data() + block, 64);
    auto [a, b, c, d] = state;
    for (std::uint32_t i = 0; i < 64; ++i) {
      const std::uint32_t round = i / 16;
      const std::uint32_t f = round == 0   ? (b & c) | (~b & d)
                              : round == 1 ? (d & b) | (~d & c)
                              : round == 2 ? b ^ c ^ d
                                           : c ^ (b | ~d);
      const std::uint32_t g = (round == 0 ? i : round == 1 ? 5 * i + 1 : round == 2 ? 3 * i + 5 : 7 * i) % 16;
      const std::uint32_t sum = a + f + sines[i] + words[g];
      const int shift = shifts[round * 4 + i % 4];
      a = d;
      d = c;
      c = b;
      b += sum << shift | sum >> (32 - shift);
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
  }
  std::string hex;
  for (const std::uint32_t word : state)
    for (int i = 0; i < 4; ++i) {
      const std::uint32_t byte = word >> (8 * i) & 255;
      hex += "0123456789abcdef"[byte >> 4];
      hex += "0123456789abcdef"[byte & 15];
    }
  return hex;
}

}  // namespace vellum::testing
