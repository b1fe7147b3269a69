#include "batch/batch_files.h"

#include <algorithm>

#include "core/model/kind_table.h"
#include "image/graphic_file.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

bool wanted(const fs::path& path, const BatchSearch& search) {
  if (path.filename().string().starts_with('.')) return false;
  return has_document_extension(path) || (search.stills && GraphicFileType(path.string()) != kNoGraphicFile);
}

class Walk {
 public:
  Walk(std::vector<BatchFile>& files, const BatchSearch& search, const Host& host)
      : files_(files), search_(search), host_(host) {}

  void add_folder(const fs::path& folder, const fs::path& below) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
      entries.push_back(*at);
    if (error) host_.add_note(folder.string() + ": " + error.message());
    std::ranges::sort(entries);
    for (const fs::directory_entry& entry : entries) {
      const bool is_folder = entry.is_directory(error);
      if (!is_folder && wanted(entry.path(), search_)) files_.push_back({entry.path(), below});
      // A link may lead in a circle.
      if (is_folder && search_.recursive && !entry.is_symlink(error) &&
          !entry.path().filename().string().starts_with('.'))
        add_folder(entry.path(), below / entry.path().filename());
    }
  }

 private:
  std::vector<BatchFile>& files_;
  const BatchSearch& search_;
  const Host& host_;
};

}  // namespace

std::vector<BatchFile> batch_files(std::span<const std::string> inputs, const BatchSearch& search,
                                   const Host& host) {
  std::vector<BatchFile> files;
  Walk walk(files, search, host);
  for (const std::string& input : inputs) {
    std::error_code error;
    if (fs::is_directory(input, error))
      walk.add_folder(input, {});
    else
      files.push_back({input, {}});
  }
  return files;
}

void take_shard(std::vector<BatchFile>& files, std::size_t index, std::size_t of) {
  std::ranges::stable_sort(files, {}, &BatchFile::source);
  for (std::size_t i = 0; i < files.size(); ++i) files[i].ours = i % of == index - 1;
}

std::size_t count_ours(std::span<const BatchFile> files) {
  return static_cast<std::size_t>(std::ranges::count_if(files, &BatchFile::ours));
}

}  // namespace vellum
