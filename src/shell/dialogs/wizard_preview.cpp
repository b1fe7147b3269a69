#include "shell/dialogs/wizard_preview.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QThreadPool>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/files/first_picture.h"
#include "shell/look/picture_image.h"
#include "shell/look/text.h"
#include "shell/widgets/checkers.h"

namespace vellum {
namespace {

constexpr QSize kArea(480, 480);
constexpr int kSides = 6, kEnds = 26, kShadow = 6, kTextAbove = 20;

struct Shown {
  QImage image;
  QString text;
};

Shown read_shown(const QString& path) {
  const GraphicReading reading = first_picture(to_path(path));
  if (!reading.picture)
    return {{},
            text_of(StringId::ErrorReadingFile) + QStringLiteral("\n") +
                to_qt(reading_text(to_path(path), reading))};
  const Picture& picture = reading.picture;
  const std::string colors = grouped(std::uint64_t{1} << std::min(picture.bits(), 24u));
  return {image_of_picture(picture), to_qt(format_text(string_text(StringId::WizardPreviewText).data(),
                                                       picture.width(), picture.height(), colors.c_str()))};
}

}  // namespace

QRect preview_place(QSize picture, QSize area, bool actual) {
  QSize size = picture;
  if (!actual) {
    const qint64 percent = std::min(qint64{area.width() - kSides} * 100 / picture.width(),
                                    qint64{area.height() - kEnds} * 100 / picture.height());
    const auto scaled = [percent](int side) {
      return static_cast<int>(std::max<qint64>(qint64{side} * percent / 100, 1));
    };
    size = QSize(scaled(picture.width()), scaled(picture.height()));
  }
  return QRect(QPoint((area.width() - size.width()) / 2, (area.height() - size.height()) / 2), size);
}

WizardPreview::WizardPreview(const QString& path, QWidget* parent)
    : QDialog(parent),
      text_(text_of(StringId::WizardWait)),
      actual_(settings::NewAnimationWizardPreviewSizeas != 0) {
  setObjectName(QStringLiteral("WizardImagePreviewBox"));
  setWindowTitle(text_of(StringId::WizardPreviewTitle));
  setFixedSize(kArea);
  // The file may be read when the window is long closed.
  QThreadPool::globalInstance()->start([path, box = QPointer<WizardPreview>(this), app = qApp] {
    Shown shown = read_shown(path);
    QMetaObject::invokeMethod(app, [box, shown = std::move(shown)] {
      if (!box) return;
      box->image_ = shown.image;
      box->text_ = shown.text;
      box->update();
      emit box->read();
    });
  });
}

void WizardPreview::toggle() {
  actual_ = !actual_;
  update();
}

void WizardPreview::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().window());
  painter.setPen(palette().color(QPalette::WindowText));
  if (image_.isNull()) {
    painter.drawText(rect(), static_cast<int>(Qt::AlignCenter) | Qt::TextWordWrap, text_);
    return;
  }
  QRect place = preview_place(image_.size(), size(), actual_);
  const QRect seen = place.intersected(QRect(kSides / 2, kSides / 2, width() - kSides, height() - kEnds));
  painter.save();
  painter.fillRect(seen.translated(kShadow, kShadow), QColor(0, 0, 0, 90));
  painter.setClipRect(seen);
  if (image_.hasAlphaChannel()) paint_checkers(painter, seen);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, place.width() < image_.width());
  painter.drawImage(place, image_);
  painter.restore();
  painter.setPen(Qt::black);
  painter.drawRect(seen.adjusted(-1, -1, 0, 0));
  painter.setPen(palette().color(QPalette::WindowText));
  painter.fillRect(0, height() - kTextAbove, width(), kTextAbove, palette().window());
  painter.drawText(QRect(0, height() - kTextAbove, width(), kTextAbove), Qt::AlignCenter, text_);
}

void WizardPreview::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) toggle();
  if (event->button() == Qt::RightButton) accept();
}

void WizardPreview::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space) return toggle();
  QDialog::keyPressEvent(event);
}

}  // namespace vellum
