#include "shell/dialogs/print_dialog.h"

#include <QBoxLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <cmath>

#include "exchange/exporter.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"

namespace vellum {
namespace {

constexpr QSize kPreview(340, 440);
constexpr double kPointsOfInch = 72;

const Exporter& pdf() { return *find_exporter("print"); }

void paint_text(QPainter& painter, const PrintedText& text, const QString& family) {
  QFont font(family);
  // The unit is a point, whatever the device has.
  font.setPixelSize(std::max(1, static_cast<int>(std::lround(text.points))));
  painter.setFont(font);
  const QString line =
      painter.fontMetrics().elidedText(to_qt(text.text), Qt::ElideMiddle, static_cast<int>(text.width));
  constexpr Qt::Alignment kSides[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
  painter.drawText(QRectF(text.x, text.y, text.width, text.points * 1.5),
                   kSides[static_cast<std::size_t>(text.side)] | Qt::AlignTop | Qt::TextSingleLine, line);
}

}  // namespace

bool paint_printed_page(QPainter& painter, const PrintedPage& page, const FieldValues& values,
                        const DocumentWindow& window, const FrameStream& canvases) {
  for (const PrintedFrame& frame : page.frames) {
    const Picture canvas = canvases.frame(frame.frame).picture;
    const Picture picture = canvas ? printed_picture(canvas, values, window) : Picture();
    if (!picture) return false;
    painter.drawImage(QRectF(frame.x, frame.y, frame.width, frame.height), image_of_picture(picture));
  }
  painter.setPen(Qt::black);
  for (const PrintedText& text : page.texts) paint_text(painter, text, to_qt(values.text("font")));
  return true;
}

PrintDialog::PrintDialog(const DocumentWindow& window, Services& services, QWidget* parent)
    : ParameterDialog(pdf().parameters, window, {}, services, parent),
      services_(services),
      canvases_(canvas_frames(this->window())),
      preview_(new QLabel(this)),
      number_(new QLabel(this)),
      back_(new QPushButton(tr("&Back"), this)),
      on_(new QPushButton(tr("&Next"), this)) {
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->removeWidget(&form());
  preview_->setMinimumSize(kPreview);
  preview_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  preview_->setAlignment(Qt::AlignCenter);
  preview_->setFrameShape(QFrame::StyledPanel);
  preview_->setAccessibleName(tr("Preview"));
  auto* turn = new QHBoxLayout;
  turn->addWidget(back_);
  turn->addWidget(number_, 1, Qt::AlignCenter);
  turn->addWidget(on_);
  for (QPushButton* button : {back_, on_}) button->setAutoDefault(false);
  auto* right = new QVBoxLayout;
  right->addWidget(preview_, 1);
  right->addLayout(turn);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(&form());
  row->addLayout(right, 1);
  outer->insertLayout(0, row, 1);
  buttons().button(QDialogButtonBox::Ok)->setText(tr("&Print..."));
  auto* file = buttons().addButton(tr("P&DF..."), QDialogButtonBox::ActionRole);
  file->setAutoDefault(false);
  connect(file, &QPushButton::clicked, this, &PrintDialog::write_pdf);
  connect(back_, &QPushButton::clicked, this, [this] { show_page(page_ - 1); });
  connect(on_, &QPushButton::clicked, this, [this] { show_page(page_ + 1); });
  begin();
}

void PrintDialog::follow() {
  ParameterDialog::follow();
  if (fault()) return;
  const FieldValues all = values();
  pages_ = print_pages(all, window(), print_paper(all));
  show_page(page_);
}

void PrintDialog::show_page(std::size_t page) {
  page_ = pages_.empty() ? 0 : std::min(page, pages_.size() - 1);
  back_->setEnabled(page_ > 0);
  on_->setEnabled(page_ + 1 < pages_.size());
  number_->setText(tr("Page %1 of %2").arg(page_ + 1).arg(pages_.size()));
  draw();
}

void PrintDialog::draw() {
  if (pages_.empty()) return preview_->clear();
  const FieldValues all = values();
  const PrintPaper paper = print_paper(all);
  const double scale =
      std::min((preview_->width() - 12) / paper.width, (preview_->height() - 12) / paper.height);
  const double ratio = devicePixelRatioF();
  QImage image(
      QSize(static_cast<int>(paper.width * scale * ratio), static_cast<int>(paper.height * scale * ratio))
          .expandedTo({1, 1}),
      QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing);
  painter.scale(scale * ratio, scale * ratio);
  paint_printed_page(painter, pages_[page_], all, window(), canvases_);
  painter.end();
  image.setDevicePixelRatio(ratio);
  preview_->setPixmap(QPixmap::fromImage(image));
}

void PrintDialog::resizeEvent(QResizeEvent* event) {
  ParameterDialog::resizeEvent(event);
  draw();
}

bool PrintDialog::print(QPrinter& printer) {
  const FieldValues all = values();
  // Frames have the printer's own paper, between the edges that it can't reach.
  const QRectF paper = printer.paperRect(QPrinter::Point);
  const auto pages = print_pages(all, window(), {paper.width(), paper.height()});
  printer.setFullPage(true);
  printer.setDocName(to_qt(document_title(window().document)));
  QPainter painter;
  if (pages.empty() || !painter.begin(&printer)) return false;
  const Progress progress(host(), string_text(StringId::Writing));
  for (std::size_t i = 0; i < pages.size(); ++i) {
    if (host().stopped()) return printer.abort(), true;
    if (i > 0 && !printer.newPage()) return false;
    painter.resetTransform();
    const double scale = printer.resolution() / kPointsOfInch;
    painter.scale(scale, scale);
    if (!paint_printed_page(painter, pages[i], all, window(), canvases_)) return false;
    progress.step(i + 1, pages.size());
  }
  return painter.end() && printer.printerState() != QPrinter::Error;
}

void PrintDialog::accept() {
  if (const auto found = fault()) {
    if (host().message) host().message({found->id, {}, found->text, {}, nullptr});
    return form().show_fault(*found);
  }
  if (QPrinterInfo::availablePrinters().isEmpty()) return host().show(StringId::NoPrinter);
  QPrinter printer(QPrinter::HighResolution);
  printer.setPageOrientation(values().number("landscape") != 0 ? QPageLayout::Landscape
                                                               : QPageLayout::Portrait);
  QPrintDialog choose(&printer, this);
  if (choose.exec() != QDialog::Accepted) return;
  if (!print(printer)) return host().show(StringId::ErrorPrinting);
  ParameterDialog::accept();
}

void PrintDialog::write_pdf() {
  if (const auto found = fault()) {
    if (host().message) host().message({found->id, {}, found->text, {}, nullptr});
    return form().show_fault(*found);
  }
  if (!services_.choose_file) return;
  const std::filesystem::path title = document_title(window().document);
  FileChoice choice{pdf().parameters.title, file_filter(pdf().filter, {&pdf().extension, 1}).toStdString(),
                    title.stem().string() + ".pdf", true};
  auto path = services_.choose_file(choice);
  if (!path) return;
  if (!path->has_extension()) *path += ".pdf";
  if (export_document(pdf(), window(), values(), *path, host())) ParameterDialog::accept();
}

}  // namespace vellum
