// Picture files as the frames that the wizard makes of them: what becomes of the colors and the transparency
// of one, and what is gathered of all.
#pragma once

#include <filesystem>
#include <optional>

#include "base/host.h"
#include "core/files/still_file.h"
#include "core/model/document.h"
#include "generators/wizard.h"
#include "image/held_picture.h"
#include "image/superpalette.h"
#include "image/to_colors.h"

namespace vellum {

/// What is done, once the kind has had its say.
struct WizardPlan {
  DocumentKind kind = DocumentKind::MING;
  std::int64_t palette = kWizardAsIs;
  bool keeps = false;    ///< transparency of the files stays what it is
  bool masks = false;    ///< it becomes an entry of the palette, or a color
  bool improve = false;  ///< the superpalette
  Colour maskColor = 0;
  GivenColors given{};  ///< of the last three choices

  /// Whether frames can be made only when all were seen.
  bool gathers() const { return palette == kWizardMatch || palette == kWizardDither; }
};

WizardPlan wizard_plan(const FieldValues& values, DocumentKind kind);

struct WizardFrame {
  Picture picture;
  std::vector<std::uint8_t> transparency;  ///< as StreamedFrame has it
};

/// The frame of a file that was read, as far as it alone tells. For a superpalette: 24 bits, or 32 that are
/// clear where the file is transparent. A null picture when memory is exhausted.
WizardFrame wizard_frame(const StillFile& file, const WizardPlan& plan);

/// A file among the frames.
struct WizardSource {
  std::filesystem::path path;
  HeldPicture picture;  ///< of its frame; none where the file is to be read again
  std::vector<std::uint8_t> transparency;
  Extent size;         ///< pixels
  bool clear = false;  ///< not all of it is opaque
};

struct WizardSources {
  std::vector<WizardSource> files;
  Superpalette colors;  ///< of all, where the plan gathers
  /// Bytes of the largest picture.
  std::uint64_t largest = 0;

  Extent canvas() const;
  bool any_clear() const;
};

/// How many pictures of this size are worked on at a time.
std::size_t wizard_step(std::uint64_t bytes);

/// Reads all files, asking about those that can't be read. Nothing when that, or the user, ended it, or,
/// after a message, when none is left or they are too large together. Throws std::bad_alloc.
std::optional<WizardSources> read_wizard_files(const std::vector<std::filesystem::path>& files,
                                               const WizardPlan& plan, Host& host);

}  // namespace vellum
