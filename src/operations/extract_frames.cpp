#include "operations/extract_frames.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "base/parallel.h"
#include "base/text.h"
#include "core/edit/frame_layer.h"
#include "core/edit/picture_fitting.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/png_form.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

/// Pictures that wait to be written, some at a time on all cores.
class Batch {
 public:
  Batch(const DocumentWindow& window, const Extraction& extraction, Host& host)
      : extraction_(extraction),
        host_(host),
        background_(document_background(window.list, window.document)) {}

  /// False once a file couldn't be written.
  bool add(const Picture& picture, const std::filesystem::path& name) {
    waiting_.emplace_back(picture, name);
    return waiting_.size() < 4 * parallel_width() || flush();
  }

  bool flush() {
    std::atomic<std::size_t> failed = waiting_.size(), written = 0;
    parallel_for(waiting_.size(), [&](std::size_t i) {
      const auto& [picture, name] = waiting_[i];
      const Picture fit = picture_for_file(picture, extraction_.extension, background_, true);
      if (fit && GraphicFileWrite(name.string(), fit))
        ++written;
      else
        failed = i;
    });
    written_ += written;
    const bool good = failed == waiting_.size();
    if (!good)
      host_.show(StringId::FileNotWritten, StringId::ErrorWritingFile, waiting_[failed].second.string());
    waiting_.clear();
    return good;
  }

  std::size_t written() const { return written_; }

 private:
  const Extraction& extraction_;
  Host& host_;
  Colour background_;
  std::vector<std::pair<Picture, std::filesystem::path>> waiting_;
  std::size_t written_ = 0;
};

bool write_own(const DocumentWindow& window, const Extraction& extraction,
               const std::vector<std::filesystem::path>& names, Batch& batch, Host& host) {
  const Progress progress(host, string_text(StringId::Writing));
  const auto entries = frame_entries(window);
  for (std::size_t i = 0; i < extraction.frames.size(); ++i) {
    if (host.stopped() || !batch.add(own_picture(window, entries[extraction.frames[i]]), names[i]))
      return false;
    progress.step(i + 1, extraction.frames.size());
  }
  return true;
}

bool write_canvases(const DocumentWindow& window, const Extraction& extraction,
                    const std::vector<std::filesystem::path>& names, Batch& batch, Host& host) {
  std::size_t next = 0;
  bool good = true;
  const auto take = [&](std::size_t frame, const Picture& canvas) {
    if (frame == extraction.frames[next]) good = batch.add(canvas, names[next++]);
    return good && next < extraction.frames.size();
  };
  return for_each_canvas(window, CanvasDepth::AsNeeded, host, take) && good;
}

}  // namespace

std::vector<std::filesystem::path> extracted_names(const DocumentWindow& window,
                                                   const Extraction& extraction) {
  const auto entries = frame_entries(window);
  std::vector<std::filesystem::path> names;
  for (const std::size_t frame : extraction.frames) {
    const std::size_t number = (extraction.sequential ? frame : entries[frame]) + extraction.first;
    std::string name = extraction.stem;
    if (extraction.numbered || extraction.frames.size() > 1)
      name += format_text("_%05u", static_cast<unsigned>(number));
    names.push_back(extraction.folder / (name + "." + extraction.extension));
  }
  return names;
}

std::vector<std::filesystem::path> free_names(std::vector<std::filesystem::path> names) {
  std::error_code error;
  for (std::filesystem::path& name : names) {
    const std::filesystem::path wanted = name;
    for (unsigned n = 2; std::filesystem::exists(name, error); ++n)
      name = wanted.parent_path() /
             (wanted.stem().string() + " (" + std::to_string(n) + ")" + wanted.extension().string());
  }
  return names;
}

Picture own_picture(const DocumentWindow& window, std::size_t entry) {
  const ChunkRecord& record = window.list.record(entry);
  const Picture own = picture_of(record);
  if (own && own.bits() == 32) return own;
  const Picture shown = frame_layer_of(frame_source_of(window), record).picture;
  return shown && shown.bits() == 32 && !picture_content(shown).opaque ? shown : own;
}

Picture picture_for_file(const Picture& picture, std::string_view extension, Colour background, bool full) {
  static constexpr std::array<std::string_view, 4> kOpaque = {"jpg", "bmp", "pcx", "gif"};
  if (!picture || std::ranges::find(kOpaque, extension) == kOpaque.end()) return picture;
  if (picture.bits() == 32) return PictureFlattenAlpha(picture, background);
  return full && extension != "gif" ? opaque_true_color(picture) : picture;
}

std::size_t extract_frames(const DocumentWindow& window, const Extraction& extraction,
                           const std::vector<std::filesystem::path>& names, Host& host) {
  if (extraction.frames.empty()) return 0;
  std::error_code error;
  std::filesystem::create_directories(extraction.folder, error);
  Batch batch(window, extraction, host);
  const bool whole = extraction.composed ? write_canvases(window, extraction, names, batch, host)
                                         : write_own(window, extraction, names, batch, host);
  if (whole) batch.flush();
  return batch.written();
}

}  // namespace vellum
