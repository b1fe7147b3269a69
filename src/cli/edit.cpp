#include <algorithm>
#include <charconv>
#include <optional>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/translation.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/edit_values.h"
#include "core/chunks/chunk_bytes.h"
#include "core/chunks/chunk_fields.h"
#include "core/chunks/chunk_payload.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/edit_closing.h"
#include "core/edit/move_chunks.h"
#include "core/edit/undo.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"

namespace vellum::cli {
namespace {

/// An entry as options name it, counted from 1.
std::optional<std::size_t> entry_number(std::string_view text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0) return std::nullopt;
  return number;
}

/// Its index, where the list has such an entry.
std::optional<std::size_t> entry_index(const DocumentWindow& window, std::size_t number, Host& host) {
  if (number <= window.list.size()) return number - 1;
  host.show(StringId::ErrorAccessingChunk, {}, "there is no entry " + std::to_string(number));
  return std::nullopt;
}

// --delete N

bool is_delete(const std::string& value) { return entry_number(value).has_value(); }

int status(bool done) { return done ? kDone : kFailed; }

int apply_delete(DocumentWindow& window, const std::string& value, Host& host) {
  const auto at = entry_index(window, *entry_number(value), host);
  if (!at) return kFailed;
  std::vector<bool> marks(window.list.size());
  marks[*at] = true;
  return status(delete_marked(window, std::move(marks), host));
}

// --insert TAG@N[:VALUE]

struct InsertValue {
  ChunkTag tag = 0;
  std::size_t entry = 0;
  std::string value;
};

std::optional<InsertValue> parse_insert(const std::string& text) {
  if (text.size() < 6 || text[4] != '@') return std::nullopt;
  const auto colon = text.find(':');
  const auto entry =
      entry_number(std::string_view(text).substr(5, colon == std::string::npos ? colon : colon - 5));
  if (!entry) return std::nullopt;
  const ChunkTag tag = read_be32(reinterpret_cast<const std::uint8_t*>(text.data()));
  return InsertValue{tag, *entry, colon == std::string::npos ? "" : text.substr(colon + 1)};
}

bool is_insert(const std::string& value) { return parse_insert(value).has_value(); }

int apply_insert(DocumentWindow& window, const std::string& text, Host& host) {
  const auto insert = parse_insert(text);
  const auto at = entry_index(window, insert->entry, host);
  if (!at) return kFailed;
  window.document.caret = static_cast<std::int32_t>(*at);
  return status(insert_value(window, insert->tag, insert->value, host));
}

// --move N@M

struct MoveValue {
  std::size_t from = 0, to = 0;
};

std::optional<MoveValue> parse_move(const std::string& text) {
  const auto parting = text.find('@');
  if (parting == std::string::npos) return std::nullopt;
  const auto from = entry_number(std::string_view(text).substr(0, parting));
  const auto to = entry_number(std::string_view(text).substr(parting + 1));
  if (!from || !to) return std::nullopt;
  return MoveValue{*from, *to};
}

bool is_move(const std::string& value) { return parse_move(value).has_value(); }

int apply_move(DocumentWindow& window, const std::string& text, Host& host) {
  const auto move = parse_move(text);
  const auto from = entry_index(window, move->from, host), to = entry_index(window, move->to, host);
  return status(from && to && move_entry(window, *from, *to, host));
}

// --set-field N.FIELD=VALUE

bool is_assignment(const std::string& value) { return parse_field_assignment(value).has_value(); }

int apply_assignment(DocumentWindow& window, const std::string& text, Host& host) {
  const auto assignment = parse_field_assignment(text);
  const auto at = entry_index(window, assignment->index + 1, host);
  if (!at) return kFailed;
  std::string reason;
  if (set_chunk_field(window, *at, assignment->field, assignment->value, host, reason)) {
    finish_edit(window, false);
    return kDone;
  }
  std::fprintf(stderr, "vellum: %s\n", reason.c_str());
  return kWrongUsage;
}

// --dump N[.FIELD]=FILE

struct DumpValue {
  std::size_t entry = 0;
  std::string field, file;
};

std::optional<DumpValue> parse_dump(const std::string& text) {
  const auto parting = text.find('=');
  const std::string from = text.substr(0, parting);
  const auto dot = std::min(from.find('.'), from.size());
  const auto entry = entry_number(std::string_view(from).substr(0, dot));
  if (!entry || parting == std::string::npos || parting + 1 == text.size()) return std::nullopt;
  return DumpValue{*entry, from.substr(std::min(dot + 1, from.size())), text.substr(parting + 1)};
}

/// What a field holds: its bytes, or its value as it can be typed. Nothing for a field that isn't there.
std::optional<std::vector<std::uint8_t>> field_bytes(const DocumentWindow& window, std::size_t index,
                                                     const std::string& name) {
  const std::vector<Field> fields = chunk_fields(window, index);
  const FieldValues values = read_chunk_fields(window, index);
  const Field* field = find_field(fields, name);
  const FieldValue* value = values.find(name);
  if (!field || !value) return std::nullopt;
  const std::string text = field_value_text(*field, *value);
  std::string reason;
  if (field->look == FieldLook::Bytes) return parse_bytes(text, reason);
  return std::vector<std::uint8_t>(text.begin(), text.end());
}

bool is_dump(const std::string& value) { return parse_dump(value).has_value(); }

int apply_dump(DocumentWindow& window, const std::string& text, Host& host) {
  const auto dump = parse_dump(text);
  const auto at = entry_index(window, dump->entry, host);
  if (!at) return kFailed;
  const auto payload = dump->field.empty() ? chunk_payload(window.list.record(*at), window.document.kind)
                                           : field_bytes(window, *at, dump->field);
  if (!payload) {
    std::fprintf(stderr, dump->field.empty()
                             ? translated("vellum: the data of an image is made when the file is saved\n")
                             : translated("vellum: the entry has no such field\n"));
    return kWrongUsage;
  }
  SafeFile file(dump->file);
  if (file.write(*payload) && file.commit()) return kDone;
  host.show(StringId::ErrorWritingFile, {}, file.reason());
  return kFailed;
}

/// One kind of edit: an option that may stand any number of times.
struct OperationRow {
  const char* option;
  const char* form;
  const char* help;
  bool (*is_form)(const std::string& value);
  /// The exit status of the program.
  int (*apply)(DocumentWindow& window, const std::string& value, Host& host);
};

constexpr OperationRow kOperations[] = {
    {"--delete", "N", "Delete entry N, counted from 1", is_delete, apply_delete},
    {"--insert", "TAG@N[:VALUE]",
     "Insert a chunk behind entry N, or at the nearest place where it may stand: a text as Keyword=text, a "
     "profile as Name=@FILE, an image as its file, the bytes of any chunk as hex:... or @FILE",
     is_insert, apply_insert},
    {"--move", "N@M", "Move entry N to position M", is_move, apply_move},
    {"--set-field", "N.FIELD=VALUE", "Set a field of entry N; `data` takes hex:... or @FILE", is_assignment,
     apply_assignment},
    {"--dump", "N[.FIELD]=FILE", "Write the payload of entry N, or what one of its fields holds, to a file",
     is_dump, apply_dump},
};

struct EditOptions {
  std::string in, out;
  std::vector<std::pair<const OperationRow*, CLI::Option*>> options;
};

struct Edit {
  const OperationRow* row;
  std::string value;
};

/// The operations in the order of the command line.
std::vector<Edit> edits_in_order(const CLI::App& app, const EditOptions& options) {
  std::vector<Edit> edits;
  std::map<const CLI::Option*, std::size_t> used;
  for (const CLI::Option* option : app.parse_order())
    for (const auto& [row, known] : options.options)
      if (known == option) edits.push_back({row, known->results()[used[option]++]});
  return edits;
}

int apply_edits(DocumentWindow& window, const std::vector<Edit>& edits, Host& host) {
  for (const Edit& edit : edits) {
    undo_clear(window);  // nothing is undone here
    const int result = edit.row->apply(window, edit.value, host);
    if (result == kDone) continue;
    std::fprintf(stderr, translated("vellum: nothing was written, since this was refused: %s %s\n"),
                 edit.row->option, edit.value.c_str());
    return result;
  }
  return kDone;
}

int run_edit(const CLI::App& app, const EditOptions& options, Host& host) {
  const std::vector<Edit> edits = edits_in_order(app, options);
  const bool only_dumps =
      std::ranges::all_of(edits, [](const Edit& e) { return e.row->apply == apply_dump; });
  if (options.out.empty() && (edits.empty() || !only_dumps)) {
    std::fprintf(stderr, translated("vellum: the file to write is missing\n"));
    return kWrongUsage;
  }
  if (!options.out.empty() && !name_fits_document(options.out)) return kWrongUsage;
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  const int result = apply_edits(window, edits, host);
  if (result != kDone || options.out.empty()) return result;
  return status(save_document(window, options.out, host));
}

}  // namespace

Run prepare_edit(CLI::App& app) {
  const auto options = std::make_shared<EditOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write; may be the same. Not needed for --dump alone");
  for (const OperationRow& row : kOperations) {
    CLI::Option* option = app.add_option(row.option, row.help)->type_name(row.form)->take_all()->expected(1);
    option->check(CLI::Validator(
        [&row](const std::string& value) {
          return row.is_form(value) ? "" : std::string(translated("is not ")) + row.form;
        },
        ""));
    options->options.emplace_back(&row, option);
  }
  return [options, &app](Host& host) { return run_edit(app, *options, host); };
}

}  // namespace vellum::cli
