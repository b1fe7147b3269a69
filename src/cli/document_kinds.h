// Kinds of documents as options name them.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "base/text.h"
#include "core/model/tags.h"

namespace vellum::cli {

inline const std::map<std::string, DocumentKind> kKinds = {{"png", DocumentKind::PING},
                                                           {"apng", DocumentKind::APNG},
                                                           {"mng", DocumentKind::MING},
                                                           {"webp", DocumentKind::WEBP}};

/// Those of animations alone.
const std::map<std::string, DocumentKind>& animation_kinds();

/// "--kind" of an animation that is made. Where it isn't given, the name of the result decides: an animated
/// PNG where that says nothing.
void add_kind_option(CLI::App& app, DocumentKind& kind);
DocumentKind kind_of_result(DocumentKind given, const std::string& out);

/// Whether a document may have a name: those of other formats would lie about its content. Tells where not.
bool name_fits_document(const std::string& path);
/// The same for a document of a kind: ".webp" alone decides the writer.
bool name_fits_kind(const std::string& path, DocumentKind kind);

}  // namespace vellum::cli
