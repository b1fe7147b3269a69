#include "generators/generator_rows.h"

namespace vellum {
namespace {

constexpr const Generator* kGenerators[] = {&kBanner, &kButton,   &kPhotoStack, &kLedSign, &kStatusPanel,
                                            &kSpin,   &kThrobber, &kTransition, &kMatrix};

}  // namespace

std::span<const Generator* const> generator_table() { return kGenerators; }

}  // namespace vellum
