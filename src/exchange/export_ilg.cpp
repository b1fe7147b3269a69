// Inline graphics out: a page, a part of one or a style sheet that has the animation in itself.
#include "base/page_text.h"
#include "base/text.h"
#include "core/model/frame_values.h"
#include "exchange/as_animated_png.h"
#include "exchange/exchange_rows.h"
#include "exchange/settings.h"

namespace vellum {
namespace {

enum Form { kPage, kFragment, kStyleSheet };

constexpr ExportFormat kFormats[] = {{"Page", ".html"}, {"Fragment", ".txt"}, {"Style sheet", ".css"}};
constexpr FieldChoice kForms[] = {
    {kPage, "Page"}, {kFragment, "Fragment"}, {kStyleSheet, "Style sheet", "css"}};
constexpr FieldChoice kLines[] = {{0, "One line"}, {76, "Lines of 76", "76"}};

constexpr Field kFields[] = {
    {.name = "form",
     .label = "Form",
     .type = FieldType::Choice,
     .choices = kForms,
     .setting = &settings::ILGFilterIndex},
    {.name = "png",
     .label = "As animated PNG",
     .type = FieldType::Flag,
     .tip = "Without it the data is a GIF",
     .initial = 1,
     .setting = &settings::InlineGraphicsPNG},
    {.name = "alternate",
     .label = "Alternate text",
     .type = FieldType::Text,
     .most = 260,
     .tip = "For who can't see the animation; empty: the name of the file",
     .stateId = 1},
    {.name = "title",
     .label = "Title",
     .type = FieldType::Text,
     .most = 260,
     .tip = "Of the page; empty: the name of the file",
     .stateId = 2},
    {.name = "lines", .label = "Data in", .type = FieldType::Choice, .choices = kLines, .stateId = 3},
};

constexpr const char* kPng[] = {"png"};
constexpr CompoundOption kOptions[] = {
    {.name = "gif", .form = nullptr, .help = "The data is a GIF", .fields = kPng, .value = 0}};

bool make_data(ExportRun& run, const FieldValues& values, std::vector<std::uint8_t>& bytes) {
  if (values.number("png") != 0) return write_as_animated_png(run.source, memory_sink(bytes), run.host);
  auto gif = prepare_export(kExportGif, run.source, run.host);
  if (!gif) return run.told = true, false;
  const FieldValues settings = setting_values(kExportGif.parameters.fields);
  if (kExportGif.write(*gif, settings, memory_sink(bytes))) return true;
  run.told = gif->told;
  return false;
}

/// A name for a class: letters, digits, hyphens.
std::string class_name(const std::string& stem) {
  std::string name = "inline-";
  for (const char c : stem) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '-';
  return name;
}

std::string text_of(const ExportRun& run, const FieldValues& values, const std::string& uri) {
  const Extent canvas = document_size(run.source.list, run.source.document);
  const std::string stem = (run.path.empty() ? run.source.document.fileName : run.path).stem().string();
  const std::string width = std::to_string(canvas.width), height = std::to_string(canvas.height);
  if (values.number("form") == kStyleSheet)
    return "." + class_name(stem) + " {\n  width: " + width + "px;\n  height: " + height +
           "px;\n  background-image: url(\"" + uri + "\");\n}\n";
  const auto or_stem = [&](const char* field) {
    return html_text(values.text(field).empty() ? stem : values.text(field));
  };
  const std::string image = "<img src=\"" + uri + "\" width=\"" + width + "\" height=\"" + height +
                            "\" alt=\"" + or_stem("alternate") + "\">\n";
  if (values.number("form") == kFragment) return image;
  return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + or_stem("title") +
         "</title>\n</head>\n<body>\n<p>" + image + "</p>\n</body>\n</html>\n";
}

bool write(ExportRun& run, const FieldValues& values, const Sink& sink) {
  std::vector<std::uint8_t> bytes;
  if (!make_data(run, values, bytes)) return false;
  // A text in quotes of a style sheet has no line ends.
  const auto line =
      values.number("form") == kStyleSheet ? 0 : static_cast<std::size_t>(values.number("lines"));
  const std::string uri =
      (values.number("png") != 0 ? "data:image/png;base64," : "data:image/gif;base64,") + base64(bytes, line);
  const std::string text = text_of(run, values, uri);
  return sink.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

/// How long the file will be. Nothing of large documents, where that would take long.
std::string note(const FieldValues& values, const DocumentWindow& window) {
  constexpr std::uint64_t kQuick = 4'000'000;
  const Extent canvas = document_size(window.list, window.document);
  if (std::uint64_t{canvas.width} * canvas.height * window.list.size() > kQuick) return {};
  Host nobody;
  ExportRun run{window, DocumentWindow{window.document, window.list, {}}, nobody};
  std::uint64_t length = 0;
  if (!write(run, values, counting_sink(length))) return {};
  return filled(StringId::PageWillHave, {grouped(length) + " bytes"});
}

}  // namespace

constinit const Exporter kExportIlg{
    .parameters =
        {
            .name = "ilg",
            .title = "Export to ILG",
            .help = "An animation within a page, with no second file",
            .command = 116,
            .kinds = kAnimatedKinds,
            .stateFile = "ExportIlgState.txt",
            .fields = kFields,
            .options = kOptions,
            .note = note,
        },
    .filter = "Page",
    .extension = ".html",
    .formats = kFormats,
    .formatField = "form",
    .write = write,
};

}  // namespace vellum
