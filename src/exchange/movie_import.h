// What frames of a movie become frames of a document, and how long they stand: over any reader.
#pragma once

#include "exchange/movie.h"

namespace vellum {

struct MovieImport {
  std::uint32_t from = 0, to = 0;    ///< ms; frames that begin in between. `to` 0: to the end
  std::uint32_t duration = 0;        ///< ms of each frame; 0: as in the movie
  bool preserve = true;              ///< a frame that is left out gives its time to the one in front of it
  std::uint32_t keep = 1, skip = 0;  ///< frames of each group
  bool skipFirst = false;
  bool merge = true;     ///< equal frames become one
  bool cut = false;      ///< to what changes
  bool palette = false;  ///< 256 colors for all
  bool loop = false;
};

/// How many frames a movie would make, before equal ones are merged; 0: nobody knows.
std::uint64_t expected_frames(const MovieFacts& facts, const MovieImport& import);

/// Makes an empty window a document of this kind. False with the reason kept in the host or, where `told` is
/// set, told; or when the user stopped it or said no.
bool import_movie(MovieReader& reader, const MovieImport& import, DocumentKind kind, DocumentWindow& window,
                  Host& host, bool& told);

}  // namespace vellum
