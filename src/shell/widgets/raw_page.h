// The page of an editor that shows a chunk's payload as it will be written.
#pragma once

#include <QLabel>
#include <functional>

#include "core/model/document.h"
#include "shell/widgets/hex_panel.h"

namespace vellum {

/// What the chunk would be written as now; nothing while that isn't known.
using PayloadSource = std::function<std::optional<std::vector<std::uint8_t>>()>;

class RawPage : public QWidget {
  Q_OBJECT
 public:
  RawPage(ChunkTag tag, PayloadSource source, QWidget* parent = nullptr);
  /// Asks the source anew. Also done whenever the page comes to be seen.
  void refresh();
  HexView& view() { return panel_->view(); }

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  ChunkTag tag_;
  PayloadSource source_;
  QLabel* summary_;
  HexPanel* panel_;
};

/// The page for an entry of a document as it stands now.
QWidget* make_raw_page(QWidget* parent, const DocumentWindow& window, std::size_t index);

}  // namespace vellum
