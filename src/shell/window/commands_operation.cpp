// The command of every operation that is a row.
#include "base/text.h"
#include "base/translation.h"
#include "core/edit/undo.h"
#include "operations/operation.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/window/commands.h"
#include "shell/window/lend.h"
#include "shell/window/result_window.h"

namespace vellum {
namespace {

/// Some operations ask before anything else.
bool may_begin(const Operation& operation, const Host& host) {
  if (operation.question == StringId{} || !host.ask || (operation.asks && *operation.asks == 0)) return true;
  const Message question{
      operation.question, {}, std::string(string_text(operation.question)), {}, operation.asks};
  return host.ask(question, false) == Answer::Yes;
}

/// Frames with a palette become true color first when the user agrees.
bool may_promote(const Operation& operation, const DocumentWindow& window, const OperationChoice& choice,
                 const Host& host) {
  if (!(operation_needs(operation, window, choice.values, choice.frames) & (kTrueColor | kAsksTrueColor)) ||
      !host.ask)
    return true;
  const StringId id = StringId::NeedsTrueColor;
  return host.ask({id, {}, std::string(string_text(id)), {}, nullptr}, false) == Answer::Yes;
}

}  // namespace

void run_operation_command(MainWindow& main, DocumentFrame& frame, int number) {
  const Operation& operation = *find_operation(number);
  DocumentWindow& window = frame.content();
  Host& host = main.services().host;
  if (frame_entries(window).empty()) return host.show(StringId::NoImagesHere);
  if (!may_begin(operation, host)) return;
  std::optional<LentDocuments> lent;
  if (operation.parameters.second) lent.emplace(open_documents(main));
  const auto choice = ask_for_operation(operation, window, main.services(), &main);
  if (!choice || !may_promote(operation, window, *choice, host)) return;
  const auto work = [&](DocumentWindow& on, Host& listener) {
    return run_operation(operation, on, choice->values, choice->frames, listener);
  };
  if (operation.result == OperationResult::Files) {
    work(window, host);
    return;
  }
  if (operation.result == OperationResult::NewWindow) {
    // Texts may name the file that is worked on, and not its copy.
    const auto under_its_name = [&](DocumentWindow& copy, Host& listener) {
      if (operation.makes != DocumentKind::None) return work(copy, listener);
      const std::filesystem::path shown = std::exchange(copy.document.fileName, window.document.fileName);
      const bool done = work(copy, listener);
      copy.document.fileName = shown;
      return done;
    };
    show_result(main, frame, operation.prefix, under_its_name);
    return;
  }
  if (undo_push(window, host, inside_sentence(operation.parameters.title)) && work(window, host))
    frame.size_to_content();
}

}  // namespace vellum
