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

constexpr FieldChoice kPictures[] = {{0, "Own pictures"}, {1, "Composed canvases"}};
constexpr FieldChoice kScopes[] = {{0, "All frames"}, {1, "Selected frames"}};
constexpr FieldChoice kFormats[] = {{0, "jpg"}, {1, "bmp"}, {2, "gif"}, {3, "pcx"},
                                    {4, "tga"}, {5, "png"}, {6, "webp"}};

constexpr const char* kExtractFile = "ExtractState.txt";
constexpr DialogStateRow kExtractState[] = {{.id = 1, .tag = "CBOX", .control = "format"}};

/// Reset puts these values in, whatever the dialog opened with.
void reset_to(FormDialog& dialog, FieldValues defaults) {
  QObject::connect(dialog.buttons().button(QDialogButtonBox::Reset), &QPushButton::clicked, &dialog,
                   [&dialog, defaults = std::move(defaults)] {
                     for (const Field& field : dialog.form().fields())
                       if (const FieldValue* value = defaults.find(field.name))
                         dialog.form().set_value(field.name, *value);
                   });
}

/// Names the controls that a file keeps.
void name_controls(FormDialog& dialog, std::span<const DialogStateRow> rows) {
  for (const DialogStateRow& row : rows)
    dialog.form().input(row.control)->setObjectName(QLatin1String(row.control));
}

std::int64_t flag_of(int setting) { return setting != 0 ? 1 : 0; }

}  // namespace

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
