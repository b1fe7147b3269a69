#include "shell/dialogs/insert_dialog.h"

#include "base/byte_order.h"
#include "core/chunks/chunk_table.h"
#include "core/edit/insert_chunk.h"
#include "core/model/chunk_description.h"
#include "shell/forms/form_dialog.h"

namespace vellum {
namespace {

constexpr std::int64_t kByName = 0;

/// "pHYs (PIXEL SIZE)", as the list will tell it; the tag alone where it has no name.
std::string name_of(ChunkTag tag) {
  ChunkRecord record;
  record.tag = tag;
  const std::string line = chunk_description(record);
  const std::string label = line.substr(0, line.find('?'));
  record.tag = make_tag("xxXx");
  const std::string unknown = chunk_description(record);
  return unknown.starts_with(label + '?') ? tag_letters(tag) : tag_letters(tag) + " (" + label + ")";
}

/// 0 for a text that is no tag.
ChunkTag tag_of(const std::string& name) {
  if (name.size() != 4) return 0;
  const ChunkTag tag = read_be32(reinterpret_cast<const std::uint8_t*>(name.data()));
  return is_valid_tag(tag) ? tag : 0;
}

ChunkTag chosen(const FieldValues& values) {
  const std::int64_t listed = values.number("chunk");
  return listed == kByName ? tag_of(values.text("name")) : static_cast<ChunkTag>(listed);
}

}  // namespace

std::optional<ChunkTag> ask_for_chunk(QWidget* parent, const DocumentWindow& window, Services& services) {
  const std::vector<ChunkTag> tags = insertable_tags(window);
  std::vector<std::string> names;
  for (const ChunkTag tag : tags) names.push_back(name_of(tag));
  const std::string by_name = QObject::tr("Another, by its name").toStdString();
  std::vector<FieldChoice> choices;
  for (std::size_t i = 0; i < tags.size(); ++i) choices.push_back({tags[i], names[i].c_str()});
  choices.push_back({kByName, by_name.c_str()});
  FieldValues values;
  values.set("chunk", choices.front().value);
  values.set("name", std::string());
  const std::vector<Field> fields = {
      {.name = "chunk", .label = "Chunk", .type = FieldType::Choice, .choices = choices},
      {.name = "name",
       .label = "Name",
       .type = FieldType::Text,
       .most = 4,
       .enabledBy = "chunk",
       .enabledAt = kByName}};
  FormDialog dialog(QObject::tr("Insert chunk"), QStringLiteral("INSERT"), fields, values, services.host,
                    parent);
  dialog.check = [&](const FieldValues& typed) -> std::optional<FieldFault> {
    const ChunkTag tag = chosen(typed);
    if (tag != 0 && may_be_put(tag, window.document.kind)) return std::nullopt;
    const StringId id = tag == 0 ? StringId::ChunkNameRule : StringId::InsertError;
    return fault_of("name", id);
  };
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return chosen(dialog.form().values());
}

}  // namespace vellum
