// Host: how everything below the desktop reaches the person in front of it. A record of functions; the
// desktop fills it with windows, the command-line tool with the terminal, a test with a recorder. Empty
// members are allowed everywhere: nobody listens, and a question is answered with Yes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/string_table.h"

namespace vellum {

/// What kind of thing went wrong: these never look alike.
enum class FaultKind {
  Damaged,   ///< the file is not what its format says
  Limit,     ///< a bound of base/limits.h, memory or the disk
  Misuse,    ///< what the caller or the user asked for cannot be
  Internal,  ///< a mistake of this program
};

/// The place and the reason of a failure, shown in small print below the message.
struct Fault {
  FaultKind kind = FaultKind::Damaged;
  std::uint32_t tag = 0;     ///< chunk type, 0 where there is none
  std::int64_t entry = -1;   ///< list index of the entry, from 0; -1 where there is none
  std::int64_t offset = -1;  ///< byte offset in the file; -1 where there is none
  std::string reason;        ///< English, one sentence part without a full stop
};

/// "IDAT, entry 3, offset 41: the image data is damaged"; only the parts that are known.
std::string describe_fault(const Fault& fault);

enum class Answer { Yes, No, Cancel };

/// One message. `option`, where it is set, is the flag behind "Show me this message again next time.".
struct Message {
  StringId id{};
  StringId title{};  ///< 0: the program's name
  std::string text;  ///< the text as it is shown (values filled in)
  std::string more;  ///< additional text below it, may be empty
  int* option = nullptr;
};

/// A question that has answers of its own.
struct Choice {
  StringId title{}, text{};
  std::vector<StringId> answers;
  std::size_t chosen = 0;  ///< offered; then what the user took
  StringId keepLabel{};    ///< of a box below the answers; 0: there is none
  bool keep = false;       ///< whether it was checked
};

struct Host {
  std::function<void(const Message&)> message;
  /// Yes and No, and Cancel where `cancel` is set.
  std::function<Answer(const Message&, bool cancel)> ask;
  /// False: cancelled. Empty: the offered answer is taken.
  std::function<bool(Choice&)> choose;
  std::function<void(std::string_view)> status;
  /// Something that a person should know of what was read or written, and that is no failure: chunks that
  /// were changed or left out, parts that are missing. Without a function of its own it is a status.
  std::function<void(std::string_view)> note;
  /// Progress of a long operation: a caption, then steps with count and total, then the end.
  std::function<void(std::string_view caption)> progress_begin;
  std::function<void(std::uint64_t done, std::uint64_t total)> progress_step;
  std::function<void()> progress_end;
  /// Whether the user wants the running operation to stop. May be asked often.
  std::function<bool()> stop_requested;
  /// The place of the failure that the caller is about to report; kept until `take_fault`.
  Fault fault;
  bool has_fault = false;

  void show(StringId id, StringId title = {}, std::string more = {});
  /// The same for a warning that its option can switch off. Nothing happens while the option is 0.
  void warn(StringId id, int& option, std::string more = {});
  void set_status(std::string_view text) const;
  void add_note(std::string_view text) const;
  bool stopped() const { return stop_requested && stop_requested(); }
  /// Keeps the reason of a failure; always false, so that a reader can `return host.fail(...)`.
  bool fail(Fault reason);
  /// The reason kept last as text (empty without one), which is then forgotten.
  std::string take_fault();
};

/// A progress bar for the lifetime of the object, so that every way out ends it.
class Progress {
 public:
  Progress(Host& host, std::string_view caption);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void step(std::uint64_t done, std::uint64_t total) const;

 private:
  Host& host_;
};

}  // namespace vellum
