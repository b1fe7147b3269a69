#include "shell/dialogs/generator_dialog.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QRandomGenerator>

#include "configuration/config_file.h"
#include "image/graphic_file.h"
#include "image/resample.h"
#include "shell/forms/color_button.h"
#include "shell/look/icon.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kListWidth = 260;
constexpr QSize kSmallPreview(240, 150);
constexpr std::size_t kPreviewed = 40;                ///< pictures of a list that a preview shows, at most
constexpr std::uint64_t kMostPreviewed = 12'000'000;  ///< pixels of a frame
constexpr double kPreviewSide = 200;  ///< pixels of a picture that a preview works on, at most

Picture reduced(const Picture& picture) {
  const double percent = 100 * std::min(1.0, kPreviewSide / std::max(picture.width(), picture.height()));
  return percent < 100 ? PictureScalePercent(picture, percent, percent, ResampleFilter::Box) : picture;
}

const DocumentWindow& no_document() {
  static const DocumentWindow nothing;
  return nothing;
}

/// The pictures beside the radio buttons of a field, in their order.
struct RadioPictures {
  const char* field;
  std::array<const char*, 2> pictures;
};
constexpr RadioPictures kRadioPictures[] = {{"direction", {"cw", "ccw"}}};

void add_radio_pictures(const Form& form) {
  for (const auto& [field, pictures] : kRadioPictures) {
    if (!form.has(field)) continue;
    const auto buttons =
        form.input(field)->parentWidget()->findChildren<QRadioButton*>(Qt::FindDirectChildrenOnly);
    for (qsizetype i = 0; i < std::min<qsizetype>(buttons.size(), 2); ++i) {
      buttons[i]->setIcon(program_icon(pictures[static_cast<std::size_t>(i)]));
      buttons[i]->setIconSize({style::kToolIcon, style::kToolIcon});
    }
  }
}

}  // namespace

GeneratorDialog::GeneratorDialog(const Generator& generator, DocumentKind kind, bool fresh,
                                 Services& services, QWidget* parent)
    : ParameterDialog(generator.parameters, no_document(), {}, services, parent),
      generator_(generator),
      services_(services),
      seed_(QRandomGenerator::global()->bounded(1, 0x7FFFFFFF)),
      preview_(new MotionPreview(this)) {
  inputs_.kind = reduced_.kind = kind;
  reduced_.sketch = true;
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->removeWidget(&form());
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  if (generator.input == GeneratorInput::Pictures) add_pictures(*row, fresh);
  row->addWidget(&form());
  if (!pictures_) row->addWidget(preview_, 1);
  outer->insertLayout(0, row, 1);
  add_radio_pictures(form());
  if (generator.input == GeneratorInput::Picture) add_source();
  add_test();
  begin();
  apply = [this, keep = std::move(apply)](const FieldValues& typed) {
    if (pictures_) pictures_->store(config_path(generator_.listFile));
    return keep(typed);
  };
  if (fresh) buttons().button(QDialogButtonBox::Reset)->click();
  // Other kinds are true color in any case.
  if (QWidget* box = form().input("trueColor"); box && kind != DocumentKind::MING) {
    form().set_value("trueColor", std::int64_t{1});
    box->setEnabled(false);
    box->setToolTip(text_of(StringId::PaletteTakesMng));
    follow();
  }
}

void GeneratorDialog::add_pictures(QBoxLayout& row, bool fresh) {
  pictures_ = new PictureList(services_, this);
  // The preview stands below the list, so that the window isn't too wide.
  pictures_->setMinimumWidth(kListWidth);
  if (generator_.ownFields.empty()) pictures_->hide_override();
  preview_->setMinimumSize(kSmallPreview);
  auto* side = new QVBoxLayout;
  side->setSpacing(style::kGap);
  side->addWidget(pictures_, 1);
  side->addWidget(preview_, 1);
  row.addLayout(side, 1);
  if (!fresh) pictures_->load(config_path(generator_.listFile));
  connect(pictures_, &PictureList::changed, this, &GeneratorDialog::follow);
}

GeneratorInputs GeneratorDialog::inputs() const {
  if (!pictures_) return inputs_;
  GeneratorInputs inputs = inputs_;
  for (const ListedPicture* listed : pictures_->pictures()) {
    inputs.pictures.push_back(listed->picture);
    inputs.names.push_back(listed->file.empty() ? listed->name.toStdString() : listed->file.stem().string());
  }
  return inputs;
}

FieldValues GeneratorDialog::settled() const {
  FieldValues all = values();
  if (const FieldValue* seed = all.find("seed"); seed && all.number("seed") == 0) all.set("seed", seed_);
  return all;
}

void GeneratorDialog::add_source() {
  auto* row = new QWidget(this);
  auto* line = new QHBoxLayout(row);
  line->setContentsMargins(0, 0, 0, 0);
  name_ = new QLabel(row);
  name_->setTextFormat(Qt::PlainText);
  name_->setObjectName(QStringLiteral("source"));
  auto* choose = new QPushButton(tr("&Select"), row);
  auto* paste_button = new QPushButton(tr("&Paste"), row);
  choose->setAutoDefault(false);
  paste_button->setAutoDefault(false);
  line->addWidget(name_, 1);
  line->addWidget(choose);
  line->addWidget(paste_button);
  static_cast<QBoxLayout*>(layout())->insertWidget(0, row);
  connect(choose, &QPushButton::clicked, this, &GeneratorDialog::select);
  connect(paste_button, &QPushButton::clicked, this, &GeneratorDialog::paste);
  show_source(tr("[ No file selected ]"));
  const std::string kept = generator_.fileSetting ? *generator_.fileSetting : std::string();
  if (kept.empty()) return;
  if (Picture picture = read_graphic_file(kept).picture)
    take_picture(picture, to_qt(std::filesystem::path(kept).filename().string()));
}

void GeneratorDialog::add_test() {
  auto* button = buttons().addButton(tr("&Test"), QDialogButtonBox::ActionRole);
  button->setAutoDefault(false);
  connect(button, &QPushButton::clicked, this, [this] {
    if (!has_inputs()) return select();
    if (pictures_) pictures_->store(config_path(generator_.listFile));
    const auto fault = check(form().values());
    if (fault) {
      if (host().message) host().message({fault->id, {}, fault->text, {}, nullptr});
      return form().show_fault(*fault);
    }
    if (test) test(settled());
  });
}

bool GeneratorDialog::has_inputs() const {
  if (pictures_) return pictures_->count() > 0;
  return generator_.input == GeneratorInput::None || !inputs_.pictures.empty();
}

void GeneratorDialog::show_source(const QString& name) { name_->setText(name); }

void GeneratorDialog::take_picture(const Picture& picture, const QString& name) {
  const Picture small = reduced(picture);
  inputs_.pictures = {picture};
  reduced_.pictures = {small};
  for (ColorButton* button : form().findChildren<ColorButton*>()) button->set_picture(small);
  show_source(name);
  follow();
}

void GeneratorDialog::select() {
  if (pictures_) return pictures_->choose();
  if (!services_.choose_pictures) return;
  const auto chosen = services_.choose_pictures(false);
  if (chosen.empty()) return;
  Picture picture = read_picture_file(chosen.front(), services_.host);
  if (!picture) return;
  if (generator_.fileSetting) *generator_.fileSetting = chosen.front().string();
  take_picture(picture, to_qt(chosen.front().filename().string()));
}

void GeneratorDialog::paste() {
  Picture picture = picture_of_image(QGuiApplication::clipboard()->image());
  if (!picture) return services_.host.show(StringId::ClipboardInvalid);
  take_picture(picture, text_of(StringId::ImageFromClipboard));
}

void GeneratorDialog::follow() {
  ParameterDialog::follow();
  Host nobody;
  const bool fine = has_inputs() && !check_values(generator_.parameters, values(), window());
  if (pictures_) {
    reduced_.pictures.clear();
    reduced_.names = inputs().names;
    const std::size_t shown = std::min(pictures_->count(), kPreviewed);
    for (std::size_t row = 0; row < shown; ++row)
      if (const Picture small = pictures_->small(static_cast<int>(row))) reduced_.pictures.push_back(small);
  }
  auto frames = fine ? generated_frames(generator_, settled(), reduced_, nobody) : std::nullopt;
  // Frames that take seconds each would hold up who is typing.
  if (frames && std::uint64_t{frames->canvas.width} * frames->canvas.height > kMostPreviewed) frames.reset();
  preview_->play(std::move(frames));
}

void GeneratorDialog::accept() {
  if (!has_inputs()) return select();
  ParameterDialog::accept();
}

}  // namespace vellum
