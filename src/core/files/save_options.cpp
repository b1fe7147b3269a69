#include "core/files/save_options.h"

#include <algorithm>

#include "core/settings.h"

namespace vellum {

SaveOptions save_options() {
  SaveOptions options;
  options.compression = std::clamp(settings::PngCompression, 0, 9);
  options.updateTime = settings::AutoUpdateTime != 0;
  options.animationTexts = settings::APNGIncludeTextChunks != 0;
  options.identify = settings::IdentifyFiles != 0;
  options.identificationFile = settings::IdentificationFile;
  options.backup = settings::CreateBackups != 0;
  options.webpQuality = std::clamp(settings::WEBPQualityFactor, 0, 100);
  options.webpLossless = settings::WEBPLossless != 0;
  options.keepStored = settings::KeepStoredImages != 0;
  options.webpMixed = settings::WebPAllowMixed != 0;
  return options;
}

}  // namespace vellum
