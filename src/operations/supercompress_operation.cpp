// Supercompress as the row of an operation.
#include "base/translation.h"
#include "operations/operation_rows.h"
#include "operations/supercompress.h"

namespace vellum {
namespace {

constexpr Field flag(const char* name, const char* label, const char* tip) {
  return {.name = name, .label = label, .type = FieldType::Flag, .tip = tip};
}

constexpr Field kFields[] = {
    flag("palette", "Palette compression", "Images of an MNG lose the colors that they don't use"),
    flag("prune", "Prune overlapping frames", "Frames are cut to what differs from those in front of them"),
    flag("redundancy", "Redundancy compression",
         "Pixels of an MNG that are seen already become one transparent color"),
    flag("stripText", "Strip text chunks", "tEXt and zTXt chunks are deleted"),
    flag("recompress", "Recompress images", "Every image is packed by the best of many ways"),
    flag("deep", "Search deeper", "Frames are made anew, each as small as it can be, in the smallest form"),
    flag("mergeEqual", "Merge equal frames", "The deeper search makes one frame of those that show the same"),
    flag("all", "All of these", "All that can be done to the document, but for its texts"),
};

struct PassField {
  unsigned pass;
  const char* field;
};
constexpr PassField kPassFields[] = {
    {kPalettePass, "palette"},  {kPrunePass, "prune"},           {kRedundancyPass, "redundancy"},
    {kTextPass, "stripText"},   {kRecompressPass, "recompress"}, {kDeepPass, "deep"},
    {kMergePass, "mergeEqual"},
};

/// Without a word the three stated passes run where they would be checked.
unsigned chosen_passes(const OperationRun& run, const SupercompressOffer& offer) {
  unsigned passes = 0;
  for (const PassField& row : kPassFields)
    if (run.number(row.field) != 0) passes |= row.pass;
  const bool all = run.number("all") != 0;
  if (all || passes == 0) passes |= offer.checked & ~unsigned{kTextPass};
  return all ? passes | kRecompressPass | kDeepPass : passes;
}

bool run(OperationRun& run) {
  const SupercompressOffer offer = supercompress_offer(run.draft, ~0u);
  const TellStatus tell = [&](const std::string& line) { run.host.set_status(line); };
  const unsigned passes = chosen_passes(run, offer);
  for (const PassField& row : kPassFields)
    if (passes & ~offer.enabled & row.pass)
      tell(filled(StringId::PassCannotRun, {find_field(kFields, row.field)->label}));
  if (offer.lost)
    return run.host.fail({FaultKind::Misuse, 0, -1, -1, translated("an image has lost its picture")});
  return supercompress(run.draft, passes, tell, run.host, document_bytes(run.draft)).whole;
}

}  // namespace

constinit const Operation kSupercompress{
    .parameters =
        {
            .name = "supercompress",
            .title = "Supercompress",
            .help = "Make an animation smaller that shows the same",
            .command = 111,
            .kinds = kEveryKind,
            .fields = kFields,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::SupercompressedPrefix,
    .neverGrows = true,
    .run = run,
};

}  // namespace vellum
