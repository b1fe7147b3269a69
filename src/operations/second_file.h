// Another file that an operation takes pictures from: a document of any kind, or a picture of another format.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/host.h"
#include "core/model/document.h"
#include "operations/parameters.h"

namespace vellum {

/// A field with the name of such a file.
constexpr Field file_field(const char* name, const char* label) {
  return {.name = name, .label = label, .type = FieldType::Text, .look = FieldLook::Path};
}
/// "Choose a file." where there is none.
std::optional<FieldFault> check_file(const FieldValues& values, const char* name);

/// A document that stands in a window, as what a file holds. Its name is no path.
struct LentDocument {
  std::string name;
  DocumentWindow window;
};
/// While it lives, these names are taken for these documents wherever another file is asked for. One at a
/// time, made and ended while no operation runs.
class LentDocuments {
 public:
  explicit LentDocuments(std::vector<LentDocument> documents);
  ~LentDocuments();
  LentDocuments(const LentDocuments&) = delete;
  LentDocuments& operator=(const LentDocuments&) = delete;
};
/// Those that are lent now.
std::span<const LentDocument> lent_documents();
/// Null for a name that isn't one of theirs.
const DocumentWindow* lent_document(std::string_view name);

/// Opens it as `open_document` does, without a question: a picture of another format becomes a document.
/// False after the reason was shown.
bool open_second_file(DocumentWindow& window, const std::string& path, Host& host);

/// What its frames show, 32 bits with straight alpha; one for a still.
struct FilePictures {
  std::vector<Picture> canvases;
  bool opaque = true;
};
/// Null after the reason was shown.
std::shared_ptr<const FilePictures> pictures_of_file(const std::string& path, Host& host);
/// The same for previews, which ask often: the last file is kept until it changes. Null where it can't be
/// read. Of the interface thread alone.
std::shared_ptr<const FilePictures> kept_pictures_of_file(const std::string& path);

}  // namespace vellum
