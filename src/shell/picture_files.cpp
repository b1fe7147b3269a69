#include "shell/picture_files.h"

#include "image/graphic_file.h"

namespace vellum {
namespace {

bool passes_over(const std::filesystem::path& file, Host& host) {
  if (!host.ask) return true;
  const auto id = StringId::CorruptedGraphicQuestion;
  return host.ask({id, {}, std::string(string_text(id)), file.string(), nullptr}, false) == Answer::Yes;
}

}  // namespace

std::vector<Picture> read_picture_files(const std::vector<std::filesystem::path>& files, Host& host) {
  std::vector<Picture> pictures;
  const Progress progress(host, string_text(StringId::Loading));
  for (std::size_t i = 0; i < files.size() && !host.stopped(); ++i) {
    progress.step(i, files.size());
    const Picture picture = GraphicFileRead(files[i].string());
    if (picture)
      pictures.push_back(picture);
    else if (!passes_over(files[i], host))
      break;
  }
  return pictures;
}

}  // namespace vellum
