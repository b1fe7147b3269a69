#include "shell/look/program_style.h"

#include <QAbstractScrollArea>
#include <QLineEdit>
#include <QPainter>
#include <QPalette>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolButton>

#include "shell/look/style.h"
#include "shell/look/theme_pieces.h"

namespace vellum {
namespace {

/// What the desktop's style brings would fight with a theme, so that stands on a plain one.
QStyle* ground_of(const ThemeInForce& theme) {
  return theme ? QStyleFactory::create(QStringLiteral("Fusion")) : nullptr;
}

struct MetricRow {
  QStyle::PixelMetric metric;
  int number;
};

constexpr MetricRow kMetrics[] = {{QStyle::PM_LayoutHorizontalSpacing, VELLUM_METRIC_GAP},
                                  {QStyle::PM_LayoutVerticalSpacing, VELLUM_METRIC_GAP},
                                  {QStyle::PM_ToolBarItemMargin, VELLUM_METRIC_GAP},
                                  {QStyle::PM_LayoutLeftMargin, VELLUM_METRIC_MARGIN},
                                  {QStyle::PM_LayoutTopMargin, VELLUM_METRIC_MARGIN},
                                  {QStyle::PM_LayoutRightMargin, VELLUM_METRIC_MARGIN},
                                  {QStyle::PM_LayoutBottomMargin, VELLUM_METRIC_MARGIN}};

constexpr int kAroundText = 12;  // pixels above and below the text of a button, together

constexpr double kPointedShare = 0.2, kQuietShare = 0.7;  // from the ground to the ink

void draw_tab_cross(const QStyleOption& option, QPainter& painter) {
  const QColor ink = option.palette.color(QPalette::WindowText),
               ground = option.palette.color(QPalette::Window);
  const bool pointed = option.state & (QStyle::State_MouseOver | QStyle::State_Sunken);
  const QRectF box = QRectF(option.rect).adjusted(1, 1, -1, -1);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  if (pointed) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(style::between(ground, ink, kPointedShare));
    painter.drawRoundedRect(box, 3, 3);
  }
  painter.setPen(QPen(pointed ? ink : style::between(ground, ink, kQuietShare), 1.5));
  const double inset = box.width() * 0.3;
  const QRectF cross = box.adjusted(inset, inset, -inset, -inset);
  painter.drawLine(cross.topLeft(), cross.bottomRight());
  painter.drawLine(cross.topRight(), cross.bottomLeft());
  painter.restore();
}

constexpr int kAsGoodAsBlack = 20;  // lightness of a ground below which the plain style's outlines are lost
constexpr double kOutlineShare = 0.6, kLeastDisabled = 2.0;

/// Plain styles outline controls with what is darker than the ground: on a desktop of high contrast a box
/// that isn't checked, or a field, would not be seen at all.
void draw_outline(const QStyleOption& option, QPainter& painter, bool round) {
  const QColor ground = option.palette.color(QPalette::Window);
  if (ground.lightness() >= kAsGoodAsBlack) return;
  painter.save();
  painter.setBrush(Qt::NoBrush);
  const auto* button = qstyleoption_cast<const QStyleOptionButton*>(&option);
  const bool first = button && button->features & QStyleOptionButton::DefaultButton;
  painter.setPen(first || option.state & QStyle::State_HasFocus
                     ? option.palette.color(QPalette::Highlight)
                     : style::between(ground, option.palette.color(QPalette::WindowText), kOutlineShare));
  const QRect place = option.rect.adjusted(0, 0, -1, -1);
  round ? painter.drawEllipse(place) : painter.drawRect(place);
  painter.restore();
}

bool has_outline(QStyle::PrimitiveElement element) {
  static constexpr QStyle::PrimitiveElement outlined[] = {
      QStyle::PE_IndicatorCheckBox, QStyle::PE_IndicatorItemViewItemCheck, QStyle::PE_IndicatorRadioButton,
      QStyle::PE_PanelLineEdit, QStyle::PE_PanelButtonCommand};
  return std::ranges::find(outlined, element) != std::end(outlined);
}

}  // namespace

ProgramStyle::ProgramStyle(ThemeInForce theme) : QProxyStyle(ground_of(theme)), theme_(std::move(theme)) {}

int ProgramStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                            QStyleHintReturn* data) const {
  if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
  return QProxyStyle::styleHint(hint, option, widget, data);
}

void ProgramStyle::polish(QPalette& palette) {
  QProxyStyle::polish(palette);
  if (theme_ && theme_->colors) palette = theme_palette(*theme_);
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    QColor text = palette.color(group, QPalette::PlaceholderText);
    for (const auto role : {QPalette::Window, QPalette::Base}) {
      const QColor ground = palette.color(group, role);
      const double share = text.alphaF();
      text.setAlpha(255);
      text = style::readable_on(style::between(ground, text, share), ground);
    }
    palette.setColor(group, QPalette::PlaceholderText, text);
  }
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
    const QColor ground = palette.color(QPalette::Disabled, QPalette::Window);
    const QColor text = palette.color(QPalette::Disabled, role);
    palette.setColor(QPalette::Disabled, role, style::readable_on(text, ground, kLeastDisabled));
  }
}

void ProgramStyle::polish(QWidget* widget) {
  QProxyStyle::polish(widget);
  if (theme_ && qobject_cast<QLineEdit*>(widget)) widget->setAttribute(Qt::WA_Hover);
}

void ProgramStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
  if (element == PE_IndicatorTabClose) return draw_tab_cross(*option, *painter);
  if (theme_) {
    if (element == PE_PanelButtonCommand) {
      const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
      std::uint32_t state = theme_state(*option);
      if (button && button->features & QStyleOptionButton::DefaultButton) state |= VELLUM_STATE_DEFAULT;
      const DrawnPart part = draw_theme_part(*theme_, ThemePart::Button, *painter, option->rect, state,
                                             button ? button->text : QString());
      hasText_ = part.text;
      if (part.drawn) return;
    }
    if (element == PE_PanelButtonTool) {
      const bool flat = option->state & State_AutoRaise;
      if (draw_theme_part(*theme_, flat ? ThemePart::Tool : ThemePart::SmallButton, *painter, option->rect,
                          theme_state(*option))
              .drawn)
        return;
    }
    if (theme_->colors && draw_theme_primitive(*theme_, element, *option, *painter, widget)) return;
  }
  QProxyStyle::drawPrimitive(element, option, painter, widget);
  const auto* field = qobject_cast<const QLineEdit*>(widget);
  if (has_outline(element) && !(field && !field->hasFrame()))
    draw_outline(*option, *painter, element == PE_IndicatorRadioButton);
}

void ProgramStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
  const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
  if (theme_ && element == CE_ToolBar &&
      draw_theme_part(*theme_, ThemePart::Toolbar, *painter, option->rect, 0).drawn)
    return;
  if (theme_ && element == CE_PushButtonLabel && button) {
    if (std::exchange(hasText_, false)) return;
    QStyleOptionButton label(*button);
    if (theme_->colors && label.features & QStyleOptionButton::DefaultButton && label.state & State_Enabled)
      label.palette.setColor(QPalette::ButtonText, theme_color(*theme_, VELLUM_COLOR_ACCENT_TEXT));
    return QProxyStyle::drawControl(element, &label, painter, widget);
  }
  if (theme_ && theme_->colors && draw_theme_control(*theme_, element, *option, *painter)) return;
  QProxyStyle::drawControl(element, option, painter, widget);
}

void ProgramStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
  if (theme_ && theme_->colors && draw_theme_complex(*theme_, *this, control, *option, *painter, widget))
    return;
  QProxyStyle::drawComplexControl(control, option, painter, widget);
  if (control == CC_SpinBox || control == CC_ComboBox) draw_outline(*option, *painter, false);
}

QRect ProgramStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                   const QWidget* widget) const {
  const QRect place = QProxyStyle::subControlRect(control, option, part, widget);
  const bool text = (control == CC_ComboBox && part == SC_ComboBoxEditField) ||
                    (control == CC_SpinBox && part == SC_SpinBoxEditField);
  constexpr int kBeforeText = 3;
  if (!theme_ || !text) return place;
  return option->direction == Qt::RightToLeft ? place.adjusted(0, 0, -kBeforeText, 0)
                                              : place.adjusted(kBeforeText, 0, 0, 0);
}

int ProgramStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
  const int plain = QProxyStyle::pixelMetric(metric, option, widget);
  if (!theme_) return plain;
  const auto* row = std::ranges::find(kMetrics, metric, &MetricRow::metric);
  return row == std::end(kMetrics) ? plain : theme_metric(row->number, plain);
}

QSize ProgramStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                     const QWidget* widget) const {
  QSize wanted = QProxyStyle::sizeFromContents(type, option, size, widget);
  if (!theme_) return wanted;
  const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
  if (type == CT_PushButton && button && !button->text.isEmpty()) {
    const int line = theme_metric(VELLUM_METRIC_TEXT_HEIGHT, 0);
    wanted =
        wanted.expandedTo({theme_metric(VELLUM_METRIC_BUTTON_WIDTH, 0), line > 0 ? line + kAroundText : 0});
  }
  if (type == CT_ToolButton)
    wanted = wanted.expandedTo({theme_metric(VELLUM_METRIC_SMALL_BUTTON_WIDTH, 0),
                                theme_metric(VELLUM_METRIC_SMALL_BUTTON_HEIGHT, 0)});
  return wanted;
}

}  // namespace vellum
