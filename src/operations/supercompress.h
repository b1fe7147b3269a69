// Supercompress: an animation is made smaller by what its frames hold, and shows the same. Passes work on a
// draft; what they do is told line by line.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// The passes, as bits of `SupercompressionOptions`.
enum SupercompressPass : unsigned {
  kTextPass = 2,
  kPalettePass = 8,
  kPrunePass = 16,
  kRedundancyPass = 32,
  kCloseWhenDone = 128,  ///< no pass: the dialog closes behind a run
  kRecompressPass = 256,
  kDeepPass = 512,
  kMergePass = 1024,  ///< part of the deeper search, which it brings along
};

/// Takes the lines of the status list.
using TellStatus = std::function<void(const std::string& line)>;

/// What can be done to a document.
struct SupercompressOffer {
  unsigned enabled = 0;   ///< passes that may run
  unsigned checked = 0;   ///< those of them that are checked at first, by the options
  bool mayStart = true;   ///< with the stated passes; the others may always begin
  bool hasTexts = false;  ///< of which the list tells
  bool lost = false;      ///< an image has no picture: nothing can be done
};
SupercompressOffer supercompress_offer(const DocumentWindow& window, unsigned options);

struct SupercompressResult {
  bool ran = false;    ///< a pass came to its end
  bool whole = false;  ///< all of them did
};

/// How many bytes the document takes: in its file, where that holds what the document is; else as it would be
/// saved now.
std::uint64_t document_bytes(const DocumentWindow& window);

/// Runs these passes of those that may run, in their fixed order, and sees to it that each canvas stays as it
/// is: frames that would change one go back to what they were. Where the result would take more bytes than
/// `now` the draft is put back as a whole. A pass that was stopped or failed leaves nothing, and none follows
/// it; those in front of it stay.
SupercompressResult supercompress(DocumentWindow& draft, unsigned passes, const TellStatus& tell, Host& host,
                                  std::uint64_t now);

/// Saves what came of the file `source`, of the same kind, if that makes a smaller file than `source` is;
/// else copies that file. False after a message.
bool save_supercompressed(DocumentWindow& window, const std::filesystem::path& source,
                          const std::filesystem::path& target, Host& host);

}  // namespace vellum
