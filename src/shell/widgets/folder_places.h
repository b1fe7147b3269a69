// Where folders are looked for: the places of a person, and media that can be taken out.
#pragma once

#include <QIcon>
#include <QString>
#include <QStringList>
#include <vector>

namespace vellum {

struct FolderPlace {
  int number;  ///< as BatchProcessorSpecialFolder keeps it
  QString name, path;
};

/// The computer, which is number 0, and the folders of the person that are there.
std::vector<FolderPlace> folder_places();

/// Where media that can be taken out are mounted now, as the lines of `mounts` and the devices in `devices`
/// say. No medium is touched.
QStringList removable_media(const QString& mounts = QStringLiteral("/proc/self/mounts"),
                            const QString& devices = QStringLiteral("/sys/class/block"));

}  // namespace vellum
