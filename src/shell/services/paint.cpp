#include "shell/services/paint.h"

#include <QDialog>
#include <QFileSystemWatcher>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "configuration/shell_settings.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/settings.h"
#include "image/temporary_names.h"
#include "shell/look/text.h"
#include "shell/services/paint_programs.h"
#include "shell/widgets/dialog_frame.h"
#include "shell/widgets/picture_panel.h"

namespace vellum {
namespace {

constexpr int kFirstNumber = 1;    // of the names that are tried
constexpr int kSettleDelay = 200;  // ms from the last change of the file until it is read

/// A file that is gone when the object is.
struct TemporaryFile {
  explicit TemporaryFile(std::filesystem::path name) : path(std::move(name)) {}
  ~TemporaryFile() {
    std::error_code error;
    std::filesystem::remove(path, error);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  std::filesystem::path path;
};

/// What is handed over: alpha is laid on the background where the program knows none.
Picture picture_to_paint(const Picture& picture) {
  if (picture.bits() != 32 || settings::PaintbrushSupportsAlpha != 0) return picture;
  return PictureFlattenAlpha(picture, static_cast<Colour>(settings::DefaultBackgroundColour) & 0xFFFFFF);
}

/// Shows the file as it is now and asks whether it is done.
class WaitingBox : public QDialog {
 public:
  WaitingBox(const std::filesystem::path& path, QWidget* parent) : QDialog(parent), path_(path) {
    setWindowTitle(QObject::tr("Paint"));
    auto* text = new QLabel(text_of(StringId::EditThenDone), this);
    panel_ = new PicturePanel(this);
    QDialogButtonBox* buttons = add_buttons(*this, QDialogButtonBox::Cancel, QStringLiteral("PAINT"));
    buttons->addButton(QObject::tr("&Done"), QDialogButtonBox::AcceptRole)->setDefault(true);
    QVBoxLayout* layout = dialog_layout(*this);
    layout->addWidget(text);
    layout->addWidget(panel_, 1);
    layout->addWidget(buttons);
    // Programs write a new file and rename it over the old one: the watch has to be set anew.
    settle_.setSingleShot(true);
    settle_.setInterval(kSettleDelay);
    connect(&settle_, &QTimer::timeout, this, [this] { refresh(); });
    connect(&watcher_, &QFileSystemWatcher::fileChanged, &settle_, qOverload<>(&QTimer::start));
    connect(&watcher_, &QFileSystemWatcher::directoryChanged, &settle_, qOverload<>(&QTimer::start));
    watcher_.addPath(path_text(path_.parent_path()));
    refresh();
  }

 private:
  void refresh() {
    watcher_.addPath(path_text(path_));
    if (const Picture picture = GraphicFileRead(path_.string())) panel_->set_picture(picture);
  }

  std::filesystem::path path_;
  PicturePanel* panel_;
  QFileSystemWatcher watcher_;
  QTimer settle_;
};

}  // namespace

std::optional<Picture> paint_elsewhere(QWidget* parent, const Picture& picture, Services& services) {
  const bool alpha = picture.bits() == 32 && settings::PaintbrushSupportsAlpha != 0;
  const TemporaryFile file(NextTempName("Paint", alpha ? ".png" : ".bmp", kFirstNumber));
  if (!GraphicFileWrite(file.path.string(), picture_to_paint(picture))) {
    services.host.show(StringId::ErrorWritingFile);
    return std::nullopt;
  }
  const QString program = paint_program_to_start();
  if (program.isEmpty() || !QProcess::startDetached(program, {path_text(file.path)})) {
    services.host.show(StringId::PaintNotStarted);
    return std::nullopt;
  }
  const int answer = WaitingBox(file.path, parent).exec();
  // The other program has to have let go of the screen.
  QTimer::singleShot(std::clamp(settings::AppToFrontDelay, 0, 5'000), parent, [parent] {
    parent->raise();
    parent->activateWindow();
  });
  if (answer != QDialog::Accepted) return std::nullopt;
  Picture painted = read_picture_file(file.path, services.host);
  if (!painted) return std::nullopt;
  return painted;
}

}  // namespace vellum
