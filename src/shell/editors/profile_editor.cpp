// Color profiles: bytes that come from a file and go into one.
#include <QHBoxLayout>
#include <QPushButton>

#include "core/chunks/chunk_bytes.h"
#include "shell/editors/editor_pages.h"
#include "shell/editors/field_editor.h"
#include "shell/look/style.h"

namespace vellum {
namespace {

void load_profile(Editing editing) {
  if (const auto bytes = load_bytes(editing.services, QObject::tr("Load profile")))
    editing.form.set_value("profile", bytes_text(*bytes));
}

void save_profile(Editing editing) {
  std::string reason;
  if (const auto bytes = parse_bytes(editing.form.values().text("profile"), reason))
    save_bytes(editing.services, QObject::tr("Save profile"), *bytes);
}

struct ProfileButton {
  const char *label, *name;
  void (*press)(Editing);
};
constexpr ProfileButton kButtons[] = {{"&Load...", "load", load_profile}, {"&Save...", "save", save_profile}};

}  // namespace

void decorate_profile(Editing& editing) {
  auto* row = new QWidget(&editing.form);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  for (const ProfileButton& form : kButtons) {
    auto* button = new QPushButton(QObject::tr(form.label), row);
    button->setObjectName(QLatin1String(form.name));
    button->setAutoDefault(false);
    layout->addWidget(button);
    QObject::connect(button, &QPushButton::clicked, row, [editing, press = form.press] { press(editing); });
  }
  layout->addStretch(1);
  editing.form.add_row_behind("profile", {}, row);
}

}  // namespace vellum
