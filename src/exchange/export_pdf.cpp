// Print, without a screen: the pages as a PDF file.
#include <algorithm>
#include <cstring>
#include <memory>

#include "base/text.h"
#include "exchange/exchange_rows.h"
#include "exchange/print_pages.h"
#include "exchange/settings.h"
#include "image/drawing_library.h"
#include "operations/frames.h"

namespace vellum {
namespace {

constexpr FieldChoice kLayouts[] = {{0, "Contact sheet", "sheet"}, {1, "One frame to the page", "single"}};
constexpr FieldChoice kPapers[] = {{0, "A4"}, {1, "Letter"}, {2, "A3"}, {3, "A5"}};
constexpr FieldChoice kGrounds[] = {{0, "Background color", "background"}, {1, "Checkered"}};

constexpr Field kFields[] = {
    {.name = "layout", .label = "Layout", .type = FieldType::Choice, .choices = kLayouts, .stateId = 1},
    {.name = "columns",
     .label = "Columns",
     .most = 20,
     .special = "Automatic",
     .enabledBy = "layout",
     .enabledAt = 0,
     .stateId = 2},
    {.name = "frames",
     .label = "Frames",
     .type = FieldType::Text,
     .most = 260,
     .tip = "\"1,3-5\"; empty: all of them",
     .stateId = 3},
    {.name = "dpi",
     .label = "Resolution (dpi)",
     .least = 72,
     .most = 1200,
     .tip = "Pixels of a frame to an inch of paper",
     .initial = 150,
     .setting = &settings::PrinterResolution},
    {.name = "gutter",
     .label = "Gutter",
     .most = 100,
     .tip = "Between frames, in pixels of that size",
     .initial = 12,
     .setting = &settings::PrinterGutter},
    {.name = "annotate",
     .label = "Annotate frames",
     .type = FieldType::Flag,
     .tip = "Number, size and delay below each",
     .initial = 1,
     .setting = &settings::PrinterAnnotate},
    {.name = "footer",
     .label = "Footer",
     .type = FieldType::Flag,
     .tip = "Name of the file, page and date",
     .initial = 1,
     .setting = &settings::PrinterShowFooter},
    {.name = "checkered",
     .label = "Below transparency",
     .type = FieldType::Choice,
     .choices = kGrounds,
     .stateId = 4},
    {.name = "font",
     .label = "Font",
     .type = FieldType::Text,
     .most = 100,
     .initialText = "Arial",
     .textSetting = &settings::PrinterFontName},
    {.name = "largeSize",
     .label = "Heading (points)",
     .least = 4,
     .most = 72,
     .initial = 14,
     .setting = &settings::PrinterLargeFontSize},
    {.name = "smallSize",
     .label = "Notes (points)",
     .least = 4,
     .most = 72,
     .initial = 8,
     .setting = &settings::PrinterSmallFontSize},
    {.name = "paper", .label = "Paper of a PDF", .type = FieldType::Choice, .choices = kPapers, .stateId = 5},
    {.name = "landscape", .label = "Landscape", .type = FieldType::Flag, .stateId = 6},
};

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow& window) {
  const std::string& list = values.text("frames");
  if (list.empty() || parse_frame_list(list, frame_entries(window).size())) return std::nullopt;
  return fault_of("frames", StringId::NothingInRange);
}

struct SurfaceFree {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct CairoFree {
  void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
};
struct ObjectFree {
  void operator()(gpointer object) const { g_object_unref(object); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceFree>;

/// What the library doesn't tell again: that a write failed.
struct Writing {
  const Sink& sink;
  bool failed = false;
};

cairo_status_t write_bytes(void* writing, const unsigned char* bytes, unsigned int count) {
  Writing& to = *static_cast<Writing*>(writing);
  to.failed = to.failed || !to.sink.write({bytes, count});
  return to.failed ? CAIRO_STATUS_WRITE_ERROR : CAIRO_STATUS_SUCCESS;
}

Surface surface_of(const Picture& picture) {
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(picture.width()),
                                             static_cast<int>(picture.height())));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  unsigned char* rows = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* in = picture.row(y);
    unsigned char* out = rows + std::ptrdiff_t{stride} * y;
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const std::uint32_t word =
          std::uint32_t{in[3 * x]} | std::uint32_t{in[3 * x + 1]} << 8 | std::uint32_t{in[3 * x + 2]} << 16;
      std::memcpy(out + std::size_t{4} * x, &word, sizeof word);
    }
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

void draw_text(cairo_t* cairo, const PrintedText& text, const std::string& family) {
  const std::unique_ptr<PangoLayout, ObjectFree> layout(pango_cairo_create_layout(cairo));
  PangoFontDescription* font = pango_font_description_new();
  pango_font_description_set_family(font, family.c_str());
  pango_font_description_set_absolute_size(font, text.points * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font);
  pango_font_description_free(font);
  const std::string shown = is_utf8(text.text) ? text.text : utf8_from_latin1(text.text);
  pango_layout_set_text(layout.get(), shown.c_str(), static_cast<int>(shown.size()));
  pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  pango_layout_set_width(layout.get(), static_cast<int>(text.width * PANGO_SCALE));
  pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_MIDDLE);
  constexpr PangoAlignment kSides[] = {PANGO_ALIGN_LEFT, PANGO_ALIGN_CENTER, PANGO_ALIGN_RIGHT};
  pango_layout_set_alignment(layout.get(), kSides[static_cast<std::size_t>(text.side)]);
  cairo_move_to(cairo, text.x, text.y);
  pango_cairo_show_layout(cairo, layout.get());
}

/// False without memory.
bool draw_frame(cairo_t* cairo, const PrintedFrame& frame, const Picture& picture) {
  const Surface surface = picture ? surface_of(picture) : nullptr;
  if (!surface) return false;
  cairo_save(cairo);
  cairo_translate(cairo, frame.x, frame.y);
  cairo_scale(cairo, frame.width / picture.width(), frame.height / picture.height());
  cairo_set_source_surface(cairo, surface.get(), 0, 0);
  cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_NEAREST);
  cairo_paint(cairo);
  cairo_restore(cairo);
  return true;
}

bool draw_pages(ExportRun& run, const FieldValues& values, std::span<const PrintedPage> pages,
                cairo_t* cairo) {
  const Progress progress(run.host, string_text(StringId::Writing));
  const FrameStream canvases = canvas_frames(run.draft);
  for (std::size_t i = 0; i < pages.size(); ++i) {
    for (const PrintedFrame& frame : pages[i].frames) {
      if (run.host.stopped()) return false;
      const Picture canvas = canvases.frame(frame.frame).picture;
      if (!canvas || !draw_frame(cairo, frame, printed_picture(canvas, values, run.draft)))
        return run.refuse(StringId::MemoryError);
    }
    cairo_set_source_rgb(cairo, 0, 0, 0);
    for (const PrintedText& text : pages[i].texts) draw_text(cairo, text, values.text("font"));
    cairo_show_page(cairo);
    if (cairo_status(cairo) != CAIRO_STATUS_SUCCESS) return false;
    progress.step(i + 1, pages.size());
  }
  return true;
}

bool write(ExportRun& run, const FieldValues& values, const Sink& sink) {
  const PrintPaper paper = print_paper(values);
  const auto pages = print_pages(values, run.draft, paper);
  if (pages.empty()) {
    if (run.host.message)
      run.host.message({StringId::TooManyPages,
                        {},
                        filled(StringId::TooManyPages, {grouped(kMostPrintedPages)}),
                        {},
                        nullptr});
    return run.told = true, false;
  }
  Writing writing{sink};
  const Surface surface(
      cairo_pdf_surface_create_for_stream(write_bytes, &writing, paper.width, paper.height));
  const std::string title = std::filesystem::path(document_title(run.draft.document)).filename().string();
  if (is_utf8(title)) cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, title.c_str());
  // The same document gives the same file; when it was printed stands in the footer.
  cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATE_DATE, "2000-01-01T00:00:00Z");
  const std::unique_ptr<cairo_t, CairoFree> cairo(cairo_create(surface.get()));
  const bool drawn = draw_pages(run, values, pages, cairo.get());
  cairo_surface_finish(surface.get());
  return drawn && !writing.failed && cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS;
}

}  // namespace

constinit const Exporter kExportPdf{
    .parameters =
        {
            .name = "print",
            .title = "Print",
            .help = "The frames of an animation on pages, as a PDF",
            .kinds = kAnimatedKinds,
            .stateFile = "PrintState.txt",
            .fields = kFields,
            .check = check,
        },
    .filter = "PDF files",
    .extension = ".pdf",
    .write = write,
};

}  // namespace vellum
