// Images that nobody changed are written as they were stored, and their rows may be let go meanwhile.
#include <zlib.h>

#include <cstring>
#include <fstream>
#include <random>

#include "base/memory_budget.h"
#include "base/settings.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/files/unchecked_images.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "image/png_file.h"
#include "image/stored_image.h"
#include "image/stored_webp.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::be32;
using testing::frame_control;
using testing::Recorder;

class StoredImages : public ::testing::Test {
 protected:
  StoredImages() {
    settings::AutoUpdateTime = settings::IdentifyFiles = 0;
    settings::PictureMemoryMegabytes = 1;
  }
  ~StoredImages() override {
    settings::AutoUpdateTime = settings::IdentifyFiles = settings::KeepStoredImages = 1;
    settings::PictureMemoryMegabytes = 0;
  }

  std::vector<std::uint8_t> saved(DocumentWindow& window) {
    EXPECT_TRUE(save_document(window, folder_ / "out", recorder_.host));
    return testing::file_bytes(folder_ / "out");
  }

  Recorder recorder_;
  testing::ScratchFolder folder_;
};

bool holds(const std::vector<std::uint8_t>& file, const StoredImage& image) {
  return std::ranges::all_of(image.pieces(), [&](StoredImage::Bytes piece) {
    return memmem(file.data(), file.size(), piece.data(), piece.size()) != nullptr;
  });
}

/// How many images of the document stand in the file with the very streams that they came from.
std::size_t kept_in(const DocumentWindow& window, const std::vector<std::uint8_t>& file) {
  return static_cast<std::size_t>(std::ranges::count_if(frame_entries(window), [&](std::size_t entry) {
    const auto stored = stored_image_of(window.list.record(entry).data);
    return stored && holds(file, *stored);
  }));
}

/// A frame whose stream is another image's, too long, or bound to a transparent color of 16 bits.
bool can_stay(const DocumentWindow& window) {
  if (window.list.record(0).bitDepth == 16 && chunk_find_first(window.list, tag::tRNS) != kNoEntry)
    return false;
  return std::ranges::all_of(frame_entries(window), [&](std::size_t entry) {
    const auto stored = stored_image_of(window.list.record(entry).data);
    return stored && stored->exact();
  });
}

void change_first(DocumentWindow& window) {
  const std::size_t entry = frame_entries(window).front();
  ChunkRecord record = window.list.record(entry);
  Picture picture = picture_of(record);
  const Colour first = PictureGetPixel(picture, 0, 0);
  PicturePutPixel(picture, 0, 0, PictureGetPixel(picture, picture.width() - 1, picture.height() - 1));
  if (PictureGetPixel(picture, 0, 0) == first) PicturePutPixel(picture, 0, 0, first);  // written all the same
  record_take_pixels(record, window.document.kind, picture);
  chunk_list_put(window.list, entry, record);
}

TEST_F(StoredImages, OfTheCorpusGoBackAsTheyCame) {
  VELLUM_NEEDS_CORPUS();
  std::size_t files = 0, equal = 0;
  for (const auto& row : testing::corpus_rows({"png", "apng", "mng"})) {
    SCOPED_TRACE(row.at("path"));
    DocumentWindow window;
    if (!open_document(window, testing::corpus_file(row), recorder_.host) || !can_stay(window)) continue;
    const auto before = testing::file_bytes(testing::corpus_file(row));
    const std::size_t frames = frame_entries(window).size();
    const auto out = saved(window);
    EXPECT_EQ(kept_in(window, out), frames);
    ++files;
    equal += out == before;
    if (frames < 2) continue;
    change_first(window);
    EXPECT_EQ(kept_in(window, saved(window)), frames - 1) << "all others keep their bytes";
  }
  EXPECT_GT(files, 150u);
  // A control in front of the animation's, an index beyond the palette, a place in force across an entry.
  EXPECT_GE(equal + 3, files) << "files that come back byte for byte";
}

TEST_F(StoredImages, OfMngsStayWholeUntilATextInsideThemIsEdited) {
  VELLUM_NEEDS_CORPUS();
  for (const auto& row : testing::corpus_rows({"mng"})) {
    if (row.at("path").find("lastfm") == std::string::npos) continue;
    DocumentWindow window;
    ASSERT_TRUE(open_document(window, testing::corpus_file(row), recorder_.host));
    const auto before = testing::file_bytes(testing::corpus_file(row));
    const std::size_t text = chunk_find_first(window.list, tag::zTXt);
    ChunkRecord record = window.list.record(text);
    record.data.edit()[record.data.size() - 2] ^= 1;
    chunk_list_put(window.list, text, record);
    const auto out = saved(window);
    EXPECT_NE(out, before);
    EXPECT_EQ(kept_in(window, out), frame_entries(window).size());
    DocumentWindow again;
    ASSERT_TRUE(open_document(again, folder_ / "out", recorder_.host));
    EXPECT_EQ(testing::tags_of(again.list), testing::tags_of(window.list));
    const ChunkHandle& written = again.list.record(text).data;
    EXPECT_TRUE(std::ranges::equal(written.bytes(), record.data.bytes()));
  }
}

bool is_kept_webp(const ChunkHandle& block, const std::vector<std::uint8_t>& file) {
  const KeptWebp stored = stored_webp_of(block);
  return stored && memmem(file.data(), file.size(), stored->frame().pixels.data(),
                          stored->frame().pixels.size()) != nullptr;
}

bool same_rows(const ChunkHandle& a, const ChunkHandle& b) {
  const Picture one(a), other(b);
  return a.size() == b.size() && std::equal(a.data(), a.data() + a.size(), b.data());
}

/// Images of which nobody changed a pixel show what they showed, byte for byte; gives how many of them kept
/// their bytes.
std::size_t expect_untouched(const DocumentWindow& window, const std::vector<std::uint8_t>& file,
                             const std::filesystem::path& path) {
  DocumentWindow again;
  Recorder recorder;
  EXPECT_TRUE(open_document(again, path, recorder.host));
  const auto entries = frame_entries(window), written = frame_entries(again);
  EXPECT_EQ(written.size(), entries.size());
  std::size_t kept = 0;
  for (std::size_t i = 0; i < std::min(entries.size(), written.size()); ++i) {
    const ChunkHandle& block = window.list.record(entries[i]).data;
    if (!stored_webp_of(block)) continue;
    EXPECT_TRUE(same_rows(again.list.record(written[i]).data, block)) << i;
    kept += is_kept_webp(block, file);
  }
  return kept;
}

TEST_F(StoredImages, OfWebpFilesGoBackAsTheyCame) {
  VELLUM_NEEDS_CORPUS();
  std::size_t files = 0, equal = 0, others = 0, kept_others = 0;
  for (const auto& row : testing::corpus_rows({"webp"})) {
    SCOPED_TRACE(row.at("path"));
    DocumentWindow window;
    if (!open_document(window, testing::corpus_file(row), recorder_.host)) continue;
    const auto before = testing::file_bytes(testing::corpus_file(row));
    const std::size_t frames = frame_entries(window).size();
    const auto path = folder_ / "out.webp";
    ASSERT_TRUE(save_document(window, path, recorder_.host));
    const auto out = testing::file_bytes(path);
    EXPECT_EQ(expect_untouched(window, out, path), frames);
    ++files;
    equal += out == before;
    if (frames < 2) continue;
    change_first(window);
    ASSERT_TRUE(save_document(window, path, recorder_.host));
    kept_others += expect_untouched(window, testing::file_bytes(path), path);
    others += frames - 1;
  }
  EXPECT_GT(files, 20u);
  EXPECT_GT(10 * equal, 8 * files) << "files that come back byte for byte";
  EXPECT_GT(10 * kept_others, 8 * others);
}

TEST_F(StoredImages, OfWebpFilesShowTheSameWhateverIsDoneAroundThem) {
  VELLUM_NEEDS_CORPUS();
  std::mt19937 random(7);
  for (const auto& row : testing::corpus_rows({"webp"})) {
    SCOPED_TRACE(row.at("path"));
    DocumentWindow window;
    if (!open_document(window, testing::corpus_file(row), recorder_.host)) continue;
    if (frame_entries(window).size() < 4) continue;
    for (int edits = 0; edits < 3; ++edits) {
      const auto entries = frame_entries(window);
      const auto any = [&] { return entries[random() % entries.size()]; };
      ChunkRecord record = window.list.record(any());
      switch (random() % 4) {
        case 0:
          window.list.remove(any());
          break;
        case 1:
          chunk_list_insert(window.list, window.document, any(), record);
          break;
        case 2:
          chunk_list_put(window.list, any(), record);
          break;
        default:
          const std::size_t at = any();
          record = window.list.record(at);
          record.webpImage.dispose ^= 1;
          chunk_list_put(window.list, at, record);
      }
      const auto path = folder_ / "out.webp";
      ASSERT_TRUE(save_document(window, path, recorder_.host));
      expect_untouched(window, testing::file_bytes(path), path);
    }
  }
}

TEST_F(StoredImages, OfAFileThatChangesUnderneathAreNotTrusted) {
  namespace fs = std::filesystem;
  Picture noise = PictureCreate(1300, 1200, nullptr, 24);
  std::mt19937 random(11);
  for (std::size_t i = Picture::kHeaderBytes; i < noise.handle().size(); ++i)
    noise.edit_block()[i] = static_cast<std::uint8_t>(random());
  const auto bytes = encode_png_picture(noise, 0);
  const fs::path in = folder_ / "in.png", out = folder_ / "out.png";
  const auto write = [&bytes](const fs::path& path, std::size_t from) {
    std::fstream file(path, std::ios::binary | std::ios::out | (from ? std::ios::in : std::ios::trunc));
    file.seekp(static_cast<std::streamoff>(from));
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size() - from));
  };
  struct Case {
    const char* what;
    std::function<void()> change;
    bool lost;
  };
  const Case cases[] = {
      {"left alone", [] {}, false},
      {"removed", [&] { fs::remove(in); }, false},
      {"replaced", [&] { write(out, 0), fs::resize_file(out, 9), fs::rename(out, in); }, false},
      {"cut", [&] { fs::resize_file(in, bytes.size() / 2); }, true},
      {"empty", [&] { fs::resize_file(in, 0); }, true},
      {"written to", [&] { write(in, bytes.size() - 60); }, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    write(in, 0);
    DocumentWindow window;
    UncheckedImages unchecked;  // a file that is to be passed is mapped
    ASSERT_TRUE(open_document(window, in, recorder_.host, &unchecked));
    c.change();
    recorder_.messages.clear();
    EXPECT_EQ(save_document(window, out, recorder_.host), !c.lost);
    EXPECT_EQ(recorder_.messages.empty(), !c.lost);
    EXPECT_EQ(fs::exists(out), !c.lost);
    if (!c.lost) EXPECT_EQ(testing::file_bytes(out), bytes);
    fs::remove(out);
  }
}

TEST_F(StoredImages, PicturesThatWereMadeArePackedBeyondTheBudget) {
  for (const std::uint32_t bits : {1u, 4u, 8u, 24u, 32u}) {
    std::vector<ChunkHandle> blocks;
    for (std::uint32_t i = 0; i < 40; ++i) {
      Picture picture = PictureCreate(300, 211, nullptr, bits);
      for (std::uint32_t k = 0; k < 4000; ++k)
        PicturePutPixel(picture, k * 7 % 300, k / 20, k * (i + 1) * 0x01030507);
      ChunkRecord record;
      record_take_picture(record, DocumentKind::APNG, picture);
      blocks.push_back(record.data);
      ASSERT_EQ(record.data.source(), nullptr);
    }
    EXPECT_LE(resident_bytes(), memory_budget()) << bits;
    for (std::uint32_t i = 0; i < 40; ++i) {
      const Picture picture(blocks[i]);
      for (std::uint32_t k = 3000; k < 4000; ++k)
        ASSERT_EQ(PictureGetPixel(picture, k * 7 % 300, k / 20),
                  k * (i + 1) * 0x01030507 & (bits == 32 ? ~0u : (1u << bits) - 1))
            << bits;
    }
  }
}

std::string deflated(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string out(size, '\0');
  compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
            bytes.size(), 1);
  out.resize(size);
  return out;
}

/// Rows of 3 pixels of 16 bits a sample whose bytes are all different.
std::string deep_rows(int samples, int seed) {
  std::string rows;
  for (int y = 0; y < 2; ++y) {
    rows += '\0';
    for (int i = 0; i < 6 * samples; ++i) rows += static_cast<char>(seed + 31 * i + 7 * y);
  }
  return deflated(rows);
}

TEST_F(StoredImages, OfSixteenBitsStayWhatTheyAre) {
  constexpr std::pair<unsigned, int> kTypes[] = {{0, 1}, {2, 3}, {4, 2}, {6, 4}};
  for (const auto& [type, samples] : kTypes) {
    SCOPED_TRACE(type);
    const auto first = deep_rows(samples, 1), second = deep_rows(samples, 100);
    const auto file = testing::png_file({{"IHDR", testing::header_payload(3, 2, 16, type)},
                                         {"acTL", be32(2) + be32(0)},
                                         {"fcTL", frame_control(0, 3, 2)},
                                         {"IDAT", first.substr(0, 9)},
                                         {"IDAT", first.substr(9)},
                                         {"fcTL", frame_control(1, 3, 2)},
                                         {"fdAT", be32(2) + second.substr(0, 5)},
                                         {"fdAT", be32(3) + second.substr(5)},
                                         {"IEND", ""}});
    const auto in = folder_ / "in.png";
    std::ofstream(in, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    DocumentWindow window, anew;
    ASSERT_TRUE(open_document(window, in, recorder_.host));
    EXPECT_EQ(saved(window), file);
    ASSERT_TRUE(open_document(anew, in, recorder_.host));
    settings::KeepStoredImages = 0;
    EXPECT_NE(saved(anew), file);
    settings::KeepStoredImages = 1;
  }
}

}  // namespace
}  // namespace vellum
