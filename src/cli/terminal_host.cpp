#include "cli/terminal_host.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "base/translation.h"

namespace vellum::cli {
namespace {

/// The text on one line, what belongs to it in brackets.
std::string one_line(const Message& message) {
  std::string line = message.text;
  if (!message.more.empty()) line += " (" + message.more + ")";
  std::string flat;
  for (const char c : line) {
    if (c == '\r') continue;
    if (c != '\n') flat += c;
    if (c == '\n' && !flat.ends_with(' ')) flat += ' ';
  }
  return flat;
}

void print(const char* what, const Message& message) {
  std::fprintf(stderr, "vellum: %s%s\n", what, one_line(message).c_str());
}

/// A caption with a percentage that is written over itself.
class ProgressLine {
 public:
  void begin(std::string_view caption) {
    caption_ = caption;
    percent_ = -1;
  }
  void step(std::uint64_t done, std::uint64_t total) {
    const int percent = total == 0 ? 100 : static_cast<int>(done * 100 / total);
    if (percent == percent_) return;
    percent_ = percent;
    std::fprintf(stderr, "\r%s %d %%", caption_.c_str(), percent);
    std::fflush(stderr);
  }
  void end() {
    if (percent_ >= 0) std::fputs("\r\033[K", stderr);
    percent_ = -1;
  }

 private:
  std::string caption_;
  int percent_ = -1;
};

}  // namespace

Host terminal_host(bool quiet) {
  Host host;
  host.message = [quiet](const Message& message) {
    if (!message.option)
      print("", message);
    else if (!quiet)
      print(translated("warning: "), message);
  };
  host.ask = [quiet](const Message& message, bool) {
    if (!quiet) print("", message);
    return Answer::Yes;
  };
  if (quiet) return host;
  host.status = [](std::string_view text) {
    std::fprintf(stderr, "vellum: %.*s\n", static_cast<int>(text.size()), text.data());
  };
  if (isatty(STDERR_FILENO) == 0) return host;
  const auto line = std::make_shared<ProgressLine>();
  host.progress_begin = [line](std::string_view caption) { line->begin(caption); };
  host.progress_step = [line](std::uint64_t done, std::uint64_t total) { line->step(done, total); };
  host.progress_end = [line] { line->end(); };
  return host;
}

}  // namespace vellum::cli
