#include "shell/services/picture_files.h"

#include "core/files/first_picture.h"
#include "core/model/kind_table.h"
#include "image/graphic_file.h"
#include "shell/services/file_dialogs.h"

namespace vellum {
std::vector<Picture> read_picture_files(const std::vector<std::filesystem::path>& files, Host& host) {
  std::vector<Picture> pictures;
  const Progress progress(host, string_text(StringId::Loading));
  for (std::size_t i = 0; i < files.size() && !host.stopped(); ++i) {
    progress.step(i, files.size());
    const GraphicReading reading = first_picture(files[i]);
    if (reading.picture)
      pictures.push_back(told_reading(files[i], reading, host));
    else if (!passes_over(files[i], reading, host))
      break;
  }
  return pictures;
}

std::optional<std::filesystem::path> choose_picture_file(Services& services, const QString& title,
                                                         const std::string& name) {
  if (!services.choose_file) return std::nullopt;
  auto path = services.choose_file({title.toStdString(), picture_filters(false).toStdString(), name, true});
  if (path && GraphicFileType(path->string()) == kNoGraphicFile)
    *path += kind_row(DocumentKind::PING).extensions.front();
  return path;
}

bool write_picture_file(const std::filesystem::path& path, const Picture& picture, Host& host) {
  if (GraphicFileWrite(path.string(), picture)) return true;
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile);
  return false;
}

}  // namespace vellum
