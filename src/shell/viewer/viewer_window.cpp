#include "shell/viewer/viewer_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QEventLoop>
#include <QKeyEvent>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/model/frame_values.h"
#include "core/model/kind_table.h"
#include "shell/forms/form_dialog.h"
#include "shell/list/document_frame.h"
#include "shell/look/icon.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/look/theme_look.h"
#include "shell/services/long_operation.h"
#include "shell/services/picture_files.h"
#include "shell/viewer/player_clock.h"
#include "shell/viewer/viewer_geometry.h"
#include "shell/widgets/color_dialog.h"

namespace vellum {
namespace {

constexpr std::int64_t kLongStep = 10;  // frames
constexpr int kControlsStay = 2000;     // milliseconds after the pointer moved

enum class Place { BarOnly, Bar, Menu };
enum class Group { Steps, Zoom, Background, Speed, Frame, Window };

struct CommandRow {
  const char* name;
  StringId label;
  const char* icon;  ///< null without one
  const char* keys;  ///< parted by "; "
  Place place;
  Group group;
  bool animation;  ///< not of a still image
  void (ViewerWindow::*run)();
};

using V = ViewerWindow;
using enum Place;

/// Buttons and menu in their order. Space, Enter and Escape are keys of the window itself.
const CommandRow kCommands[] = {
    {"rewind", StringId::ViewerRewind, "rewind", "Home", Bar, Group::Steps, true, &V::rewind},
    {"step_back", StringId::ViewerStepBack, "step_back", "Left", Bar, Group::Steps, true, &V::step_back},
    {"play", StringId::ViewerPlay, "play", "P", Bar, Group::Steps, true, &V::play},
    {"pause", StringId::ViewerPause, "pause", "", Bar, Group::Steps, true, &V::pause},
    {"step_forward", StringId::ViewerStepForward, "step_forward", "Right", Bar, Group::Steps, true,
     &V::step_forward},
    {"go_back", StringId::ViewerTenBack, nullptr, "PgUp", Menu, Group::Steps, true, &V::go_back},
    {"go_forward", StringId::ViewerTenForward, nullptr, "PgDown", Menu, Group::Steps, true, &V::go_forward},
    {"go_to_end", StringId::ViewerLastFrame, nullptr, "End", Menu, Group::Steps, true, &V::go_to_end},
    {"zoom_in", StringId::ViewerZoomIn, nullptr, "+; =", Menu, Group::Zoom, false, &V::zoom_in},
    {"zoom_out", StringId::ViewerZoomOut, nullptr, "-", Menu, Group::Zoom, false, &V::zoom_out},
    {"actual_size", StringId::ViewerActualSize, nullptr, "1", Menu, Group::Zoom, false, &V::show_actual_size},
    {"fit", StringId::ViewerFit, nullptr, "F", Menu, Group::Zoom, false, &V::fit},
    {"full_screen", StringId::ViewerFullScreen, nullptr, "F11", Menu, Group::Zoom, false,
     &V::toggle_full_screen},
    {"next_background", StringId::ViewerNextBackground, nullptr, "B", Menu, Group::Background, false,
     &V::next_background},
    {"faster", StringId::ViewerFaster, nullptr, "Ctrl+Up; ]", Menu, Group::Speed, true, &V::faster},
    {"slower", StringId::ViewerSlower, nullptr, "Ctrl+Down; [", Menu, Group::Speed, true, &V::slower},
    {"normal_speed", StringId::ViewerNormalSpeed, nullptr, "Backspace", Menu, Group::Speed, true,
     &V::normal_speed},
    {"copy", StringId::ViewerCopy, "copy", "Ctrl+C", Menu, Group::Frame, false, &V::copy_frame},
    {"save", StringId::ViewerSave, "save", "Ctrl+S", Menu, Group::Frame, false, &V::save_frame},
    {"close", StringId::ViewerClose, "close", "Ctrl+W", BarOnly, Group::Window, false, nullptr},
};

/// Backgrounds in the order in which a key goes through them; the last one asks for a color.
struct BackgroundRow {
  StringId label;
  Ground ground;
};
constexpr BackgroundRow kBackgrounds[] = {
    {StringId::ViewerOwnBackground, {}},
    {StringId::ViewerCheckered, {Ground::Kind::Clear, 0}},
    {StringId::ViewerBlack, {Ground::Kind::Solid, 0}},
    {StringId::ViewerWhite, {Ground::Kind::Solid, 0xFFFFFF}},
    {StringId::ViewerChooseColor, {Ground::Kind::Solid, 0}},
};
constexpr std::size_t kChosenBackground = std::size(kBackgrounds) - 1;

QSize qt_size(Extent extent) { return {static_cast<int>(extent.width), static_cast<int>(extent.height)}; }

/// What the desktop draws around a window, told by one that it has drawn.
QSize frame_around(const QWidget* beside) {
  return beside ? beside->window()->frameGeometry().size() - beside->window()->geometry().size()
                : QSize(0, 0);
}

bool is_input(QEvent::Type type) { return type == QEvent::Close || is_user_input(type); }

}  // namespace

ViewerWindow::ViewerWindow(const DocumentWindow& window, Services& services, QWidget* parent,
                           Player::Clock clock)
    : QDialog(parent, Qt::Dialog | Qt::WindowMaximizeButtonHint | Qt::WindowCloseButtonHint),
      window_{window.document, window.list, {}},
      services_(services),
      player_(window_.list, window_.document, clock ? std::move(clock) : player_clock()),
      canvas_(new ViewerCanvas(this)),
      controls_(new QWidget(this)),
      bar_(new QToolBar(controls_)),
      strip_(new ProgressStrip(controls_)) {
  setObjectName(QStringLiteral("ViewerWindow"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(canvas_, 1);
  layout->addWidget(controls_);
  auto* below = new QVBoxLayout(controls_);
  below->setContentsMargins(0, 0, 0, 0);
  below->setSpacing(0);
  below->addWidget(bar_);
  below->addWidget(strip_);
  controls_->setAutoFillBackground(true);
  make_commands();
  fill_bar();
  strip_->set_frames(player_.compositor().frames());
  strip_->setVisible(settings::ViewModeProgressBar != 0 && player_.compositor().frames() > 1);
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &ViewerWindow::beat);
  connect(strip_, &ProgressStrip::sought, this, &ViewerWindow::seek);
  connect(canvas_, &ViewerCanvas::zoomed, this, &ViewerWindow::refresh);
  connect(canvas_, &ViewerCanvas::close_wanted, this, &QDialog::reject);
  connect(canvas_, &ViewerCanvas::full_screen_wanted, this, &ViewerWindow::toggle_full_screen);
  connect(canvas_, &ViewerCanvas::pointer_moved, this, &ViewerWindow::show_controls);
  resting_.setSingleShot(true);
  resting_.setInterval(kControlsStay);
  connect(&resting_, &QTimer::timeout, this, &ViewerWindow::hide_controls);
  canvas_->set_ground(surround(), false);
  open_at(parent);
  canvas_->setFocus();
  refresh();
}

ViewerWindow::~ViewerWindow() { qApp->removeEventFilter(this); }

void ViewerWindow::make_commands() {
  for (const CommandRow& row : kCommands) {
    auto* action = new QAction(text_of(row.label), this);
    action->setObjectName(QLatin1String(row.name));
    action->setToolTip(text_of(row.label));
    action->setShortcuts(QKeySequence::listFromString(QLatin1String(row.keys)));
    if (row.icon) action->setIcon(program_icon(row.icon));
    action->setVisible(!row.animation || player_.is_animation());
    action->setEnabled(action->isVisible());
    connect(action, &QAction::triggered, this, [this, &row] { row.run ? (this->*row.run)() : reject(); });
    addAction(action);
  }
}

void ViewerWindow::add_backgrounds(QMenu& menu) {
  auto* group = new QActionGroup(&menu);
  for (std::size_t i = 0; i < std::size(kBackgrounds); ++i) {
    QAction* action = menu.addAction(text_of(kBackgrounds[i].label));
    action->setCheckable(true);
    action->setActionGroup(group);
    connect(action, &QAction::triggered, this,
            [this, i] { i == kChosenBackground ? choose_background() : set_background(i); });
  }
  connect(&menu, &QMenu::aboutToShow, group,
          [this, group] { group->actions().at(static_cast<qsizetype>(background_))->setChecked(true); });
}

/// Buttons for the first rows and Close; the others in a menu behind one button.
void ViewerWindow::fill_bar() {
  bar_->setIconSize(QSize(style::kToolIcon, style::kToolIcon));
  auto* menu = new QMenu(this);
  auto* backgrounds = new QMenu(text_of(StringId::ViewerBackground), menu);
  add_backgrounds(*backgrounds);
  auto* more = new QToolButton(bar_);
  more->setObjectName(QStringLiteral("more"));
  more->setIcon(program_icon("more"));
  more->setToolTip(text_of(StringId::ViewerMore));
  more->setAccessibleName(more->toolTip());
  more->setFocusPolicy(Qt::TabFocus);
  more->setMenu(menu);
  more->setPopupMode(QToolButton::InstantPopup);
  Group last = Group::Steps;
  for (const CommandRow& row : kCommands) {
    QAction* action = command(row.name);
    if (row.place == BarOnly) bar_->addWidget(more);
    if (row.place != Menu) {
      bar_->addAction(action);
      bar_->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
      bar_->widgetForAction(action)->setAccessibleName(action->toolTip());
    }
    if (row.place == BarOnly) continue;
    if (std::exchange(last, row.group) != row.group) menu->addSeparator();
    if (row.group == Group::Background) menu->addMenu(backgrounds);
    menu->addAction(action);
  }
  speed_ = new QLabel(bar_);
  // Room for the highest speed, so that no button moves when one is told.
  if (player_.is_animation())
    speed_->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("1600 %")) + style::kGap);
  bar_->addWidget(speed_);
  bar_->setVisible(settings::ViewModeToolbar != 0);
}

void ViewerWindow::open_at(const QWidget* beside) {
  const QRect free = (beside ? beside->screen() : screen())->availableGeometry();
  const double ratio = devicePixelRatioF();
  const auto pixels = [ratio](QSize size) { return (QSizeF(size) * ratio).toSize(); };
  // Room for three buttons on each side, where a theme says how wide those are.
  const int buttons =
      2 * (theme_metric(VELLUM_METRIC_MARGIN, 0) + 3 * theme_metric(VELLUM_METRIC_SMALL_BUTTON_WIDTH, 0));
  ViewerRoom room{qt_size(player_.compositor().values().canvas),
                  {std::max({settings::MinViewWidth, pixels({buttons, 0}).width(), 1}),
                   std::max(settings::MinViewDepth, 1)},
                  pixels(frame_around(beside)),
                  {0, 0},
                  strip_->isVisibleTo(this) ? pixels({0, kStripHeight}).height() : 0,
                  pixels(free.size()),
                  settings::ViewWindowSizeAdjust != 0};
  if (bar_->isVisibleTo(this)) room.bar = pixels(bar_->sizeHint());
  const ViewerOpening opening = viewer_opening(room);
  canvas_->set_zoom(opening.zoom);
  // A pixel more or less that the zoom leaves over needs no bars.
  if (room.adjust) {
    canvas_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    canvas_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  }
  resize((QSizeF(opening.inside) / ratio).toSize());
  const QSize outer = size() + frame_around(beside);
  move(free.topLeft() + QPoint((free.width() - outer.width()) / 2, (free.height() - outer.height()) / 2));
}

void ViewerWindow::run() {
  if (settings::ClickOutsideAnimToClose == 0) {
    exec();
    return;
  }
  // A window of a modal dialog's program hears no clicks, so what is outside is kept still here.
  qApp->installEventFilter(this);
  QEventLoop loop;
  connect(this, &QDialog::finished, &loop, &QEventLoop::quit);
  show();
  loop.exec();
  qApp->removeEventFilter(this);
}

bool ViewerWindow::is_outside(const QObject* watched) const {
  // Keys of commands reach objects that belong to a window.
  while (watched && !watched->isWidgetType()) watched = watched->parent();
  const auto* widget = static_cast<const QWidget*>(watched);
  if (!widget || QApplication::activeModalWidget()) return false;
  for (const QWidget* window = widget->window(); window; window = window->parentWidget())
    if (window == this) return false;
  return true;
}

bool ViewerWindow::eventFilter(QObject* watched, QEvent* event) {
  if (!is_input(event->type()) || !is_outside(watched)) return false;
  if (event->type() == QEvent::MouseButtonPress) reject();
  event->ignore();
  return true;
}

void ViewerWindow::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (player_.state() == PlayerState::Opening) play();
}

void ViewerWindow::done(int result) {
  timer_.stop();
  due_.reset();
  player_.close();
  QDialog::done(result);
}

// ------------------------------------------------------------------------------------------------- playing

std::function<void(const ShownFrame&)> ViewerWindow::painter() {
  return [this](const ShownFrame& frame) {
    strip_->show_progress(frame.ordinal, to_qt(player_.progress_text()));
    canvas_->show_frame(frame.picture, player_.ground().kind == Ground::Kind::Clear);
  };
}

void ViewerWindow::beat_in(std::optional<std::uint32_t> wait) {
  due_ = wait;
  if (wait)
    timer_.start(static_cast<int>(std::min<std::uint32_t>(*wait, INT32_MAX)));
  else
    timer_.stop();
  refresh();
}

void ViewerWindow::beat() { beat_in(player_.tick(painter())); }

void ViewerWindow::refresh() {
  const QString title = plain_title(to_qt(player_.title(canvas_->zoom())));
  if (title != windowTitle()) setWindowTitle(title);
  const bool animation = player_.is_animation();
  command("play")->setEnabled(animation && player_.can_play());
  command("pause")->setEnabled(animation && player_.can_pause());
  if (speed_)
    speed_->setText(player_.speed() == 100 ? QString() : QStringLiteral("%1 %").arg(player_.speed()));
  canvas_->setAccessibleDescription(strip_->text());
}

void ViewerWindow::play() {
  player_.play();
  beat_in(0);
}

void ViewerWindow::beat_if_waiting() {
  beat_in(player_.is_waiting() ? std::optional<std::uint32_t>(0) : std::nullopt);
}

void ViewerWindow::pause() {
  player_.pause();
  beat_if_waiting();
}

void ViewerWindow::toggle() { player_.can_pause() ? pause() : play(); }

void ViewerWindow::rewind() {
  player_.rewind(painter());
  beat_in({});
}

void ViewerWindow::step_forward() {
  player_.step_forward(painter());
  beat_if_waiting();
}

void ViewerWindow::step_back() {
  player_.step_back(painter());
  beat_if_waiting();
}

void ViewerWindow::seek(std::int64_t ordinal) {
  player_.seek(static_cast<std::uint32_t>(std::clamp<std::int64_t>(ordinal, 0, UINT32_MAX)));
  beat_in(0);
}

void ViewerWindow::go_forward() { seek(player_.shown().ordinal + kLongStep); }
void ViewerWindow::go_back() { seek(player_.shown().ordinal - kLongStep); }
void ViewerWindow::go_to_end() { seek(INT64_MAX); }

void ViewerWindow::change_speed(int direction) {
  player_.change_speed(direction);
  refresh();
}

void ViewerWindow::faster() { change_speed(1); }
void ViewerWindow::slower() { change_speed(-1); }
void ViewerWindow::normal_speed() { change_speed(0); }

// --------------------------------------------------------------------------------------------- how it looks

void ViewerWindow::zoom_in() { canvas_->step_zoom(1, QRectF(canvas_->viewport()->rect()).center()); }
void ViewerWindow::zoom_out() { canvas_->step_zoom(-1, QRectF(canvas_->viewport()->rect()).center()); }
void ViewerWindow::show_actual_size() { canvas_->set_zoom(100); }
void ViewerWindow::fit() { canvas_->fit(); }

void ViewerWindow::toggle_full_screen() { full_ ? leave_full_screen() : showFullScreen(); }

/// A window that was given another size while it was full may have lost that state without an event.
void ViewerWindow::leave_full_screen() {
  showNormal();
  if (full_ && !isFullScreen()) set_full(false);
}

/// The desktop may fill the screen, or end that, by itself.
void ViewerWindow::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && isFullScreen() != full_) set_full(!full_);
}

/// On a full screen the controls lie on the canvas, and go when the pointer rests.
void ViewerWindow::set_full(bool full) {
  full_ = full;
  if (full)
    zoomBefore_ = canvas_->zoom();
  else
    resting_.stop();
  static_cast<QBoxLayout*>(layout())->removeWidget(controls_);
  if (!full) layout()->addWidget(controls_);
  full ? hide_controls() : show_controls();
  canvas_->set_ground(surround(), player_.ground().kind == Ground::Kind::Clear);
  canvas_->set_filling(full);
  if (!full) canvas_->set_zoom(zoomBefore_);
}

void ViewerWindow::show_controls() {
  canvas_->viewport()->unsetCursor();
  controls_->show();
  if (!full_) return;
  place_controls();
  resting_.start();
}

void ViewerWindow::hide_controls() {
  if (!full_) return;
  // Not below the pointer, and not behind an open menu.
  if (controls_->isVisible() && (controls_->underMouse() || QApplication::activePopupWidget()))
    return resting_.start();
  controls_->hide();
  canvas_->setFocus();
  canvas_->viewport()->setCursor(Qt::BlankCursor);
}

void ViewerWindow::place_controls() {
  const int high = controls_->sizeHint().height();
  controls_->setGeometry(0, height() - high, width(), high);
  controls_->raise();
}

void ViewerWindow::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  if (full_ && controls_->isVisible()) place_controls();
}

/// Around the frame: the ground that was chosen; else the document's own, and black on a full screen.
QColor ViewerWindow::surround() const {
  const Ground& ground = player_.ground();
  if (ground.kind == Ground::Kind::Solid) return qt_color(ground.colour);
  return full_ ? QColor(Qt::black) : qt_color(document_background(window_.list, window_.document));
}

void ViewerWindow::set_ground(Ground ground) {
  player_.set_ground(ground);
  canvas_->set_ground(surround(), ground.kind == Ground::Kind::Clear);
  if (player_.is_waiting()) beat_in(0);
}

void ViewerWindow::set_background(std::size_t row) {
  background_ = row;
  set_ground(kBackgrounds[row].ground);
}

void ViewerWindow::next_background() {
  set_background(background_ + 1 < kChosenBackground ? background_ + 1 : 0);
}

void ViewerWindow::choose_background() {
  const auto color = ask_for_color(this, {chosen_, {}, {}, {}});
  if (!color) return;
  chosen_ = *color;
  background_ = kChosenBackground;
  set_ground({Ground::Kind::Solid, chosen_});
}

// -------------------------------------------------------------------------------------------- what it gives

/// Straight alpha, as other programs take it.
QImage ViewerWindow::shown_image() const {
  const QImage& image = canvas_->image();
  return image.format() == QImage::Format_ARGB32_Premultiplied ? image.convertToFormat(QImage::Format_ARGB32)
                                                               : image;
}

void ViewerWindow::copy_frame() {
  const QImage image = shown_image();
  // A copy: the memory of the image shown is used again for the next frame.
  if (!image.isNull()) QGuiApplication::clipboard()->setImage(image.copy());
}

void ViewerWindow::save_frame() {
  pause();
  const Picture picture = picture_of_image(shown_image());
  if (!picture) return;
  const std::string stem = std::filesystem::path(document_title(window_.document)).stem().string();
  const std::string number = player_.is_animation() ? std::to_string(player_.shown().ordinal + 1) : "";
  const std::string name = stem + (number.empty() ? "" : "-" + number) +
                           std::string(kind_row(DocumentKind::PING).extensions.front());
  if (const auto path = choose_picture_file(services_, tr("Save frame"), name))
    write_picture_file(*path, picture, services_.host);
}

// ---------------------------------------------------------------------------------------------------- input

void ViewerWindow::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      return full_ ? leave_full_screen() : pause();
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (player_.is_animation()) toggle();
      return;
    default:
      QDialog::keyPressEvent(event);
  }
}

void ViewerWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) reject();
}

}  // namespace vellum
