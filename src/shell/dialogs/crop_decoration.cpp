// Crop: the rectangle drawn on the canvas.
#include <QBoxLayout>
#include <QComboBox>
#include <QPushButton>
#include <QSlider>

#include "operations/changing_part.h"
#include "playback/compositor.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/look/picture_image.h"
#include "shell/widgets/crop_view.h"

namespace vellum {
namespace {

struct AspectRow {
  const char* name;
  double aspect;  ///< width to height; 0: free; below 0: that of the canvas
};
constexpr AspectRow kAspects[] = {
    {"Free", 0}, {"Original", -1}, {"1:1", 1}, {"4:3", 4.0 / 3}, {"16:9", 16.0 / 9}};

QRect rectangle_of(const FieldValues& values) {
  return {static_cast<int>(values.number("left")), static_cast<int>(values.number("top")),
          static_cast<int>(values.number("width")), static_cast<int>(values.number("height"))};
}

/// By value: the view follows each field while they are set.
void put_rectangle(Form& form, QRect rectangle) {
  form.set_value("left", std::int64_t{rectangle.left()});
  form.set_value("top", std::int64_t{rectangle.top()});
  form.set_value("width", std::int64_t{rectangle.width()});
  form.set_value("height", std::int64_t{rectangle.height()});
}

}  // namespace

/// The canvas of a frame with the rectangle on it, a slider over the frames, proportions, and the part that
/// changes.
void decorate_crop(OperationDialog& dialog) {
  const DocumentWindow& window = dialog.window();
  auto* view = new CropView(&dialog);
  auto* slider = new QSlider(Qt::Horizontal, &dialog);
  slider->setAccessibleName(QObject::tr("Frame", "of an animation"));
  const auto compositor = std::make_shared<Compositor>(window.list, window.document);
  slider->setRange(0, std::max(static_cast<int>(compositor->frames()) - 1, 0));
  const auto show = [view, compositor](int frame) {
    if (static_cast<std::size_t>(frame) < compositor->frames())
      view->set_picture(image_of_picture(compositor->frame(static_cast<std::uint32_t>(frame)).picture));
  };
  show(0);
  view->set_rectangle(rectangle_of(dialog.form().values()));
  auto* box = static_cast<QBoxLayout*>(dialog.layout());
  box->insertWidget(1, view, 1);
  box->insertWidget(2, slider);
  auto* aspect = new QComboBox(&dialog);
  aspect->setObjectName(QStringLiteral("aspect"));
  for (const AspectRow& row : kAspects) aspect->addItem(QObject::tr(row.name));
  dialog.form().add_row_behind("height", QObject::tr("Aspect"), aspect);
  auto* part = new QPushButton(QObject::tr("&Auto"), &dialog);
  part->setAutoDefault(false);
  part->setToolTip(QObject::tr("The rectangle of all that changes"));
  dialog.form().add_row_behind({}, {}, part);
  QObject::connect(slider, &QSlider::valueChanged, view, show);
  QObject::connect(view, &CropView::drawn, &dialog,
                   [&dialog](const QRect& rectangle) { put_rectangle(dialog.form(), rectangle); });
  QObject::connect(dialog.buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, view,
                   [&dialog, view] { view->set_rectangle(rectangle_of(dialog.form().values())); });
  QObject::connect(&dialog.form(), &Form::edited, view,
                   [&dialog, view] { view->set_rectangle(rectangle_of(dialog.form().values())); });
  QObject::connect(aspect, &QComboBox::currentIndexChanged, view, [view, &window](int row) {
    const Extent canvas = document_size(window.list, window.document);
    const double wanted = kAspects[row].aspect;
    view->set_aspect(wanted < 0 ? 1.0 * canvas.width / std::max(canvas.height, 1u) : wanted);
  });
  QObject::connect(part, &QPushButton::clicked, &dialog, [&dialog, view, &window] {
    if (const auto rect = changing_part(window, dialog.host())) {
      const QRect rectangle(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top);
      put_rectangle(dialog.form(), rectangle);
      view->set_rectangle(rectangle);
    }
  });
}

}  // namespace vellum
