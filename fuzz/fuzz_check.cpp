// Any bytes at all are checked; what a repair gives of them has no fault left that repairing mends.
#include "core/check/check_file.h"
#include "core/check/repair_file.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint64_t kMostPixels = 1'000'000;
  const Input file(data, size);
  if (mng_pixels(file) > kMostPixels || webp_pixels(file) > kMostPixels) return -1;
  const FileCheck found = check_file(file);
  for (const Finding& finding : found.findings) check(finding.offset <= size);
  const RepairedFile repaired = repair_file(file);
  for (const Finding& left : check_file(repaired.bytes).findings)
    check(repaired.bytes.empty() || !rule(left.rule).repaired());
  return 0;
}
