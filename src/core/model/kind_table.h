// The kinds of documents: what their files are called and begin with, and what they can hold.
#pragma once

#include <filesystem>
#include <span>
#include <string_view>

#include "core/model/tags.h"

namespace vellum {

struct KindRow {
  DocumentKind kind;
  std::string_view name;                         ///< of its files
  std::span<const std::string_view> extensions;  ///< with their dots; the first is that of new files
  std::size_t signatureAt;                       ///< where in a file the signature lies
  std::string_view signature;
  std::int64_t mostPixels;  ///< of a canvas in either direction, as format and readers take it
  std::uint32_t mostPlays;  ///< that an animation can tell beside "for ever"
  ChunkTag header;          ///< the record that tells the canvas
};

/// In the order in which people are shown them. Still and animated PNG files differ in what they hold alone.
std::span<const KindRow> kind_table();
/// The row of a kind; that of a still PNG for none.
const KindRow& kind_row(DocumentKind kind);

/// Whether the name ends as files of this kind do, in any case.
bool has_extension_of(const std::filesystem::path& name, DocumentKind kind);
/// Whether it does for some kind.
bool has_document_extension(const std::filesystem::path& name);

}  // namespace vellum
