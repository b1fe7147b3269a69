#include "shell/setup/theme_dialog.h"

#include <QDesktopServices>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QUrl>
#include <algorithm>

#include "configuration/setting_values.h"
#include "extension/settings.h"
#include "shell/look/program_style.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr QSize kSample(232, 146);
constexpr int kAround = 12, kRing = 2;  // of a sample, pixels
constexpr QSize kCell(kSample.width() + 2 * kAround, kSample.height() + 2 * kAround + 24);
constexpr QSize kList(2 * kCell.width() + 28, 2 * kCell.height() + 12);
constexpr int kLeastList = 120;  // high, where the screen has no room
constexpr int kFileRole = Qt::UserRole, kReasonRole = Qt::UserRole + 1;

/// The desktop's own look, drawn as the themes draw theirs.
QImage desktop_sample(const QPalette& palette, double scale) {
  QImage image((QSizeF(kSample) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(palette.color(QPalette::Window));
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor edge =
      style::between(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.3);
  const auto box = [&](const QRectF& rect, const QColor& ground, bool line = false) {
    painter.setPen(line ? QPen(edge) : QPen(Qt::NoPen));
    painter.setBrush(ground);
    painter.drawRoundedRect(rect, 2, 2);
  };
  const QColor text = palette.color(QPalette::WindowText), accent = palette.color(QPalette::Highlight);
  for (int i = 0; i < 5; ++i) box(QRectF(9 + i * 23, 8, 13, 13), i == 1 ? accent : text);
  painter.fillRect(0, 29, kSample.width(), 1, edge);
  box(QRectF(9.5, 38.5, 129, 98), palette.color(QPalette::Base), true);
  for (int i = 0; i < 5; ++i) {
    if (i == 1) box(QRectF(12, 58, 124, 15), accent);
    box(QRectF(18, 46 + i * 17, 50 + (i * 7 % 5) * 10, 5),
        palette.color(i == 1 ? QPalette::HighlightedText : QPalette::Text));
  }
  box(QRectF(148, 42, 74, 5), text);
  box(QRectF(148, 54, 52, 5), palette.color(QPalette::PlaceholderText));
  for (int i = 0; i < 2; ++i) {
    box(QRectF(148.5, 86.5 + i * 28, 74, 21), palette.color(QPalette::Button), true);
    box(QRectF(171, 94.5 + i * 28, 30, 5), palette.color(QPalette::ButtonText));
  }
  painter.setBrush(Qt::NoBrush);
  painter.setPen(edge);
  painter.drawRect(QRectF(0.5, 0.5, kSample.width() - 1, kSample.height() - 1));
  return image;
}

/// A sample with its name below; a ring around the chosen one, so that its own colors are seen.
class SampleDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override { return kCell; }

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const bool chosen = (option.state & QStyle::State_Selected) != 0;
    const bool usable = index.data(kReasonRole).toString().isEmpty();
    const QPalette& palette = option.palette;
    QRect sample(QPoint(), kSample);
    sample.moveCenter(option.rect.center());
    sample.moveTop(option.rect.top() + kAround);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (chosen) {
      painter->setPen(QPen(palette.color(QPalette::Highlight), kRing));
      painter->drawRoundedRect(QRectF(sample).adjusted(-5, -5, 5, 5), 6, 6);
    }
    painter->drawImage(sample, index.data(Qt::DecorationRole).value<QImage>());
    painter->setPen(palette.color(usable ? QPalette::Text : QPalette::PlaceholderText));
    const QRect below(option.rect.left(), sample.bottom() + kRing + 6, option.rect.width(), 22);
    painter->drawText(
        below, Qt::AlignHCenter | Qt::AlignVCenter,
        option.fontMetrics.elidedText(index.data().toString(), Qt::ElideMiddle, below.width() - kAround));
    painter->restore();
  }
};

/// Gives all windows a look that they haven't got.
void give_look(ThemeInForce theme) {
  const ThemeInForce now = theme_in_force();
  if ((theme ? theme->file : "") != (now ? now->file : "")) put_theme_in_force(std::move(theme));
}

}  // namespace

ThemeDialog::ThemeDialog(std::span<const std::filesystem::path> folders, Host& host, QWidget* parent)
    : QDialog(parent),
      host_(host),
      found_(find_themes(folders)),
      before_(theme_in_force()),
      list_(new QListWidget(this)),
      note_(new QLabel(this)) {
  setObjectName(QStringLiteral("ThemeDialog"));
  setWindowTitle(tr("Select theme"));
  list_->setAccessibleName(tr("Themes"));
  list_->setViewMode(QListView::IconMode);
  list_->setMovement(QListView::Static);
  list_->setResizeMode(QListView::Adjust);
  list_->setItemDelegate(new SampleDelegate(list_));
  list_->setGridSize(kCell);
  list_->setMinimumSize(kList.width(), kLeastList);
  list_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  const ThemeInForce desktop;
  QPalette own = ProgramStyle(desktop).standardPalette();
  add_row(tr("Carbon Medium (the desktop's colors)"), kDefaultTheme, desktop_sample(own, devicePixelRatioF()),
          {});
  for (const Theme& theme : found_.themes)
    add_row(to_qt(theme.name), theme.file, theme_sample(theme, kSample, devicePixelRatioF()),
            theme.incomplete.empty() ? QString()
                                     : tr("This theme can't be used: %1.").arg(to_qt(theme.incomplete)));
  note_->setWordWrap(true);
  QStringList reasons;
  for (const std::string& reason : found_.refused) reasons += to_qt(reason);
  auto* refused = new QLabel(reasons.join(u'\n'), this);
  refused->setTextFormat(Qt::PlainText);
  refused->setWordWrap(true);
  refused->setVisible(!found_.refused.empty());
  QDialogButtonBox* buttons =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("THEMES"));
  ok_ = buttons->button(QDialogButtonBox::Ok);
  configure_ = buttons->addButton(tr("Con&figure..."), QDialogButtonBox::ActionRole);
  connect(configure_, &QPushButton::clicked, this, &ThemeDialog::configure);
  if (*kMoreThemes != 0) {
    auto* more = buttons->addButton(tr("&More themes"), QDialogButtonBox::ActionRole);
    connect(more, &QPushButton::clicked, this,
            [] { QDesktopServices::openUrl(QUrl(QString::fromUtf8(kMoreThemes))); });
  }
  QVBoxLayout* layout = dialog_layout(*this);
  layout->addWidget(list_, 1);
  layout->addWidget(note_);
  layout->addWidget(refused);
  layout->addWidget(buttons);
  resize(sizeHint().expandedTo(kList + QSize(2 * style::kWideGap, 110)));
  choose(before_ ? before_->file : kDefaultTheme);
  connect(list_, &QListWidget::currentRowChanged, this, &ThemeDialog::follow_row);
  connect(list_, &QListWidget::itemDoubleClicked, this, [this] {
    if (ok_->isEnabled()) accept();
  });
  follow_row();
}

void ThemeDialog::add_row(const QString& name, const std::string& file, const QImage& sample,
                          const QString& reason) {
  auto* item = new QListWidgetItem(name, list_);
  item->setData(Qt::DecorationRole, sample);
  item->setData(kFileRole, to_qt(file));
  item->setData(kReasonRole, reason);
  item->setToolTip(reason.isEmpty() ? name : reason);
}

std::string ThemeDialog::chosen() const {
  const QListWidgetItem* item = list_->currentItem();
  return item ? item->data(kFileRole).toString().toStdString() : std::string(kDefaultTheme);
}

void ThemeDialog::choose(const std::string& file) {
  int wanted = 0;
  for (int row = 0; row < list_->count(); ++row)
    if (list_->item(row)->data(kFileRole).toString() == to_qt(file)) wanted = row;
  list_->setCurrentRow(wanted);
}

const Theme* ThemeDialog::theme_of_row() const {
  const auto theme = std::ranges::find(found_.themes, chosen(), &Theme::file);
  return theme == found_.themes.end() ? nullptr : &*theme;
}

/// Shows the look on all windows, where it can begin at once.
void ThemeDialog::follow_row() {
  const Theme* theme = theme_of_row();
  const bool usable = !theme || theme->incomplete.empty();
  ok_->setEnabled(usable);
  configure_->setEnabled(theme && theme->calls.configure);
  const bool later = theme && theme->draws(VELLUM_SUPPORT_NEEDS_RESTART);
  note_->setText(!usable ? list_->currentItem()->data(kReasonRole).toString()
                 : later ? tr("This theme begins with the next start of the program.")
                         : tr("What is chosen is shown at once."));
  if (!usable || later)
    give_look(before_);
  else
    give_look(theme ? std::make_shared<Theme>(*theme) : nullptr);
}

void ThemeDialog::configure() {
  const Theme* theme = theme_of_row();
  if (!theme || !theme->calls.configure || theme->calls.configure(this) == 0) return;
  list_->currentItem()->setData(Qt::DecorationRole, theme_sample(*theme, kSample, devicePixelRatioF()));
  if (theme_in_force() && theme_in_force()->file == theme->file)
    put_theme_in_force(std::make_shared<Theme>(*theme));
}

void ThemeDialog::done(int result) {
  if (result != Accepted) give_look(before_);
  const std::string file = chosen();
  if (result == Accepted && file != settings::ThemeCurrent) {
    change_setting(*find_setting("ThemeCurrent"), {0, file});
    const Theme* theme = theme_of_row();
    if (theme && theme->draws(VELLUM_SUPPORT_NEEDS_RESTART)) host_.show(StringId::ThemeRestart);
  }
  QDialog::done(result);
}

void ask_for_theme(QWidget* parent, Host& host) { ThemeDialog(theme_folders(), host, parent).exec(); }

}  // namespace vellum
