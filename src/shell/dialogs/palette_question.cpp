// Palette color asks for the palette before it asks how colors go into it.
#include "operations/convert_colors.h"
#include "operations/frame_pictures.h"
#include "operations/reconstruct.h"
#include "playback/compositor.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/editors/select_palette.h"

namespace vellum {

std::optional<FieldValues> ask_for_palette(const Operation& operation, const DocumentWindow& window,
                                           Services& services, QWidget* parent) {
  SelectPaletteRequest request{{}, {}, has_transparency(window) ? 255u : 256u, true};
  for (const HeldPicture& held : shown_pictures(window)) request.pictures.push_back(held.picture());
  Compositor compositor(window.list, window.document);
  if (compositor.frames() > 0) request.preview = compositor.frame(0).picture;
  const auto palette = select_palette(parent, request, services);
  if (!palette) return std::nullopt;
  std::vector<Field> asked(operation.parameters.fields.begin(), operation.parameters.fields.end());
  std::erase_if(asked, [](const Field& field) { return field.name == std::string_view("dither"); });
  return palette_values(asked, *palette);
}

}  // namespace vellum
