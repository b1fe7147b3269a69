#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>
#include <thread>

#include "base/limits.h"
#include "core/build/build_animation.h"
#include "core/model/kind_table.h"
#include "extension/plugin.h"

namespace vellum {
namespace {

static_assert(sizeof(VellumBuild) == 104 && offsetof(VellumBuild, window) == 8 &&
              offsetof(VellumBuild, callback) == 16 && offsetof(VellumBuild, language) == 24 &&
              offsetof(VellumBuild, bits) == 28 && offsetof(VellumBuild, order) == 32);
static_assert(sizeof(VellumContext) == 32 && sizeof(VellumFrame) == 32 && sizeof(VellumPicture) == 44);
static_assert(sizeof(VellumPicture) == Picture::kHeaderBytes + sizeof(VellumPicture::bytes));

constexpr std::uint32_t kMostSide = 16383;

/// One run: what the calls of a plugin make.
class Running {
 public:
  Running(const std::string& name, DocumentKind kind, Host& host) : name_(name), kind_(kind), host_(host) {}

  bool call(VellumContext* context, std::uint32_t code, const void* data, const void* arguments) {
    if (!context || host_.stopped()) return false;
    switch (code) {
      case VELLUM_BEGIN:
        return begin(*context);
      case VELLUM_ADD_FRAME:
        return is_of(*context) && data && arguments && add(data, arguments);
      case VELLUM_NOTHING:
        return true;
      case VELLUM_END:
        return is_of(*context) && end();
      default:
        return false;
    }
  }

  std::vector<DocumentWindow> take() {
    if (open_) end();
    return std::move(made_);
  }

 private:
  bool is_of(const VellumContext& context) const { return open_ && context.document == token_; }

  bool begin(VellumContext& context) {
    if (open_ || context.size < sizeof context || context.width < 1 || context.height < 1 ||
        context.width > kMostSide || context.height > kMostSide)
      return false;
    window_ = {};
    window_.document.kind = kind_;
    window_.document.fileName = name_ + std::to_string(made_.size() + 1);
    window_.document.fileName += kind_row(kind_).extensions.front();
    quiet_.emplace(window_.list);
    plays_ = context.loop_count;
    open_ = BeginAnimation(window_,
                           kind_ == DocumentKind::MING ? 0 : static_cast<std::int32_t>(plays_ & 0x7FFFFFFF),
                           0, *build_number(kind_));
    total_ = context.total;
    if (open_ && total_ > 0) progress_.emplace(host_, string_text(StringId::BuildingCaption));
    frames_ = 0;
    context.document = ++token_;
    return open_;
  }

  /// The header is looked at before the rest of the picture is, which must be as long as it says.
  static Picture picture_of_block(const void* data) {
    VellumPicture head;
    std::memcpy(&head, data, sizeof head);
    const bool indexed = head.bits <= 8;
    const bool known =
        head.bits == 1 || head.bits == 4 || head.bits == 8 || head.bits == 24 || head.bits == 32;
    if (head.header_size != Picture::kHeaderBytes || head.planes != 1 || !known || head.width < 1 ||
        head.height < 1 || head.width > static_cast<std::int32_t>(kMostSide) ||
        head.height > static_cast<std::int32_t>(kMostSide))
      return {};
    const std::uint64_t bytes = Picture::kHeaderBytes + (indexed ? 4u << head.bits : 0) +
                                picture_stride(static_cast<std::uint32_t>(head.width), head.bits) *
                                    static_cast<std::uint64_t>(head.height);
    if (bytes != head.bytes || bytes > kMaximumPictureBytes) return {};
    const auto* block = static_cast<const std::uint8_t*>(data) + sizeof head.bytes;
    return Picture(ChunkHandle::copy_of({block, static_cast<std::size_t>(bytes)}, 0));
  }

  bool add(const void* data, const void* arguments) {
    VellumFrame frame;
    std::memcpy(&frame, arguments, sizeof frame);
    const Picture picture = picture_of_block(data);
    if (!picture || frames_ + 10 > kMaximumEntries) return false;
    AddFrameOptions options;
    if (frame.flags & VELLUM_FRAME_DISPOSE) options.flags |= kFrameDispose;
    if (frame.flags & VELLUM_FRAME_BLEND) options.flags |= kFrameBlend;
    if (frame.flags & VELLUM_FRAME_CLEAR) options.flags |= kFrameTransparency;
    options.transparency = (frame.flags & VELLUM_FRAME_CLEAR) != 0;
    options.dispose = frame.dispose;
    options.blend = frame.blend;
    if (options.dispose > 2 || options.blend > 1 || frame.transparent < -1) return false;
    if (progress_) progress_->step(std::min(frame.index, total_ - 1) + 1, total_);
    if (AddFrame(window_, picture, frame.transparent, nullptr, frame.delay, frame.x, frame.y, frames_,
                 &options) == 0)
      return false;
    ++frames_;
    return true;
  }

  bool end() {
    open_ = false;
    progress_.reset();
    const bool good =
        frames_ > 0 &&
        EndAnimation(window_,
                     kind_ == DocumentKind::MING ? 0 : static_cast<std::int32_t>(plays_ & 0x7FFFFFFF));
    quiet_.reset();
    if (good && plays_ > 0 && kind_ == DocumentKind::MING) put_loop_plays(window_, plays_);
    if (good) made_.push_back(std::move(window_));
    window_ = {};
    return good;
  }

  std::string name_;
  DocumentKind kind_;
  Host& host_;
  DocumentWindow window_;
  std::optional<QuietList> quiet_;
  std::optional<Progress> progress_;
  std::vector<DocumentWindow> made_;
  bool open_ = false;
  std::uint32_t plays_ = 0, total_ = 0, frames_ = 0;
  std::uint64_t token_ = 0;
};

/// The run that is going on; calls of a plugin that is none of it, or of another thread, do nothing.
thread_local Running* running = nullptr;
std::atomic<bool> busy = false;

std::uint32_t callback(VellumContext* context, std::uint32_t code, const void* data, const void* arguments) {
  // No exception may pass through a plugin.
  try {
    return running && running->call(context, code, data, arguments) ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

}  // namespace

std::vector<DocumentWindow> run_plugin(const Plugin& plugin, DocumentKind kind, void* window, Host& host) {
  if (!plugin.build || !build_number(kind) || busy.exchange(true)) return {};
  Running run(plugin.name, kind, host);
  running = &run;
  VellumBuild build{};
  build.size = sizeof build;
  build.version = VELLUM_PLUGIN_VERSION;
  build.window = window;
  build.callback = callback;
  build.language = 1;
  build.bits = 24;
  build.order = 2;
  plugin.build(window, &build, 0);
  running = nullptr;
  busy = false;
  return run.take();
}

}  // namespace vellum
