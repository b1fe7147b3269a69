#include "shell/services/file_preview.h"

#include <QGridLayout>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "image/graphic_file.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr QSize kDialogSize(860, 480);
constexpr int kPictureSize = 180;                  // device-independent pixels
constexpr int kDelay = 80;                         // ms: arrow keys run past files
constexpr std::uint64_t kMostPixels = 50'000'000;  // larger pictures are told about and not shown

class FilePreview : public QWidget {
 public:
  explicit FilePreview(QWidget* parent)
      : QWidget(parent), picture_(new QLabel(this)), text_(new QLabel(this)) {
    picture_->setFixedSize(kPictureSize, kPictureSize);
    picture_->setAlignment(Qt::AlignCenter);
    picture_->setAccessibleName(QObject::tr("Preview"));
    text_->setTextFormat(Qt::PlainText);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(style::kGap, 0, 0, 0);
    layout->addWidget(picture_);
    layout->addWidget(text_);
    layout->addStretch(1);
    timer_.setSingleShot(true);
    timer_.setInterval(kDelay);
    connect(&timer_, &QTimer::timeout, this, [this] { show_file(); });
  }
  void show_later(const QString& name) {
    name_ = name;
    timer_.start();
  }

 private:
  void show_file() {
    picture_->clear();
    text_->setText(picture_file_text(name_));
    const std::string name = to_path(name_).string();
    std::uint32_t width = 0, height = 0;
    if (!GraphicFileInfo(name, &width, &height, nullptr, nullptr)) return;
    if (std::uint64_t{width} * height > kMostPixels) return;
    const Picture picture = GraphicFileRead(name);
    if (!picture) return;
    const double ratio = devicePixelRatioF();
    const QSize own(static_cast<int>(picture.width()), static_cast<int>(picture.height()));
    const QSize room = QSize(kPictureSize, kPictureSize) * ratio;
    const QSize size = own.boundedTo(room) == own ? own : own.scaled(room, Qt::KeepAspectRatio);
    QPixmap pixmap = QPixmap::fromImage(scaled_image(picture, size.expandedTo({1, 1})));
    pixmap.setDevicePixelRatio(ratio);
    picture_->setPixmap(pixmap);
  }

  QLabel *picture_, *text_;
  QTimer timer_;
  QString name_;
};

}  // namespace

QString picture_file_text(const QString& name) {
  std::uint32_t width = 0, height = 0, bits = 0;
  if (!GraphicFileInfo(to_path(name).string(), &width, &height, &bits, nullptr)) return {};
  const std::string colors = grouped(std::uint64_t{1} << std::min(bits, 24u));
  return to_qt(format_text(string_text(StringId::PreviewText).data(), static_cast<int>(width),
                           static_cast<int>(height), colors.c_str(), bits == 32 ? "yes" : "no"));
}

void add_file_preview(QFileDialog& dialog) {
  if (settings::ShowFileOpenPreview == 0) return;
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  auto* layout = qobject_cast<QGridLayout*>(dialog.layout());
  if (!layout) return;
  auto* preview = new FilePreview(&dialog);
  layout->addWidget(preview, 0, layout->columnCount(), layout->rowCount(), 1);
  dialog.resize(dialog.sizeHint().expandedTo(kDialogSize));
  QObject::connect(&dialog, &QFileDialog::currentChanged, preview,
                   [preview](const QString& name) { preview->show_later(name); });
}

}  // namespace vellum
