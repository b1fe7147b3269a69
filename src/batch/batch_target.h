// Where the result of a file of a batch run goes.
#pragma once

#include <string>
#include <unordered_set>

#include "batch/batch_files.h"
#include "batch/batch_row.h"
#include "core/model/tags.h"

namespace vellum {

/// What happens where something stands at the target.
enum class Overwrite {
  Silently,
  KeepBoth,
  Skip,
  Fail,  ///< the file is not written, which is an error
  Ask,   ///< a person decides, once the result is there
};

struct BatchNaming {
  std::filesystem::path destination;
  std::string prefix;                       ///< in front of each name
  DocumentKind makes = DocumentKind::None;  ///< of the results, where that isn't the kind of their sources
  Overwrite overwrite = Overwrite::Fail;
  std::string extension = {};  ///< of the results, with its dot, where they are no documents
};

/// What was settled for a file: its target, and the result where it isn't worked on for that reason.
struct BatchTarget {
  std::filesystem::path path;
  std::optional<BatchResult> settled;
  std::string reason;
  bool contested = false;  ///< something stands there, and a person is to be asked
};

/// Settles targets, one after the other: a name that an earlier file of the run has taken counts as standing
/// there.
class BatchTargets {
 public:
  /// `asks`: a person can be asked, also of what was to be settled without.
  explicit BatchTargets(BatchNaming naming, bool asks = false) : naming_(std::move(naming)), asks_(asks) {}

  /// The prefix and the source's name, of 259 bytes at most, in the destination.
  std::filesystem::path named(const BatchFile& file) const;
  /// Where no name is left for a result that is to stand beside another, a person is asked, of this and all
  /// files behind it.
  BatchTarget settle(const BatchFile& file);
  bool taken(const std::filesystem::path& path) const;
  /// "NAME (2).png" to "NAME (99999).png"; empty where all of them are taken.
  std::filesystem::path unique(const std::filesystem::path& path) const;
  void take(const std::filesystem::path& path) { taken_.insert(path.native()); }

 private:
  void keep_both(BatchTarget& target);

  BatchNaming naming_;
  bool asks_;
  std::unordered_set<std::string> taken_;  ///< a path takes a kilobyte where a string takes a tenth of it
};

}  // namespace vellum
