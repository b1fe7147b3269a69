#include <algorithm>
#include <charconv>
#include <optional>

#include "base/byte_order.h"
#include "cli/command.h"
#include "cli/edit_values.h"
#include "core/delete_chunks.h"
#include "core/move_chunks.h"
#include "core/open_document.h"
#include "core/save_document.h"

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

bool apply_delete(DocumentWindow& window, const std::string& value, Host& host) {
  const auto at = entry_index(window, *entry_number(value), host);
  if (!at) return false;
  std::vector<bool> marks(window.list.size());
  marks[*at] = true;
  return delete_marked(window, std::move(marks), host);
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

bool apply_insert(DocumentWindow& window, const std::string& text, Host& host) {
  const auto insert = parse_insert(text);
  const auto at = entry_index(window, insert->entry, host);
  if (!at) return false;
  window.document.caret = static_cast<std::int32_t>(*at);
  return insert_value(window, insert->tag, insert->value, host);
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

bool apply_move(DocumentWindow& window, const std::string& text, Host& host) {
  const auto move = parse_move(text);
  const auto from = entry_index(window, move->from, host), to = entry_index(window, move->to, host);
  return from && to && move_entry(window, *from, *to, host);
}

/// One kind of edit: an option that may stand any number of times.
struct OperationRow {
  const char* option;
  const char* form;
  const char* help;
  bool (*is_form)(const std::string& value);
  bool (*apply)(DocumentWindow& window, const std::string& value, Host& host);
};

constexpr OperationRow kOperations[] = {
    {"--delete", "N", "Delete entry N, counted from 1", is_delete, apply_delete},
    {"--insert", "TAG@N[:VALUE]", "Insert a chunk behind entry N, or at the nearest place where it may stand",
     is_insert, apply_insert},
    {"--move", "N@M", "Move entry N to position M", is_move, apply_move},
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

bool apply_edits(DocumentWindow& window, const std::vector<Edit>& edits, Host& host) {
  return std::ranges::all_of(edits, [&](const Edit& edit) {
    window.undoLevels.clear();  // nothing is undone here
    if (edit.row->apply(window, edit.value, host)) return true;
    std::fprintf(stderr, "vellum: nothing was written, since this was refused: %s %s\n", edit.row->option,
                 edit.value.c_str());
    return false;
  });
}

int run_edit(const CLI::App& app, const EditOptions& options, Host& host) {
  const std::vector<Edit> edits = edits_in_order(app, options);
  DocumentWindow window;
  const bool done = open_document(window, options.in, host) && apply_edits(window, edits, host) &&
                    save_document(window, options.out, host);
  return done ? kDone : kFailed;
}

}  // namespace

Run prepare_edit(CLI::App& app) {
  const auto options = std::make_shared<EditOptions>();
  app.add_option("IN", options->in, "The file to read")->required();
  app.add_option("OUT", options->out, "The file to write; may be the same")->required();
  for (const OperationRow& row : kOperations) {
    CLI::Option* option = app.add_option(row.option, row.help)->type_name(row.form)->take_all()->expected(1);
    option->check(CLI::Validator(
        [&row](const std::string& value) {
          return row.is_form(value) ? "" : std::string("is not ") + row.form;
        },
        ""));
    options->options.emplace_back(&row, option);
  }
  return [options, &app](Host& host) { return run_edit(app, *options, host); };
}

}  // namespace vellum::cli
