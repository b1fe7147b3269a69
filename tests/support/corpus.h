// Where tests find things: the project, the built programs, a scratch folder, and the corpus of real files
// that lies beside the project on some machines.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace vellum::testing {

std::filesystem::path source_folder();
/// Folder of the built programs.
std::filesystem::path program_folder();
/// All bytes of a file; none where it can't be read.
std::vector<std::uint8_t> file_bytes(const std::filesystem::path& file);
std::string file_text(const std::filesystem::path& file);
/// An empty folder that is removed when the object goes.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

/// A row of a tab-separated table with a head line: column name to value.
using TableRow = std::map<std::string, std::string>;
/// The rows of the corpus index of these kinds ("png", "png-bad", ...); empty where there is no corpus.
std::vector<TableRow> corpus_rows(const std::vector<std::string>& kinds);
/// The rows of the frames of one file.
std::vector<TableRow> corpus_frames(const std::string& path);
std::filesystem::path corpus_file(const TableRow& row);
/// md5 of bytes as 32 hexadecimal digits, as the corpus states it.
std::string md5_of(const void* data, std::size_t size);

}  // namespace vellum::testing

/// Ends a test as skipped, with the reason, where the corpus is not there.
#define VELLUM_NEEDS_CORPUS() \
  if (vellum::testing::corpus_rows({"png"}).empty()) GTEST_SKIP() << "the corpus of real files is not here"
