#include "shell/dialogs/transition_dialog.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QRandomGenerator>
#include <cmath>

#include "configuration/config_file.h"
#include "image/resample.h"
#include "shell/dialogs/effect_samples.h"
#include "shell/forms/color_button.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kSeed = "seed";
constexpr int kListWidth = 270;
constexpr QSize kPreview(240, 130), kLargestPreview(400, 300), kOverrideThumbnail(300, 120);
/// Images that a preview plays: those behind them come when they are chosen in the list.
constexpr std::size_t kPlayed = 8;

/// The numbers of the effects stand in a dialog of their own: the fields behind this one, up to the seed.
constexpr std::string_view kLastCommon = "dither";

const DocumentWindow& no_document() {
  static const DocumentWindow nothing;
  return nothing;
}

std::vector<Field> number_fields(const Parameters& parameters) {
  std::vector<Field> fields(parameters.fields.begin(), parameters.fields.end());
  const auto last = std::ranges::find(fields, kLastCommon, [](const Field& f) { return f.name; });
  fields.erase(fields.begin(), last + 1);
  std::erase_if(fields, [](const Field& field) { return field.name == std::string_view(kSeed); });
  return fields;
}

FieldValues first_numbers(const Generator& generator, bool fresh) {
  const auto fields = number_fields(generator.parameters);
  FieldValues values = fresh ? initial_values(fields) : setting_values(fields);
  values.set(kSeed, std::int64_t{QRandomGenerator::global()->bounded(1, 0x7FFFFFFF)});
  return values;
}

void show_samples(Form& form) {
  if (auto* list = qobject_cast<QComboBox*>(form.input("effect"))) new EffectSamples(*list);
}

Extent canvas_of(std::span<const ListedPicture* const> pictures) {
  Extent canvas;
  for (const ListedPicture* listed : pictures) {
    canvas.width = std::max(canvas.width, listed->picture.picture().width());
    canvas.height = std::max(canvas.height, listed->picture.picture().height());
  }
  return canvas;
}

/// Lengths of effects, and their areas, on a canvas that is so much smaller.
FieldValues scaled_numbers(FieldValues values, double factor) {
  const auto scale = [&](const char* name, double by, std::int64_t least) {
    values.set(name,
               std::max<std::int64_t>(least, std::llround(static_cast<double>(values.number(name)) * by)));
  };
  for (const char* name : {"horizontalStep", "verticalStep", "rasterSize", "tileSize"})
    scale(name, factor, 1);
  scale("blockSpacing", factor, 4);
  scale("sandstormBlockSize", factor * factor, 1);
  return values;
}

}  // namespace

TransitionDialog::TransitionDialog(const Generator& generator, DocumentKind kind, bool fresh,
                                   Services& services, QWidget* parent)
    : ParameterDialog(generator.parameters, no_document(), {}, services, parent,
                      first_numbers(generator, fresh)),
      generator_(generator),
      services_(services),
      kind_(kind),
      numbers_(first_numbers(generator, fresh)),
      pictures_(new PictureList(services, this)),
      preview_(new MotionPreview(this)) {
  lay_out();
  add_buttons();
  show_samples(form());
  connect(pictures_, &PictureList::opened, this, &TransitionDialog::override_row);
  begin();
  apply = [this, keep = std::move(apply)](const FieldValues& typed) {
    pictures_->store(config_path(generator_.listFile));
    return keep(typed) && (!build || build());
  };
  if (fresh) buttons().button(QDialogButtonBox::Reset)->click();
  if (kind != DocumentKind::MING) {
    form().set_value("trueColor", std::int64_t{1});
    form().input("trueColor")->setEnabled(false);
    form().input("trueColor")->setToolTip(text_of(StringId::PaletteTakesMng));
  }
  if (!fresh) pictures_->load(config_path(generator.listFile));
  connect(pictures_, &PictureList::changed, this, &TransitionDialog::follow);
  follow();
}

void TransitionDialog::lay_out() {
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->removeWidget(&form());
  preview_->setMinimumSize(kPreview);
  pictures_->setMinimumWidth(kListWidth);
  auto* right = new QVBoxLayout;
  right->setSpacing(style::kGap);
  right->addWidget(preview_, 1);
  right->addWidget(&form());
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(pictures_, 1);
  row->addLayout(right, 1);
  outer->insertLayout(0, row, 1);
}

void TransitionDialog::add_buttons() {
  auto* numbers = new QPushButton(tr("Ad&vanced"), this);
  numbers->setAutoDefault(false);
  form().add_row_behind(kLastCommon, {}, numbers);
  connect(numbers, &QPushButton::clicked, this, &TransitionDialog::edit_numbers);
  test_ = buttons().addButton(tr("&Test"), QDialogButtonBox::ActionRole);
  test_->setAutoDefault(false);
  connect(test_, &QPushButton::clicked, this, [this] {
    if (const auto found = fault()) {
      if (host().message) host().message({found->id, {}, found->text, {}, nullptr});
      return form().show_fault(*found);
    }
    if (test) test();
  });
  // The numbers go back with the others.
  connect(buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] {
    const FieldValue seed = *numbers_.find(kSeed);
    numbers_ = initial_values(number_fields(generator_.parameters));
    numbers_.set(kSeed, seed);
  });
}

GeneratorInputs TransitionDialog::inputs() const {
  GeneratorInputs inputs;
  inputs.kind = kind_;
  for (const ListedPicture* listed : pictures_->pictures()) {
    inputs.pictures.push_back(listed->picture);
    inputs.own.push_back(listed->own);
  }
  return inputs;
}

FieldValues TransitionDialog::all_values() const {
  FieldValues all = values();
  for (const Field& field : generator_.parameters.fields)
    if (const FieldValue* value = numbers_.find(field.name)) all.set(field.name, *value);
  return all;
}

/// The frames as they will be, from the chosen image on, on a canvas that the preview holds.
void TransitionDialog::show_preview() {
  const auto listed = pictures_->pictures();
  if (listed.empty() || fault()) return preview_->play(std::nullopt);
  const Extent canvas = canvas_of(listed);
  const double factor = std::min({1.0, double(kLargestPreview.width()) / canvas.width,
                                  double(kLargestPreview.height()) / canvas.height});
  GeneratorInputs inputs;
  inputs.kind = kind_;
  inputs.sketch = true;
  const auto first = static_cast<std::size_t>(std::max(0, pictures_->current()));
  for (std::size_t i = 0; i < std::min(listed.size(), kPlayed); ++i) {
    const std::size_t row = (first + i) % listed.size();
    const ListedPicture& one = *listed[row];
    const Picture small = pictures_->small(static_cast<int>(row));
    if (!small) return preview_->play(std::nullopt);
    const double percent = 100 * factor * one.picture.picture().width() / small.width();
    inputs.pictures.push_back(std::abs(percent - 100) < 1
                                  ? small
                                  : PictureScalePercent(small, percent, percent, ResampleFilter::Box));
    if (!inputs.pictures.back()) return preview_->play(std::nullopt);
    inputs.own.push_back(one.own);
  }
  Host nobody;
  try {
    preview_->play(generator_.make(scaled_numbers(all_values(), factor), inputs, nobody));
  } catch (const std::bad_alloc&) {
    preview_->play(std::nullopt);
  }
}

void TransitionDialog::follow() {
  ParameterDialog::follow();
  const bool some = pictures_->count() > 0;
  test_->setEnabled(some);
  buttons().button(QDialogButtonBox::Ok)->setEnabled(some);
  if (auto* matt = qobject_cast<ColorButton*>(form().input("mattColor")); matt && some)
    matt->set_picture(pictures_->small(std::max(0, pictures_->current())));
  show_preview();
}

void TransitionDialog::accept() {
  if (pictures_->count() > 0) ParameterDialog::accept();
}

void TransitionDialog::edit_numbers() {
  const auto fields = number_fields(generator_.parameters);
  FormDialog dialog(tr("Transition effects"),
                    QString::fromLatin1(guide_page(generator_.parameters)).toUpper(), fields, numbers_,
                    host(), this);
  name_controls(dialog.form());
  connect(dialog.buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, &dialog, [&] {
    for (const Field& field : fields) dialog.form().set_value(field.name, initial_value(field));
  });
  if (dialog.exec() != QDialog::Accepted) return;
  const FieldValues values = dialog.form().values();
  for (const Field& field : fields) numbers_.set(field.name, *values.find(field.name));
  keep_in_settings(fields, values);
  follow();
}

void TransitionDialog::override_row(int row) {
  const ListedPicture& listed = pictures_->at(row);
  std::vector<Field> fields;
  for (const char* name : generator_.ownFields) {
    fields.push_back(*find_field(generator_.parameters.fields, name));
    if (fields.size() == 1) fields.back().label = "Transition";
  }
  const FieldValues common = values();
  FieldValues shown;
  for (const Field& field : fields) {
    const FieldValue* own = listed.own.find(field.name);
    shown.set(field.name, own ? *own : *common.find(field.name));
  }
  FormDialog dialog(to_qt(filled(StringId::TransitionOverride, {listed.name.toStdString()})),
                    QString::fromLatin1(guide_page(generator_.parameters)).toUpper(), fields, shown, host(),
                    this);
  name_controls(dialog.form());
  show_samples(dialog.form());
  auto* picture = new QLabel(&dialog);
  picture->setPixmap(QPixmap::fromImage(image_of_picture(pictures_->small(row)))
                         .scaled(kOverrideThumbnail, Qt::KeepAspectRatio, Qt::SmoothTransformation));
  static_cast<QBoxLayout*>(dialog.layout())->insertWidget(0, picture, 0, Qt::AlignCenter);
  if (dialog.exec() != QDialog::Accepted) return;
  const FieldValues own = dialog.form().values();
  const QString text = tr("%1, pause %2, delay %3")
                           .arg(to_qt(field_value_text(fields[0], *own.find(fields[0].name))))
                           .arg(own.number("pause"))
                           .arg(own.number("delay"));
  pictures_->give_own(row, own, text);
}

}  // namespace vellum
