#include "shell/services/paint_programs.h"

#include <QStandardPaths>

#include "configuration/shell_settings.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr struct {
  const char* name;
  const char* file;
} kKnown[] = {{"Krita", "krita"},
              {"GIMP", "gimp"},
              {"KolourPaint", "kolourpaint"},
              {"Pinta", "pinta"},
              {"mtPaint", "mtpaint"},
              {"Drawing", "drawing"},
              {"GrafX2", "grafx2"},
              {"LibreSprite", "libresprite"}};

}  // namespace

std::vector<PaintProgram> installed_paint_programs() {
  std::vector<PaintProgram> programs;
  for (const auto& known : kKnown)
    if (const QString path = QStandardPaths::findExecutable(QLatin1String(known.file)); !path.isEmpty())
      programs.push_back({QLatin1String(known.name), path});
  return programs;
}

QString paint_program_to_start() {
  if (settings::UseWindowsPaintbrush != 0) return QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
  if (!settings::PaintbrushPath.empty()) return to_qt(settings::PaintbrushPath);
  if (settings::SearchForPaintbrush == 0) return {};
  const auto found = installed_paint_programs();
  return found.empty() ? QString() : found.front().path;
}

}  // namespace vellum
