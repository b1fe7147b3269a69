// Banner: a line of text that moves, glows, waves or types itself.
#include "generators/banner_text.h"
#include "generators/generator_rows.h"
#include "generators/settings.h"
#include "generators/text_fields.h"
#include "generators/textures.h"
#include "image/picture_operations.h"
#include "operations/text_art.h"

namespace vellum {
namespace {

constexpr const char* kType = "type";
constexpr const char* kLook = "Look";

constexpr FieldChoice kTypes[] = {{kEmbossedBanner, "Embossed"}, {kGlowBanner, "Glow"},
                                  {kScannersBanner, "Scanners"}, {kSimpleBanner, "Simple"},
                                  {kSoftBanner, "Soft"},         {kTeletypeBanner, "Teletype"},
                                  {kTextureBanner, "Texture"},   {kWaveBanner, "Wave"}};
constexpr FieldChoice kGlows[] = {{0, "Steady"}, {1, "Pulse"}, {2, "Flicker"}, {3, "Letter by letter"}};

// Fields that several types have, each with a value of its own.
constexpr Field of(BannerType type, Field field) { return on_page(only_for(field, kType, type), kLook); }
constexpr Field smooth(const char* name, BannerType type, int* setting) {
  return of(type, flag_field(name, "Smooth edges", 1, setting));
}
constexpr Field ground(const char* name, BannerType type, int* setting, std::int64_t initial = 0xFFFFFF) {
  return of(type, color_field(name, "Background", initial, setting));
}
constexpr Field clear(const char* name, BannerType type, int* setting) {
  return of(type, flag_field(name, "Transparent background", 0, setting));
}
constexpr Field letters(const char* name, BannerType type, int* setting, std::int64_t initial = 255) {
  return of(type, color_field(name, "Color of the text", initial, setting));
}
constexpr Field cells(const char* name, BannerType type, int* setting) {
  return of(type, whole_field(name, "Frames of one movement", 2, 200, 20, setting));
}
constexpr Field delay(const char* name, BannerType type, int* setting) {
  return of(type, whole_field(name, "Delay", 1, 32767, 100, setting));
}
constexpr Field pause(const char* name, BannerType type, int* setting) {
  return of(type, whole_field(name, "Pause", 0, 32767, 2000, setting));
}
constexpr Field rolling(const char* name, BannerType type, int* setting) {
  return of(type, flag_field(name, "Rolls on and out", 0, setting));
}
constexpr Field drops(const char* name, BannerType type, int* setting) {
  return of(type, flag_field(name, "Drop shadow", 1, setting));
}
constexpr Field away(const char* name, const char* label, BannerType type, int* setting,
                     std::int64_t initial = 3) {
  return of(type, whole_field(name, label, 0, 32, initial, setting));
}
constexpr Field shadow(const char* name, BannerType type, int* setting) {
  return of(type, color_field(name, "Color of the shadow", 0x808080, setting));
}
/// Of a drop shadow that may be off.
constexpr Field if_drops(Field field, const char* by) {
  field.vanishes = false;
  return enabled_by(field, by);
}

constexpr const char* kOffset = "Offset of the shadow";

constexpr Field kFields[] = {
    sign_text_field(&settings::BannerTheText, "Your text here"),
    {.name = kType,
     .label = "Type",
     .type = FieldType::Choice,
     .choices = kTypes,
     .initial = kSimpleBanner,
     .setting = &settings::BannerType},
    font_field("font", &settings::BannerFont),
    whole_field("pointsize", "Size", 6, 400, 36, &settings::BannerPointsize),
    flag_field("bold", "Bold", 1, &settings::BannerBold),
    flag_field("italic", "Italic", 0, &settings::BannerItalic),
    whole_field("charspace", "Character spacing", -10, 50, 0, &settings::BannerCharspace),
    true_color_field(1),

    ground("embossedBackColor", kEmbossedBanner, &settings::BannerEmbossedBackcolour24, 0xC0C0C0),
    clear("embossedTransparent", kEmbossedBanner, &settings::BannerEmbossedTransparent),
    away("embossedOffset", "Height", kEmbossedBanner, &settings::BannerEmbossedOffset, 2),
    of(kEmbossedBanner, flag_field("useShadow", "Shadow", 1, &settings::BannerEmbossedUseShadow)),
    if_drops(shadow("embossedShadowColor", kEmbossedBanner, &settings::BannerEmbossedShadowcolour24),
             "useShadow"),
    of(kEmbossedBanner, flag_field("useHighlight", "Highlight", 1, &settings::BannerEmbossedUseHighlight)),
    if_drops(of(kEmbossedBanner, color_field("highlightColor", "Color of the highlight", 0xFFFFFF,
                                             &settings::BannerEmbossedHighlightcolour24)),
             "useHighlight"),
    rolling("embossedRolling", kEmbossedBanner, &settings::BannerEmbossedRolling),
    cells("embossedCells", kEmbossedBanner, &settings::BannerEmbossedCells),
    delay("embossedDelay", kEmbossedBanner, &settings::BannerEmbossedDelay),
    pause("embossedPause", kEmbossedBanner, &settings::BannerEmbossedPause),
    smooth("embossedAntialias", kEmbossedBanner, &settings::BannerEmbossedAntialias),

    of(kGlowBanner, {.name = "glow",
                     .label = "Glow",
                     .type = FieldType::Choice,
                     .choices = kGlows,
                     .initial = 1,
                     .setting = &settings::BannerGlowType}),
    of(kGlowBanner, whole_field("steps", "Levels of brightness", 1, 64, 8, &settings::BannerGlowSteps)),
    letters("glowTextColor", kGlowBanner, &settings::BannerGlowTextcolour24, 0xFFFFFF),
    of(kGlowBanner,
       color_field("tubeColor", "Color of the tubes", 0xFF00FF, &settings::BannerGlowTubecolour24)),
    away("glowOffset", "Reach of the glow", kGlowBanner, &settings::BannerGlowOffset, 6),
    rolling("glowRolling", kGlowBanner, &settings::BannerGlowRolling),
    cells("glowCells", kGlowBanner, &settings::BannerGlowCells),
    delay("glowDelay", kGlowBanner, &settings::BannerGlowDelay),
    pause("glowPause", kGlowBanner, &settings::BannerGlowPause),
    smooth("glowAntialias", kGlowBanner, &settings::BannerGlowAntialias),

    letters("scannersTextColor", kScannersBanner, &settings::BannerScannersTextcolour24),
    of(kScannersBanner,
       color_field("scanColor", "Color of the beam", 0x00FFFF, &settings::BannerScannersScancolour24)),
    of(kScannersBanner, color_field("scatterColor", "Color beside the beam", 0x0080FF,
                                    &settings::BannerScannersScattercolour24)),
    of(kScannersBanner, whole_field("wide", "Width of the beam", 1, 500, 24, &settings::BannerScannersWide)),
    of(kScannersBanner,
       flag_field("leadingEdge", "Sharp leading edge", 0, &settings::BannerScannersLeadingedge)),
    ground("scannersBackColor", kScannersBanner, &settings::BannerScannersBackcolour24, 0),
    clear("scannersTransparent", kScannersBanner, &settings::BannerScannersTransparent),
    drops("scannersDropshadow", kScannersBanner, &settings::BannerScannersDropshadow),
    if_drops(away("scannersOffset", kOffset, kScannersBanner, &settings::BannerScannersOffset),
             "scannersDropshadow"),
    if_drops(shadow("scannersShadowColor", kScannersBanner, &settings::BannerScannersShadowcolour24),
             "scannersDropshadow"),
    cells("scannersCells", kScannersBanner, &settings::BannerScannersCells),
    delay("scannersDelay", kScannersBanner, &settings::BannerScannersDelay),
    pause("scannersPause", kScannersBanner, &settings::BannerScannersPause),
    smooth("scannersAntialias", kScannersBanner, &settings::BannerScannersAntialias),

    letters("simpleTextColor", kSimpleBanner, &settings::BannerSimpleTextcolour24),
    ground("simpleBackColor", kSimpleBanner, &settings::BannerSimpleBackcolour24),
    clear("simpleTransparent", kSimpleBanner, &settings::BannerSimpleTransparent),
    drops("simpleDropshadow", kSimpleBanner, &settings::BannerSimpleDropshadow),
    if_drops(away("simpleOffset", kOffset, kSimpleBanner, &settings::BannerSimpleOffset), "simpleDropshadow"),
    if_drops(shadow("simpleShadowColor", kSimpleBanner, &settings::BannerSimpleShadowcolour24),
             "simpleDropshadow"),
    rolling("simpleRolling", kSimpleBanner, &settings::BannerSimpleRolling),
    cells("simpleCells", kSimpleBanner, &settings::BannerSimpleCells),
    delay("simpleDelay", kSimpleBanner, &settings::BannerSimpleDelay),
    pause("simplePause", kSimpleBanner, &settings::BannerSimplePause),
    smooth("simpleAntialias", kSimpleBanner, &settings::BannerSimpleAntialias),

    letters("softTextColor", kSoftBanner, &settings::BannerSoftTextcolour24),
    ground("softBackColor", kSoftBanner, &settings::BannerSoftBackcolour24),
    away("softOffset", kOffset, kSoftBanner, &settings::BannerSoftOffset),
    shadow("softShadowColor", kSoftBanner, &settings::BannerSoftShadowcolour24),
    of(kSoftBanner, whole_field("extra", "Softer by", 0, 20, 2, &settings::BannerSoftExtra)),
    rolling("softRolling", kSoftBanner, &settings::BannerSoftRolling),
    cells("softCells", kSoftBanner, &settings::BannerSoftCells),
    delay("softDelay", kSoftBanner, &settings::BannerSoftDelay),
    pause("softPause", kSoftBanner, &settings::BannerSoftPause),
    smooth("softAntialias", kSoftBanner, &settings::BannerSoftAntialias),

    letters("teletypeTextColor", kTeletypeBanner, &settings::BannerTeletypeTextcolour24),
    ground("teletypeBackColor", kTeletypeBanner, &settings::BannerTeletypeBackcolour24),
    clear("teletypeTransparent", kTeletypeBanner, &settings::BannerTeletypeTransparent),
    drops("teletypeDropshadow", kTeletypeBanner, &settings::BannerTeletypeDropshadow),
    if_drops(away("teletypeOffset", kOffset, kTeletypeBanner, &settings::BannerTeletypeOffset),
             "teletypeDropshadow"),
    if_drops(shadow("teletypeShadowColor", kTeletypeBanner, &settings::BannerTeletypeShadowcolour24),
             "teletypeDropshadow"),
    delay("teletypeDelay", kTeletypeBanner, &settings::BannerTeletypeDelay),
    pause("teletypePause", kTeletypeBanner, &settings::BannerTeletypePause),
    smooth("teletypeAntialias", kTeletypeBanner, &settings::BannerTeletypeAntialias),

    of(kTextureBanner, {.name = "texture",
                        .label = "Texture",
                        .type = FieldType::Choice,
                        .choices = kTextures,
                        .setting = &settings::BannerTextureNumber}),
    of(kTextureBanner, flag_field("outline", "Outline", 1, &settings::BannerTextureOutline)),
    if_drops(of(kTextureBanner, color_field("outlineColor", "Color of the outline", 0,
                                            &settings::BannerTextureTheOutlinecolour24)),
             "outline"),
    ground("textureBackColor", kTextureBanner, &settings::BannerTextureBackcolour24),
    clear("textureTransparent", kTextureBanner, &settings::BannerTextureTransparent),
    drops("textureDropshadow", kTextureBanner, &settings::BannerTextureDropshadow),
    if_drops(away("textureOffset", kOffset, kTextureBanner, &settings::BannerTextureOffset),
             "textureDropshadow"),
    if_drops(shadow("textureShadowColor", kTextureBanner, &settings::BannerTextureShadowcolour24),
             "textureDropshadow"),
    rolling("textureRolling", kTextureBanner, &settings::BannerTextureRolling),
    cells("textureCells", kTextureBanner, &settings::BannerTextureCells),
    delay("textureDelay", kTextureBanner, &settings::BannerTextureDelay),
    pause("texturePause", kTextureBanner, &settings::BannerTexturePause),
    smooth("textureAntialias", kTextureBanner, &settings::BannerTextureAntialias),

    of(kWaveBanner,
       color_field("crestColor", "Color of the crests", 0xFFFF00, &settings::BannerWaveCrestcolour24)),
    of(kWaveBanner,
       color_field("troughColor", "Color of the troughs", 0xFF0000, &settings::BannerWaveTroughcolour24)),
    of(kWaveBanner,
       whole_field("frequency", "Waves over the text", 1, 20, 2, &settings::BannerWaveFrequency)),
    ground("waveBackColor", kWaveBanner, &settings::BannerWaveBackcolour24),
    clear("waveTransparent", kWaveBanner, &settings::BannerWaveTransparent),
    drops("waveDropshadow", kWaveBanner, &settings::BannerWaveDropshadow),
    if_drops(away("waveOffset", kOffset, kWaveBanner, &settings::BannerWaveOffset), "waveDropshadow"),
    if_drops(shadow("waveShadowColor", kWaveBanner, &settings::BannerWaveShadowcolour24), "waveDropshadow"),
    cells("waveCells", kWaveBanner, &settings::BannerWaveCells),
    delay("waveDelay", kWaveBanner, &settings::BannerWaveDelay),
    smooth("waveAntialias", kWaveBanner, &settings::BannerWaveAntialias),
};

// One option for the same field of all types.
constexpr const char* kSmooths[] = {"embossedAntialias", "glowAntialias", "scannersAntialias",
                                    "simpleAntialias",   "softAntialias", "teletypeAntialias",
                                    "textureAntialias",  "waveAntialias"};
constexpr const char* kGrounds[] = {"embossedBackColor", "scannersBackColor", "simpleBackColor",
                                    "softBackColor",     "teletypeBackColor", "textureBackColor",
                                    "waveBackColor"};
constexpr const char* kClears[] = {"embossedTransparent", "scannersTransparent", "simpleTransparent",
                                   "teletypeTransparent", "textureTransparent",  "waveTransparent"};
constexpr const char* kLetters[] = {"glowTextColor", "scannersTextColor", "simpleTextColor", "softTextColor",
                                    "teletypeTextColor"};
constexpr const char* kCells[] = {"embossedCells", "glowCells",    "scannersCells", "simpleCells",
                                  "softCells",     "textureCells", "waveCells"};
constexpr const char* kDelays[] = {"embossedDelay", "glowDelay",     "scannersDelay", "simpleDelay",
                                   "softDelay",     "teletypeDelay", "textureDelay",  "waveDelay"};
constexpr const char* kPauses[] = {"embossedPause", "glowPause",     "scannersPause", "simplePause",
                                   "softPause",     "teletypePause", "texturePause"};
constexpr const char* kRollings[] = {"embossedRolling", "glowRolling", "simpleRolling", "softRolling",
                                     "textureRolling"};
constexpr const char* kDrops[] = {"scannersDropshadow", "simpleDropshadow", "teletypeDropshadow",
                                  "textureDropshadow", "waveDropshadow"};
constexpr const char* kOffsets[] = {"embossedOffset", "glowOffset",     "scannersOffset", "simpleOffset",
                                    "softOffset",     "teletypeOffset", "textureOffset",  "waveOffset"};
constexpr const char* kShadows[] = {"embossedShadowColor", "scannersShadowColor", "simpleShadowColor",
                                    "softShadowColor",     "teletypeShadowColor", "textureShadowColor",
                                    "waveShadowColor"};

constexpr CompoundOption one_for(const char* name, const char* form, const char* help,
                                 std::span<const char* const> fields, std::int64_t value = 1) {
  return {.name = name, .form = form, .help = help, .fields = fields, .value = value, .forAll = true};
}
constexpr CompoundOption kOptions[] = {
    one_for("back-color", "RRGGBB", "Background", kGrounds),
    one_for("transparent", nullptr, "Transparent background", kClears),
    one_for("text-color", "RRGGBB", "Color of the text", kLetters),
    one_for("cells", "N", "Frames of one movement, 2 to 200", kCells),
    one_for("delay", "N", "Delay in milliseconds, 1 to 32767", kDelays),
    one_for("pause", "N", "Delay of the frame at rest, 0 to 32767; 0: as the others", kPauses),
    one_for("rolling", nullptr, "The text rolls on and out", kRollings),
    one_for("no-dropshadow", nullptr, "No drop shadow", kDrops, 0),
    one_for("offset", "N", "Of shadow, relief or glow in pixels, 0 to 32", kOffsets),
    one_for("shadow-color", "RRGGBB", "Color of the shadow", kShadows),
    one_for("no-antialias", nullptr, "No smooth edges", kSmooths, 0),
};

using Draws = BannerDrawing (*)(const BannerText& text, const BannerValues& values);
struct TypeRow {
  const char* prefix;
  Draws draws;
};
constexpr TypeRow kRows[] = {{"embossed", embossed_banner}, {"glow", glow_banner},
                             {"scanners", scanners_banner}, {"simple", simple_banner},
                             {"soft", soft_banner},         {"teletype", teletype_banner},
                             {"texture", texture_banner},   {"wave", wave_banner}};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  return check_sign_text(values, "banner");
}

std::optional<BannerText> drawn_text(const BannerValues& values, Host& host) {
  BannerText text;
  text.text = values.values.text("text");
  text.margin = 8 + values.number("offset");
  text.style = {.family = values.values.text("font"),
                .points = static_cast<double>(values.values.number("pointsize")),
                .bold = values.values.number("bold") != 0,
                .italic = values.values.number("italic") != 0,
                .smooth = values.flag("antialias"),
                .letterSpace = static_cast<std::int32_t>(values.values.number("charspace"))};
  text.drawn = draw_sign_text(text.text, text.style, host);
  if (text.drawn.mask.values.empty()) return std::nullopt;
  return text;
}

std::optional<FrameStream> make(const FieldValues& values, const GeneratorInputs& inputs, Host& host) {
  const TypeRow& row = kRows[values.number(kType)];
  const BannerValues own{values, row.prefix};
  const auto text = drawn_text(own, host);
  if (!text) return std::nullopt;
  const BannerDrawing drawing = row.draws(*text, own);
  const bool clear = own.flag("transparent");
  const Picture empty =
      clear ? PictureCreateAlpha(drawing.canvas.width, drawing.canvas.height)
            : PictureCreateFilled(drawing.canvas.width, drawing.canvas.height, own.color("backColor"));
  if (!empty) throw std::bad_alloc();
  DrawnFrames drawn{drawing.canvas, drawing.count, clear,
                    [empty, draw = drawing.draw](std::size_t frame) {
                      Picture picture = empty;
                      draw(picture, frame);
                      return picture;
                    },
                    drawing.delay};
  return true_color_or_palette(std::move(drawn), values, inputs, host);
}

}  // namespace

constinit const Generator kBanner{
    .parameters =
        {
            .name = "banner",
            .title = "Banner",
            .help = "A line of text that moves, glows, waves or types itself",
            .command = 250,
            .stateFile = "BannerState.txt",
            .texts = "EditBannerHistory.txt",
            .fields = kFields,
            .options = kOptions,
            .fit = offer_sign_fonts,
            .check = check,
        },
    .document = "Banner",
    .failure = StringId::TextNotDrawn,
    .make = make,
};

}  // namespace vellum
