#include "core/model/playing_rules.h"

#include <algorithm>

#include "core/model/frame_values.h"
#include "core/model/framing.h"
#include "core/settings.h"

namespace vellum {
namespace {

using enum Laying;

/// Frames of a WebP are whole canvases: its reader composes them, and its writer takes them for that. A still
/// image is alone on its canvas.
constexpr PlayingRule kFormats[] = {
    {DocumentKind::APNG, AsBlended, AsBlended, Clearing::Nothing, 0, false},
    {DocumentKind::MING, Over, Over, Clearing::Canvas, 1, false},
    {DocumentKind::WEBP, Replaces, Replaces, Clearing::Always, 0, false},
    {DocumentKind::None, Replaces, Replaces, Clearing::Nothing, 0, false},
};

constexpr PlayingRule kClassic[] = {
    {DocumentKind::APNG, Over, AsBlended, Clearing::Nothing, 0, true},
    {DocumentKind::MING, Over, Replaces, Clearing::OwnPlace, 0, true},
    {DocumentKind::WEBP, Replaces, Replaces, Clearing::Nothing, 0, true},
    {DocumentKind::None, Over, Replaces, Clearing::Nothing, 0, true},
};

std::uint32_t stored_disposal(const ChunkRecord& record, const PlayingRule& rule) {
  if (rule.kind == DocumentKind::APNG) return std::min<std::uint32_t>(record.frameControl.dispose, 2);
  if (rule.kind == DocumentKind::WEBP) return record.webpImage.dispose == 1;
  return rule.clearing == Clearing::OwnPlace && clears_canvas(record);
}

}  // namespace

const PlayingRule& playing_rule(DocumentKind kind) {
  const auto& rules = settings::ClassicPlayback != 0 ? kClassic : kFormats;
  const auto row = std::ranges::find(rules, kind, &PlayingRule::kind);
  return row == std::end(rules) ? rules[std::size(rules) - 1] : *row;
}

FrameManner frame_manner(const ChunkRecord& record, const PlayingRule& rule) {
  const Picture picture = picture_of(record);
  const Laying laying = picture && picture.bits() == 32 ? rule.deep : rule.shallow;
  return {stored_disposal(record, rule),
          laying == Over || (laying == AsBlended && record.frameControl.blend == 1),
          rule.clearing == Clearing::Always || (rule.clearing == Clearing::Canvas && clears_canvas(record))};
}

FrameManner frame_manner(const ChunkRecord& record, DocumentKind kind) {
  return frame_manner(record, playing_rule(kind));
}

std::uint32_t delay_ticks(const ChunkRecord& record) {
  const std::uint32_t unframed = playing_rule(DocumentKind::MING).unframedTicks;
  if (!(record.flags & CRF_FRAM)) return unframed;
  const FramBlock& block = record.image->framBlock;
  // MNG 1.0, "FRAM": a delay that was never changed is one tick.
  return block.changeDelay == 0 && block.interframeDelay == 0 ? unframed
                                                              : from_file_order(block.interframeDelay);
}

}  // namespace vellum
