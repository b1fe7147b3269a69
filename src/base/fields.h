// Fields: what a form shows and a command line sets, as rows of a table; values by name; the checks that
// rows ask for.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/string_table.h"

namespace vellum {

enum class FieldType { Whole, Real, Choice, Flag, Color, Text };

/// Whole, Choice, Flag and Color are whole numbers, Real a number, Text is UTF-8. A text in a field of
/// another type is one that nobody could read as its value; the check refuses it.
using FieldValue = std::variant<std::int64_t, double, std::string>;

/// Values by the names of their fields.
class FieldValues {
 public:
  const FieldValue* find(std::string_view name) const;
  void set(std::string_view name, FieldValue value);
  /// 0 where there is no such number.
  std::int64_t number(std::string_view name) const;
  double real(std::string_view name) const;
  /// Empty where there is no such text.
  const std::string& text(std::string_view name) const;

 private:
  std::vector<std::pair<std::string, FieldValue>> items_;
};

struct FieldChoice {
  std::int64_t value = 0;
  const char* name = "";
  const char* word = "";  ///< what a command line may say for it beside its name and number
};

/// How a form shows a field, where its type alone doesn't say.
enum class FieldLook {
  Plain,
  Radio,  ///< Choice, Flag: one button for each of the choices
  Bits,   ///< Whole: a number in hexadecimal and a box for each of the choices, whose values are its bits
  Lines,  ///< Text of several lines
  Suggestions,  ///< Text that may be picked from `choices`
  Path,         ///< Text that names a file
  Bytes,        ///< Text of hexadecimal digits, or the name of a file, that stands for bytes
};

/// One row. Texts and tables live as long as the program.
struct Field {
  const char* name = "";   ///< as on the command line
  const char* label = "";  ///< as in messages, and with a colon behind it in forms
  FieldType type = FieldType::Whole;
  std::int64_t least = 0, most = 0;  ///< Whole; a flag has 0 and 1; Text: `most` characters, 0 for no bound
  double leastReal = 0, mostReal = 0;
  int decimals = 0;                           ///< Real
  std::span<const FieldChoice> choices = {};  ///< Choice, Bits, Suggestions
  const char* special = nullptr;              ///< Whole: what `specialValue` means ("For ever")
  std::int64_t specialValue = 0;
  FieldLook look = FieldLook::Plain;
  const char* page = nullptr;       ///< of the form; null: the first one
  const char* enabledBy = nullptr;  ///< the field that must be in use for this one
  std::int64_t enabledAt = -1;      ///< its value then; -1: any but 0
  bool vanishes = false;            ///< a form shows it, and what it switches, only while it is enabled
  const char* tip = nullptr;
  bool locked = false;  ///< shown only
  bool option = false;  ///< steers how others are applied, and is no content itself

  // What the field holds before anyone chose a value, and where a chosen one is kept. Ranges hold for both.
  std::int64_t initial = 0;
  double initialReal = 0;
  const char* initialText = "";
  int* setting = nullptr;              ///< Whole, Choice, Flag, Color; Real: rounded
  int settingBits = 0;                 ///< Choice, Flag: the bits of the setting that it is; 0: all of it
  std::string* textSetting = nullptr;  ///< Text
  int stateId = 0;                     ///< its line in the dialog's state file; 0: it has none
};

/// What is wrong with a field.
struct FieldFault {
  std::string field;
  StringId id{};
  std::string text;       ///< the message, filled in
  bool question = false;  ///< Yes lets the values be repaired, see who made the fault
  std::size_t at = 0;     ///< Text: characters in front of the first wrong one
};

/// A fault with a message whose values are filled in.
FieldFault fault_of(std::string field, StringId id, std::initializer_list<std::string> values = {});

const Field* find_field(std::span<const Field> fields, std::string_view name);

/// Whether the field that switches this one is in use (and the one that switches that).
bool field_enabled(std::span<const Field> fields, const Field& field, const FieldValues& values);
/// Gives the switching fields, where this one is not enabled, values that enable it.
void enable_field(std::span<const Field> fields, const Field& field, FieldValues& values);

/// What was typed. Numbers are decimal, or hexadecimal behind "0x"; a color is six or eight hexadecimal
/// digits behind "#" (red first, alpha last); a choice goes by name or number, a flag by 0, 1, yes, no, on,
/// off, true, false; a special value also by its word. What can't be read stays a text.
FieldValue parse_field_value(const Field& field, std::string_view text);
/// The value as it can be typed.
std::string field_value_text(const Field& field, const FieldValue& value);

/// The value that the row gives, and those of all rows.
FieldValue initial_value(const Field& field);
FieldValues initial_values(std::span<const Field> fields);
/// The values of the settings, held to their ranges; the initial ones of fields without a setting.
FieldValues setting_values(std::span<const Field> fields);
/// Makes the values those of the settings. Fields without a setting are passed over.
void keep_in_settings(std::span<const Field> fields, const FieldValues& values);

/// The value nearest to `value` that the field can have.
FieldValue clamped(const Field& field, FieldValue value);

/// "%s must be a whole number from %s to %s." and its like, where the value is none of the field's.
std::optional<FieldFault> check_field(const Field& field, const FieldValue& value);
/// The first fault among the fields that are enabled and not locked.
std::optional<FieldFault> check_fields(std::span<const Field> fields, const FieldValues& values);

/// A format of the string table with its values ("%s", "%u", "%d") filled in, in order; "%%" is one percent
/// sign.
std::string filled(StringId id, std::initializer_list<std::string> values);

/// "1 file", "12,000 files": `one` is the row of the single thing, behind which the row of several stands.
std::string count_text(StringId one, std::uint64_t count);

}  // namespace vellum
