// Any text as a gallery of favorites, and as groups of the protection matrix: what is read is written as a
// text that reads back as the same.
#include "configuration/favorites.h"
#include "fuzz_support.h"
#include "operations/tile_groups.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

void favorites(std::string_view text) {
  const auto paths = parse_favorites(text);
  if (!paths) return;
  const auto again = parse_favorites(favorites_text(*paths));
  check(again && *again == *paths);
}

void groups(std::string_view text) {
  const auto read = parse_tile_groups(text);
  if (!read) return;
  const std::string written = tile_groups_text(*read);
  const auto again = parse_tile_groups(written);
  check(again && again->size() == read->size() && tile_groups_text(*again) == written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string_view(VELLUM_FUZZ_TARGET) == "favorites" ? favorites(text) : groups(text);
  return 0;
}
