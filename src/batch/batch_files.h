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
  bool ours =
      true;  ///< worked on by this run, and not by one beside it that takes its name into account as well
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

/// Puts the files in the order of their paths and leaves this run every `of`th from number `index` (1 to
/// `of`) on: together the shards of one list are all of it, and each file is in one.
void take_shard(std::vector<BatchFile>& files, std::size_t index, std::size_t of);
std::size_t count_ours(std::span<const BatchFile> files);

}  // namespace vellum
