// What was built, as outside programs decode it: animated PNG by ffmpeg, WebP by ImageMagick. Of an MNG
// neither shows more than the first image.
#include <gtest/gtest.h>

#include "core/files/save_document.h"
#include "core/settings.h"
#include "generators/generator.h"
#include "generators/wizard.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/settings.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

constexpr DocumentKind kKinds[] = {DocumentKind::APNG, DocumentKind::WEBP};

/// The frames one after the other as RGBA; empty where there is nobody to ask.
std::string decoded(const std::filesystem::path& file, DocumentKind kind) {
  const std::string name = file.string();
  const auto result = testing::run_tool(
      kind == DocumentKind::APNG
          ? std::vector<std::string>{"ffmpeg", "-v", "error", "-i", name, "-vsync", "0", "-f", "rawvideo",
                                     "-pix_fmt", "rgba", "-"}
          : std::vector<std::string>{"convert", name, "-coalesce", "-depth", "8", "RGBA:-"});
  return result.there ? result.output : std::string();
}

/// Without colors that nobody sees.
std::string shown(const DocumentWindow& window) {
  const FrameStream frames = canvas_frames(window);
  std::string bytes;
  for (std::size_t i = 0; i < frames.count; ++i) {
    const Picture canvas = frames.frame(i).picture;
    for (std::uint32_t y = 0; y < canvas.height(); ++y)
      for (std::uint32_t x = 0; x < canvas.width(); ++x) {
        const Colour c = PictureGetPixel(canvas, x, y);
        for (const unsigned shift : {0, 8, 16, 24}) bytes += static_cast<char>(c >> 24 ? c >> shift : 0);
      }
  }
  return bytes;
}

class Judged : public ::testing::Test {
 protected:
  void SetUp() override {
    settings::WEBPLossless = 1;
    for (unsigned i = 0; i < 3; ++i) {
      Picture picture = testing::small_picture(24, 20, i == 1 ? 8 : 24, i);
      if (i == 2) picture = PictureToTrueColorAlpha(PictureCrop(picture, {0, 0, 20, 20}));
      for (std::uint32_t x = 0; i == 2 && x < 9; ++x) PicturePutPixel(picture, x, 3, 0);
      pictures_.push_back(picture);
      files_.push_back(folder_ / (std::to_string(i) + ".png"));
      ASSERT_TRUE(GraphicFileWrite(files_.back().string(), picture));
    }
  }
  void TearDown() override {
    if (judged_ == 0) GTEST_SKIP() << "neither ffmpeg nor ImageMagick is installed";
  }

  void judge(DocumentWindow& window, DocumentKind kind, const std::string& what) {
    const auto file = folder_ / testing::kFileNames.at(kind);
    ASSERT_TRUE(save_document(window, file, recorder_.host)) << what;
    EXPECT_EQ(testing::objections(file), "") << what;
    std::string seen = decoded(file, kind);
    if (seen.empty()) return;
    ++judged_;
    // Around a frame without alpha nothing is seen, or black where the judge's canvas has no alpha either.
    const std::string ours = shown(window);
    for (std::size_t at = 0; at + 3 < std::min(seen.size(), ours.size()); at += 4) {
      if (seen[at + 3] == 0) std::fill_n(seen.begin() + static_cast<std::ptrdiff_t>(at), 3, '\0');
      const bool black = seen[at] == 0 && seen[at + 1] == 0 && seen[at + 2] == 0;
      if (ours[at + 3] == 0 && black) seen[at + 3] = 0;
    }
    EXPECT_TRUE(seen == ours) << what << " as " << testing::kFileNames.at(kind) << ": " << seen.size()
                              << " bytes";
  }

  testing::SettingsGuard guard_;
  testing::ScratchFolder folder_;
  testing::Recorder recorder_;
  std::vector<Picture> pictures_;
  std::vector<std::filesystem::path> files_;
  int judged_ = 0;
};

TEST_F(Judged, WhatTheWizardBuildsIsShownAlike) {
  for (const DocumentKind kind : kKinds)
    for (const std::int64_t palette : {kWizardAsIs, kWizardTrueColor, kWizardDither}) {
      // The second judge lays over the canvas what is to replace it.
      if (kind == DocumentKind::WEBP && palette == kWizardAsIs) continue;
      FieldValues values = initial_values(kWizard.fields);
      values.set("palette", palette);
      values.set("preserveTransparency", std::int64_t{palette == kWizardAsIs});
      DocumentWindow window;
      ASSERT_TRUE(build_wizard(files_, values, kind, window, recorder_.host));
      judge(window, kind, "palette " + std::to_string(palette));
    }
}

TEST_F(Judged, TransitionsAndSpinsAreShownAlike) {
  for (const DocumentKind kind : kKinds) {
    const Generator& spin = *find_generator("spin");
    FieldValues turning = initial_values(spin.parameters.fields);
    turning.set("count", std::int64_t{7});
    DocumentWindow spun;
    ASSERT_TRUE(generate(spin, turning, {{pictures_[0]}}, kind, spun, recorder_.host));
    judge(spun, kind, "spin");
    const Field& effects = *find_field(find_generator("transition")->parameters.fields, "effect");
    for (const auto& [effect, name, word] : effects.choices) {
      FieldValues values = initial_values(find_generator("transition")->parameters.fields);
      values.set("effect", effect), values.set("seed", std::int64_t{5}),
          values.set("trueColor", std::int64_t{1});
      DocumentWindow window;
      ASSERT_TRUE(generate(*find_generator("transition"), values, {{pictures_.begin(), pictures_.end()}},
                           kind, window, recorder_.host));
      judge(window, kind, name);
    }
  }
}

}  // namespace
}  // namespace vellum
