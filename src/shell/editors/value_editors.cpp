// Times, gammas and colors.
#include <QCalendarWidget>
#include <QComboBox>
#include <QPushButton>
#include <QTextCharFormat>

#include "core/model/clock.h"
#include "image/picture_operations.h"
#include "shell/editors/field_editor.h"
#include "shell/forms/color_button.h"
#include "shell/look/text.h"
#include "shell/widgets/palette_grid.h"

namespace vellum {
namespace {

constexpr int kLastCalendarYear = 9999;
constexpr int kSmallCell = 16;  // pixels a side

void put_now(Form& form) {
  const auto now = local_time_payload();
  form.set_value("year", std::int64_t{now[0] * 256 + now[1]});
  static constexpr const char* names[] = {"month", "day", "hour", "minute", "second"};
  for (std::size_t i = 0; i < std::size(names); ++i) form.set_value(names[i], std::int64_t{now[i + 2]});
}

QDate typed_date(const FieldValues& values) {
  const auto part = [&](const char* name) {
    return static_cast<int>(std::clamp<std::int64_t>(values.number(name), 0, kLastCalendarYear + 1));
  };
  return part("year") > kLastCalendarYear ? QDate() : QDate(part("year"), part("month"), part("day"));
}

/// All days look alike, on light grounds and dark ones.
void settle_colors(QCalendarWidget& calendar) {
  QTextCharFormat day;
  day.setForeground(calendar.palette().text());
  for (const Qt::DayOfWeek weekend : {Qt::Saturday, Qt::Sunday}) calendar.setWeekdayTextFormat(weekend, day);
  day.setBackground(calendar.palette().base());
  calendar.setHeaderTextFormat(day);
}

void link_calendar(Form& form, QCalendarWidget& calendar) {
  const auto follow = [&form, &calendar] {
    if (const QDate date = typed_date(form.values()); date.isValid()) calendar.setSelectedDate(date);
  };
  link_fields(form, {"year", "month", "day"}, follow);
  follow();
  QObject::connect(&calendar, &QCalendarWidget::clicked, &form, [&form](const QDate& date) {
    form.set_value("year", std::int64_t{date.year()});
    form.set_value("month", std::int64_t{date.month()});
    form.set_value("day", std::int64_t{date.day()});
  });
}

/// A color between the fields of a chunk, whose samples go up to `most`, and 8 bits.
struct SampleScale {
  std::int64_t most;
  std::uint32_t to_byte(std::int64_t sample) const {
    if (most == 65535) return static_cast<std::uint32_t>(sample >> 8 & 255);  // as pictures take them
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(sample, 0, most) * 255 /
                                      std::max<std::int64_t>(most, 1));
  }
  std::int64_t from_byte(std::uint32_t byte) const { return (byte * most + 127) / 255; }
};

Colour shown_color(const FieldValues& values, const SampleScale& scale, bool grey) {
  const auto part = [&](const char* name) { return scale.to_byte(values.number(grey ? "grey" : name)); };
  return make_colour(part("red"), part("green"), part("blue"));
}

void put_color(Form& form, const SampleScale& scale, bool grey, Colour color) {
  if (grey)
    return form.set_value("grey", scale.from_byte(grey_of(red_of(color), green_of(color), blue_of(color))));
  form.set_value("red", scale.from_byte(red_of(color)));
  form.set_value("green", scale.from_byte(green_of(color)));
  form.set_value("blue", scale.from_byte(blue_of(color)));
}

/// The palette as cells, the chosen one current; both ways.
void decorate_index(Editing& editing) {
  Palette palette;
  const std::uint32_t colors = chunk_find_palette(editing.window.list, palette);
  std::vector<PaletteCell> cells;
  for (std::size_t i = 0; i < 3 * std::size_t{colors}; i += 3)
    cells.push_back({QColor(palette[i], palette[i + 1], palette[i + 2])});
  const int rows = std::max(static_cast<int>(colors + 15) / 16, 1);
  // Beside other windows there is less room than in a dialog.
  const int side = qobject_cast<QDialog*>(&editing.owner) ? PaletteGridForm().cell : kSmallCell;
  auto* grid = new PaletteGrid({.rows = rows, .cell = side, .swaps = false}, &editing.form);
  grid->setObjectName(QStringLiteral("cells"));
  grid->setAccessibleName(QObject::tr("Palette"));
  grid->set_cells(std::move(cells));
  editing.form.add_row_behind("index", {}, grid);
  Form& form = editing.form;
  const auto follow = [&form, grid] { grid->set_current(static_cast<int>(form.values().number("index"))); };
  link_fields(form, {"index"}, follow);
  follow();
  QObject::connect(grid, &PaletteGrid::chosen, &form,
                   [&form](int cell) { form.set_value("index", std::int64_t{cell}); });
}

}  // namespace

void decorate_time(Editing& editing) {
  auto* now = new QPushButton(QObject::tr("Now"), &editing.form);
  now->setAutoDefault(false);
  now->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  now->setObjectName(QStringLiteral("now"));
  editing.form.add_row_behind("second", {}, now);
  QObject::connect(now, &QPushButton::clicked, &editing.form, [&form = editing.form] { put_now(form); });
  auto* calendar = new QCalendarWidget(&editing.form);
  settle_colors(*calendar);
  calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
  editing.form.add_row_behind("day", {}, calendar);
  link_calendar(editing.form, *calendar);
}

void decorate_gamma(Editing& editing) {
  Form& form = editing.form;
  link_fields(form, {"gamma"}, [&form] {
    const FieldValues values = form.values();
    if (std::holds_alternative<double>(*values.find("gamma")) && values.real("gamma") > 0)
      form.set_value("stored", stored_gamma(values.real("gamma")));
  });
  link_fields(form, {"stored"}, [&form] {
    if (const std::int64_t stored = form.values().number("stored"); stored > 0)
      form.set_value("gamma", gamma_of_stored(stored));
  });
  auto* usual = new QComboBox(&form);
  for (const double gamma : {1.00, 1.80, 2.20, 2.60}) usual->addItem(QString::number(gamma, 'f', 2), gamma);
  usual->setCurrentIndex(usual->findData(form.values().real("gamma")));
  usual->setPlaceholderText(QObject::tr("Choose"));
  usual->setObjectName(QStringLiteral("usual"));
  form.add_row_behind("gamma", QObject::tr("Usual values"), usual);
  QObject::connect(usual, &QComboBox::activated, &form,
                   [&form, usual] { form.set_value("gamma", usual->currentData().toDouble()); });
}

void decorate_samples(Editing& editing) {
  Form& form = editing.form;
  if (form.has("index")) return decorate_index(editing);
  const bool grey = form.has("grey");
  const SampleScale scale{find_field(form.fields(), grey ? "grey" : "red")->most};
  auto* button = new ColorButton(false, &form);
  button->setObjectName(QStringLiteral("color"));
  button->setAccessibleName(QObject::tr("Color"));
  form.add_row_behind(grey ? "grey" : "blue", QObject::tr("Color"), button);
  const auto follow = [&form, button, scale, grey] {
    button->set_color(shown_color(form.values(), scale, grey));
  };
  link_fields(form, {"grey", "red", "green", "blue"}, follow);
  follow();
  QObject::connect(button, &ColorButton::chosen, &form, [&form, button, scale, grey] {
    const Colour color = button->color();  // setting one field shows the color of all three again
    put_color(form, scale, grey, color);
  });
}

}  // namespace vellum
