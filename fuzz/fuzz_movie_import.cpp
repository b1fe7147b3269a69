// A movie of any times and looks, and any values at all: what comes of it can be saved, lasts as long as the
// range, and has no more frames than were kept.
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "exchange/movie_import.h"
#include "fuzz_support.h"
#include "image/picture_operations.h"
#include "operations/frames.h"

using namespace vellum;
using namespace vellum::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::size_t at = 0;
  const auto byte = [&] { return at < size ? data[at++] : std::uint8_t{0}; };
  const auto word = [&] {
    const std::uint32_t high = byte();
    return high << 8 | byte();
  };
  MovieImport import{.from = word() % 500, .to = word() % 2000, .duration = word() % 3 == 0 ? word() : 0u};
  const std::uint8_t flags = byte();
  import.preserve = flags & 1, import.skipFirst = flags & 2, import.merge = flags & 4, import.cut = flags & 8;
  import.palette = flags & 16, import.loop = flags & 32;
  import.keep = 1 + byte() % 4, import.skip = byte() % 4;
  const DocumentKind kinds[] = {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP};
  const DocumentKind kind = kinds[byte() % 3];
  MovieReader reader;
  reader.facts.width = 1 + byte() % 8, reader.facts.height = 1 + byte() % 8;
  reader.facts.alpha = flags & 64;
  reader.facts.duration = std::int64_t{word()} * 1000;
  reader.facts.frames = byte();
  const std::size_t first = at;
  std::int64_t time = 0;
  std::uint8_t look = 0;
  std::size_t frames = 0;
  // Times never fall; what a file says beside them may be anything.
  reader.next = [&]() -> std::optional<std::int64_t> {
    if (at + 2 >= size || frames >= 60) return std::nullopt;
    time += std::int64_t{word()} * 97;
    look = byte() % 4;
    ++frames;
    return time;
  };
  reader.picture = [&] {
    Picture picture =
        PictureCreate(reader.facts.width, reader.facts.height, nullptr, reader.facts.alpha ? 32 : 24);
    PictureFillRect(picture, 0, 0, 1 + look, 3, look * 0x40302010u);
    return picture;
  };
  reader.seek = [&](std::int64_t) { return at = first, time = 0, frames = 0, true; };
  reader.damaged = [&] { return look == 3; };
  Host host;
  bool told = false;
  DocumentWindow made;
  if (!import_movie(reader, import, kind, made, host, told)) {
    check(made.list.size() == 0);
    return 0;
  }
  const std::size_t count = frame_entries(made).size();
  check(count > 0 && count <= 60);
  std::uint64_t length = 0;
  check(write_document(made, kind, counting_sink(length), save_options(), host) == WriteResult::Done &&
        length > 0);
  return 0;
}
