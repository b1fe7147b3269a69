// The dialog behind every color button.
#pragma once

#include <QDialog>
#include <QLineEdit>
#include <QSpinBox>
#include <QTabWidget>

#include "image/palette_file.h"
#include "shell/widgets/color_plane.h"
#include "shell/widgets/palette_grid.h"
#include "shell/widgets/picture_panel.h"

namespace vellum {

/// What a color is asked for with. Picture and palette may be missing; their pages are then not there.
struct ColorRequest {
  Colour color = 0;       ///< 0x00BBGGRR that it begins with; red lowest
  Picture picture;        ///< to pick from
  PaletteColors palette;  ///< the document's; a count of 0 for none
  QString title;          ///< empty: "Color"
};

/// The color that was chosen, 0x00BBGGRR; nothing when the user cancelled.
std::optional<Colour> ask_for_color(QWidget* parent, const ColorRequest& request);
/// For indexed work: an entry of the palette alone, beginning with `index`. Picks only from indexed pictures.
std::optional<std::uint32_t> ask_for_palette_index(QWidget* parent, const ColorRequest& request,
                                                   std::uint32_t index);

QColor qt_color(Colour color);
Colour colour_of(const QColor& color);
/// The colors as cells, without marks.
std::vector<PaletteCell> palette_cells(const PaletteColors& colors);

class ColorDialog : public QDialog {
  Q_OBJECT
 public:
  ColorDialog(const ColorRequest& request, QWidget* parent = nullptr);

  QColor color() const { return color_; }
  void set_color(const QColor& color);

  /// Also remembers the color: in the history, and as the last of the two that can be swapped.
  void accept() override;

 private:
  enum Source { FromPlane, FromNumbers, FromHex, FromElsewhere };
  QWidget* make_pages(const ColorRequest& request);
  QWidget* make_numbers();
  QWidget* make_recent();
  QSpinBox* number(const char* name, int most, const QString& suffix = {});
  void show_color(Source source);
  void read_numbers();
  void read_hsb();
  void swap_last();
  void show_last();

  QColor color_, before_;
  HsbColor hsb_;
  bool showing_ = false;
  std::vector<std::string> recent_;
  ColorPlane* plane_ = nullptr;
  std::array<QSpinBox*, 3> rgb_{}, hsbFields_{};
  QLineEdit* hex_ = nullptr;
  PaletteGrid* last_ = nullptr;
  PaletteGrid* recentGrid_ = nullptr;
  PaletteGrid* shown_ = nullptr;
};

}  // namespace vellum
