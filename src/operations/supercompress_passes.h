// The passes of Supercompress. Each gives false after a stop or a failure, of which the list was told.
#pragma once

#include "base/fields.h"
#include "operations/frames.h"
#include "operations/source_canvases.h"
#include "operations/supercompress.h"

namespace vellum {

/// What the passes work on.
struct Supercompression {
  DocumentWindow& draft;
  const TellStatus& tell;
  Host& host;
  unsigned passes;         ///< all that are asked for
  SourceCanvases& source;  ///< of the document as it was

  void say(StringId line, std::initializer_list<std::string> values = {}) const {
    if (tell) tell(filled(line, values));
  }
  /// A picture can't be read, or memory is exhausted; false.
  bool abort(StringId reason) const {
    say(reason);
    say(StringId::SupercompressAborted);
    return false;
  }
};

bool palette_pass(Supercompression& work);
bool prune_pass(Supercompression& work);
bool redundancy_pass(Supercompression& work);
bool text_pass(Supercompression& work);
/// For each frame the rectangle, the disposal and the blending that cost least, in the smallest form that
/// holds all of them. Kept where that is smaller by an estimate, and shows the same.
bool deep_pass(Supercompression& work);
/// Packs every image by the best of many ways; records keep the streams.
bool recompress_pass(Supercompression& work);

}  // namespace vellum
