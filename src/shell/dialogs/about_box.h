// The about box.
#pragma once

#include <QWidget>

namespace vellum {

void show_about_box(QWidget* parent);

}  // namespace vellum
