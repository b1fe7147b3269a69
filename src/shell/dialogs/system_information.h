// What somebody who helps wants to know of the program and the machine.
#pragma once

#include <QString>
#include <QWidget>
#include <vector>

namespace vellum {

struct InformationRow {
  QString group, name, value;
};

std::vector<InformationRow> system_information();
/// The same as lines of text, for the clipboard.
QString information_text(const std::vector<InformationRow>& rows);

void show_system_information(QWidget* parent);

}  // namespace vellum
