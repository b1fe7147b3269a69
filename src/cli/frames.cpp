#include <atomic>

#include "base/file.h"
#include "base/parallel.h"
#include "base/text.h"
#include "cli/command.h"
#include "core/open_document.h"
#include "core/settings.h"
#include "image/png_file.h"

namespace vellum::cli {
namespace {

struct FramesOptions {
  std::string file, folder;
};

std::vector<Picture> image_pictures(const DocumentWindow& window) {
  std::vector<Picture> pictures;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (is_image_entry(window.document.kind, window.list.record(i).tag))
      pictures.push_back(picture_of(window.list.record(i)));
  return pictures;
}

bool write_frame(const std::filesystem::path& folder, std::size_t number, const Picture& picture) {
  const std::string name = format_text("frame_%05u.png", static_cast<unsigned>(number));
  const auto bytes = encode_png_picture(picture, std::clamp(settings::PngCompression, 0, 9));
  SafeFile file(folder / name);
  return !bytes.empty() && file.write(bytes) && file.commit();
}

int run_frames(const FramesOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_document(window, options.file, host)) return kFailed;
  std::error_code error;
  std::filesystem::create_directories(options.folder, error);
  const auto pictures = image_pictures(window);
  std::atomic<bool> failed = false;
  parallel_for(pictures.size(), [&](std::size_t i) {
    if (!failed && !write_frame(options.folder, i, pictures[i])) failed = true;
  });
  if (!failed) return kDone;
  host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, options.folder);
  return kFailed;
}

}  // namespace

Run prepare_frames(CLI::App& app) {
  const auto options = std::make_shared<FramesOptions>();
  app.add_option("FILE", options->file, "A PNG, animated PNG, MNG or WebP")->required();
  app.add_option("DIR", options->folder, "The folder for frame_00000.png and so on; it is made")->required();
  return [options](Host& host) { return run_frames(*options, host); };
}

}  // namespace vellum::cli
