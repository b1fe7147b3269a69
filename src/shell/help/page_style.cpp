#include "shell/help/page_style.h"

#include <QFontDatabase>
#include <QImage>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <QUrl>
#include <algorithm>

#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr double kLineHeight = 130;  // percent
constexpr double kHeadingSizes[] = {1.75, 1.3, 1.12};

struct PageColors {
  QColor soft, line;
};

PageColors colors_of(const QPalette& palette) {
  const QColor ground = palette.color(QPalette::Base), text = palette.color(QPalette::Text);
  return {style::between(ground, text, 0.06), style::between(ground, text, 0.22)};
}

bool is_code(const QTextBlock& block) {
  return block.blockFormat().hasProperty(QTextFormat::BlockCodeFence) ||
         block.blockFormat().nonBreakableLines();
}

bool has_picture(const QTextBlock& block) { return block.text().contains(QChar::ObjectReplacementCharacter); }

void style_heading(QTextCursor& cursor, int level, double points) {
  // The letters of the Markdown reader come in steps of fixed sizes, so they are not merged with these.
  QTextCharFormat letters;
  const auto row =
      static_cast<std::size_t>(std::clamp(level, 1, static_cast<int>(std::size(kHeadingSizes)))) - 1;
  letters.setFontPointSize(points * kHeadingSizes[row]);
  letters.setFontWeight(QFont::DemiBold);
  cursor.setCharFormat(letters);
  QTextBlockFormat block;
  block.setTopMargin(level == 1 ? 0 : 18);
  block.setBottomMargin(level == 1 ? 12 : 6);
  cursor.mergeBlockFormat(block);
}

void style_code(QTextCursor& cursor, const QTextBlock& block, const PageColors& colors) {
  QTextBlockFormat format;
  format.setBackground(colors.soft);
  format.setLeftMargin(style::kGap);
  format.setTopMargin(is_code(block.previous()) ? 0 : style::kGap / 2);
  format.setBottomMargin(is_code(block.next()) ? 0 : style::kGap * 3 / 2);
  cursor.mergeBlockFormat(format);
}

void style_block(const QTextBlock& block, double points, const PageColors& colors) {
  QTextCursor cursor(block);
  cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
  if (const int level = block.blockFormat().headingLevel(); level > 0)
    return style_heading(cursor, level, points);
  if (is_code(block)) return style_code(cursor, block, colors);
  QTextBlockFormat format;
  // The line of a picture would be taller by the same share.
  if (!has_picture(block)) format.setLineHeight(kLineHeight, QTextBlockFormat::ProportionalHeight);
  const bool in_table = cursor.currentTable() != nullptr;
  format.setTopMargin(0);
  format.setBottomMargin(in_table ? 0 : block.textList() ? 3 : 9);
  cursor.mergeBlockFormat(format);
}

/// `code` within a line gets a ground of its own.
void style_code_words(QTextDocument& document, const PageColors& colors) {
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    std::vector<std::pair<int, int>> words;
    for (auto at = block.begin(); !at.atEnd(); ++at)
      if (at.fragment().charFormat().fontFixedPitch() && !is_code(block))
        words.emplace_back(at.fragment().position(), at.fragment().length());
    for (const auto& [position, length] : words) {
      QTextCursor cursor(&document);
      cursor.setPosition(position);
      cursor.setPosition(position + length, QTextCursor::KeepAnchor);
      QTextCharFormat format;
      format.setBackground(colors.soft);
      cursor.mergeCharFormat(format);
    }
  }
}

void style_table(QTextTable& table, const PageColors& colors) {
  QTextTableFormat format = table.format();
  format.setBorder(1);
  format.setBorderCollapse(true);
  format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
  format.setBorderBrush(colors.line);
  format.setCellPadding(5);
  format.setCellSpacing(0);
  format.setTopMargin(4);
  format.setBottomMargin(14);
  table.setFormat(format);
  for (int column = 0; column < table.columns(); ++column) {
    QTextTableCell cell = table.cellAt(0, column);
    QTextCharFormat head = cell.format();
    head.setBackground(colors.soft);
    cell.setFormat(head);
  }
}

void style_tables(QTextFrame& frame, const PageColors& colors) {
  for (QTextFrame* child : frame.childFrames()) {
    if (auto* table = qobject_cast<QTextTable*>(child)) style_table(*table, colors);
    style_tables(*child, colors);
  }
}

}  // namespace

void style_page(QTextDocument& document, const QPalette& palette) {
  const PageColors colors = colors_of(palette);
  document.setDocumentMargin(style::kWideGap * 1.5);
  QTextCursor all(&document);
  all.beginEditBlock();
  style_tables(*document.rootFrame(), colors);
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
    style_block(block, document.defaultFont().pointSizeF(), colors);
  style_code_words(document, colors);
  all.endEditBlock();
}

void fit_pictures(QTextDocument& document, int width) {
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    for (auto at = block.begin(); !at.atEnd(); ++at) {
      QTextImageFormat format = at.fragment().charFormat().toImageFormat();
      if (!format.isValid()) continue;
      const auto image = document.resource(QTextDocument::ImageResource, QUrl(format.name())).value<QImage>();
      if (image.isNull()) continue;
      const double wanted = std::min(image.width(), width);
      if (format.width() == wanted) continue;
      format.setWidth(wanted);
      format.setHeight(image.height() * wanted / image.width());
      QTextCursor cursor(&document);
      cursor.setPosition(at.fragment().position());
      cursor.setPosition(at.fragment().position() + at.fragment().length(), QTextCursor::KeepAnchor);
      cursor.setCharFormat(format);
      at = block.begin();  // the change made new fragments
    }
  }
}

}  // namespace vellum
