// The person's language for all windows: the program's catalog, and Qt's own where it is installed.
#pragma once

#include <QStringList>
#include <string_view>

namespace vellum {

/// Takes the language of this code (the desktop's where it is empty) and gives its texts to `tr`. Once, when
/// the program starts and before the first window.
void speak_language(std::string_view code);

/// Makes `tr` ask the catalog in use, whichever that is. Called again it does nothing.
void install_catalog();

/// A text whose meaning depends on where it stands: what the catalog has for it there, else anywhere.
QString shown_in(std::string_view context, std::string_view text);

/// The codes that may be chosen, and what people call them, in the same order; the desktop's language, whose
/// code is empty, is first.
struct LanguageChoices {
  QStringList codes, names;
};
LanguageChoices language_choices();

}  // namespace vellum
