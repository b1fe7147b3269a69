// The files of a batch run.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "base/host.h"

namespace vellum {

/// A file, and the folder below the destination that its result goes to: empty, or the folders between a
/// named one and the file.
struct BatchFile {
  std::filesystem::path source, below;
};

struct BatchSearch {
  bool stills = false;     ///< pictures of the graphic formats in folders, too
  bool recursive = false;  ///< folders in folders
};

/// Files as they were named, and of a folder those whose names are those of documents (and, where they are
/// wanted, pictures), by name; hidden ones are left out. What isn't there is kept: its row tells so. A folder
/// that can't be listed is told as a note.
std::vector<BatchFile> batch_files(std::span<const std::string> inputs, const BatchSearch& search,
                                   const Host& host);

/// Every `of`th file from number `index` (1 to `of`) on, of the files by their paths: together the shards of
/// one list are all of it, and each file is in one.
std::vector<BatchFile> batch_shard(std::vector<BatchFile> files, std::size_t index, std::size_t of);

}  // namespace vellum
