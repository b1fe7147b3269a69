// Resize: common and earlier sizes, and sides that follow each other.
#include <QComboBox>
#include <QRegularExpression>

#include "configuration/config_file.h"
#include "configuration/history.h"
#include "operations/resize_animation.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kHistoryName = "EditResizeHistory.txt";
constexpr int kPresets[] = {25, 50, 75, 150, 200};  ///< per cent

QString percent_text(double value) { return QLocale::c().toString(value, 'g', 6); }

/// As it stands in the history: "50 %", "50 x 80 %", "320 x 200".
QString size_text(const FieldValues& values) {
  if (values.number("way") == 0)
    return QStringLiteral("%1 x %2").arg(values.number("width")).arg(values.number("height"));
  const QString x = percent_text(values.real("factorX")), y = percent_text(values.real("factorY"));
  return x == y ? x + QStringLiteral(" %") : QStringLiteral("%1 x %2 %").arg(x, y);
}

/// Keeps the proportions while fields are typed. Lives as long as its dialog.
class Follower {
 public:
  explicit Follower(OperationDialog& dialog)
      : form_(dialog.form()), canvas_(document_size(dialog.window().list, dialog.window().document)) {}

  void follow(const QString& name) {
    const FieldValues values = form_.values();
    if (following_ || values.number("constant") == 0) return;
    const bool all = name == u"constant" || name == u"way";
    following_ = true;
    if (all || name == u"factorX")
      take("factorY", values.real("factorX"));
    else if (name == u"factorY")
      take("factorX", values.real("factorY"));
    if (all || name == u"width")
      take_side("height", values.number("width"), canvas_.width, canvas_.height);
    else if (name == u"height")
      take_side("width", values.number("height"), canvas_.height, canvas_.width);
    following_ = false;
  }

  void take_preset(const QString& text) {
    static const QRegularExpression form_of_text(QStringLiteral("^([\\d.]{1,7})(?: x ([\\d.]{1,7}))?( %)?$"));
    const auto match = form_of_text.match(text);
    if (!match.hasMatch()) return;
    const bool factor = !match.captured(3).isEmpty();
    const double x = match.captured(1).toDouble();
    const double y = match.captured(2).isEmpty() ? x : match.captured(2).toDouble();
    following_ = true;
    form_.set_value("way", std::int64_t{factor});
    if (factor)
      take("factorX", x), take("factorY", y);
    else {
      form_.set_value("width", static_cast<std::int64_t>(x));
      form_.set_value("height", static_cast<std::int64_t>(y));
    }
    following_ = false;
  }

 private:
  void take(const char* field, double value) {
    if (value > 0) form_.set_value(field, value);
  }
  void take_side(const char* field, std::int64_t typed, std::uint32_t side, std::uint32_t other) {
    if (typed <= 0 || typed > INT32_MAX) return;
    const Field& row = *find_field(form_.fields(), field);
    form_.set_value(
        field, clamped(row, std::int64_t{proportional_side(static_cast<std::uint32_t>(typed), side, other)}));
  }

  Form& form_;
  Extent canvas_;
  bool following_ = false;
};

}  // namespace

void decorate_resize(OperationDialog& dialog) {
  const auto history = load_history(config_path(kHistoryName), HistoryKind::Values);
  auto* presets = new QComboBox(&dialog);
  presets->setObjectName(QStringLiteral("presets"));
  presets->setPlaceholderText(QObject::tr("Choose a size"));
  for (const int percent : kPresets) presets->addItem(QStringLiteral("%1 %").arg(percent));
  for (const std::string& text : history)
    if (presets->findText(to_qt(text)) < 0) presets->addItem(to_qt(text));
  presets->setCurrentIndex(-1);
  dialog.form().add_row_behind("height", QObject::tr("Presets"), presets);
  const auto follower = std::make_shared<Follower>(dialog);
  QObject::connect(&dialog.form(), &Form::edited, presets,
                   [follower](const QString& name) { follower->follow(name); });
  QObject::connect(presets, &QComboBox::textActivated, &dialog, [follower, &dialog](const QString& text) {
    follower->take_preset(text);
    dialog.follow();
  });
  QObject::connect(&dialog, &QDialog::accepted, presets, [&dialog] {
    keep_in_history(config_path(kHistoryName), size_text(dialog.form().values()).toStdString(),
                    HistoryKind::Values);
  });
}

}  // namespace vellum
