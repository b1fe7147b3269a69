// Graphic matrix: pictures in a grid of cells, each of which passes to its next one, round and round.
#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <numeric>

#include "base/limits.h"
#include "base/translation.h"
#include "generators/generator_rows.h"
#include "generators/matrix_effects.h"
#include "generators/settings.h"
#include "image/picture_operations.h"
#include "image/resample.h"

namespace vellum {
namespace {

using namespace settings;

struct Grid {
  std::uint32_t across, down;
};
constexpr Grid kGrids[] = {{1, 1}, {1, 2}, {2, 1}, {2, 2}, {2, 3}, {3, 2}, {3, 3},
                           {3, 4}, {4, 3}, {4, 4}, {5, 5}, {6, 6}, {8, 8}};
constexpr FieldChoice kGridNames[] = {
    {0, "1 x 1", "1x1"},  {1, "1 x 2", "1x2"},  {2, "2 x 1", "2x1"}, {3, "2 x 2", "2x2"}, {4, "2 x 3", "2x3"},
    {5, "3 x 2", "3x2"},  {6, "3 x 3", "3x3"},  {7, "3 x 4", "3x4"}, {8, "4 x 3", "4x3"}, {9, "4 x 4", "4x4"},
    {10, "5 x 5", "5x5"}, {11, "6 x 6", "6x6"}, {12, "8 x 8", "8x8"}};
enum Mode { kInOrder, kRandomOrder, kCutOverCells };
constexpr FieldChoice kModes[] = {{kInOrder, "In order", "ordered"},
                                  {kRandomOrder, "Random order", "random"},
                                  {kCutOverCells, "One picture cut over all cells", "cut"}};
enum Fitting { kFit, kFill, kStretch };
constexpr FieldChoice kFittings[] = {{kFit, "Fit"}, {kFill, "Fill"}, {kStretch, "Stretch"}};
enum Edge { kNoEdge, kLine, kRounded, kBevel };
constexpr FieldChoice kEdges[] = {
    {kNoEdge, "None"}, {kLine, "Line"}, {kRounded, "Rounded"}, {kBevel, "Bevel"}};
enum Turn { kAllAtOnce, kOneByOne, kRandomCells, kStill };
constexpr FieldChoice kTurns[] = {{kAllAtOnce, "All cells at once", "all"},
                                  {kOneByOne, "One cell after another", "one"},
                                  {kRandomCells, "Random cells", "random"},
                                  {kStill, "Still"}};
constexpr FieldChoice kTransitions[] = {{0, "None"},      {1, "Blinds"},   {2, "Blocks"}, {3, "Diamonds"},
                                        {4, "Disappear"}, {5, "Dissolve"}, {6, "Dots"},   {7, "Duststorm"},
                                        {8, "Expand"},    {9, "Panes"},    {10, "Random"}};
constexpr std::int64_t kRandomEffect = kMatrixEffects;
constexpr const char* kEffectPage = "Transitions";

constexpr Field choice(const char* name, const char* label, std::span<const FieldChoice> choices, int initial,
                       int* setting) {
  return {.name = name,
          .label = label,
          .type = FieldType::Choice,
          .choices = choices,
          .initial = initial,
          .setting = setting};
}
constexpr Field whole(const char* name, const char* label, std::int64_t least, std::int64_t most, int initial,
                      int* setting, const char* page = nullptr) {
  return {.name = name,
          .label = label,
          .least = least,
          .most = most,
          .page = page,
          .initial = initial,
          .setting = setting};
}

constexpr Field kFields[] = {
    choice("grid", "Grid", kGridNames, 3, &GRMatrixMatrix),
    choice("mode", "Pictures", kModes, 0, &GRMatrixMode),
    choice("transform", "In their cells", kFittings, 0, &GRMatrixTransform),
    whole("factor", "Size of the cells (%)", 1, 100, 25, &GRMatrixThumbnailFactor),
    whole("gutter", "Gutter", 0, 100, 4, &GRMatrixGuttersize),
    choice("edge", "Edges", kEdges, 0, &GRMatrixEdgemode),
    whole("edgeSize", "Edge size", 0, 50, 4, &GRMatrixEdgesize),
    {.name = "backColor",
     .label = "Background",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .initial = 0xFFFFFF,
     .setting = &GRMatrixBackcolor},
    choice("animation", "Animation", kTurns, 1, &GRMatrixAnimation),
    choice("transition", "Transition", kTransitions, 5, &GRMatrixTransition),
    whole("delay", "Delay (ms)", 1, 32767, 60, &GRMatrixDelay),
    whole("pause", "Pause (ms)", 0, 32767, 1500, &GRMatrixPause),
    {.name = "seed",
     .label = "Seed",
     .most = 0x7FFFFFFF,
     .special = "By the time",
     .tip = "Of what falls by chance: the same one gives the same frames",
     .setting = &GRMatrixRandomSeed},
    whole("blindsSize", "Blinds: height", 2, 200, 12, &GRMatrixBlindsSize, kEffectPage),
    whole("blockSize", "Blocks: side", 2, 200, 12, &GRMatrixBlockSize, kEffectPage),
    whole("blockStep", "Blocks: a frame", 1, 1000, 8, &GRMatrixBlockStep, kEffectPage),
    whole("diamondSize", "Diamonds: side", 4, 200, 24, &GRMatrixDiamondSize, kEffectPage),
    whole("diamondStep", "Diamonds: step", 1, 100, 3, &GRMatrixDiamondStep, kEffectPage),
    whole("disappearFactor", "Disappear: each (%)", 10, 95, 80, &GRMatrixDisappearFac, kEffectPage),
    whole("dissolveSteps", "Dissolve: frames", 2, 128, 10, &GRMatrixDissolveSteps, kEffectPage),
    whole("dotSize", "Dots: side", 4, 200, 16, &GRMatrixDotSize, kEffectPage),
    whole("dotStep", "Dots: step", 1, 100, 2, &GRMatrixDotStep, kEffectPage),
    whole("duststormSteps", "Duststorm: frames", 2, 128, 16, &GRMatrixDuststormSteps, kEffectPage),
    whole("expandStep", "Expand: step (%)", 1, 50, 10, &GRMatrixExpandStep, kEffectPage),
    whole("panesSize", "Panes: width", 4, 400, 32, &GRMatrixPanesSize, kEffectPage),
    whole("panesSteps", "Panes: frames", 2, 64, 8, &GRMatrixPanesSteps, kEffectPage),
};

MatrixSteps steps_of(const FieldValues& values) {
  const auto number = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  return {.blinds = number("blindsSize"),
          .block = number("blockSize"),
          .blockStep = number("blockStep"),
          .diamond = number("diamondSize"),
          .diamondStep = number("diamondStep"),
          .disappear = number("disappearFactor"),
          .dissolve = number("dissolveSteps"),
          .dot = number("dotSize"),
          .dotStep = number("dotStep"),
          .duststorm = number("duststormSteps"),
          .expand = number("expandStep"),
          .panes = number("panesSize"),
          .panesSteps = number("panesSteps")};
}

/// A picture in a rectangle, on the ground. Null without memory.
Picture placed(const Picture& picture, std::uint32_t width, std::uint32_t height, int fitting,
               Colour ground) {
  Picture color = picture.bits() == 32 ? picture : PictureToTrueColor(picture);
  if (!color) return {};
  const double across = static_cast<double>(width) / color.width(),
               down = static_cast<double>(height) / color.height();
  const double factor = fitting == kFill ? std::max(across, down) : std::min(across, down);
  const auto side = [&](std::uint32_t length, std::uint32_t room) {
    if (fitting == kStretch) return room;
    const auto scaled = static_cast<std::uint32_t>(std::max(1.0, length * factor + 0.5));
    return fitting == kFit ? std::min(scaled, room) : std::max(scaled, room);
  };
  color = PictureResample(color, side(color.width(), width), side(color.height(), height),
                          ResampleFilter::Automatic);
  Picture made = PictureCreateFilled(width, height, ground);
  if (!color || !made || !made.edit_block()) return {};
  if (color.bits() == 32) color = PictureFlatten(color, ground);
  if (!color) return {};
  const auto middle = [](std::uint32_t room, std::uint32_t length) {
    return (static_cast<std::int32_t>(room) - static_cast<std::int32_t>(length)) / 2;
  };
  const std::int32_t x = middle(width, color.width()), y = middle(height, color.height());
  const auto w = static_cast<std::int32_t>(std::min(width, color.width())),
             h = static_cast<std::int32_t>(std::min(height, color.height()));
  PictureBlit(made, std::max(x, 0), std::max(y, 0), color, std::max(-x, 0), std::max(-y, 0), w, h);
  return made;
}

/// All that the frames follow from; each is made when it is asked for.
class Matrix {
 public:
  Matrix(const FieldValues& values, const GeneratorInputs& inputs);

  Extent canvas() const { return canvas_; }
  std::uint64_t count() const { return turn_ == kStill ? 1 : 1 + firsts_.back(); }
  StreamedFrame frame(std::uint64_t number);

 private:
  /// The cells that change together, and how.
  struct Change {
    std::vector<std::uint32_t> cells;
    std::size_t effect = 0;
    std::uint32_t frames = 1, seed = 0;
  };
  void settle_rounds(std::size_t pictures);
  void settle_changes(const FieldValues& values);
  std::uint32_t cells() const { return grid_.across * grid_.down; }
  PictureRect rect_of(std::uint32_t cell) const;
  /// The picture that a cell shows after so many rounds.
  std::size_t shown(std::uint32_t cell, std::uint32_t round) const;
  Picture cell_picture(std::uint32_t cell, std::uint32_t round);
  bool put_cell(Picture& canvas, std::uint32_t cell, Picture picture) const;
  Picture first_canvas();
  StreamedFrame changed(std::uint64_t number);

  std::vector<HeldPicture> pictures_;
  Grid grid_;
  int mode_, fitting_, edge_, turn_;
  std::uint32_t gutter_, edgeSize_, delay_, pause_, seed_;
  Colour ground_;
  MatrixSteps steps_;
  bool whole_;                            ///< frames are whole canvases
  std::uint32_t width_ = 1, height_ = 1;  ///< of a cell
  Extent canvas_;
  std::vector<std::size_t> order_;
  std::uint32_t rounds_ = 1, shift_ = 1;
  std::vector<Change> changes_;
  std::vector<std::uint64_t> firsts_{0};  ///< frames in front of each change, behind the first frame
  std::mutex mutex_;
  std::map<std::pair<std::size_t, std::uint32_t>, Picture> scaled_;
};

Matrix::Matrix(const FieldValues& values, const GeneratorInputs& inputs)
    : pictures_(inputs.pictures),
      grid_(kGrids[static_cast<std::size_t>(values.number("grid"))]),
      mode_(static_cast<int>(values.number("mode"))),
      fitting_(static_cast<int>(values.number("transform"))),
      edge_(static_cast<int>(values.number("edge"))),
      turn_(static_cast<int>(values.number("animation"))),
      gutter_(static_cast<std::uint32_t>(values.number("gutter"))),
      edgeSize_(static_cast<std::uint32_t>(values.number("edgeSize"))),
      delay_(static_cast<std::uint32_t>(values.number("delay"))),
      pause_(static_cast<std::uint32_t>(values.number("pause"))),
      seed_(static_cast<std::uint32_t>(values.number("seed"))),
      ground_(static_cast<Colour>(values.number("backColor"))),
      steps_(steps_of(values)),
      whole_(inputs.kind == DocumentKind::WEBP) {
  if (seed_ == 0)
    seed_ = static_cast<std::uint32_t>(std::chrono::system_clock::now().time_since_epoch().count() / 1000);
  std::uint32_t width = 1, height = 1;
  for (const HeldPicture& held : pictures_) {
    width = std::max(width, held.picture().width());
    height = std::max(height, held.picture().height());
  }
  const auto factor = static_cast<std::uint64_t>(values.number("factor"));
  width_ = static_cast<std::uint32_t>(std::max<std::uint64_t>(1, (width * factor + 50) / 100));
  height_ = static_cast<std::uint32_t>(std::max<std::uint64_t>(1, (height * factor + 50) / 100));
  canvas_ = {grid_.across * (width_ + gutter_) + gutter_, grid_.down * (height_ + gutter_) + gutter_};
  settle_rounds(pictures_.size());
  if (turn_ != kStill) settle_changes(values);
}

/// After `rounds_` rounds each cell has shown all pictures that come to it, and the first one again.
void Matrix::settle_rounds(std::size_t pictures) {
  const auto count = static_cast<std::uint32_t>(pictures);
  order_.resize(pictures);
  std::iota(order_.begin(), order_.end(), std::size_t{0});
  if (mode_ == kRandomOrder) {
    Random15 random(seed_);
    for (std::size_t i = pictures; i > 1; --i) {
      const std::uint32_t high = random.next(), low = random.next();
      std::swap(order_[i - 1], order_[(high << 15 | low) % i]);
    }
  }
  // Where as many pictures as cells would give each cell one for ever, the pictures move on by one.
  shift_ = mode_ == kCutOverCells || cells() % count == 0 ? 1 : cells() % count;
  rounds_ = count / std::gcd(count, shift_);
}

void Matrix::settle_changes(const FieldValues& values) {
  Random15 random(seed_ ^ 0x5EED);
  const std::int64_t effect = values.number("transition");
  for (std::uint32_t round = 0; round < rounds_; ++round) {
    std::vector<std::uint32_t> turns(cells());
    std::iota(turns.begin(), turns.end(), 0u);
    if (turn_ == kRandomCells)
      for (std::size_t i = turns.size(); i > 1; --i) std::swap(turns[i - 1], turns[random.next() % i]);
    const std::size_t together = turn_ == kAllAtOnce ? turns.size() : 1;
    for (std::size_t first = 0; first < turns.size(); first += together) {
      Change change;
      change.cells.assign(turns.begin() + static_cast<std::ptrdiff_t>(first),
                          turns.begin() + static_cast<std::ptrdiff_t>(first + together));
      change.effect = effect == kRandomEffect ? 1 + random.next() % (kMatrixEffects - 1)
                                              : static_cast<std::size_t>(effect);
      change.seed = random.next() << 15 | random.next();
      change.frames = matrix_effect(change.effect).frames(width_, height_, steps_);
      firsts_.push_back(firsts_.back() + change.frames);
      changes_.push_back(std::move(change));
    }
  }
}

PictureRect Matrix::rect_of(std::uint32_t cell) const {
  const auto left = static_cast<std::int32_t>(gutter_ + cell % grid_.across * (width_ + gutter_)),
             top = static_cast<std::int32_t>(gutter_ + cell / grid_.across * (height_ + gutter_));
  return {left, top, left + static_cast<std::int32_t>(width_), top + static_cast<std::int32_t>(height_)};
}

std::size_t Matrix::shown(std::uint32_t cell, std::uint32_t round) const {
  const std::uint64_t first = mode_ == kCutOverCells ? 0 : cell;
  return order_[(first + std::uint64_t{round % rounds_} * shift_) % order_.size()];
}

/// Scaled pictures are kept, some of them.
Picture Matrix::cell_picture(std::uint32_t cell, std::uint32_t round) {
  const std::size_t picture = shown(cell, round);
  const std::uint32_t part = mode_ == kCutOverCells ? cell : 0;
  if (const auto known = scaled_.find({picture, part}); known != scaled_.end()) return known->second;
  if (scaled_.size() >= std::size_t{4} * cells() + 16) scaled_.clear();
  if (mode_ != kCutOverCells)
    return scaled_[{picture, part}] =
               placed(pictures_[picture].picture(), width_, height_, fitting_, ground_);
  const Picture all =
      placed(pictures_[picture].picture(), width_ * grid_.across, height_ * grid_.down, fitting_, ground_);
  if (!all) return {};
  for (std::uint32_t i = 0; i < cells(); ++i) {
    const auto left = static_cast<std::int32_t>(i % grid_.across * width_),
               top = static_cast<std::int32_t>(i / grid_.across * height_);
    scaled_[{picture, i}] = PictureCrop(
        all, {left, top, left + static_cast<std::int32_t>(width_), top + static_cast<std::int32_t>(height_)});
  }
  return scaled_[{picture, part}];
}

/// Whether a pixel lies outside of the round corners of a cell.
bool is_cut_off(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height,
                std::uint32_t radius) {
  const std::uint32_t r = std::min({radius, width / 2, height / 2});
  const std::uint32_t dx = x < r ? r - x : x >= width - r ? x - (width - r) + 1 : 0;
  const std::uint32_t dy = y < r ? r - y : y >= height - r ? y - (height - r) + 1 : 0;
  return dx > 0 && dy > 0 && (2 * dx - 1) * (2 * dx - 1) + (2 * dy - 1) * (2 * dy - 1) > 4 * r * r;
}

void blend_pixel(std::uint8_t* pixel, std::uint32_t toward, std::uint32_t alpha) {
  for (int c = 0; c < 3; ++c) pixel[c] = blend_channel(toward, pixel[c], alpha);
}

bool Matrix::put_cell(Picture& canvas, std::uint32_t cell, Picture picture) const {
  if (!picture || !picture.edit_block()) return false;
  const std::uint8_t back[] = {blue_of(ground_), green_of(ground_), red_of(ground_)};
  for (std::uint32_t y = 0; edge_ != kNoEdge && y < height_; ++y) {
    std::uint8_t* row = picture.edit_row(y);
    for (std::uint32_t x = 0; x < width_; ++x) {
      std::uint8_t* pixel = row + std::size_t{3} * x;
      const std::uint32_t left = std::min(x, y), right = std::min(width_ - 1 - x, height_ - 1 - y);
      if (edge_ == kLine && std::min(left, right) < edgeSize_)
        std::fill_n(pixel, 3, 0);
      else if (edge_ == kRounded && is_cut_off(x, y, width_, height_, edgeSize_))
        std::copy_n(back, 3, pixel);
      else if (edge_ == kBevel && std::min(left, right) < edgeSize_)
        blend_pixel(pixel, left <= right ? 255 : 0, 128);
    }
  }
  const PictureRect rect = rect_of(cell);
  PictureBlit(canvas, rect.left, rect.top, picture, 0, 0, static_cast<std::int32_t>(width_),
              static_cast<std::int32_t>(height_));
  return true;
}

Picture Matrix::first_canvas() {
  Picture canvas = PictureCreateFilled(canvas_.width, canvas_.height, ground_);
  if (!canvas || !canvas.edit_block()) return {};
  for (std::uint32_t cell = 0; cell < cells(); ++cell)
    if (!put_cell(canvas, cell, cell_picture(cell, 0))) return {};
  return canvas;
}

/// The cells that a frame changes, on the part of the canvas around them.
StreamedFrame Matrix::changed(std::uint64_t number) {
  const auto next = std::ranges::upper_bound(firsts_, number);
  const auto index = static_cast<std::size_t>(next - firsts_.begin()) - 1;
  const Change& change = changes_[index];
  const auto step = static_cast<std::uint32_t>(number - firsts_[index]) + 1;
  const bool last = step == change.frames;
  const std::size_t of_round = changes_.size() / rounds_;
  const auto round = static_cast<std::uint32_t>(index / of_round);
  Picture canvas = whole_ ? first_canvas() : PictureCreateFilled(canvas_.width, canvas_.height, ground_);
  if (!canvas || !canvas.edit_block()) return {};
  PictureRect rect = rect_of(change.cells.front());
  // Where whole canvases are wanted the cells that have changed before stand too.
  for (std::size_t i = index - index % of_round; whole_ && i < index; ++i)
    for (const std::uint32_t cell : changes_[i].cells)
      if (!put_cell(canvas, cell, cell_picture(cell, round + 1))) return {};
  for (std::uint32_t cell = 0; whole_ && round > 0 && cell < cells(); ++cell) {
    const auto before = std::span(changes_).subspan(index - index % of_round, index % of_round);
    const bool done =
        std::ranges::any_of(before, [&](const Change& c) { return std::ranges::count(c.cells, cell) > 0; });
    if (!done && !put_cell(canvas, cell, cell_picture(cell, round))) return {};
  }
  for (const std::uint32_t cell : change.cells) {
    Picture picture = cell_picture(cell, last ? round + 1 : round);
    if (!picture) return {};
    if (!last && !matrix_effect(change.effect)
                      .paint(picture, cell_picture(cell, round + 1), step, steps_, change.seed + cell * 7919))
      return {};
    if (!put_cell(canvas, cell, picture)) return {};
    const PictureRect own = rect_of(cell);
    rect = {std::min(rect.left, own.left), std::min(rect.top, own.top), std::max(rect.right, own.right),
            std::max(rect.bottom, own.bottom)};
  }
  StreamedFrame frame;
  frame.picture = whole_ ? canvas : PictureCrop(canvas, rect);
  if (!whole_) frame.offset = {rect.left, rect.top};
  frame.delay = last && pause_ > 0 ? pause_ : delay_;
  return frame;
}

StreamedFrame Matrix::frame(std::uint64_t number) {
  const std::lock_guard guard(mutex_);
  if (number > 0) return changed(number - 1);
  StreamedFrame frame;
  frame.picture = first_canvas();
  frame.delay = pause_ > 0 ? pause_ : delay_;
  return frame;
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const auto matrix = std::make_shared<Matrix>(values, inputs);
  const Extent canvas = matrix->canvas();
  const std::uint64_t bytes = canvas.height * std::uint64_t{picture_stride(canvas.width, 24)};
  if (std::max(canvas.width, canvas.height) > kMaximumDimension || bytes > kMaximumPictureBytes ||
      matrix->count() > maximum_decoded_bytes() / bytes || matrix->count() > kMaximumEntries) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the frames would be too large")});
    return std::nullopt;
  }
  return FrameStream{canvas, static_cast<std::size_t>(matrix->count()), 0,
                     [matrix](std::size_t number) { return matrix->frame(number); }};
}

}  // namespace

constinit const Generator kMatrix{
    .parameters =
        {
            .name = "matrix",
            .title = "Graphic Matrix",
            .help = "Pictures in a grid of cells that pass to each other",
            .command = 332,
            .page = "graphicmatrix",
            .fields = kFields,
        },
    .input = GeneratorInput::Pictures,
    .document = "Matrix",
    .listFile = "GraphicMatrixImages.txt",
    .failure = StringId::AllocationError,
    .make = make,
};

}  // namespace vellum
