#include "shell/dialogs/convert_dialogs.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QPushButton>

#include "configuration/config_file.h"
#include "configuration/shell_settings.h"
#include "core/build/convert_records.h"
#include "core/edit/insert_chunk.h"
#include "core/settings.h"
#include "image/graphic_file.h"
#include "image/resample.h"
#include "operations/convert_kind.h"
#include "operations/frame_pictures.h"
#include "operations/settings.h"
#include "playback/compositor.h"
#include "shell/dialogs/change_preview.h"
#include "shell/editors/select_palette.h"
#include "shell/forms/default_folders.h"
#include "shell/forms/dialog_state.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/picture_image.h"
#include "shell/look/text.h"
#include "shell/look/viewer_image.h"

namespace vellum {
namespace {

constexpr FieldChoice kDepths[] = {{0, "As needed"}, {1, "True color"}, {2, "True color with alpha"}};
constexpr FieldChoice kGrounds[] = {{0, "Over the background color"}, {1, "Transparent"}};
constexpr FieldChoice kPictures[] = {{0, "Own pictures"}, {1, "Composed canvases"}};
constexpr FieldChoice kScopes[] = {{0, "All frames"}, {1, "Selected frames"}};
constexpr FieldChoice kFormats[] = {{0, "jpg"}, {1, "bmp"}, {2, "gif"}, {3, "pcx"},
                                    {4, "tga"}, {5, "png"}, {6, "webp"}};

constexpr const char* kReconstructFile = "ReconstructState.txt";
constexpr DialogStateRow kReconstructState[] = {{.id = 1, .tag = "CBOX", .control = "depth"},
                                                {.id = 2, .tag = "CHKB", .control = "merge"}};
constexpr const char* kExtractFile = "ExtractState.txt";
constexpr DialogStateRow kExtractState[] = {{.id = 1, .tag = "CBOX", .control = "format"}};

constexpr Field kDither{.name = "dither",
                        .label = "Dither",
                        .type = FieldType::Flag,
                        .tip = "Spreads the error of each pixel to its neighbors"};

/// Reset puts these values in, whatever the dialog opened with.
void reset_to(FormDialog& dialog, FieldValues defaults) {
  QObject::connect(dialog.buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, &dialog,
                   [&dialog, defaults = std::move(defaults)] {
                     for (const Field& field : dialog.form().fields())
                       if (const FieldValue* value = defaults.find(field.name))
                         dialog.form().set_value(field.name, *value);
                   });
}

double same_size(const Picture&) { return 1; }

/// A canvas on no ground, its colors no longer multiplied by their alpha.
Picture with_plain_alpha(const Picture& canvas) {
  QImage image;
  fill_image(image, canvas, true);
  return image.isNull() ? Picture() : picture_of_image(image.convertToFormat(QImage::Format_ARGB32));
}

/// A preview below the fields, which follows them.
void add_preview(FormDialog& dialog, const DocumentWindow& window, ChangePreview::Change change,
                 ChangePreview::Growth growth = same_size) {
  auto* preview = new ChangePreview(window, std::move(change), std::move(growth), &dialog);
  static_cast<QBoxLayout*>(dialog.layout())->insertWidget(1, preview, 1);
  QObject::connect(&dialog.form(), &Form::edited, preview, &ChangePreview::refresh);
  QObject::connect(dialog.buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, preview,
                   &ChangePreview::refresh);
}

/// Names the controls that a file keeps.
void name_controls(FormDialog& dialog, std::span<const DialogStateRow> rows) {
  for (const DialogStateRow& row : rows)
    dialog.form().input(row.control)->setObjectName(QLatin1String(row.control));
}

/// Says that the frames are made whole canvases first, which can't be left out here.
void add_reconstruct_note(FormDialog& dialog) {
  dialog.form().add_note(text_of(StringId::ReconstructedFirst));
  auto* box = new QCheckBox(QObject::tr("Reconstruct first"), &dialog);
  box->setChecked(true);
  box->setEnabled(false);
  dialog.form().add_row_behind("dither", {}, box);
}

/// Nothing but an animated PNG brings back what was there.
bool brings_back(const DocumentWindow& window) {
  return std::ranges::any_of(frame_entries(window), [&](std::size_t entry) {
    return GetFrameDispose(window.list.record(entry), window.document.kind) == 2;
  });
}

void store_dither(const FieldValues& values) {
  settings::ConvertPaletteDither = values.number("dither") != 0 ? 1 : 0;
}

std::int64_t flag_of(int setting) { return setting != 0 ? 1 : 0; }

}  // namespace

std::optional<ColorConversion> ask_for_black_and_white(QWidget* parent, const DocumentWindow& window,
                                                       Services& services) {
  static constexpr std::int64_t kLeast = 1, kMost = 254, kUsual = 128;
  const std::vector<Field> fields = {{.name = "threshold",
                                      .label = "Threshold",
                                      .least = kLeast,
                                      .most = kMost,
                                      .enabledBy = "dither",
                                      .enabledAt = 0,
                                      .tip = "Greys from here on become white"},
                                     kDither};
  FieldValues values, defaults;
  values.set("threshold", std::clamp<std::int64_t>(settings::ConvertMonoThreshold, kLeast, kMost));
  values.set("dither", flag_of(settings::ConvertPaletteDither));
  defaults.set("threshold", kUsual);
  defaults.set("dither", std::int64_t{1});
  FormDialog dialog(QObject::tr("Black and white"), QStringLiteral("CONVERT"), fields, values, services.host,
                    parent);
  const auto conversion = [&] {
    const FieldValues now = dialog.form().values();
    return black_and_white(static_cast<int>(std::clamp(now.number("threshold"), kLeast, kMost)),
                           now.number("dither") != 0);
  };
  reset_to(dialog, defaults);
  if (has_transparency(window) && !is_independent(window)) add_reconstruct_note(dialog);
  const Colour background = document_background(window.list, window.document);
  add_preview(dialog, window,
              [&](const auto& shown) { return convert_picture(shown.picture, conversion(), background); });
  dialog.apply = [](const FieldValues& now) {
    settings::ConvertMonoThreshold = static_cast<int>(now.number("threshold"));
    store_dither(now);
    return true;
  };
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return conversion();
}

std::optional<ColorConversion> ask_for_palette_color(QWidget* parent, const DocumentWindow& window,
                                                     Services& services) {
  SelectPaletteRequest request{shown_pictures(window), {}, has_transparency(window) ? 255u : 256u, true};
  Compositor compositor(window.list, window.document);
  if (compositor.frames() > 0) request.preview = compositor.frame(0).picture;
  const auto palette = select_palette(parent, request, services);
  if (!palette) return std::nullopt;
  ColorConversion conversion{.colorType = 3, .palette = *palette};
  FieldValues values, defaults;
  values.set("dither", flag_of(settings::ConvertPaletteDither));
  defaults.set("dither", std::int64_t{1});
  FormDialog dialog(QObject::tr("Palette color"), QStringLiteral("CONVERT"), {kDither}, values, services.host,
                    parent);
  reset_to(dialog, defaults);
  const Colour background = document_background(window.list, window.document);
  add_preview(dialog, window, [&](const auto& shown) {
    conversion.dither = dialog.form().values().number("dither") != 0;
    return convert_picture(shown.picture, conversion, background);
  });
  dialog.apply = [](const FieldValues& now) {
    store_dither(now);
    return true;
  };
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  conversion.dither = settings::ConvertPaletteDither != 0;
  return conversion;
}

std::optional<bool> ask_for_kind(QWidget* parent, const DocumentWindow& window, DocumentKind kind,
                                 Services& services) {
  const QString title = kind == DocumentKind::APNG   ? QObject::tr("Convert to animated PNG")
                        : kind == DocumentKind::MING ? QObject::tr("Convert to MNG")
                                                     : QObject::tr("Convert to WebP");
  const bool dithers = may_dither(window, kind), whole = brings_back(window);
  const std::size_t lost = texts_lost(window, kind);
  // Where there is nothing to ask or to tell, nothing is asked.
  if (!dithers && !whole && lost == 0) return settings::ConvertPaletteDither != 0;
  std::vector<Field> fields;
  if (dithers) fields = {kDither};
  FieldValues values, defaults;
  values.set("dither", flag_of(settings::ConvertPaletteDither));
  defaults.set("dither", std::int64_t{1});
  FormDialog dialog(title, QStringLiteral("CONVERT"), fields, values, services.host, parent);
  reset_to(dialog, defaults);
  dialog.buttons().button(QDialogButtonBox::Reset)->setVisible(dithers);
  if (whole) add_reconstruct_note(dialog);
  if (lost > 0) dialog.form().add_note(to_qt(filled(StringId::TextsNotKept, {std::to_string(lost)})));
  dialog.apply = [dithers](const FieldValues& now) {
    if (dithers) store_dither(now);
    return true;
  };
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return settings::ConvertPaletteDither != 0;
}

std::optional<StillChoice> ask_for_still(QWidget* parent, const DocumentWindow& window, Services& services) {
  const auto entries = frame_entries(window);
  const auto caret = std::ranges::find(entries, caret_entry(window));
  std::vector<Field> fields = {
      {.name = "frame", .label = "Frame", .least = 1, .most = static_cast<std::int64_t>(entries.size())},
      {.name = "ground",
       .label = "Background",
       .type = FieldType::Choice,
       .choices = kGrounds,
       .look = FieldLook::Radio}};
  FieldValues values;
  values.set("frame", caret == entries.end() ? std::int64_t{1} : caret - entries.begin() + 1);
  values.set("ground", std::int64_t{has_transparency(window)});
  FormDialog dialog(QObject::tr("Animation to PNG"), QStringLiteral("STILL"), fields, values, services.host,
                    parent);
  std::optional<StillChoice> choice;
  dialog.apply = [&](const FieldValues& now) {
    choice = {static_cast<std::size_t>(now.number("frame") - 1), now.number("ground") == 0};
    return true;
  };
  dialog.exec();
  return choice;
}

std::optional<ReconstructChoice> ask_for_reconstruct(QWidget* parent, const DocumentWindow& window,
                                                     Services& services) {
  const std::vector<Field> fields = {
      {.name = "depth", .label = "Depth", .type = FieldType::Choice, .choices = kDepths},
      {.name = "merge",
       .label = "Merge equal frames",
       .type = FieldType::Flag,
       .tip = "Frames that show the same become one that is shown as long"}};
  FieldValues values;
  values.set("depth", std::int64_t{0});
  values.set("merge", std::int64_t{0});
  FormDialog dialog(QObject::tr("Reconstruct"), QStringLiteral("RECONSTRUCT"), fields, values, services.host,
                    parent);
  const bool transparent = has_transparency(window);
  Compositor compositor(window.list, window.document);
  const auto canvas_of = [&](const auto& shown) {
    const auto depth = static_cast<CanvasDepth>(dialog.form().values().number("depth"));
    const bool clear = depth != CanvasDepth::TrueColor && transparent;
    compositor.set_ground({clear ? Ground::Kind::Clear : Ground::Kind::Document});
    Picture shows = compositor.frame(static_cast<std::uint32_t>(shown.frame)).picture;
    if (clear) shows = with_plain_alpha(shows);
    return PictureScalePercent(shows, shown.percent, shown.percent, ResampleFilter::Box);
  };
  const Extent canvas = document_size(window.list, window.document);
  add_preview(dialog, window, canvas_of, [canvas](const Picture& frame) {
    return std::max(1.0 * canvas.width / frame.width(), 1.0 * canvas.height / frame.height());
  });
  name_controls(dialog, kReconstructState);
  restore_dialog_state(dialog, kReconstructState, config_path(kReconstructFile));
  std::optional<ReconstructChoice> choice;
  dialog.apply = [&](const FieldValues& now) {
    choice = {static_cast<CanvasDepth>(now.number("depth")), now.number("merge") != 0};
    store_dialog_state(dialog, kReconstructState, config_path(kReconstructFile));
    return true;
  };
  dialog.exec();
  return choice;
}

std::optional<Extraction> ask_for_extraction(QWidget* parent, const DocumentWindow& window,
                                             Services& services) {
  const FrameList selected = selected_frames(window);
  const std::vector<Field> fields = {
      {.name = "folder", .label = "Folder", .type = FieldType::Text},
      {.name = "stem", .label = "Name", .type = FieldType::Text, .most = 200},
      {.name = "format", .label = "Format", .type = FieldType::Choice, .choices = kFormats},
      {.name = "composed",
       .label = "Images",
       .type = FieldType::Choice,
       .choices = kPictures,
       .look = FieldLook::Radio},
      {.name = "scope",
       .label = "Apply to",
       .type = FieldType::Choice,
       .choices = kScopes,
       .look = FieldLook::Radio,
       .locked = selected.empty()},
      {.name = "numbered", .label = "Numbers in names", .type = FieldType::Flag},
      {.name = "sequential",
       .label = "Numbers count frames",
       .type = FieldType::Flag,
       .enabledBy = "numbered",
       .tip = "Otherwise the numbers are those of the list"}};
  const std::filesystem::path title = document_title(window.document);
  FieldValues values, defaults;
  values.set("folder", usable_folder(settings::OpenExportPath).toStdString());
  values.set("stem", title.stem().string());
  values.set("format", std::int64_t{5});
  values.set("composed", std::int64_t{0});
  values.set("scope", std::int64_t{0});
  values.set("numbered", flag_of(settings::ExtractNumbered));
  values.set("sequential", flag_of(settings::BlockExtractSequential));
  defaults.set("numbered", std::int64_t{1});
  defaults.set("sequential", std::int64_t{1});
  FormDialog dialog(text_of(StringId::ExtractTitle), QStringLiteral("EXTRACT"), fields, values, services.host,
                    parent);
  auto* browse = new QPushButton(QObject::tr("&Browse..."), &dialog);
  browse->setAutoDefault(false);
  QObject::connect(browse, &QPushButton::clicked, &dialog, [&dialog] {
    const QString folder = QFileDialog::getExistingDirectory(&dialog, text_of(StringId::ExtractTitle),
                                                             to_qt(dialog.form().values().text("folder")));
    if (!folder.isEmpty()) dialog.form().set_value("folder", folder.toStdString());
  });
  dialog.form().add_row_behind("folder", {}, browse);
  reset_to(dialog, defaults);
  name_controls(dialog, kExtractState);
  restore_dialog_state(dialog, kExtractState, config_path(kExtractFile));
  std::optional<Extraction> extraction;
  dialog.apply = [&](const FieldValues& now) {
    const std::string stem = now.text("stem");
    const bool named = !stem.empty() && stem.find('/') == std::string::npos;
    if (now.text("folder").empty() || !named) {
      services.host.show(named ? StringId::NoFolder : StringId::NoFileName);
      return false;
    }
    settings::OpenExportPath = now.text("folder");
    settings::ExtractNumbered = static_cast<int>(now.number("numbered"));
    settings::BlockExtractSequential = static_cast<int>(now.number("sequential"));
    const bool some = now.number("scope") == 1;
    extraction = Extraction{.folder = now.text("folder"),
                            .stem = now.text("stem"),
                            .extension = kFormats[now.number("format")].name,
                            .frames = some ? selected : all_frames(frame_entries(window).size()),
                            .composed = now.number("composed") == 1,
                            .numbered = settings::ExtractNumbered != 0,
                            .sequential = settings::BlockExtractSequential != 0};
    store_dialog_state(dialog, kExtractState, config_path(kExtractFile));
    return true;
  };
  dialog.exec();
  return extraction;
}

std::optional<int> ask_for_quality(QWidget* parent, Services& services) {
  FieldValues values;
  values.set("quality", std::int64_t{75});
  FormDialog dialog(QObject::tr("JPEG"), QStringLiteral("EXTRACT"),
                    {{.name = "quality", .label = "Quality", .least = 1, .most = 100}}, values, services.host,
                    parent);
  std::optional<int> quality;
  dialog.apply = [&](const FieldValues& now) {
    quality = static_cast<int>(now.number("quality"));
    return true;
  };
  dialog.exec();
  return quality;
}

}  // namespace vellum
