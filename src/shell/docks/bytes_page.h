// The page of the Inspector that shows a chunk's payload as bytes: what would be written, or, where a chunk
// is nothing but its bytes, those, to be changed.
#pragma once

#include <QLabel>

#include "core/model/document.h"
#include "shell/widgets/hex_view.h"

namespace vellum {

class BytesPage : public QWidget {
  Q_OBJECT
 public:
  explicit BytesPage(QWidget* parent = nullptr);

  /// The entry as it is now. Its payload is only asked for while the page is seen.
  void show_entry(const DocumentWindow& window, std::size_t index, bool editable);
  HexView& view() { return *view_; }

 signals:
  /// The user changed the bytes.
  void typed();

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void refresh();

  const DocumentWindow* window_ = nullptr;
  std::size_t index_ = 0;
  bool editable_ = false, stale_ = false, setting_ = false;
  QLabel* summary_;
  HexView* view_;
};

}  // namespace vellum
