#include "shell/look/language.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr char kEndOfContext = 4;  // in compiled catalogs

/// Qt asks it for every text of `tr`, ours and its own; what the catalog lacks is left to Qt's.
class CatalogTranslator : public QTranslator {
 public:
  using QTranslator::QTranslator;
  bool isEmpty() const override { return false; }
  QString translate(const char*, const char* source, const char* meaning, int) const override {
    if (!source) return {};
    const QString text = meaning ? shown_in(meaning, source) : shown(source);
    return is_translated(source) || text != QString::fromUtf8(source) ? text : QString();
  }
};

void install_catalog_of_qt(const QString& code) {
  static QTranslator* installed = nullptr;
  if (installed) QCoreApplication::removeTranslator(installed);
  delete std::exchange(installed, nullptr);
  auto translator = std::make_unique<QTranslator>(qApp);
  const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
  if (translator->load(QStringLiteral("qtbase_") + code, folder) &&
      QCoreApplication::installTranslator(translator.get()))
    installed = translator.release();
}

}  // namespace

QString shown_in(std::string_view context, std::string_view text) {
  if (language_in_use() == "en") return to_qt(text);
  const std::string there = std::string(context) + kEndOfContext + std::string(text);
  return is_translated(there) ? shown(there) : shown(text);
}

void install_catalog() {
  static CatalogTranslator* installed = nullptr;
  if (installed) return;
  installed = new CatalogTranslator(qApp);
  QCoreApplication::installTranslator(installed);
}

void speak_language(std::string_view code) {
  use_language(wished_languages(code), catalog_folders());
  if (language_in_use() == "en") return;
  // Of two translators Qt asks the one that came last.
  install_catalog_of_qt(to_qt(language_in_use()));
  install_catalog();
}

LanguageChoices language_choices() {
  LanguageChoices choices{{QString()}, {QCoreApplication::tr("As the desktop")}};
  for (const Language& language : languages(catalog_folders())) {
    choices.codes << to_qt(language.code);
    choices.names << to_qt(language.name);
  }
  return choices;
}

}  // namespace vellum
