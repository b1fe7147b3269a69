// Recompression: every image is packed by the best of many ways, and its record keeps that.
#include <algorithm>
#include <map>
#include <mutex>

#include "base/file.h"
#include "base/parallel.h"
#include "core/files/png_writing.h"
#include "core/files/save_document.h"
#include "image/png_form.h"
#include "image/png_smallest.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

/// Bytes of rows beyond which images are packed in a third of the time, for 1 or 2 per cent more bytes.
constexpr std::uint64_t kLargeDocument = std::uint64_t{6} << 20;

/// How often the slow packer goes over each piece: more for less, nothing where it would take minutes.
int slow_iterations(std::uint64_t bytes) {
  constexpr std::uint64_t kMega = std::uint64_t{1} << 20;
  return bytes <= kMega / 2 ? 15 : bytes <= 2 * kMega ? 5 : 0;
}

/// A picture and the form in which it is to be packed.
struct Packing {
  Picture picture;
  PngHeader header;
  KeptStream stream = nullptr;
};

/// The writer tells in which form each image goes out: none where it is not asked for one.
std::optional<std::map<const void*, PngHeader>> forms_of(DocumentWindow& draft) {
  std::map<const void*, PngHeader> forms;
  std::mutex lock;
  SaveOptions options = save_options();
  options.keepStored = false;
  options.encode = [&](const PngHeader& header, const Picture& picture, auto) {
    const std::lock_guard guard(lock);
    forms.emplace(picture.handle().identity(), header);
    return std::vector<std::uint8_t>(1);
  };
  std::uint64_t bytes = 0;
  Host silent;
  const auto result = write_document(draft, draft.document.kind, counting_sink(bytes), options, silent);
  return result == WriteResult::Done ? std::optional(std::move(forms)) : std::nullopt;
}

/// Indexes of two bits, and grey with alpha, where all images allow that: what the writer of animated PNGs
/// takes from kept streams alone.
void narrow_forms(std::vector<Packing>& images) {
  const auto all = [&](const auto& holds) {
    return std::ranges::all_of(images,
                               [&](const Packing& p) { return p.picture && holds(p.picture, p.header); });
  };
  const auto put = [&](std::uint8_t type, std::uint8_t depth) {
    for (Packing& image : images) {
      image.header.colorType = type;
      image.header.bitDepth = depth;
    }
  };
  if (all([](const Picture& picture, const PngHeader& header) {
        return header.colorType == 3 && header.bitDepth == 4 && largest_index(picture) < 4;
      }))
    put(3, 2);
  if (all([](const Picture& picture, const PngHeader& header) {
        return header.colorType == 6 && header.bitDepth == 8 && picture_content(picture).grey;
      }))
    put(4, 8);
}

/// Whether the image came from a stream of this form that is no larger.
bool has_smaller(const Packing& image) {
  const KeptStream stored = stored_image_of(image.picture.handle());
  return stored && stored->exact() && stored->header() == image.header &&
         stored->held_bytes() <= image.stream->held_bytes();
}

/// How many images from `first` on are packed at a time: enough that cores wait for no one, as few as let a
/// stop be heard soon.
std::size_t task_size(const std::vector<Packing>& images, std::size_t first, int iterations) {
  const std::uint64_t enough = iterations == 0 ? std::uint64_t{4} << 20 : std::uint64_t{64} << 10;
  std::uint64_t bytes = 0;
  std::size_t count = 0;
  while (first + count < images.size() && (count < parallel_width() || bytes < enough))
    if (const Packing& image = images[first + count++]; image.picture)
      bytes += png_filtered_bytes(image.header);
  return count;
}

}  // namespace

bool recompress_pass(Supercompression& work) {
  const auto entries = frame_entries(work.draft);
  if (work.draft.document.kind == DocumentKind::WEBP) return true;
  const auto forms = forms_of(work.draft);
  if (!forms) return true;
  const Progress progress(work.host, string_text(StringId::Recompressing));
  work.say(StringId::RecompressBegins);
  std::uint64_t bytes = 0;
  std::vector<Packing> images;
  for (const std::size_t entry : entries) {
    const ChunkHandle& block = work.draft.list.record(entry).data;
    const auto form = forms->find(block.identity());
    images.push_back(form == forms->end() ? Packing{} : Packing{Picture(block), form->second});
    if (images.back().picture) bytes += png_filtered_bytes(images.back().header);
  }
  const bool animated = work.draft.document.kind == DocumentKind::APNG && !work.draft.document.defaultImage;
  if (work.passes & kDeepPass && animated) narrow_forms(images);
  const int iterations = work.passes & kDeepPass ? slow_iterations(bytes) : 0;
  const bool large = bytes > kLargeDocument;
  std::size_t packed = 0;
  for (std::size_t first = 0; first < images.size();) {
    if (work.host.stopped()) return false;
    const std::size_t count = task_size(images, first, iterations);
    parallel_for(count, [&](std::size_t k) {
      Packing& image = images[first + k];
      if (image.picture)
        image.stream =
            new_stream(image.header, image.picture,
                       png_encode_smallest(image.header, image.picture, std::nullopt, {iterations, large}));
    });
    for (std::size_t k = first; k < first + count; ++k) {
      if (!images[k].stream || has_smaller(images[k])) continue;
      keep_stream(work.draft.list, entries[k], images[k].stream);
      images[k].picture = {};
      ++packed;
    }
    first += count;
    progress.step(first, images.size());
  }
  work.say(StringId::ImagesPacked, {std::to_string(packed)});
  return true;
}

}  // namespace vellum
