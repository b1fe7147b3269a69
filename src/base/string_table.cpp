#include "base/string_table.h"

#include <algorithm>
#include <iterator>

#include "base/translation.h"

namespace vellum {
namespace {

struct StringRow {
  int number;
  std::string_view text;
};

constexpr StringRow kStrings[] = {
#define VELLUM_STRING(name, number, text) {number, text},
#include "base/strings.inc"
#undef VELLUM_STRING
};

static_assert(std::is_sorted(std::begin(kStrings), std::end(kStrings),
                             [](const StringRow& a, const StringRow& b) { return a.number <= b.number; }) ||
                  std::size(kStrings) < 2,
              "strings.inc is kept in the order of its numbers, each once");

}  // namespace

std::string_view string_text(int number) {
  const auto row = std::lower_bound(std::begin(kStrings), std::end(kStrings), number,
                                    [](const StringRow& r, int n) { return r.number < n; });
  if (row == std::end(kStrings) || row->number != number)
    return "String table error - this application may be damaged";
  return translated(row->text);
}

}  // namespace vellum
