// The open documents as sources of operations that take another file.
#pragma once

#include "operations/second_file.h"

namespace vellum {

class MainWindow;

/// Each by its name in brackets; of one name the later ones get a number.
std::vector<LentDocument> open_documents(MainWindow& main);

}  // namespace vellum
