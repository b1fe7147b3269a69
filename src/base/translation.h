// Texts in the person's language. The English text is the key of its translation.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vellum {

/// The text in the language in use; the text itself where that has none for it. What comes back lives as long
/// as the program, or as what was given, and ends in a NUL where that does. Any thread may ask.
std::string_view translated(std::string_view source);
[[gnu::format_arg(1)]] const char* translated(const char* source);

/// The text as it stands inside a sentence: English in small letters; in another language what the catalog
/// has for those, else for the text, since its nouns may have capitals.
std::string inside_sentence(std::string_view source);

/// Whether a text was found in the catalog in use. False while the language is English.
bool is_translated(std::string_view source);

struct Language {
  std::string code;  ///< "de", "pt_BR"
  std::string name;  ///< as those say who speak it
};

/// Folders in which catalogs may lie, as CODE/LC_MESSAGES/vellumcraft.mo: beside the running program.
std::vector<std::filesystem::path> catalog_folders();

/// The languages that have a catalog there, in the order of their codes; English, which needs none, is first.
std::vector<Language> languages(std::span<const std::filesystem::path> folders);

/// What a person wants to read, the best first: `wanted`, or where that is empty what LANGUAGE, LC_ALL,
/// LC_MESSAGES and LANG say, as elsewhere on the system. "de_AT.UTF-8" is "de_AT", then "de".
std::vector<std::string> wished_languages(std::string_view wanted);

/// Takes the first of the wished languages that is English or has a whole catalog in one of the folders; else
/// English. Called when a program starts: texts that somebody has read already stay as they were.
void use_language(std::span<const std::string> wished, std::span<const std::filesystem::path> folders);

/// The code of the language in use.
std::string_view language_in_use();

}  // namespace vellum
