// Draws one row of a chunk list.
#pragma once

#include <QPainter>
#include <QPalette>

#include "core/model/document.h"
#include "shell/list/thumbnail.h"
#include "shell/look/style.h"

namespace vellum {

/// What all rows of one drawing share.
struct RowPainting {
  QPainter& painter;
  const DocumentWindow& window;
  ThumbnailCache& thumbnails;
  Extent canvas;      ///< document_size of the window
  Colour background;  ///< document_background of the window
  style::RowColours plain, selected;
  QColor bracket;
  bool favorite = false;  ///< the document is one
  /// document_transparency of the window; null: nothing is transparent.
  const std::vector<std::uint8_t>* transparency = nullptr;
  QString marked = {};  ///< what is looked for: where a row shows it, it is marked
};

void paint_row(const RowPainting& painting, std::size_t index, const QRect& row);

}  // namespace vellum
