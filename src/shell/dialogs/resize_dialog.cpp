#include "shell/dialogs/resize_dialog.h"

#include <QRegularExpression>
#include <QVBoxLayout>

#include "configuration/config_file.h"
#include "configuration/history.h"
#include "operations/settings.h"
#include "image/resample.h"
#include "operations/frames.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kHistoryName = "EditResizeHistory.txt";
constexpr int kPresets[] = {25, 50, 75, 150, 200};  ///< per cent
constexpr std::int64_t kMostPercent = 1000, kMostSide = 16383;

constexpr FieldChoice kWays[] = {{1, "By factor"}, {0, "By size"}};
constexpr FieldChoice kAspects[] = {{1, "Constant"}, {0, "Anamorphic"}};

std::span<const FieldChoice> filter_choices() {
  static const auto choices = [] {
    std::vector<FieldChoice> rows;
    for (const ResampleFilterRow& row : resample_filter_table())
      rows.push_back({static_cast<std::int64_t>(rows.size()), row.name});
    return rows;
  }();
  return choices;
}

Field whole(const char* name, const char* label, std::int64_t most, std::int64_t way) {
  return {.name = name, .label = label, .least = 1, .most = most, .enabledBy = "way", .enabledAt = way};
}

bool has_indexed_images(const DocumentWindow& window) {
  return std::ranges::any_of(frame_entries(window), [&](std::size_t entry) {
    const Picture picture = picture_of(window.list.record(entry));
    return picture && picture.bits() <= 8;
  });
}

std::vector<Field> resize_fields(const DocumentWindow& window) {
  std::vector<Field> fields = {
      {.name = "way", .label = "Size", .type = FieldType::Choice, .choices = kWays, .look = FieldLook::Radio},
      whole("factorX", "Width in %", kMostPercent, 1),
      whole("factorY", "Height in %", kMostPercent, 1),
      whole("width", "Width in pixels", kMostSide, 0),
      whole("height", "Height in pixels", kMostSide, 0),
      {.name = "constant",
       .label = "Aspect",
       .type = FieldType::Choice,
       .choices = kAspects,
       .look = FieldLook::Radio},
      {.name = "antialias", .label = "Anti-alias", .type = FieldType::Flag},
      {.name = "filter",
       .label = "Filter",
       .type = FieldType::Choice,
       .choices = filter_choices(),
       .enabledBy = "antialias"},
  };
  if (has_indexed_images(window))
    fields.push_back({.name = "keepPalette",
                      .label = "Keep the palette",
                      .type = FieldType::Flag,
                      .enabledBy = "antialias"});
  return fields;
}

/// A setting and the field that shows it.
struct SettingOfField {
  const char* field;
  int& setting;
  int least, most;
};

constexpr SettingOfField kSettings[] = {
    {"way", settings::ScaleByFactor, 0, 1},
    {"factorX", settings::ScaleFactorX, 1, kMostPercent},
    {"factorY", settings::ScaleFactorY, 1, kMostPercent},
    {"width", settings::ScaleWidth, 1, kMostSide},
    {"height", settings::ScaleDepth, 1, kMostSide},
    {"constant", settings::ScaleConstant, 0, 1},
    {"antialias", settings::ScaleModeAntialias, 0, 1},
    {"filter", settings::ScaleFilterType, 0, 15},
};

FieldValues values_of_settings() {
  FieldValues values;
  for (const auto& [field, setting, least, most] : kSettings)
    values.set(field, std::int64_t{std::clamp(setting, least, most)});
  values.set("keepPalette", std::int64_t{0});
  return values;
}

/// As it stands in the history: "50 %", "50 x 80 %", "320 x 200".
QString size_text(const FieldValues& values) {
  const bool factor = values.number("way") != 0;
  const auto x = values.number(factor ? "factorX" : "width"),
             y = values.number(factor ? "factorY" : "height");
  if (factor && x == y) return QStringLiteral("%1 %").arg(x);
  return QStringLiteral("%1 x %2%3").arg(x).arg(y).arg(factor ? QStringLiteral(" %") : QString());
}

}  // namespace

ResizeDialog::ResizeDialog(const DocumentWindow& window, Services& services, QWidget* parent)
    : FormDialog(tr("Resize"), QStringLiteral("RESIZE"), resize_fields(window), values_of_settings(),
                 services.host, parent),
      window_(window),
      canvas_(document_size(window.list, window.document)),
      history_(load_history(config_path(kHistoryName), HistoryKind::Values)) {
  make_presets();
  const auto growth = [this](const Picture&) {
    const ResizeAnimation wanted = resize();
    return std::max(1.0 * wanted.width / std::max(canvas_.width, 1u),
                    1.0 * wanted.height / std::max(canvas_.height, 1u));
  };
  preview_ = new ChangePreview(
      window, [this](const ChangePreview::Shown& shown) { return changed(shown.picture); }, growth, this);
  static_cast<QVBoxLayout*>(layout())->insertWidget(1, preview_, 1);
  connect(&form(), &Form::edited, this, [this](const QString& name) {
    follow(name);
    preview_->refresh();
  });
  apply = [this](const FieldValues& values) { return store(values); };
}

void ResizeDialog::make_presets() {
  presets_ = new QComboBox(this);
  presets_->setObjectName(QStringLiteral("presets"));
  presets_->setPlaceholderText(tr("Choose a size"));
  for (const int percent : kPresets) presets_->addItem(QStringLiteral("%1 %").arg(percent));
  for (const std::string& text : history_)
    if (presets_->findText(to_qt(text)) < 0) presets_->addItem(to_qt(text));
  presets_->setCurrentIndex(-1);
  connect(presets_, &QComboBox::textActivated, this, &ResizeDialog::take_preset);
  form().add_row_behind("height", tr("Presets"), presets_);
}

void ResizeDialog::take_preset(const QString& text) {
  static const QRegularExpression form_of_text(QStringLiteral("^(\\d{1,5})(?: x (\\d{1,5}))?( %)?$"));
  const auto match = form_of_text.match(text);
  if (!match.hasMatch()) return;
  const bool factor = !match.captured(3).isEmpty();
  const std::int64_t x = match.captured(1).toLongLong();
  const std::int64_t y = match.captured(2).isEmpty() ? x : match.captured(2).toLongLong();
  form().set_value("way", std::int64_t{factor});
  set_pair(factor ? "factorX" : "width", x, factor ? "factorY" : "height", y);
}

void ResizeDialog::set_pair(const char* first, std::int64_t x, const char* second, std::int64_t y) {
  following_ = true;
  form().set_value(first, x);
  form().set_value(second, y);
  following_ = false;
  preview_->refresh();
}

void ResizeDialog::follow(const QString& name) {
  const FieldValues values = form().values();
  if (following_ || values.number("constant") == 0) return;
  const auto side = [](std::uint32_t value) { return std::clamp<std::int64_t>(value, 1, kMostSide); };
  const auto typed = [&](const char* field) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(values.number(field), 0, kMostSide));
  };
  const bool all = name == u"constant" || name == u"way";
  following_ = true;
  if ((all || name == u"factorX") && typed("factorX") > 0)
    form().set_value("factorY", values.number("factorX"));
  else if (name == u"factorY" && typed("factorY") > 0)
    form().set_value("factorX", values.number("factorY"));
  if ((all || name == u"width") && typed("width") > 0)
    form().set_value("height", side(proportional_side(typed("width"), canvas_.width, canvas_.height)));
  else if (name == u"height" && typed("height") > 0)
    form().set_value("width", side(proportional_side(typed("height"), canvas_.height, canvas_.width)));
  following_ = false;
}

ResizeAnimation ResizeDialog::resize() const {
  const FieldValues values = form().values();
  ResizeAnimation wanted;
  if (values.number("way") != 0) {
    wanted.width = scaled_side(canvas_.width, static_cast<double>(values.number("factorX")));
    wanted.height = scaled_side(canvas_.height, static_cast<double>(values.number("factorY")));
  } else {
    wanted.width = static_cast<std::uint32_t>(values.number("width"));
    wanted.height = static_cast<std::uint32_t>(values.number("height"));
  }
  wanted.filter = values.number("antialias") == 0
                      ? ResampleFilter::Point
                      : resample_filter_of(static_cast<int>(values.number("filter")));
  wanted.keepPalette = values.number("keepPalette") != 0;
  return wanted;
}

Picture ResizeDialog::changed(const Picture& frame) const {
  const ResizeAnimation wanted = resize();
  if (canvas_.width == 0 || canvas_.height == 0) return {};
  return PictureScalePercent(frame, 100.0 * wanted.width / canvas_.width,
                             100.0 * wanted.height / canvas_.height, wanted.filter);
}

bool ResizeDialog::store(const FieldValues& values) {
  for (const auto& [field, setting, least, most] : kSettings)
    setting = static_cast<int>(values.number(field));
  remember_text(history_, size_text(values).toStdString(), HistoryKind::Values);
  save_history(config_path(kHistoryName), history_);
  return true;
}

}  // namespace vellum
