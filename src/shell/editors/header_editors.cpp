// Headers and frame controls.
#include <QPushButton>
#include <algorithm>

#include "core/chunks/mng_counts.h"
#include "shell/editors/field_editor.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

void put_counts(Form& form, const MngCounts& counts) {
  form.set_value("layerCount", std::int64_t{counts.layers});
  form.set_value("frameCount", std::int64_t{counts.frames});
  form.set_value("playTime", std::int64_t{counts.playTime});
  form.set_value("simplicityProfile", std::int64_t{counts.profile});
}

FrameDelay typed_delay(const FieldValues& values) {
  const auto part = [&](const char* name) {
    return static_cast<std::uint16_t>(std::clamp<std::int64_t>(values.number(name), 0, 65535));
  };
  return {part("delayNum"), part("delayDen")};
}

}  // namespace

void offer_depths_of_color_type(Form& form, DocumentKind kind) {
  const auto offer = [&form, kind] {
    form.set_choices("bitDepth", bit_depths(kind, form.values().number("colorType")));
  };
  link_fields(form, {"colorType"}, offer);
  const FieldValues values = form.values();
  const auto offered = bit_depths(kind, values.number("colorType"));
  if (std::ranges::find(offered, values.number("bitDepth"), &FieldChoice::value) != offered.end()) offer();
}

// A loaded animation may have a depth that isn't offered.
void decorate_header(Editing& editing) {
  offer_depths_of_color_type(editing.form, editing.window.document.kind);
}

void decorate_mng_header(Editing& editing) {
  auto* count = new QPushButton(QObject::tr("Count"), &editing.form);
  count->setAutoDefault(false);
  count->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  count->setObjectName(QStringLiteral("count"));
  count->setToolTip(QObject::tr("Counts what the document holds now"));
  editing.form.add_row_behind("playTime", {}, count);
  QObject::connect(count, &QPushButton::clicked, &editing.form,
                   [&form = editing.form, &window = editing.window] { put_counts(form, count_mng(window)); });
}

void link_frame_rate(Form& form) {
  link_fields(form, {"delayNum", "delayDen"},
              [&form] { form.set_value("rate", frame_delay_text(typed_delay(form.values()))); });
  link_fields(form, {"rate"}, [&form] {
    const auto delay = parse_frame_delay(form.values().text("rate"));
    if (!delay) return;
    form.set_value("delayNum", std::int64_t{delay->num});
    form.set_value("delayDen", std::int64_t{delay->den});
  });
}

void decorate_frame_control(Editing& editing) {
  if (editing.form.has("rate")) link_frame_rate(editing.form);
}

}  // namespace vellum
