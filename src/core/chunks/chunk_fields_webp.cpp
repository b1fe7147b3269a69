// Fields of the header and the frames of WebP files.
#include "base/limits.h"
#include "core/chunks/chunk_field_sets.h"
#include "image/webp_container.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostCanvas = kMostWebpPixels;
constexpr std::int64_t kMostDelay = 0xFFFFFF;  // ms; 24 bits in the file

template <auto Member>
constexpr ChunkField header_field(Field field) {
  return member_field<&ChunkRecord::webpHeader, Member>(field);
}
template <auto Member>
constexpr ChunkField image_field(Field field) {
  return member_field<&ChunkRecord::webpImage, Member>(field);
}

constexpr Field kColorField = {
    .name = "backgroundColor", .label = "Background color", .type = FieldType::Color, .most = 0xFFFFFFFF};

bool any_frame_has_alpha(const ChunkList& list) {
  for (std::size_t i = 0; i < list.size(); ++i)
    if (const ChunkRecord& record = list.record(i); record.tag == tag::WEBI)
      if (const Picture picture = picture_of(record); picture && picture.bits() == 32) return true;
  return false;
}

constexpr Field shown_alpha() {
  Field field = flag_field("alpha", "Alpha");
  field.locked = true;
  return field;
}

constexpr ChunkField kHeaderRows[] = {
    header_field<&WebpHeaderFields::canvasWidth>(whole_field("canvasWidth", "Canvas width", 1, kMostCanvas)),
    header_field<&WebpHeaderFields::canvasHeight>(
        whole_field("canvasHeight", "Canvas height", 1, kMostCanvas)),
    {kEnlargeField},
    header_field<&WebpHeaderFields::loopCount>(
        special_field(whole_field("loopCount", "Loops", 0, 65535), 0, "For ever")),
    header_field<&WebpHeaderFields::backgroundColor>(kColorField),
    {shown_alpha()},
    header_field<&WebpHeaderFields::frameCount>(shown_field("frameCount", "Frames")),
};

void read_header(const EntryPlace& place, FieldValues& values) {
  values.set("alpha", std::int64_t{any_frame_has_alpha(place.window.list)});
}

std::optional<FieldFault> check_header(const EntryPlace& place, const FieldValues& values) {
  return check_holds_frames(place.window, values.number("canvasWidth"), values.number("canvasHeight"),
                            "canvasWidth", "canvasHeight");
}

bool finish_header(Applying& applying) { return apply_canvas_size(applying, "canvasWidth", "canvasHeight"); }

constexpr FieldChoice kDisposals[] = {{0, "None"}, {1, "Background"}};

constexpr ChunkField kImageRows[] = {
    image_field<&WebpImageFields::xOffset>(whole_field("x", "X", 0, kMaximumDimension)),
    image_field<&WebpImageFields::yOffset>(whole_field("y", "Y", 0, kMaximumDimension)),
    image_field<&WebpImageFields::delay>(whole_field("delay", "Delay in ms", 0, kMostDelay)),
    image_field<&WebpImageFields::dispose>(choice_field("dispose", "Dispose", kDisposals)),
};

void adapt_image(const EntryPlace& place, std::vector<Field>& fields) {
  const WebpImageFields& image = place.record().webpImage;
  edit_field(fields, "x")->most = std::max<std::int64_t>(std::int64_t{kMaximumDimension} - image.width, 0);
  edit_field(fields, "y")->most = std::max<std::int64_t>(std::int64_t{kMaximumDimension} - image.height, 0);
}

constexpr ChunkFieldSet kSets[] = {
    {.tag = tag::WEBH,
     .kinds = kWebp,
     .rows = kHeaderRows,
     .adapt = adapt_enlarge,
     .read = read_header,
     .check = check_header,
     .finish = finish_header},
    {.tag = tag::WEBI, .kinds = kWebp, .rows = kImageRows, .adapt = adapt_image},
};

}  // namespace

std::span<const ChunkFieldSet> webp_field_sets() { return kSets; }

}  // namespace vellum
