// Print: what pages have, with a preview; to a printer or a PDF.
#pragma once

#include <QLabel>
#include <QPushButton>

#include "core/build/frame_stream.h"
#include "exchange/print_pages.h"
#include "shell/dialogs/parameter_dialog.h"

class QPainter;
class QPrinter;

namespace vellum {

/// Draws a page with a painter whose unit is a point. False where a frame is lost.
bool paint_printed_page(QPainter& painter, const PrintedPage& page, const FieldValues& values,
                        const DocumentWindow& window, const FrameStream& canvases);

class PrintDialog : public ParameterDialog {
  Q_OBJECT
 public:
  PrintDialog(const DocumentWindow& window, Services& services, QWidget* parent);

  std::size_t pages() const { return pages_.size(); }
  void show_page(std::size_t page);
  void follow() override;
  /// Asks for a printer and prints.
  void accept() override;
  /// Asks for a file and writes the PDF.
  void write_pdf();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void draw();
  bool print(QPrinter& printer);

  Services& services_;
  FrameStream canvases_;
  std::vector<PrintedPage> pages_;
  std::size_t page_ = 0;
  QLabel *preview_, *number_;
  QPushButton *back_, *on_;
};

}  // namespace vellum
