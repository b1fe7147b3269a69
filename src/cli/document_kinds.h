// Kinds of documents as options name them.
#pragma once

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

/// ".webp" alone decides the writer: a name and a kind must agree about it. Tells where they do not.
bool name_fits_kind(const std::string& path, DocumentKind kind);

}  // namespace vellum::cli
