#include "shell/dialogs/system_information.h"

#include <sys/sysinfo.h>
#include <unistd.h>

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <QStyle>
#include <QSysInfo>
#include <QThread>
#include <QTreeWidget>
#include <fstream>

#include "configuration/config_file.h"
#include "image/library_versions.h"
#include "shell/help/guide.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr QSize kSize(620, 520);

using Rows = std::vector<InformationRow>;

QString mebibytes(std::uint64_t bytes) { return QObject::tr("%L1 MB").arg(bytes >> 20); }

/// What this process has of the memory: proc(5), statm, the second number is the pages that are resident.
std::uint64_t resident_bytes() {
  std::ifstream file("/proc/self/statm");
  std::uint64_t all = 0, resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

void add_program(Rows& rows) {
  const QString group = QObject::tr("Program");
  rows.push_back({group, QObject::tr("Version"), QStringLiteral("Vellumcraft " VELLUM_VERSION)});
  rows.push_back({group, QObject::tr("Compiler"), QStringLiteral("GCC " __VERSION__)});
  rows.push_back({group, QStringLiteral("Qt"), QString::fromLatin1(qVersion())});
  for (const auto& [name, version] : library_versions()) rows.push_back({group, to_qt(name), to_qt(version)});
}

void add_system(Rows& rows) {
  const QString group = QObject::tr("System");
  rows.push_back({group, QObject::tr("System"), QSysInfo::prettyProductName()});
  rows.push_back({group, QObject::tr("Kernel"), QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion()});
  rows.push_back(
      {group, QObject::tr("Processor"),
       QObject::tr("%1, %2 cores").arg(QSysInfo::currentCpuArchitecture()).arg(QThread::idealThreadCount())});
  struct sysinfo memory {};
  if (::sysinfo(&memory) == 0) {
    rows.push_back(
        {group, QObject::tr("Memory"), mebibytes(std::uint64_t{memory.totalram} * memory.mem_unit)});
    rows.push_back(
        {group, QObject::tr("Free memory"), mebibytes(std::uint64_t{memory.freeram} * memory.mem_unit)});
  }
  rows.push_back({group, QObject::tr("Used by this program"), mebibytes(resident_bytes())});
}

void add_desktop(Rows& rows) {
  const QString group = QObject::tr("Desktop");
  rows.push_back({group, QObject::tr("Platform"), QGuiApplication::platformName()});
  const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
  if (!desktop.isEmpty()) rows.push_back({group, QObject::tr("Desktop"), desktop});
  rows.push_back({group, QObject::tr("Language"), QLocale().name()});
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QSize size = screen->size();
    rows.push_back({group, QObject::tr("Screen %1").arg(screen->name()),
                    QObject::tr("%1 x %2 pixels, scaled by %3, %4 dpi, %5 bits")
                        .arg(size.width())
                        .arg(size.height())
                        .arg(screen->devicePixelRatio())
                        .arg(screen->logicalDotsPerInch(), 0, 'f', 0)
                        .arg(screen->depth())});
  }
}

void add_places(Rows& rows) {
  const QString group = QObject::tr("Places");
  const auto add = [&](const QString& name, const QString& path) {
    rows.push_back({group, name, path.isEmpty() ? QObject::tr("not found") : QDir::toNativeSeparators(path)});
  };
  add(QObject::tr("Program"), QCoreApplication::applicationFilePath());
  add(QObject::tr("Settings"), path_text(config_file()));
  add(QObject::tr("Guide"), find_guide(QCoreApplication::applicationDirPath()));
  add(QObject::tr("Documents"), QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
  add(QObject::tr("Pictures"), QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
  add(QObject::tr("Temporary files"), QDir::tempPath());
}

void fill(QTreeWidget& tree, const Rows& rows) {
  QTreeWidgetItem* group = nullptr;
  for (const InformationRow& row : rows) {
    if (!group || group->text(0) != row.group) {
      group = new QTreeWidgetItem(&tree, {row.group});
      group->setFirstColumnSpanned(true);
      QFont bold = tree.font();
      bold.setBold(true);
      group->setFont(0, bold);
    }
    auto* item = new QTreeWidgetItem(group, {row.name, row.value});
    item->setToolTip(1, row.value);
  }
  tree.expandAll();
  tree.resizeColumnToContents(0);
}

}  // namespace

std::vector<InformationRow> system_information() {
  Rows rows;
  add_program(rows);
  add_system(rows);
  add_desktop(rows);
  add_places(rows);
  return rows;
}

QString information_text(const std::vector<InformationRow>& rows) {
  QString text, group;
  for (const InformationRow& row : rows) {
    if (row.group != group) text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + row.group + u'\n';
    group = row.group;
    text += QStringLiteral("  %1: %2\n").arg(row.name, row.value);
  }
  return text;
}

void show_system_information(QWidget* parent) {
  QDialog dialog(parent);
  dialog.setWindowTitle(QObject::tr("System information"));
  auto* tree = new QTreeWidget(&dialog);
  tree->setColumnCount(2);
  tree->setHeaderHidden(true);
  tree->setRootIsDecorated(false);
  tree->setAccessibleName(QObject::tr("System information"));
  tree->header()->setStretchLastSection(true);
  const std::vector<InformationRow> rows = system_information();
  fill(*tree, rows);
  QDialogButtonBox* buttons = add_buttons(dialog, QDialogButtonBox::Close, QStringLiteral("SYSTEM"));
  auto* copy = buttons->addButton(QObject::tr("C&opy"), QDialogButtonBox::ActionRole);
  QObject::connect(copy, &QPushButton::clicked, &dialog,
                   [&rows] { QGuiApplication::clipboard()->setText(information_text(rows)); });
  QVBoxLayout* layout = dialog_layout(dialog);
  layout->addWidget(tree, 1);
  layout->addWidget(buttons);
  dialog.resize(kSize);
  dialog.exec();
}

}  // namespace vellum
