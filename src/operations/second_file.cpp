#include "operations/second_file.h"

#include <algorithm>
#include <filesystem>

#include "core/edit/frame_layer.h"
#include "core/files/open_document.h"
#include "core/model/whole_canvases.h"
#include "image/picture_operations.h"
#include "image/png_form.h"
#include "operations/frames.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

bool read_pictures(const DocumentWindow& window, FilePictures& pictures, Host& host) {
  pictures.opaque = !has_transparency(window);
  if (!is_animation(window.document.kind)) {
    const auto entries = frame_entries(window);
    const Picture picture =
        entries.empty()
            ? Picture()
            : frame_layer_of(frame_source_of(window), window.list.record(entries.front())).picture;
    if (picture) pictures.canvases = {picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture)};
    return static_cast<bool>(picture);
  }
  bool covers = true;
  const bool done =
      for_each_canvas(window, CanvasDepth::TrueColorAlpha, host, [&](std::size_t, const Picture& canvas) {
        pictures.canvases.push_back(canvas);
        covers = covers && picture_content(canvas).opaque;
        return static_cast<bool>(canvas);
      });
  pictures.opaque = covers;
  return done && !pictures.canvases.empty();
}

/// What tells one state of a file from another.
struct FileMark {
  std::string path;
  std::filesystem::file_time_type time;
  bool operator==(const FileMark&) const = default;
};

FileMark mark_of(const std::string& path) {
  std::error_code error;
  return {path, std::filesystem::last_write_time(path, error)};
}

std::vector<LentDocument> lent;

/// The file that previews asked for last.
struct KeptFile {
  FileMark mark;
  std::shared_ptr<const FilePictures> pictures;
};
KeptFile kept_file;

}  // namespace

LentDocuments::LentDocuments(std::vector<LentDocument> documents) { lent = std::move(documents); }

LentDocuments::~LentDocuments() {
  lent.clear();
  kept_file = {};
}

std::span<const LentDocument> lent_documents() { return lent; }

const DocumentWindow* lent_document(std::string_view name) {
  const auto found = std::ranges::find(lent, name, &LentDocument::name);
  return found == lent.end() ? nullptr : &found->window;
}

std::optional<FieldFault> check_file(const FieldValues& values, const char* name) {
  return values.text(name).empty() ? std::optional(fault_of(name, StringId::ChooseAFile)) : std::nullopt;
}

bool open_second_file(DocumentWindow& window, const std::string& path, Host& host) {
  if (const DocumentWindow* shown = lent_document(path)) {
    window.document = shown->document;
    window.list = shown->list;
    return true;
  }
  Host quiet;
  quiet.stop_requested = host.stop_requested;
  quiet.choose = [](Choice&) { return true; };
  quiet.message = host.message;
  return open_document(window, path, quiet);
}

std::shared_ptr<const FilePictures> pictures_of_file(const std::string& path, Host& host) {
  DocumentWindow window;
  if (!open_second_file(window, path, host)) return nullptr;
  const auto made = std::make_shared<FilePictures>();
  const Extent canvas = document_size(window.list, window.document);
  const bool fits = canvases_fit(frame_entries(window).size(), canvas);
  if (fits && read_pictures(window, *made, host)) return made;
  if (!host.stopped()) host.show(fits ? StringId::ErrorReadingFile : StringId::ResultTooLarge, {}, path);
  return nullptr;
}

std::shared_ptr<const FilePictures> kept_pictures_of_file(const std::string& path) {
  FileMark now = mark_of(path);
  if (kept_file.pictures && now == kept_file.mark) return kept_file.pictures;
  Host nobody;
  kept_file = {std::move(now), pictures_of_file(path, nobody)};
  return kept_file.pictures;
}

}  // namespace vellum
