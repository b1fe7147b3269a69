// Files read, worked on and written side by side.
#pragma once

#include <atomic>

#include "batch/batch_target.h"
#include "batch/batch_work.h"

namespace vellum {

/// What a person says where something stands at the target.
enum class OverwriteAnswer { Overwrite = 1, KeepBoth = 2, Skip = 3, Cancel = 4, NewName = 5 };

struct OverwriteChoice {
  OverwriteAnswer answer = OverwriteAnswer::Overwrite;
  std::filesystem::path name;  ///< for NewName: the target in place of the old one
  bool rest = false;           ///< the answer holds for all that follow; of Overwrite, KeepBoth and Skip
};

/// Asked by workers, one at a time: `result` is what would be written, `fault` why there was no name that is
/// free, where that was tried.
using AskOverwrite = std::function<OverwriteChoice(const std::filesystem::path& target, const Picture& result,
                                                   const std::string& fault)>;

struct BatchRun {
  BatchWork work;
  BatchNaming naming;
  AskOverwrite ask = {};    ///< for Overwrite::Ask; without it that overwrites
  bool stills = false;      ///< pictures of the graphic formats, each written in its own format
  bool thumbnails = false;  ///< a small picture beside each result
  bool hiddenThumbnails = false;
  std::size_t jobs = 0;  ///< files at a time, 0: one a core
};

/// Works on the files that are ours, no more of them at a time than there are jobs, and calls `told` with the
/// row of each in their order, whatever the number of jobs; a file whose target another one reads or writes
/// waits for what stands in front of it, so what is written is that of one job. Rows come from several
/// threads, one after the other. A fault in one file is its row, and the others go on. After a stop, and
/// after an answer of Cancel, comes a last row without a path. Sources are not changed but where a target is
/// one.
std::vector<BatchRow> run_batch(const BatchRun& run, std::span<const BatchFile> files,
                                const std::atomic<bool>& stop,
                                const std::function<void(const BatchRow&)>& told);

/// The rows as they would be: what is settled before a file is read. The others are "Ok".
std::vector<BatchRow> plan_batch(const BatchRun& run, std::span<const BatchFile> files);

}  // namespace vellum
