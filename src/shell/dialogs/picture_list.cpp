#include "shell/dialogs/picture_list.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QDropEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QUrl>
#include <fstream>

#include "base/file.h"
#include "image/graphic_file.h"
#include "image/resample.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kRowHeight = 100;
constexpr int kButtonsRoom = 300;  // beside each other, on small screens
constexpr QSize kThumbnail(112, 88), kSmall(400, 300);
constexpr qsizetype kMostSmall = 32 << 20;  // bytes

/// At most as large as a preview.
Picture small_of(const Picture& picture) {
  const double percent = 100 * std::min({1.0, double(kSmall.width()) / picture.width(),
                                         double(kSmall.height()) / picture.height()});
  return percent < 100 ? PictureScalePercent(picture, percent, percent, ResampleFilter::Box) : picture;
}

QImage fitted(const QImage& image) {
  return image.width() > kThumbnail.width() || image.height() > kThumbnail.height()
             ? image.scaled(kThumbnail, Qt::KeepAspectRatio, Qt::SmoothTransformation)
             : image;
}

/// Rows have no pictures of their own: thousands of them would fill the memory.
class PictureDelegate : public QStyledItemDelegate {
 public:
  PictureDelegate(QListWidget* list, std::function<QImage(int number)> thumbnail)
      : QStyledItemDelegate(list), thumbnail_(std::move(thumbnail)) {}

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    QPixmap room(kThumbnail);
    room.fill(Qt::transparent);
    const QImage image = thumbnail_(index.data(Qt::UserRole).toInt());
    QPainter painter(&room);
    painter.drawImage((kThumbnail.width() - image.width()) / 2, (kThumbnail.height() - image.height()) / 2,
                      image);
    option->features |= QStyleOptionViewItem::HasDecoration;
    option->decorationSize = kThumbnail;
    option->icon = QIcon(room);
  }

 private:
  std::function<QImage(int number)> thumbnail_;
};

}  // namespace

PictureList::PictureList(Services& services, QWidget* parent)
    : QWidget(parent),
      services_(services),
      list_(new QListWidget(this)),
      small_(kMostSmall),
      thumbnails_(std::max(kThumbnail.width(), kThumbnail.height())) {
  list_->setItemDelegate(new PictureDelegate(list_, [this](int number) { return thumbnail(number); }));
  connect(&thumbnails_, &Thumbnails::made, list_->viewport(), qOverload<>(&QWidget::update));
  list_->setObjectName(QStringLiteral("pictures"));
  list_->setAccessibleName(tr("Images"));
  list_->setIconSize(kThumbnail);
  list_->setDragDropMode(QAbstractItemView::InternalMove);
  list_->setUniformItemSizes(true);
  list_->setTextElideMode(Qt::ElideMiddle);
  list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  list_->installEventFilter(this);
  list_->viewport()->installEventFilter(this);
  auto* buttons = new QGridLayout;
  QPushButton* add = add_button(tr("&Add"), &PictureList::choose);
  remove_ = add_button(tr("&Remove"), &PictureList::remove);
  paste_ = add_button(tr("&Paste"), &PictureList::paste);
  open_ = add_button(tr("&Override"), &PictureList::open);
  up_ = add_button(tr("Move &up"), &PictureList::move_up);
  down_ = add_button(tr("Move do&wn"), &PictureList::move_down);
  remove_->setToolTip(tr("With Shift all"));
  const std::initializer_list<QPushButton*> all = {add, remove_, paste_, open_, up_, down_};
  int widest = 0, at = 0;
  for (const QPushButton* button : all) widest = std::max(widest, button->sizeHint().width());
  const int columns = 3 * widest > kButtonsRoom ? 2 : 3;
  for (QPushButton* button : all) {
    buttons->addWidget(button, at / columns, at % columns);
    ++at;
  }
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(list_, 1);
  column->addLayout(buttons);
  connect(list_, &QListWidget::itemDoubleClicked, this, &PictureList::open);
  connect(list_, &QListWidget::currentRowChanged, this, &PictureList::show_enabled);
  connect(list_, &QListWidget::currentRowChanged, this, &PictureList::changed);
  // While a row is dragged it is in the list twice.
  const auto later = [this] {
    QMetaObject::invokeMethod(
        this, [this] { show_enabled(), emit changed(); }, Qt::QueuedConnection);
  };
  connect(list_->model(), &QAbstractItemModel::rowsMoved, this, later);
  connect(list_->model(), &QAbstractItemModel::rowsRemoved, this, later);
  connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &PictureList::show_enabled);
  show_enabled();
}

QPushButton* PictureList::add_button(const QString& text, void (PictureList::*action)()) {
  auto* button = new QPushButton(text, this);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, action);
  return button;
}

void PictureList::show_enabled() {
  const int row = list_->currentRow();
  const QMimeData* held = QGuiApplication::clipboard()->mimeData();
  remove_->setEnabled(row >= 0);
  open_->setEnabled(row >= 0);
  up_->setEnabled(row > 0);
  down_->setEnabled(row >= 0 && row + 1 < list_->count());
  paste_->setEnabled(held && held->hasImage());
}

std::vector<const ListedPicture*> PictureList::pictures() const {
  std::vector<const ListedPicture*> all;
  for (int row = 0; row < list_->count(); ++row) all.push_back(&at(row));
  return all;
}

const ListedPicture& PictureList::at(int row) const {
  return held_.at(list_->item(row)->data(Qt::UserRole).toInt());
}

Picture PictureList::small(int row) const {
  return small_of_number(list_->item(row)->data(Qt::UserRole).toInt());
}

Picture PictureList::small_of_number(int number) const try {
  if (const Picture* kept = small_.object(number)) return *kept;
  const Picture made = small_of(held_.at(number).picture.picture());
  if (made) small_.insert(number, new Picture(made), static_cast<qsizetype>(made.handle().size()));
  return made;
} catch (const std::bad_alloc&) {
  return {};
}

QImage PictureList::thumbnail(int number) {
  const auto found = held_.find(number);
  if (found == held_.end()) return {};
  if (!found->second.file.empty()) return fitted(thumbnails_.look(path_text(found->second.file)).image);
  return fitted(image_of_picture(small_of_number(number)));
}

void PictureList::add(const HeldPicture& picture, const std::filesystem::path& file, const QString& name) {
  ListedPicture listed{picture, file, name, {}, false};
  auto* item = new QListWidgetItem(name);
  item->setData(Qt::UserRole, next_);
  item->setSizeHint(QSize(0, kRowHeight));
  item->setToolTip(file.empty() ? name : path_text(file));
  held_.emplace(next_++, std::move(listed));
  list_->addItem(item);
  if (list_->currentRow() < 0) list_->setCurrentRow(0);
  show_enabled();
  emit changed();
}

bool PictureList::add_file(const std::filesystem::path& file) {
  const HeldPicture picture = hold_picture_file(file, services_.host);
  if (!picture) return false;
  add(picture, file, path_text(file.filename()));
  return true;
}

void PictureList::give_own(int row, FieldValues own, const QString& text) {
  QListWidgetItem* item = list_->item(row);
  ListedPicture& listed = held_.at(item->data(Qt::UserRole).toInt());
  listed.own = std::move(own);
  listed.overridden = true;
  item->setText(listed.name + u'\n' + text);
  emit changed();
}

void PictureList::choose() {
  if (!services_.choose_pictures) return;
  for (const auto& file : services_.choose_pictures(true)) add_file(file);
}

void PictureList::paste() {
  const Picture picture = picture_of_image(QGuiApplication::clipboard()->image());
  if (!picture) return services_.host.show(StringId::ClipboardInvalid);
  add(picture, {}, text_of(StringId::ImageFromClipboard));
}

void PictureList::remove() {
  const bool all = services_.shift_held && services_.shift_held();
  const int first = all ? 0 : list_->currentRow(), last = all ? list_->count() - 1 : first;
  for (int row = last; row >= first && row >= 0; --row) {
    const std::unique_ptr<QListWidgetItem> item(list_->takeItem(row));
    held_.erase(item->data(Qt::UserRole).toInt());
  }
  show_enabled();
  emit changed();
}

void PictureList::move_by(int rows) {
  const int row = list_->currentRow(), to = row + rows;
  if (row < 0 || to < 0 || to >= list_->count()) return;
  QListWidgetItem* item = list_->takeItem(row);
  list_->insertItem(to, item);
  list_->setCurrentRow(to);
}

void PictureList::load(const std::filesystem::path& names) {
  std::ifstream file(names);
  std::error_code none;
  for (std::string line; std::getline(file, line);) {
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
    if (line.empty() || !std::filesystem::exists(line, none)) continue;
    if (!add_file(line)) return;
  }
}

void PictureList::store(const std::filesystem::path& names) const {
  std::string text;
  for (const ListedPicture* listed : pictures())
    if (!listed->file.empty()) text += listed->file.string() + '\n';
  std::error_code none;
  std::filesystem::create_directories(names.parent_path(), none);
  SafeFile file(names);
  file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  file.commit();
}

bool PictureList::take_drop(QDropEvent& event) {
  if (!event.mimeData()->hasUrls()) return false;
  event.acceptProposedAction();
  if (event.type() == QEvent::Drop)
    for (const QUrl& url : event.mimeData()->urls())
      if (url.isLocalFile()) add_file(to_path(url.toLocalFile()));
  return true;
}

bool PictureList::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop)
    return take_drop(static_cast<QDropEvent&>(*event)) || QWidget::eventFilter(watched, event);
  if (type != QEvent::KeyPress || watched != list_) return QWidget::eventFilter(watched, event);
  const auto* key = static_cast<QKeyEvent*>(event);
  const bool alt = key->modifiers() & Qt::AltModifier;
  switch (key->key()) {
    case Qt::Key_Delete:
      remove();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      open();
      return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
      if (alt) move_by(key->key() == Qt::Key_Up ? -1 : 1);
      return alt;
    default:
      return QWidget::eventFilter(watched, event);
  }
}

}  // namespace vellum
