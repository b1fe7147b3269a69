#include "operations/social_sizes.h"

#include <algorithm>
#include <charconv>
#include <deque>
#include <fstream>
#include <mutex>
#include <vector>

#include "base/text.h"

namespace vellum {
namespace {

constexpr SocialSize kSizes[] = {{1080, 1080}, {1080, 1350},         {1080, 1920}, {1200, 630},
                                 {1600, 900},  {1000, 1500},         {1280, 720},  {400, 400},
                                 {1500, 500},  {512, 512, 512 << 10}};
constexpr std::size_t kMostOwn = 500;
constexpr std::uint64_t kMostKilobytes = 1 << 30;

/// One state of the file.
struct SizeTable {
  std::filesystem::path path;
  std::filesystem::file_time_type time;
  std::deque<std::string> names;
  std::vector<SocialSize> own;
  std::vector<FieldChoice> choices{std::begin(kSocialDestinations), std::end(kSocialDestinations)};
  std::string fault;
};

void read_sizes(SizeTable& table) {
  std::ifstream file(table.path);
  std::size_t number = 0;
  for (std::string line; std::getline(file, line) && table.own.size() < kMostOwn;) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line.front() == '#') continue;
    if (auto size = parse_social_size(line)) {
      table.own.push_back(size->second);
      table.names.push_back(std::move(size->first));
      table.choices.push_back({static_cast<std::int64_t>(table.choices.size()), table.names.back().c_str()});
    } else if (table.fault.empty()) {
      table.fault = format_text("Line %u of %s is no size (NAME;WIDTHxHEIGHT;KILOBYTES) and is passed over.",
                                static_cast<unsigned>(number), table.path.filename().c_str());
    }
  }
}

const SizeTable& sizes() {
  static std::mutex mutex;
  static std::deque<SizeTable> tables;  // earlier ones stay: somebody may show their names
  const std::scoped_lock lock(mutex);
  std::error_code error;
  const auto time = socialSizesFile.empty() ? std::filesystem::file_time_type()
                                            : std::filesystem::last_write_time(socialSizesFile, error);
  if (!tables.empty() && tables.back().path == socialSizesFile && tables.back().time == time)
    return tables.back();
  SizeTable& table = tables.emplace_back();
  table.path = socialSizesFile;
  table.time = time;
  if (!socialSizesFile.empty() && !error) read_sizes(table);
  return table;
}

/// A whole number at the beginning, which is taken away.
std::optional<std::uint64_t> take_number(std::string_view& text, std::uint64_t most) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  std::uint64_t number = 0;
  const auto [stop, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc{} || number == 0 || number > most) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  while (text.starts_with(' ')) text.remove_prefix(1);
  return number;
}

}  // namespace

std::optional<std::pair<std::string, SocialSize>> parse_social_size(std::string_view line) {
  const std::size_t name = line.find(';');
  if (name == 0 || name == std::string_view::npos) return std::nullopt;
  std::string_view rest = line.substr(name + 1);
  const auto width = take_number(rest, kMostSocialSide);
  if (!width || !(rest.starts_with('x') || rest.starts_with('X'))) return std::nullopt;
  rest.remove_prefix(1);
  const auto height = take_number(rest, kMostSocialSide);
  if (!height) return std::nullopt;
  SocialSize size{static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height)};
  if (rest.starts_with(';')) {
    rest.remove_prefix(1);
    const auto kilobytes = take_number(rest, kMostKilobytes);
    if (!kilobytes) return std::nullopt;
    size.most = *kilobytes << 10;
  }
  if (!rest.empty()) return std::nullopt;
  return std::pair(std::string(line.substr(0, name)), size);
}

std::span<const FieldChoice> social_destinations() { return sizes().choices; }

std::optional<SocialSize> social_size(std::int64_t destination) {
  if (destination >= 0 && destination < kDocumentSize) return kSizes[destination];
  const auto own = static_cast<std::size_t>(destination - kOwnSize - 1);
  const SizeTable& table = sizes();
  return destination > kOwnSize && own < table.own.size() ? std::optional(table.own[own]) : std::nullopt;
}

std::string social_sizes_fault() { return sizes().fault; }

}  // namespace vellum
