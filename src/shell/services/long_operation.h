// A long operation on the interface thread: input is swallowed, a press or Escape asks it to stop, and the
// screen is kept alive.
#pragma once

#include <atomic>

#include <QElapsedTimer>
#include <QEvent>
#include <QObject>

namespace vellum {

/// Work that took so long is announced when it ends and nobody looks.
inline constexpr qint64 kLongWork = 10'000;  // milliseconds

/// Whether events of this type come from a person: mouse, keys, touch, drags.
bool is_user_input(QEvent::Type type);

class LongOperation : public QObject {
  Q_OBJECT
 public:
  using QObject::QObject;
  ~LongOperation() override;

  /// Operations may nest; the outermost one counts.
  void begin();
  void end();
  bool running() const { return depth_ > 0; }

  /// Whether the user asked to stop since the outermost begin. Keeps the screen alive. May be asked on any
  /// thread.
  bool stop_requested();
  /// Handles events that wait, at most every 50 ms; nothing on other threads than that of the interface.
  void pump();

  /// Lets input through for as long as it lives: for a question in the middle of an operation.
  class Pause {
   public:
    explicit Pause(LongOperation& operation);
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    LongOperation& operation_;
    int depth_;
  };

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void set_depth(int depth);

  int depth_ = 0;
  std::atomic<bool> stop_ = false;
  QElapsedTimer sincePump_, sinceBegin_;
};

}  // namespace vellum
