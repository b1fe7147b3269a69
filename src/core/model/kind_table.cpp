#include "core/model/kind_table.h"

#include <algorithm>

#include "base/limits.h"
#include "base/text.h"
#include "image/webp_container.h"

namespace vellum {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kPngExtensions[] = {".png"};
constexpr std::string_view kApngExtensions[] = {".png", ".apng"};
constexpr std::string_view kMngExtensions[] = {".mng"};
constexpr std::string_view kWebpExtensions[] = {".webp"};
constexpr std::string_view kPngSignatureText = "\x89PNG\r\n\x1a\n"sv;
/// The formats have 31 bits for it (PNG standard, "IHDR"), but what readers refuse is not made either.
constexpr std::int64_t kMostPngPixels = kMaximumDimension;

// Plays: 31 bits in an acTL (a still has none), in a LOOP (MNG 1.0, "LOOP") all ones are for ever, 16 bits in
// an ANIM.
constexpr KindRow kKinds[] = {
    {DocumentKind::PING, "PNG", kPngExtensions, 0, kPngSignatureText, kMostPngPixels, 1, tag::IHDR},
    {DocumentKind::APNG, "PNG", kApngExtensions, 0, kPngSignatureText, kMostPngPixels, 0x7FFFFFFE, tag::IHDR},
    {DocumentKind::MING, "MNG", kMngExtensions, 0, "\x8AMNG\r\n\x1a\n"sv, kMostPngPixels, 0x7FFFFFFE,
     tag::MHDR},
    {DocumentKind::WEBP, "WebP", kWebpExtensions, 8, "WEBP"sv, kMostWebpPixels, 65535, tag::WEBH},
};

}  // namespace

std::span<const KindRow> kind_table() { return kKinds; }

const KindRow& kind_row(DocumentKind kind) {
  const auto row = std::ranges::find(kKinds, kind, &KindRow::kind);
  return row == std::end(kKinds) ? kKinds[0] : *row;
}

bool has_extension_of(const std::filesystem::path& name, DocumentKind kind) {
  const std::string extension = name.extension().string();
  return std::ranges::any_of(kind_row(kind).extensions,
                             [&](std::string_view known) { return equal_ignoring_case(extension, known); });
}

bool has_document_extension(const std::filesystem::path& name) {
  return std::ranges::any_of(kKinds, [&](const KindRow& row) { return has_extension_of(name, row.kind); });
}

}  // namespace vellum
