// The temporary files beside targets: locked while their process lives, swept by others when it is gone.
#pragma once

#include <filesystem>

namespace vellum {

/// A new, empty file in `folder`, open for writing and locked until the descriptor is closed; its path in
/// `made`. -1, with errno set, on failure.
int create_temporary(const std::filesystem::path& folder, std::filesystem::path& made);

/// Removes what killed programs left in `folder`: temporaries that nobody has locked. A process looks through
/// the same folder once a minute at most.
void sweep_temporaries(const std::filesystem::path& folder);

}  // namespace vellum
