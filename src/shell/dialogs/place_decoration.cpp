// What stands somewhere in the picture can be put there by the mouse and by arrow keys: in the preview.
#include <algorithm>

#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"

namespace vellum {
namespace {

void put(OperationDialog& dialog, const char* name, std::int64_t value) {
  const auto fields = dialog.form().fields();
  const auto field = std::ranges::find(fields, std::string_view(name), &Field::name);
  if (field == fields.end()) return;
  const std::int64_t held = field->type == FieldType::Choice || field->type == FieldType::Flag
                                ? value
                                : std::clamp(value, field->least, field->most);
  if (dialog.values().number(name) == held) return;
  dialog.form().set_value(name, held);
  dialog.follow();
}

constexpr std::int64_t kSides[] = {32, 0, 64};  // of a caption: left, center, right

/// In which third of its canvas a pointer is, 0 to 2.
std::int64_t third(int at, int whole) { return std::clamp(at * 3 / std::max(whole, 1), 0, 2); }

}  // namespace

void decorate_offsets(OperationDialog& dialog) {
  ChangePreview* preview = dialog.preview();
  if (!preview) return;
  preview->set_draggable(
      QObject::tr("Drag it in the picture, or move it with the arrow keys (Shift: by ten)."));
  const auto from = std::make_shared<QPoint>();
  const auto now = [&dialog] {
    const FieldValues values = dialog.values();
    return QPoint(static_cast<int>(values.number("offsetX")), static_cast<int>(values.number("offsetY")));
  };
  const auto move_to = [&dialog](QPoint to) {
    put(dialog, "offsetX", to.x());
    put(dialog, "offsetY", to.y());
  };
  QObject::connect(preview, &ChangePreview::grabbed, &dialog, [from, now] { *from = now(); });
  QObject::connect(preview, &ChangePreview::dragged, &dialog,
                   [from, move_to](QPoint by) { move_to(*from + by); });
  QObject::connect(preview, &ChangePreview::nudged, &dialog,
                   [now, move_to](QPoint by) { move_to(now() + by); });
}

void decorate_anchor(OperationDialog& dialog) {
  ChangePreview* preview = dialog.preview();
  if (!preview) return;
  preview->set_draggable(QObject::tr("Drag it to one of nine places, or move it there with the arrow keys."));
  QObject::connect(preview, &ChangePreview::dragged, &dialog, [&dialog](QPoint, QPoint at, QSize canvas) {
    put(dialog, "at", 3 * third(at.y(), canvas.height()) + third(at.x(), canvas.width()));
  });
  QObject::connect(preview, &ChangePreview::nudged, &dialog, [&dialog](QPoint by) {
    const std::int64_t at = dialog.values().number("at");
    const auto moved = [](std::int64_t place, int way) {
      return std::clamp<std::int64_t>(place + (way > 0) - (way < 0), 0, 2);
    };
    put(dialog, "at", 3 * moved(at / 3, by.y()) + moved(at % 3, by.x()));
  });
}

void decorate_strip(OperationDialog& dialog) {
  ChangePreview* preview = dialog.preview();
  if (!preview || dialog.values().number("classic") != 0) return;
  preview->set_draggable(
      QObject::tr("Drag the strip up or down and its lines aside, or use the arrow keys."));
  const auto put_side = [&dialog](std::int64_t place) { put(dialog, "side", kSides[place]); };
  QObject::connect(preview, &ChangePreview::dragged, &dialog,
                   [&dialog, put_side](QPoint by, QPoint at, QSize canvas) {
                     if (by.isNull()) return;
                     put(dialog, "above", 2 * at.y() < canvas.height());
                     put_side(third(at.x(), canvas.width()));
                   });
  QObject::connect(preview, &ChangePreview::nudged, &dialog, [&dialog, put_side](QPoint by) {
    if (by.y() != 0) put(dialog, "above", by.y() < 0);
    const auto now = std::ranges::find(kSides, dialog.values().number("side")) - std::begin(kSides);
    if (by.x() != 0) put_side(std::clamp<std::int64_t>(now + (by.x() > 0 ? 1 : -1), 0, 2));
  });
}

}  // namespace vellum
