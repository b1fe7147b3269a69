#include "shell/dialogs/effect_samples.h"

#include <QAbstractItemView>
#include <QPainter>

#include "generators/generator.h"
#include "shell/look/picture_image.h"

namespace vellum {
namespace {

constexpr int kBeat = 100;  // milliseconds

/// A disc on a plain ground: one can see where it goes.
Picture sample_image(QColor ground, QColor disc, bool square) {
  QImage image(EffectSamples::kWidth, EffectSamples::kHeight, QImage::Format_RGB32);
  image.fill(ground);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(disc);
  const QRect middle = image.rect().marginsRemoved({14, 8, 14, 8});
  square ? painter.drawRect(middle) : painter.drawEllipse(middle);
  painter.end();
  return picture_of_image(image);
}

/// Steps that bring a picture of this size around in about two seconds.
FrameStream sample_of(const Generator& generator, std::int64_t effect) {
  FieldValues values = initial_values(generator.parameters.fields);
  const std::pair<const char*, std::int64_t> all[] = {
      {"effect", effect},    {"horizontalStep", 4},  {"verticalStep", 3},  {"sandstormBlockSize", 150},
      {"tileBlockSize", 10}, {"radarStepAngle", 30}, {"blockSpacing", 32}, {"seed", 1}};
  for (const auto& [name, value] : all) values.set(name, value);
  const GeneratorInputs inputs{{sample_image(QColor(0x24, 0x50, 0x8C), Qt::white, false),
                                sample_image(QColor(0xF2, 0xA0, 0x2C), QColor(0x40, 0x20, 0x10), true)}};
  Host nobody;
  return generated_frames(generator, values, inputs, nobody).value_or(FrameStream());
}

}  // namespace

EffectSamples::EffectSamples(QComboBox& list) : QObject(&list), list_(list) {
  const Generator& generator = *find_generator("transition");
  for (int i = 0; i < list.count(); ++i) streams_.push_back(sample_of(generator, i));
  list.setIconSize({kWidth, kHeight});
  for (int i = 0; i < list.count(); ++i) show(i);
  connect(&timer_, &QTimer::timeout, this, &EffectSamples::step);
  timer_.start(kBeat);
}

void EffectSamples::show(int effect) {
  const FrameStream& stream = streams_[static_cast<std::size_t>(effect)];
  if (stream.count == 0) return;
  const Picture picture = stream.frame(beat_ % stream.count).picture;
  list_.setItemIcon(effect, QPixmap::fromImage(image_of_picture(picture)));
}

void EffectSamples::step() {
  ++beat_;
  if (list_.view()->isVisible())
    for (int i = 0; i < list_.count(); ++i) show(i);
  else if (list_.isVisible() && list_.currentIndex() >= 0)
    show(list_.currentIndex());
}

}  // namespace vellum
