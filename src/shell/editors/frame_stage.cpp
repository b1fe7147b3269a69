#include "shell/editors/frame_stage.h"

#include <QHBoxLayout>
#include <QPainter>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "image/picture_operations.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

enum View { kOwnPicture, kOnCanvas, kOnionSkin };

constexpr QSize kLeastView(240, 160);
constexpr int kChoiceLetters = 9;                        // that have room on the smallest screen
constexpr double kNeighbour = 0.45, kBetweenThem = 0.7;  // opacities of an onion skin
constexpr std::int64_t kMostPixels = 1 << 26;            // of what is shown beyond the canvas

QRect rect_of(Extent size) { return {0, 0, static_cast<int>(size.width), static_cast<int>(size.height)}; }

QColor qt_color(Colour color) { return QColor(red_of(color), green_of(color), blue_of(color)); }

Picture shown_picture(const DocumentWindow& window, std::size_t index) {
  const ChunkRecord& record = window.list.record(index);
  const Picture own = picture_of(record);
  const auto table = window.document.kind == DocumentKind::MING ? image_transparency(record)
                                                                : document_transparency(window.list);
  return own && !table.empty() ? PictureWithTransparency(own, table) : own;
}

}  // namespace

FrameStage::FrameStage(QWidget* parent)
    : QWidget(parent), panel_(new PicturePanel(this)), note_(new QLabel(this)) {
  panel_->setMinimumSize(kLeastView);
  note_->setObjectName(QStringLiteral("canvas"));
  note_->setWordWrap(true);
  note_->setAutoFillBackground(true);
  note_->setBackgroundRole(QPalette::ToolTipBase);
  note_->setForegroundRole(QPalette::ToolTipText);
  note_->setMargin(style::kGap / 2);
  note_->hide();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap / 2);
  layout->addWidget(make_bar());
  layout->addWidget(panel_, 1);
  layout->addWidget(note_);
  connect(&panel_->view(), &PictureView::moved, this, &FrameStage::moved);
}

QComboBox* FrameStage::make_choice(const QString& name, std::initializer_list<StringId> texts, int& setting) {
  auto* choice = new QComboBox(this);
  choice->setAccessibleName(name);
  choice->setToolTip(name);
  choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  choice->setMinimumContentsLength(kChoiceLetters);
  for (const StringId text : texts) choice->addItem(text_of(text));
  choice->setCurrentIndex(std::clamp(setting, 0, choice->count() - 1));
  connect(choice, &QComboBox::currentIndexChanged, this, [this, &setting](int chosen) {
    setting = chosen;
    display(true);
  });
  return choice;
}

QWidget* FrameStage::make_bar() {
  auto* bar = new QWidget(this);
  auto* row = new QHBoxLayout(bar);
  row->setContentsMargins(0, 0, 0, 0);
  const auto step = [&](Qt::ArrowType arrow, const QString& name, const char* keys, bool forwards) {
    auto* button = new QToolButton(bar);
    button->setArrowType(arrow);
    button->setAutoRaise(true);
    button->setShortcut(QKeySequence(QLatin1String(keys)));
    button->setToolTip(name + QStringLiteral(" (%1)").arg(QLatin1String(keys)));
    button->setAccessibleName(name);
    button->setObjectName(forwards ? QStringLiteral("next_frame") : QStringLiteral("previous_frame"));
    connect(button, &QToolButton::clicked, this, [this, forwards] { emit step_wanted(forwards); });
    return button;
  };
  before_ = step(Qt::LeftArrow, tr("Previous frame"), "Alt+Left", false);
  behind_ = step(Qt::RightArrow, tr("Next frame"), "Alt+Right", true);
  ordinal_ = new QLabel(bar);
  view_ = make_choice(tr("View"), {StringId::OwnPictureAlone, StringId::FrameOnCanvas, StringId::OnionSkin},
                      settings::ImageEditorView);
  view_->setObjectName(QStringLiteral("view"));
  ground_ = make_choice(
      tr("Ground"),
      {StringId::GroundCheckers, StringId::GroundOfDocument, StringId::GroundBlack, StringId::GroundWhite},
      settings::ImageEditorGround);
  ground_->setObjectName(QStringLiteral("ground"));
  row->addWidget(before_);
  row->addWidget(ordinal_);
  row->addWidget(behind_);
  row->addStretch(1);
  row->addWidget(view_);
  panel_->add_tool(ground_);
  return bar;
}

void FrameStage::show_frame(const DocumentWindow& window, std::size_t index, FrameOffset offset,
                            bool placeable) {
  window_ = &window;
  index_ = index;
  offset_ = offset;
  placeable_ = placeable;
  own_ = shown_picture(window, index);
  const bool animation = is_animation(window.document.kind);
  scene_ = animation ? FrameScene(window, index) : FrameScene();
  for (QWidget* part : {static_cast<QWidget*>(before_), static_cast<QWidget*>(behind_),
                        static_cast<QWidget*>(ordinal_), static_cast<QWidget*>(view_)})
    part->setVisible(animation);
  if (animation) show_ordinal();
  display(true);
}

void FrameStage::show_ordinal() {
  const DocumentKind kind = window_->document.kind;
  std::size_t ordinal = 0;
  for (std::size_t i = 0; i <= index_; ++i) ordinal += is_image_entry(kind, window_->list.record(i).tag);
  const std::string text = with_value(with_value(string_text(StringId::FrameOfFrames), grouped(ordinal)),
                                      grouped(chunk_count_images(window_->list, kind)));
  ordinal_->setText(to_qt(text));
  before_->setEnabled(neighbour_image(*window_, index_, false) != kNoEntry);
  behind_->setEnabled(neighbour_image(*window_, index_, true) != kNoEntry);
}

void FrameStage::move_frame(FrameOffset offset) {
  offset_ = offset;
  display(false);
}

void FrameStage::tell(const QString& note) {
  note_->setText(note);
  note_->setVisible(!note.isEmpty());
}

/// What is seen of the canvas and of a frame that reaches beyond it; `corner` is its left and top.
Picture FrameStage::on_stage(QPoint& corner) const {
  const QRect canvas = rect_of(scene_.canvas());
  const QRect frame(offset_.x, offset_.y, static_cast<int>(own_.width()), static_cast<int>(own_.height()));
  QRect area = canvas.united(frame);
  if (std::int64_t{area.width()} * area.height() > kMostPixels) area = canvas;
  corner = area.topLeft();
  QImage image(area.size(), QImage::Format_ARGB32);
  if (image.isNull()) return {};
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.translate(-corner);
  const bool onion = view_->currentIndex() == kOnionSkin;
  if (onion) {
    painter.setOpacity(kNeighbour);
    for (const Picture& neighbour : {scene_.before(), scene_.after(*window_, offset_)})
      if (neighbour) painter.drawImage(0, 0, image_of_picture(neighbour));
    painter.setOpacity(kBetweenThem);
  } else {
    painter.drawImage(0, 0, image_of_picture(scene_.with_frame_at(*window_, offset_)));
    painter.setClipRegion(QRegion(area) - QRegion(canvas));
  }
  painter.drawImage(frame.topLeft(), image_of_picture(own_));
  painter.end();
  return picture_of_image(image);
}

void FrameStage::display(bool anew) {
  if (!window_) return;
  PictureView& view = panel_->view();
  const std::optional<QColor> grounds[] = {std::nullopt,
                                           qt_color(document_background(window_->list, window_->document)),
                                           QColor(Qt::black), QColor(Qt::white)};
  view.set_ground(grounds[std::clamp(ground_->currentIndex(), 0, 3)]);
  const bool alone = view_->currentIndex() == kOwnPicture || !is_animation(window_->document.kind) || !own_;
  view.set_placing(!alone && placeable_);
  QPoint corner;
  const Picture shown = alone ? own_ : on_stage(corner);
  anew ? panel_->set_picture(shown, picture_of(window_->list.record(index_))) : view.change_picture(shown);
  const QRect frame(QPoint(offset_.x, offset_.y) - corner,
                    QSize(static_cast<int>(own_.width()), static_cast<int>(own_.height())));
  const QRect canvas = rect_of(scene_.canvas()).translated(-corner);
  const bool beyond = shown && !canvas.contains(QRect(0, 0, static_cast<int>(shown.width()),
                                                      static_cast<int>(shown.height())));
  view.set_outlines(alone ? QRect() : frame, alone || !beyond ? QRect() : canvas);
}

}  // namespace vellum
