// The dock that shows what the selected entry holds, as its editor does, and changes it in place; several
// selected frames are changed together.
#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScrollArea>
#include <QTimer>
#include <QToolButton>

#include "operations/frames.h"
#include "shell/docks/bytes_page.h"
#include "shell/docks/dock_panel.h"
#include "shell/forms/form.h"

namespace vellum {

/// A change is taken when the user leaves a field, presses Return, or rests; choices at once. What is typed
/// into one field, however often it is taken, is one undo level.
class InspectorPanel : public DockPanel {
  Q_OBJECT
 public:
  explicit InspectorPanel(DockContext& context);

  void show_document(DocumentFrame* frame) override;
  void follow() override;
  void settle() override;

  /// Of what is shown; null without fields.
  Form* form() const { return form_; }
  BytesPage* bytes() const { return bytes_; }
  /// What is wrong with what is typed; empty where nothing is.
  QString fault() const { return fault_->text(); }

  QSize sizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  /// The entries that are shown, and their records as they were then.
  struct Shown {
    std::vector<std::size_t> rows;
    std::vector<std::shared_ptr<const ChunkRecord>> records;
    bool operator==(const Shown&) const = default;
  };

  void make_head();
  Shown wanted() const;
  std::size_t entry() const { return shown_.rows.front(); }
  FrameList frames() const;
  std::vector<Field> fields_wanted() const;
  bool same_fields() const;

  void build();
  void build_entry();
  void build_several();
  void put_form(Form* form);
  void show_values();
  void show_mixed();
  void show_head();
  void show_details();
  void show_fault(const FieldFault& fault);
  void clear_fault();

  void touched();
  void focus_moved(const QWidget* from, const QWidget* to);
  void take();
  void take_fields();
  void take_bytes();
  void take_for_frames();
  bool begin_change(std::size_t chunks);
  void end_change();
  void give_back();

  DockContext& context_;
  DocumentFrame* frame_ = nullptr;
  Shown shown_;
  Form* form_ = nullptr;
  BytesPage* bytes_ = nullptr;
  QPlainTextEdit* details_ = nullptr;
  QLabel *title_, *note_, *fault_;
  QToolButton *edit_, *repair_;
  QScrollArea* room_;
  QTimer later_;
  QString touchedField_;  ///< of several frames: the field that was changed
  bool pending_ = false;  ///< something is typed and not taken yet
  bool bytesPending_ = false;
  bool loading_ = false;             ///< values are being shown
  bool taking_ = false;              ///< a change is being made, which may ask the user
  QPointer<const QWidget> session_;  ///< the field whose changes go into the newest undo level
  std::size_t sessionLevels_ = 0;
};

}  // namespace vellum
