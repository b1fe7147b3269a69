// The dock of the film strip: the frames of the active document, and what is done with all of them.
#pragma once

#include <QBoxLayout>
#include <QMenu>
#include <QToolButton>

#include "operations/film_strip.h"
#include "shell/docks/dock_panel.h"
#include "shell/docks/strip_view.h"

namespace vellum {

class StripPanel : public DockPanel {
  Q_OBJECT
 public:
  explicit StripPanel(DockContext& context);

  StripView& view() { return *view_; }

  void show_document(DocumentFrame* frame) override;
  void follow() override;

  /// Asks for cells and a file; false when nothing was written or inserted.
  bool save_strip();
  bool insert_from_strip();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  QToolButton* add_tool(const char* icon, const QString& tip);
  void add_options();
  void add_option(QMenu& menu, const QString& label, StripOption bit);
  void connect_view();
  void lay_out();
  void move_selected(std::size_t to, bool copy);
  std::optional<FilmStrip> ask_for_cells(const Parameters& parameters);
  bool insert_cells(const FilmStrip& strip, const std::filesystem::path& path);

  DockContext& context_;
  Services& services_;
  DocumentFrame* frame_ = nullptr;
  StripView* view_;
  QWidget* tools_;
};

}  // namespace vellum
