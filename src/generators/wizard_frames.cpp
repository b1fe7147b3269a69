#include "generators/wizard_frames.h"

#include <algorithm>
#include <new>

#include "base/limits.h"
#include "base/memory_budget.h"
#include "base/parallel.h"
#include "core/edit/picture_fitting.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// All or nothing: a pixel that isn't quite opaque is transparent.
std::vector<std::uint8_t> all_or_nothing(std::vector<std::uint8_t> table, std::uint32_t bits) {
  for (std::uint8_t& alpha : table)
    if (bits <= 8 && alpha != 255) alpha = 0;
  return table;
}

bool has_holes(const Picture& picture) {
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t *alpha = picture.row(y) + 3, *end = alpha + 4 * std::size_t{picture.width()};
    for (; alpha < end; alpha += 4)
      if (*alpha == 0) return true;
  }
  return false;
}

/// True color without alpha; or, where pixels are transparent by a table or a key, 32 bits that are clear in
/// those.
Picture cut_out(const StillFile& file, bool masks) {
  const Picture& picture = file.reading.picture;
  if (masks && !file.transparency.empty()) {
    const Picture cut = PictureWithTransparency(picture, all_or_nothing(file.transparency, picture.bits()));
    if (!cut || has_holes(cut)) return cut;
  }
  return opaque_true_color(picture);
}

/// 24 bits in which all that is clear has the color of the mask.
WizardFrame with_mask_color(const Picture& cut, Colour color) {
  if (!cut || cut.bits() == 24) return {cut, {}};
  return {PictureFlattenAlpha(cut, color), {0, red_of(color), 0, green_of(color), 0, blue_of(color)}};
}

WizardFrame as_it_is(const StillFile& file, const WizardPlan& plan) {
  const Picture& picture = file.reading.picture;
  if (!plan.keeps || file.transparency.empty()) return {picture, {}};
  if (plan.kind == DocumentKind::MING) return {picture, file.transparency};
  return {PictureWithTransparency(picture, file.transparency), {}};
}

/// Gathers frames in the order of their files.
class Gathering {
 public:
  Gathering(const WizardPlan& plan, Host& host) : plan_(plan), host_(host) {}

  /// False when the user, or a limit, ends it.
  bool take(const std::filesystem::path& path, StillFile file, WizardFrame frame) {
    if (!file.reading.picture) return passes_over(path, file.reading, host_);
    file.reading.picture = {};
    if (!frame.picture) throw std::bad_alloc();
    if (!file.reading.told.empty()) host_.add_note(reading_text(path, file.reading));
    const std::uint64_t bytes = frame.picture.handle().size();
    const Extent size{frame.picture.width(), frame.picture.height()};
    const bool clear = frame.picture.bits() == 32 || !frame.transparency.empty();
    sources_.largest = std::max(sources_.largest, bytes);
    // Beside frames for a superpalette the document has one of 8 bits each.
    final_ += plan_.gathers() ? std::uint64_t{size.width} * size.height : bytes;
    if (final_ > maximum_decoded_bytes()) return too_large();
    if (plan_.gathers()) sources_.colors.add(frame.picture);
    sources_.files.push_back({path, held(std::move(frame.picture)), {}, size, clear});
    if (sources_.files.back().picture) sources_.files.back().transparency = std::move(frame.transparency);
    return true;
  }

  std::size_t step() const { return wizard_step(sources_.largest); }
  WizardSources& sources() { return sources_; }

 private:
  /// The document will hold the streams of pictures that go through: they are not read again.
  HeldPicture held(Picture picture) {
    HeldPicture frame(picture);
    picture = {};
    if (rows_.take(frame.block.size())) return frame;
    if (plan_.gathers() || !frame.block.source()) return {};
    let_go(frame.block);
    return frame;
  }

  bool too_large() {
    host_.show(StringId::MemoryError, {}, std::string(string_text(StringId::ResultTooLarge)));
    return false;
  }

  const WizardPlan& plan_;
  Host& host_;
  WizardSources sources_;
  GatheredRows rows_;
  std::uint64_t final_ = 0;  ///< bytes
};

}  // namespace

Extent WizardSources::canvas() const {
  Extent canvas;
  for (const WizardSource& file : files)
    canvas = {std::max(canvas.width, file.size.width), std::max(canvas.height, file.size.height)};
  return canvas;
}

bool WizardSources::any_clear() const { return std::ranges::any_of(files, &WizardSource::clear); }

WizardPlan wizard_plan(const FieldValues& values, DocumentKind kind) {
  WizardPlan plan{.kind = kind, .palette = values.number("palette")};
  const bool preserve = values.number("preserveTransparency") != 0, mng = kind == DocumentKind::MING;
  if (!mng && preserve) plan.palette = kWizardAsIs;
  if (kind == DocumentKind::WEBP) plan.palette = std::min<std::int64_t>(plan.palette, kWizardTrueColor);
  plan.keeps = preserve && plan.palette == kWizardAsIs;
  plan.masks = preserve && mng && values.number("masks") != 0 && plan.palette >= kWizardTrueColor &&
               plan.palette <= kWizardDither;
  plan.improve = values.number("improvePalette") != 0;
  plan.maskColor = static_cast<Colour>(values.number("maskColor"));
  return plan;
}

WizardFrame wizard_frame(const StillFile& file, const WizardPlan& plan) {
  const Picture& picture = file.reading.picture;
  if (plan.palette == kWizardAsIs) return as_it_is(file, plan);
  if (plan.palette == kWizardTrueColor) return with_mask_color(cut_out(file, plan.masks), plan.maskColor);
  if (plan.gathers()) return {cut_out(file, plan.masks), {}};
  const bool indexed = picture.bits() == 4 || picture.bits() == 8;
  return {to_colors(indexed ? picture : opaque_true_color(picture), plan.given,
                    plan.palette == kWizardPhotorealistic),
          {}};
}

std::size_t wizard_step(std::uint64_t bytes) {
  constexpr std::uint64_t kCopies = 3;  // of a picture while it is worked on
  const std::uint64_t fitting = gatheredBytes / std::max<std::uint64_t>(kCopies * bytes, 1);
  return static_cast<std::size_t>(std::clamp<std::uint64_t>(fitting, 1, 4 * parallel_width()));
}

std::optional<WizardSources> read_wizard_files(const std::vector<std::filesystem::path>& files,
                                               const WizardPlan& plan, Host& host) {
  const Progress progress(host, string_text(StringId::BuildingCaption));
  Gathering gathering(plan, host);
  for (std::size_t first = 0; first < files.size();) {
    // Nothing is known yet of how large the first ones are.
    const std::size_t step = first == 0 ? parallel_width() : gathering.step();
    const std::size_t count = std::min(step, files.size() - first);
    std::vector<StillFile> read(count);
    std::vector<WizardFrame> frames(count);
    parallel_for(count, [&](std::size_t i) {
      read[i] = read_still_file(files[first + i]);
      if (read[i].reading.picture) frames[i] = wizard_frame(read[i], plan);
    });
    for (std::size_t i = 0; i < count; ++i)
      if (host.stopped() || !gathering.take(files[first + i], std::move(read[i]), std::move(frames[i])))
        return std::nullopt;
    first += count;
    progress.step(first, files.size());
  }
  if (!gathering.sources().files.empty()) return std::move(gathering.sources());
  host.show(StringId::NoPictureLeft);
  return std::nullopt;
}

}  // namespace vellum
