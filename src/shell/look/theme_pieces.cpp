#include "shell/look/theme_pieces.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QGroupBox>
#include <QPainterPath>
#include <QPushButton>
#include <QSlider>
#include <algorithm>

#include "shell/look/style.h"

namespace vellum {
namespace {

constexpr double kRound = 4;

/// What is drawn, by whom, and with what.
struct Piece {
  const Theme& theme;
  const QStyleOption& option;
  QPainter& painter;
  const QWidget* widget;

  QColor color(int number) const { return theme_color(theme, number); }
  bool enabled() const { return option.state & QStyle::State_Enabled; }
  bool focused() const { return enabled() && option.state & QStyle::State_HasFocus; }
  bool hot() const { return enabled() && option.state & QStyle::State_MouseOver; }
  bool on() const { return option.state & QStyle::State_On; }
  QColor edge() const {
    const QColor line = color(VELLUM_COLOR_EDGE);
    return enabled() ? line : style::between(line, color(VELLUM_COLOR_WINDOW), 0.45);
  }
  QColor text(int number) const { return color(enabled() ? number : VELLUM_COLOR_DISABLED_TEXT); }
};

class Kept {
 public:
  explicit Kept(QPainter& painter) : painter_(painter) {
    painter_.save();
    painter_.setRenderHint(QPainter::Antialiasing);
  }
  ~Kept() { painter_.restore(); }

 private:
  QPainter& painter_;
};

void box(const Piece& piece, const QRect& rect, const QColor& ground, const QColor& edge, double line = 1,
         double radius = kRound) {
  const Kept kept(piece.painter);
  piece.painter.setBrush(ground);
  piece.painter.setPen(line > 0 ? QPen(edge, line) : QPen(Qt::NoPen));
  piece.painter.drawRoundedRect(QRectF(rect).adjusted(line / 2, line / 2, -line / 2, -line / 2), radius,
                                radius);
}

void arrow(const Piece& piece, const QRect& rect, bool up, const QColor& color) {
  const Kept kept(piece.painter);
  const QPointF middle = QRectF(rect).center();
  const double wide = std::min(4.0, rect.height() / 3.0), high = (up ? -wide : wide) / 2;
  piece.painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  piece.painter.setBrush(Qt::NoBrush);
  piece.painter.drawPolyline(
      QPolygonF({middle + QPointF(-wide, -high), middle + QPointF(0, high), middle + QPointF(wide, -high)}));
}

bool field(const Piece& piece) {
  const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(&piece.option);
  const QWidget* parent = piece.widget ? piece.widget->parentWidget() : nullptr;
  if (qobject_cast<const QComboBox*>(parent) || qobject_cast<const QAbstractSpinBox*>(parent)) return true;
  const QColor ground = piece.option.palette.color(QPalette::Base);
  if (!frame || frame->lineWidth <= 0)
    piece.painter.fillRect(piece.option.rect, ground);
  else
    box(piece, piece.option.rect, ground, piece.focused() ? piece.color(VELLUM_COLOR_ACCENT) : piece.edge(),
        piece.focused() ? 2 : 1);
  return true;
}

bool frame(const Piece& piece) {
  box(piece, piece.option.rect, Qt::transparent, piece.edge(), 1, 0);
  return true;
}

bool group_frame(const Piece& piece) {
  constexpr int kLeastTitle = 14, kBelowTitle = 3;  // the title stands above the frame
  const int title = std::max(kLeastTitle, piece.option.fontMetrics.height()) + kBelowTitle;
  box(piece, piece.option.rect.adjusted(0, title, 0, 0), Qt::transparent, piece.edge());
  return true;
}

bool focus(const Piece& piece) {
  if (qobject_cast<const QPushButton*>(piece.widget)) return true;  // told by its ground
  const bool chosen = piece.option.state & QStyle::State_Selected;
  box(piece, piece.option.rect, Qt::transparent,
      piece.color(chosen ? VELLUM_COLOR_HIGHLIGHT_TEXT : VELLUM_COLOR_ACCENT), 1, kRound / 2);
  return true;
}

/// The ground of a check box or radio button, and the color of its mark.
QColor mark_ground(const Piece& piece, double radius) {
  const bool marked = piece.on() || piece.option.state & QStyle::State_NoChange;
  const QColor accent = piece.color(VELLUM_COLOR_ACCENT), own = piece.color(VELLUM_COLOR_FIELD);
  const QColor ground = !marked ? own : piece.enabled() ? accent : piece.edge();
  const QColor edge = piece.hot() || piece.focused() ? accent
                      : marked && piece.enabled()
                          ? accent
                          : style::between(piece.edge(), piece.text(VELLUM_COLOR_TEXT), 0.35);
  const int side = std::min(piece.option.rect.width(), piece.option.rect.height());
  QRect square(0, 0, side, side);
  square.moveCenter(piece.option.rect.center());
  box(piece, square, ground, edge, 1.2, radius < 0 ? side / 2.0 : radius);
  return marked && piece.enabled() ? piece.color(VELLUM_COLOR_ACCENT_TEXT) : piece.color(VELLUM_COLOR_WINDOW);
}

bool check_box(const Piece& piece) {
  const QColor mark = mark_ground(piece, 3);
  const QRectF r(piece.option.rect);
  const double side = std::min(r.width(), r.height());
  const auto at = [&](double x, double y) { return r.center() + QPointF(x * side, y * side); };
  const Kept kept(piece.painter);
  piece.painter.setPen(QPen(mark, side / 8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  if (piece.on())
    piece.painter.drawPolyline(QPolygonF({at(-0.24, 0.02), at(-0.06, 0.2), at(0.26, -0.18)}));
  else if (piece.option.state & QStyle::State_NoChange)
    piece.painter.drawLine(at(-0.22, 0), at(0.22, 0));
  return true;
}

bool radio_button(const Piece& piece) {
  const QColor mark = mark_ground(piece, -1);
  if (!piece.on()) return true;
  const Kept kept(piece.painter);
  const QRectF r(piece.option.rect);
  const double radius = std::min(r.width(), r.height()) / 5;
  piece.painter.setPen(Qt::NoPen);
  piece.painter.setBrush(mark);
  piece.painter.drawEllipse(r.center(), radius, radius);
  return true;
}

bool tab(const Piece& piece) {
  const auto* shape = qstyleoption_cast<const QStyleOptionTab*>(&piece.option);
  if (!shape || (shape->shape != QTabBar::RoundedNorth && shape->shape != QTabBar::TriangularNorth))
    return false;
  const bool chosen = shape->state & QStyle::State_Selected;
  QRect rect = shape->rect;
  if (!chosen) rect.setTop(rect.top() + 2);
  const QColor window = piece.color(VELLUM_COLOR_WINDOW);
  const QColor behind = style::between(window, piece.color(VELLUM_COLOR_EDGE), piece.hot() ? 0.15 : 0.35);
  piece.painter.fillRect(rect, chosen ? window : behind);
  const QColor edge = piece.edge();
  piece.painter.fillRect(rect.left(), rect.top(), 1, rect.height(), edge);
  piece.painter.fillRect(rect.right(), rect.top(), 1, rect.height(), edge);
  piece.painter.fillRect(rect.left(), rect.top(), rect.width(), chosen ? 2 : 1,
                         chosen ? piece.color(VELLUM_COLOR_ACCENT) : edge);
  if (!chosen) piece.painter.fillRect(rect.left(), rect.bottom(), rect.width(), 1, edge);
  return true;
}

bool header(const Piece& piece) {
  const QRect& rect = piece.option.rect;
  piece.painter.fillRect(rect, piece.color(VELLUM_COLOR_WINDOW));
  piece.painter.fillRect(rect.left(), rect.bottom(), rect.width(), 1, piece.edge());
  piece.painter.fillRect(rect.right(), rect.top() + 4, 1, std::max(0, rect.height() - 8), piece.edge());
  return true;
}

bool groove(const Piece& piece) {
  box(piece, piece.option.rect, piece.color(VELLUM_COLOR_FIELD), piece.edge());
  return true;
}

bool progress(const Piece& piece) {
  const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(&piece.option);
  if (!bar || bar->maximum <= bar->minimum || !(bar->state & QStyle::State_Horizontal)) return false;
  const double share = static_cast<double>(bar->progress - bar->minimum) / (bar->maximum - bar->minimum);
  QRect rect = bar->rect.adjusted(2, 2, -2, -2);
  rect.setWidth(static_cast<int>(rect.width() * std::clamp(share, 0.0, 1.0)));
  if (rect.width() > 0) box(piece, rect, piece.color(VELLUM_COLOR_ACCENT), {}, 0, kRound / 2);
  return true;
}

bool tool_bar(const Piece& piece) {
  piece.painter.fillRect(piece.option.rect, piece.color(VELLUM_COLOR_WINDOW));
  return true;
}

template <class Element>
struct PieceRow {
  Element element;
  bool (*draw)(const Piece&);
};

constexpr PieceRow<QStyle::PrimitiveElement> kPrimitives[] = {
    {QStyle::PE_PanelLineEdit, field},
    {QStyle::PE_Frame, frame},
    {QStyle::PE_FrameMenu, frame},
    {QStyle::PE_FrameTabWidget, frame},
    {QStyle::PE_FrameGroupBox, group_frame},
    {QStyle::PE_FrameFocusRect, focus},
    {QStyle::PE_IndicatorCheckBox, check_box},
    {QStyle::PE_IndicatorItemViewItemCheck, check_box},
    {QStyle::PE_IndicatorRadioButton, radio_button},
};

constexpr PieceRow<QStyle::ControlElement> kControls[] = {
    {QStyle::CE_TabBarTabShape, tab},       {QStyle::CE_HeaderSection, header},
    {QStyle::CE_ProgressBarGroove, groove}, {QStyle::CE_ProgressBarContents, progress},
    {QStyle::CE_ToolBar, tool_bar},
};

template <class Element, std::size_t Count>
bool draw(const PieceRow<Element> (&rows)[Count], Element element, const Piece& piece) {
  const auto row = std::ranges::find(rows, element, &PieceRow<Element>::element);
  return row != std::end(rows) && row->draw(piece);
}

bool combo_box(const Piece& piece, const QProxyStyle& style) {
  const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(&piece.option);
  if (!combo) return false;
  if (combo->editable ||
      !draw_theme_part(piece.theme, ThemePart::SmallButton, piece.painter, combo->rect, theme_state(*combo))
           .drawn) {
    const QColor accent = piece.color(VELLUM_COLOR_ACCENT);
    box(piece, combo->rect, piece.color(combo->editable ? VELLUM_COLOR_FIELD : VELLUM_COLOR_BUTTON),
        piece.focused() ? accent : piece.edge(), piece.focused() ? 2 : 1);
  }
  const QRect place =
      style.subControlRect(QStyle::CC_ComboBox, combo, QStyle::SC_ComboBoxArrow, piece.widget);
  arrow(piece, place, false,
        piece.text(combo->editable ? VELLUM_COLOR_FIELD_TEXT : VELLUM_COLOR_BUTTON_TEXT));
  return true;
}

bool spin_box(const Piece& piece, const QProxyStyle& style) {
  const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(&piece.option);
  if (!spin || spin->buttonSymbols != QAbstractSpinBox::UpDownArrows) return false;
  const QColor accent = piece.color(VELLUM_COLOR_ACCENT);
  box(piece, spin->rect, spin->palette.color(QPalette::Base), piece.focused() ? accent : piece.edge(),
      piece.focused() ? 2 : 1);
  for (const bool up : {true, false}) {
    const auto control = up ? QStyle::SC_SpinBoxUp : QStyle::SC_SpinBoxDown;
    const QRect place = style.subControlRect(QStyle::CC_SpinBox, spin, control, piece.widget);
    const bool can =
        spin->stepEnabled & (up ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled);
    if (can && spin->activeSubControls & control && piece.enabled())
      piece.painter.fillRect(place.adjusted(0, 1, -1, -1),
                             style::between(piece.color(VELLUM_COLOR_FIELD), accent, 0.25));
    arrow(piece, place, up,
          piece.color(can && piece.enabled() ? VELLUM_COLOR_FIELD_TEXT : VELLUM_COLOR_DISABLED_TEXT));
  }
  return true;
}

bool scroll_bar(const Piece& piece, const QProxyStyle& style) {
  const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(&piece.option);
  if (!bar) return false;
  const bool across = bar->orientation == Qt::Horizontal;
  const QColor window = piece.color(VELLUM_COLOR_WINDOW);
  piece.painter.fillRect(bar->rect, window);
  const QRect place =
      style.subControlRect(QStyle::CC_ScrollBar, bar, QStyle::SC_ScrollBarSlider, piece.widget);
  const bool held = bar->activeSubControls & QStyle::SC_ScrollBarSlider;
  const QColor slider = style::between(window, piece.color(VELLUM_COLOR_TEXT), held ? 0.55 : 0.32);
  if (bar->maximum > bar->minimum)
    box(piece, across ? place.adjusted(1, 3, -1, -3) : place.adjusted(3, 1, -3, -1), slider, {}, 0, 4);
  return true;
}

bool slider(const Piece& piece, const QProxyStyle& style) {
  const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(&piece.option);
  if (!slider || slider->tickPosition != QSlider::NoTicks) return false;
  const bool across = slider->orientation == Qt::Horizontal;
  const QRect groove = style.subControlRect(QStyle::CC_Slider, slider, QStyle::SC_SliderGroove, piece.widget);
  QRect handle = style.subControlRect(QStyle::CC_Slider, slider, QStyle::SC_SliderHandle, piece.widget);
  const QPoint middle = groove.center();
  const QRect line = across ? QRect(groove.left(), middle.y() - 2, groove.width(), 4)
                            : QRect(middle.x() - 2, groove.top(), 4, groove.height());
  const QColor accent = piece.text(VELLUM_COLOR_ACCENT), edge = piece.edge();
  box(piece, line, style::between(piece.color(VELLUM_COLOR_WINDOW), edge, 0.7), {}, 0, 2);
  const int side = std::min(handle.width(), handle.height());
  const QPoint at = handle.center();
  handle = QRect(at.x() - side / 2, at.y() - side / 2, side, side);
  box(piece, handle, piece.enabled() ? accent : edge,
      piece.focused() || piece.hot() ? piece.color(VELLUM_COLOR_TEXT) : piece.color(VELLUM_COLOR_WINDOW),
      piece.focused() ? 2 : 1, side / 2.0);
  return true;
}

struct ComplexRow {
  QStyle::ComplexControl control;
  bool (*draw)(const Piece&, const QProxyStyle&);
};

constexpr ComplexRow kComplex[] = {{QStyle::CC_ComboBox, combo_box},
                                   {QStyle::CC_SpinBox, spin_box},
                                   {QStyle::CC_ScrollBar, scroll_bar},
                                   {QStyle::CC_Slider, slider}};

}  // namespace

bool draw_theme_primitive(const Theme& theme, QStyle::PrimitiveElement element, const QStyleOption& option,
                          QPainter& painter, const QWidget* widget) {
  return draw(kPrimitives, element, {theme, option, painter, widget});
}

bool draw_theme_control(const Theme& theme, QStyle::ControlElement element, const QStyleOption& option,
                        QPainter& painter) {
  return draw(kControls, element, {theme, option, painter, nullptr});
}

bool draw_theme_complex(const Theme& theme, const QProxyStyle& style, QStyle::ComplexControl control,
                        const QStyleOptionComplex& option, QPainter& painter, const QWidget* widget) {
  const auto* row = std::ranges::find(kComplex, control, &ComplexRow::control);
  return row != std::end(kComplex) && row->draw({theme, option, painter, widget}, style);
}

}  // namespace vellum
