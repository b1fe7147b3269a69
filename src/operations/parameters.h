// What a person may say of an operation, an export or an import before it runs, as a row: the desktop's form,
// the options of the command line, the help, the guide and the tests all read it.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/fields.h"
#include "core/model/document.h"

namespace vellum {

/// An option of the command line that gives several fields their values, as "--rect X,Y,W,H" does; or,
/// without a form, one that takes no value and sets a field to `value`. One with the name of its field stands
/// in place of that field's own option.
struct CompoundOption {
  const char* name;  ///< without dashes
  const char* form;  ///< "X,Y,W,H"; null: the option is a flag
  const char* help;
  std::span<const char* const> fields;
  char parting = ',';
  std::int64_t value = 1;                      ///< of a flag
  std::optional<std::int64_t> otherwise = {};  ///< where a flag isn't given, in place of the initial value
  bool lastServesRest = false;                 ///< "P" means "P,P"
  const char* letters = nullptr;               ///< one for each of the fields, flags: "NE" sets two of them
  const char* alongside = nullptr;             ///< a field that gets `alongsideValue` beside them
  std::int64_t alongsideValue = 0;
  bool forAll = false;  ///< its fields, which mean the same in turn, have no options of their own
};

/// The fields that somebody gave a value, by name; the others have the initial ones.
using GivenFields = std::set<std::string_view>;

/// Texts, tables and fields live as long as the program. Where there is no document yet, as with imports, the
/// functions get an empty one.
struct Parameters {
  const char* name;                          ///< of the command of `vellum`
  const char* title;                         ///< of its dialog
  const char* help;                          ///< one line, for the command line
  int command = 0;                           ///< number of the desktop's command
  std::span<const DocumentKind> kinds = {};  ///< of documents that it takes
  const char* page = nullptr;                ///< of the guide; null: it has the name
  const char* stateFile = nullptr;           ///< of the dialog: keeps the fields that have a `stateId`
  const char* history = nullptr;             ///< file that keeps the values that were chosen last
  const char* texts = nullptr;               ///< file that keeps the last texts of the first text field
  std::span<const Field> fields = {};
  const char* folder =
      nullptr;  ///< field that a command line takes where others have OUT: a folder for files
  const char* second =
      nullptr;  ///< field that a command line takes between IN and OUT: the name of another file
  std::span<const CompoundOption> options = {};

  /// Makes ranges and initial values fit a document: the size of its canvas, the number of its frames.
  void (*fit)(std::vector<Field>& fields, const DocumentWindow& window) = nullptr;
  /// Completes values of which a command line gave some, as where one side follows the other. Gives the
  /// reason where they contradict each other, else null.
  const char* (*settle)(FieldValues& values, const DocumentWindow& window,
                        const GivenFields& given) = nullptr;
  /// What the ranges of the fields can't tell.
  std::optional<FieldFault> (*check)(const FieldValues& values, const DocumentWindow& window) = nullptr;
  /// A line below the fields that says what the values will do.
  std::string (*note)(const FieldValues& values, const DocumentWindow& window) = nullptr;
};

/// The name of the page in the guide; in capitals, the topic that Help shows.
const char* guide_page(const Parameters& parameters);
bool takes_kind(const Parameters& parameters, DocumentKind kind);
/// The fields as they fit the document.
std::vector<Field> fields_for(const Parameters& parameters, const DocumentWindow& window);
/// The first fault of the values.
std::optional<FieldFault> check_values(const Parameters& parameters, const FieldValues& values,
                                       const DocumentWindow& window);

/// The kinds that most operations take, and all of them.
inline constexpr DocumentKind kAnimatedKinds[] = {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP};
inline constexpr DocumentKind kEveryKind[] = {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP,
                                              DocumentKind::PING};

}  // namespace vellum
