// An operation as a row: all that the desktop, the command line, the batch run, the guide and the tests know
// of it. Its file has the row and one function that does the work on a draft; everything else follows.
#pragma once

#include <functional>

#include "base/host.h"
#include "operations/frames.h"
#include "operations/parameters.h"

namespace vellum {

class Compositor;

/// Where the result goes.
enum class OperationResult {
  InPlace,    ///< into the document, behind an undo level
  NewWindow,  ///< into a document of its own, whose name begins with the row's prefix
  Files,      ///< into files that the work writes; the document stays as it is
};

/// What must be done to a document first; bits.
enum OperationNeed : unsigned {
  kWholeCanvases = 1,  ///< frames that build on each other become the canvases that they show
  kTrueColor = 2,      ///< indexed frames become true color, with alpha where there is transparency
  kAsksTrueColor = 4,  ///< the operation makes them so by itself; people are asked all the same
  kTellsCanvases = 8,  ///< the operation makes whole canvases by itself; people are told all the same
};

/// What a preview is computed from.
enum class OperationPreview {
  None,
  Reduced,  ///< no value means pixels: the picture may be made smaller first
  Full,     ///< the picture as it is; the result is made smaller
};

/// What an operation's function works on.
struct OperationRun {
  DocumentWindow& draft;
  const FieldValues& values;
  const FrameList& frames;  ///< that it is applied to, by number
  Host& host;
  bool told = false;  ///< why it failed was told

  std::int64_t number(std::string_view field) const { return values.number(field); }
  /// Tells why it can't be done; false.
  bool refuse(StringId reason) {
    host.show(reason);
    told = true;
    return false;
  }
};

/// One row.
struct Operation {
  Parameters parameters;
  /// "color": `vellum convert --color NAME` does it, and no command of its own.
  const char* convertOption = nullptr;
  StringId question{};  ///< asked before anything else; without a number nothing is
  int* asks = nullptr;  ///< the flag that switches the question
  OperationResult result = OperationResult::InPlace;
  DocumentKind makes = DocumentKind::None;  ///< of a result that isn't of its source's kind
  StringId prefix{};                        ///< of a new window's name
  StringId failure = StringId::ErrorAccessingChunk;
  int batch = -1;                ///< number among the batch operations; -1: not among them
  const char* batchPrefix = "";  ///< of the files that a batch run writes
  bool neverGrows = false;  ///< where the result makes no smaller file, the file that it came of is copied
  bool scoped = false;      ///< may be applied to some frames alone
  bool ofSelected = false;  ///< the desktop applies it to the selected frames, of which there must be one
  OperationPreview preview = OperationPreview::None;

  /// Bits of `OperationNeed`; without it nothing is needed.
  unsigned (*needs)(const DocumentWindow& window, const FieldValues& values,
                    const FrameList& frames) = nullptr;
  /// How much larger than a frame its result is: the larger of both sides. Without it nothing grows.
  double (*growth)(const FieldValues& values, const DocumentWindow& window) = nullptr;
  /// A frame's picture, reduced for a preview, as the values make it; without it the operation works on an
  /// animation of this one frame.
  Picture (*previewFrame)(const Picture& frame, const FieldValues& values,
                          const DocumentWindow& window) = nullptr;
  /// What a frame shows afterwards, in its full size, where that follows from the frames in front of it.
  /// `transparent`: what `has_transparency` says of the document.
  Picture (*previewShown)(Compositor& playing, std::uint32_t frame, const FieldValues& values,
                          bool transparent) = nullptr;
  /// Changes the draft and makes the closing calls. False, with the reason kept in the host or told, leaves a
  /// draft that is thrown away.
  bool (*run)(OperationRun& run) = nullptr;
};

/// All operations, in the order of the menu.
std::span<const Operation* const> operation_table();
/// Null where there is none.
const Operation* find_operation(std::string_view name);
const Operation* find_operation(int command);

/// What the document needs first, with what it already is left out.
unsigned operation_needs(const Operation& operation, const DocumentWindow& window, const FieldValues& values,
                         const FrameList& frames);

/// Whether frames become whole canvases in front of the work or in it, of which people are told.
bool makes_whole_canvases(const Operation& operation, const DocumentWindow& window, const FieldValues& values,
                          const FrameList& frames);

/// Does all of it on the window: checks, what is needed first, the work. No undo level is taken, `dirty` is
/// set where an entry differs. False with the document as it was: after a message, or after a stop.
bool run_operation(const Operation& operation, DocumentWindow& window, const FieldValues& values,
                   const FrameList& frames, Host& host);

/// For `run`: makes the draft what `make` puts into an empty window of its name.
bool replace_draft(OperationRun& run, const std::function<bool(DocumentWindow& made)>& make);

}  // namespace vellum
