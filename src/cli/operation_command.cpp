#include "cli/operation_command.h"

#include <functional>
#include <optional>
#include <vector>

#include "base/translation.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "cli/parameter_options.h"
#include "cli/words.h"
#include "core/files/open_document.h"
#include "core/files/open_unchecked.h"
#include "core/files/save_document.h"
#include "operations/convert_kind.h"
#include "operations/supercompress.h"

namespace vellum::cli {
namespace {

/// What the command line says of one operation.
struct Given {
  std::string in, out, frames;
  DocumentKind kind = DocumentKind::None;
  GivenParameters parameters;
};

bool makes_document(const Operation& operation) { return operation.result != OperationResult::Files; }

/// As another kind where one was asked for, and written.
int write_result(DocumentWindow& window, const Given& given, Host& host) {
  if (given.kind == DocumentKind::None || given.kind == window.document.kind)
    return save_document(window, given.out, host) ? kDone : kFailed;
  DocumentWindow converted;
  if (!convert_kind(window, converted, {given.kind, false}, host)) return tell_of_failure(host);
  return save_document(converted, given.out, host) ? kDone : kFailed;
}

/// The operation on the document that was read. Nothing is written of those that make one.
int change(const Operation& operation, DocumentWindow& window, const Given& given, Host& host) {
  DocumentKind kind = given.kind == DocumentKind::None ? operation.makes : given.kind;
  if (kind == DocumentKind::None) kind = window.document.kind;
  if (makes_document(operation) && !name_fits_kind(given.out, kind)) return kWrongUsage;
  const std::size_t count = frame_entries(window).size();
  if (count == 0) {
    host.show(StringId::NoImagesHere);
    return kFailed;
  }
  const auto values = parameter_values(operation.parameters, given.parameters, window);
  if (!values) return kWrongUsage;
  const auto frames = given.frames.empty() ? all_frames(count) : parse_frame_list(given.frames, count);
  if (!frames) {
    wrong_usage(translated("--frames is not a list of images as in 1,3-5"));
    return kWrongUsage;
  }
  return run_operation(operation, window, *values, *frames, host) ? kDone : kFailed;
}

/// A host whose words wait until it is known that the images are sound.
class WaitingHost {
 public:
  explicit WaitingHost(Host& host) : waiting_(host) {
    waiting_.message = [this, &host](const Message& message) {
      words_.emplace_back([&host, message] { host.message(message); });
    };
    waiting_.status = [this, &host](std::string_view text) {
      words_.emplace_back([&host, text = std::string(text)] { host.set_status(text); });
    };
    waiting_.note = [this, &host](std::string_view text) {
      words_.emplace_back([&host, text = std::string(text)] { host.add_note(text); });
    };
  }
  WaitingHost(const WaitingHost&) = delete;
  WaitingHost& operator=(const WaitingHost&) = delete;

  Host& host() { return waiting_; }
  void tell() const {
    for (const auto& word : words_) word();
  }

 private:
  Host waiting_;
  std::vector<std::function<void()>> words_;
};

/// Changes images as they are unpacked, as sound files allow: each is looked at once. Nothing where the file
/// isn't one: then nothing was written, and it is to be opened as usual.
std::optional<int> change_at_once(const Operation& operation, DocumentWindow& window, const Given& given,
                                  Host& host) try {
  UncheckedImages unchecked;
  if (!makes_document(operation) || !open_unchecked(window, given.in, unchecked, host)) return std::nullopt;
  WaitingHost waiting(host);
  const int status = change(operation, window, given, waiting.host());
  if (status != kWrongUsage && !all_sound(unchecked)) return std::nullopt;
  waiting.tell();
  return status;
} catch (const std::bad_alloc&) {
  return std::nullopt;  // what there is to say about that, opening says
}

int run(const Operation& operation, const Given& given, Host& host) {
  DocumentWindow window;
  auto status = change_at_once(operation, window, given, host);
  if (!status) {
    window = {};
    if (!open_document(window, given.in, host)) return kFailed;
    status = change(operation, window, given, host);
  }
  if (*status != kDone || !makes_document(operation)) return *status;
  const bool copies =
      operation.neverGrows && (given.kind == DocumentKind::None || given.kind == window.document.kind);
  if (copies) return save_supercompressed(window, given.in, given.out, host) ? kDone : kFailed;
  return write_result(window, given, host);
}

}  // namespace

Run prepare_operation(CLI::App& app, const Operation& operation) {
  const auto given = std::make_shared<Given>();
  app.add_option("IN", given->in, "The file to read")->required();
  add_second_file(app, operation.parameters, given->parameters);
  const bool document = makes_document(operation);
  if (document) app.add_option("OUT", given->out, "The file to write")->required();
  add_parameter_options(app, operation.parameters, given->parameters);
  if (operation.scoped)
    app.add_option("--frames", given->frames, "The images that it is applied to, from 1, as in 1,3-5")
        ->type_name("LIST");
  if (document && operation.makes == DocumentKind::None)
    app.add_option("--kind", given->kind, "Another kind of file")
        ->transform(one_of(animation_kinds(), "apng|mng|webp"));
  add_stored_option(app, operation.parameters, given->parameters);
  return [given, &operation](Host& host) { return run(operation, *given, host); };
}

}  // namespace vellum::cli
