// Which program edits pictures.
#pragma once

#include <QString>
#include <vector>

namespace vellum {

struct PaintProgram {
  QString name, path;
};

/// The well-known programs that the search path has.
std::vector<PaintProgram> installed_paint_programs();

/// The chosen program, or the desktop's own for the file type; where neither is wanted the first of the
/// well-known ones, if they may be looked for. Empty where there is none.
QString paint_program_to_start();

}  // namespace vellum
