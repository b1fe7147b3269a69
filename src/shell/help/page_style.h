// How a page of text looks: distances, headings, tables, code and pictures of a document that came from
// Markdown.
#pragma once

#include <QPalette>
#include <QTextDocument>

namespace vellum {

void style_page(QTextDocument& document, const QPalette& palette);

/// Pictures that are wider than `width` pixels are shown at that width.
void fit_pictures(QTextDocument& document, int width);

}  // namespace vellum
