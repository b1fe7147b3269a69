#include "shell/editors/editor_pages.h"

#include <QDialogButtonBox>

#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "core/chunks/chunk_payload.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr const char* kAnyFile = "All files (*)";

std::optional<std::filesystem::path> choose(Services& services, const FileChoice& choice) {
  return services.choose_file ? services.choose_file(choice) : std::nullopt;
}

}  // namespace

QString editor_title(ChunkTag tag) {
  return to_qt(format_text(string_text(StringId::EditTitle).data(), tag_letters(tag).c_str()));
}

QString chunk_topic(ChunkTag tag) { return to_qt("CHUNK_" + tag_letters(tag)); }

void tell(Services& services, StringId id, std::string text, std::string more) {
  if (services.host.message) services.host.message({id, {}, std::move(text), std::move(more), nullptr});
}

void finish_editor(QDialog& dialog, QTabWidget* pages, ChunkTag tag, Services& services,
                   std::function<std::string()> check, std::function<bool()> agree) {
  dialog.setWindowTitle(editor_title(tag));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog,
                   [&dialog, &services, check = std::move(check), agree = std::move(agree)] {
                     const std::string fault = check ? check() : std::string();
                     if (!fault.empty()) return tell(services, {}, fault);
                     if (!agree || agree()) dialog.accept();
                   });
  add_help(dialog, *buttons, [tag] { return chunk_topic(tag); });
  QVBoxLayout* layout = dialog_layout(dialog);
  layout->addWidget(pages, 1);
  layout->addWidget(buttons);
}

std::optional<std::vector<std::uint8_t>> load_bytes(Services& services, const QString& title) {
  const auto path = choose(services, {title.toStdString(), kAnyFile, {}, false});
  if (!path) return std::nullopt;
  std::string reason;
  const auto file = read_file(*path, reason, HexBuffer::kMostBytes);
  if (!file) {
    services.host.show(StringId::ErrorReadingFile, {}, reason);
    return std::nullopt;
  }
  const std::span<const std::uint8_t> bytes = *file;
  return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

bool save_bytes(Services& services, const QString& title, std::span<const std::uint8_t> bytes) {
  const auto path = choose(services, {title.toStdString(), kAnyFile, {}, true});
  if (!path) return false;
  SafeFile file(*path);
  if (file.write(bytes) && file.commit()) return true;
  services.host.show(StringId::ErrorWritingFile, {}, file.reason());
  return false;
}

bool export_raw(const ChunkRecord& record, DocumentKind kind, Services& services) {
  const auto payload = chunk_payload(record, kind);
  if (payload)
    return save_bytes(services, QObject::tr("Export %1").arg(to_qt(tag_letters(record.tag))), *payload);
  services.host.show(StringId::RawOfImage);
  return false;
}

}  // namespace vellum
