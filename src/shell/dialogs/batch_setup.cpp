#include "shell/dialogs/batch_setup.h"

#include "batch/settings.h"
#include "shell/forms/form_dialog.h"

namespace vellum {
namespace {

constexpr const char *kSettings = "Settings", *kPrefixes = "Prefixes";

constexpr FieldChoice kOverwriteModes[] = {
    {0, "Ovewrite silently"}, {1, "Prompt before overwriting"}, {2, "Keep both"}};

Field flag(const char* name, const char* label, int& setting) {
  return {.name = name, .label = label, .type = FieldType::Flag, .page = kSettings, .setting = &setting};
}

Field prefix(const char* name, const char* label, std::string& setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Text,
          .most = 64,
          .page = kPrefixes,
          .enabledBy = "usePrefixes",
          .textSetting = &setting};
}

std::vector<Field> make_fields() {
  using namespace settings;
  return {
      flag("promote", "Automatically promote paletted animations", BPAutoUpsample),
      flag("closeProgress", "Close progress when complete", BPCloseProgressWhenDone),
      flag("recycle", "Delete to recycle bin", BPUseRecycleBin),
      flag("usePrefixes", "File name prefixes", BPUsePrefixes),
      flag("thumbnails", "Permanent thumbnails", BatchProcessorTHNL),
      {.name = "hiddenThumbnails",
       .label = "Create hidden THNLs",
       .type = FieldType::Flag,
       .page = kSettings,
       .enabledBy = "thumbnails",
       .setting = &BatchProcessorHiddenTHNL},
      {.name = "overwrite",
       .label = "Overwrite mode",
       .type = FieldType::Choice,
       .choices = kOverwriteModes,
       .page = kSettings,
       .setting = &BPOverwriteMode},
      {.name = "matt",
       .label = "Thumbnail matt",
       .type = FieldType::Color,
       .most = 0xFFFFFF,
       .page = kSettings,
       .setting = &BatchProcessorMatt},
      prefix("caption", "Caption prefix", BPPrefixCaption),
      prefix("colorBalance", "Color balance prefix", BPPrefixColorbal),
      prefix("depopulate", "Depopulate prefix", BPPrefixDepopulate),
      prefix("flipRotate", "Flip and rotate prefix", BPPrefixFlipRot),
      prefix("frame", "Frame prefix", BPPrefixFrame),
      prefix("reconstruct", "Reconstruct prefix", BPPrefixReconstruct),
      prefix("resize", "Resize prefix", BPPrefixResize),
      prefix("reverse", "Reverse prefix", BPPrefixReverse),
      prefix("shadow", "Shadow prefix", BPPrefixShadow),
      prefix("textOverlay", "Text overlay prefix", BPPrefixTextOverlay),
      prefix("tile", "Tile prefix", BPPrefixTile),
      prefix("trim", "Trim prefix", BPPrefixTrim),
  };
}

/// A prefix is part of a name.
std::optional<FieldFault> slash_fault(const std::vector<Field>& fields, const FieldValues& values) {
  for (const Field& field : fields)
    if (field.type == FieldType::Text && values.text(field.name).find('/') != std::string::npos)
      return fault_of(field.name, StringId::PrefixHasSlash, {field.label});
  return std::nullopt;
}

}  // namespace

bool edit_batch_settings(Services& services, QWidget* parent) {
  const std::vector<Field> fields = make_fields();
  FormDialog dialog(QObject::tr("Setup"), QStringLiteral("BATCHPROCESSOR_SETUP"), fields,
                    setting_values(fields), services.host, parent);
  dialog.check = [&](const FieldValues& values) {
    const auto fault = check_fields(fields, values);
    return fault ? fault : slash_fault(fields, values);
  };
  dialog.apply = [&](const FieldValues& values) {
    keep_in_settings(fields, values);
    return true;
  };
  if (auto* tabs = dialog.form().findChild<QTabWidget*>())
    tabs->setCurrentIndex(settings::BPSetupPageIndex == 0 ? 0 : tabs->count() - 1);
  const bool changed = dialog.exec() == QDialog::Accepted;
  if (auto* tabs = dialog.form().findChild<QTabWidget*>()) settings::BPSetupPageIndex = tabs->currentIndex();
  return changed;
}

}  // namespace vellum
