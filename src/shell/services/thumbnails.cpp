#include "shell/services/thumbnails.h"

#include <QDateTime>
#include <QFileInfo>

#include "base/text.h"
#include "batch/thumbnail_file.h"
#include "image/graphic_file.h"
#include "shell/look/picture_image.h"
#include "shell/look/text.h"
#include "shell/services/file_thumbnail.h"
#include "shell/services/folder_documents.h"

namespace vellum {
namespace {

constexpr qsizetype kCacheBytes = 64 << 20;
constexpr std::size_t kMostWanted = 4000;

qint64 time_of(const QString& path) { return QFileInfo(path).lastModified().toMSecsSinceEpoch(); }

FileLook look_of_file(const QString& path, int side) {
  FileLook look;
  const std::filesystem::path file = to_path(path);
  std::uint32_t width = 0, height = 0, bits = 0;
  if (GraphicFileInfo(file.string(), &width, &height, &bits, nullptr)) {
    look.size = QSize(static_cast<int>(width), static_cast<int>(height));
    const std::string colors = grouped(std::uint64_t{1} << std::min(bits, 24u));
    look.detail = to_qt(format_text(string_text(StringId::WizardRowDetails).data(), static_cast<int>(width),
                                    static_cast<int>(height), colors.c_str()));
  }
  if (look.size.isEmpty()) look.size = size_of_mng(file);
  look.animated = is_animation_file(file);
  look.image = file_thumbnail(file, side);
  // One that a batch run has left beside a picture that is too large to be read for it.
  if (look.image.isNull())
    if (const Picture small = thumbnail_of(file)) look.image = image_of_picture(small);
  return look;
}

}  // namespace

Thumbnails::Thumbnails(int side, QObject* parent)
    : QObject(parent),
      maker_(std::make_shared<const Maker>([side](const QString& path) { return look_of_file(path, side); })),
      looks_(kCacheBytes) {}

void Thumbnails::set_maker(Maker maker) {
  maker_ = std::make_shared<const Maker>(std::move(maker));
  looks_.clear();
  wanted_.clear();
  asked_.clear();
}

Thumbnails::~Thumbnails() {
  pool_.clear();
  pool_.waitForDone();
}

FileLook Thumbnails::look(const QString& path) {
  if (const Made* made = looks_.object(path)) return made->look;
  if (asked_.contains(path)) return {};
  asked_.insert(path);
  wanted_.push_back(path);
  if (wanted_.size() > kMostWanted) {
    asked_.remove(wanted_.front());
    wanted_.pop_front();
  }
  begin_some();
  return {};
}

FileLook Thumbnails::peek(const QString& path) const {
  const Made* made = looks_.object(path);
  return made ? made->look : FileLook();
}

void Thumbnails::forget_changed(bool all) {
  for (const QString& path : looks_.keys())
    if (all || looks_.object(path)->time != time_of(path)) looks_.remove(path);
}

void Thumbnails::begin_some() {
  while (running_ < pool_.maxThreadCount() && !wanted_.empty()) {
    const QString path = wanted_.back();
    wanted_.pop_back();
    ++running_;
    pool_.start([this, path, maker = maker_] {
      Made made;
      made.time = time_of(path);
      try {
        made.look = (*maker)(path);
      } catch (const std::bad_alloc&) {
      }
      made.look.known = true;
      QMetaObject::invokeMethod(
          this, [this, path, made, maker] { take(path, made, maker); }, Qt::QueuedConnection);
    });
  }
}

void Thumbnails::take(const QString& path, const Made& made, const std::shared_ptr<const Maker>& maker) {
  --running_;
  if (maker == maker_) {
    asked_.remove(path);
    looks_.insert(path, new Made(made), made.look.image.sizeInBytes() + 1024);
  }
  begin_some();
  if (maker == maker_) emit this->made(path);
}

}  // namespace vellum
