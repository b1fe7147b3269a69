#include "image/held_picture.h"

#include <atomic>

#include "base/translation.h"
#include "image/graphic_file.h"

namespace vellum {
namespace {

struct FileStamp {
  std::uintmax_t bytes = 0;
  std::filesystem::file_time_type time;
  bool there = false;

  bool operator==(const FileStamp&) const = default;
};

FileStamp stamp_of(const std::filesystem::path& path) {
  std::error_code none, untimed;
  FileStamp stamp{std::filesystem::file_size(path, none), std::filesystem::last_write_time(path, untimed)};
  stamp.there = !none && !untimed;
  return stamp;
}

class PictureFile : public BlockSource {
 public:
  PictureFile(std::filesystem::path path, const FileStamp& stamp) : path_(std::move(path)), stamp_(stamp) {}

  ChunkHandle make() const override {
    GraphicReading reading;
    if (stamp_of(path_) == stamp_) reading = read_graphic_file(path_.string());
    // Who wrote the file meanwhile may have changed any part of what was just read.
    const bool same = stamp_of(path_) == stamp_;
    if (!same || (!reading.picture && reading.fault != GraphicFault::TooLarge)) lost_ = true;
    return same ? reading.picture.handle() : ChunkHandle();
  }
  std::size_t held_bytes() const override { return sizeof *this + path_.native().capacity(); }

  std::string fault() const {
    return lost_ ? path_.filename().string() + translated(": the file has changed or is gone")
                 : std::string();
  }

 private:
  std::filesystem::path path_;
  FileStamp stamp_;
  mutable std::atomic<bool> lost_ = false;
};

}  // namespace

HeldPicture hold_picture_file(const std::filesystem::path& path, Host& host) {
  const FileStamp stamp = stamp_of(path);
  HeldPicture held = read_picture_file(path, host);
  if (held && stamp.there)
    held.block = kept_picture(held.picture(), std::make_shared<PictureFile>(path, stamp));
  return held;
}

std::string held_picture_fault(const HeldPicture& picture) {
  const auto file = std::dynamic_pointer_cast<const PictureFile>(picture.block.source());
  return file ? file->fault() : std::string();
}

}  // namespace vellum
