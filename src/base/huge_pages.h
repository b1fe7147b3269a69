// A wish to the system that large memory comes in large pages: far fewer page faults for pictures of
// megabytes.
#pragma once

#include <cstddef>

namespace vellum {

/// Asks for large pages for the whole pages inside the range. Does nothing for small ranges or where the
/// system does not grant it.
void wish_for_huge_pages(void* memory, std::size_t bytes);

}  // namespace vellum
