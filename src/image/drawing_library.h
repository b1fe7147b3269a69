// Pango and Cairo, which draw texts, shapes and PDF files; loaded when something of them is called for the
// first time: they want thirty others, and most runs of the programs draw nothing.
#pragma once

#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include "base/late_library.h"

namespace vellum {

/// Throws where the libraries or a function of this name are not there.
void* drawing_function(const char* name);

// What the attributes of some of them say (pure, must be used) is lost here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
VELLUM_LATE_FUNCTION(drawing_function, cairo_arc);
VELLUM_LATE_FUNCTION(drawing_function, cairo_create);
VELLUM_LATE_FUNCTION(drawing_function, cairo_destroy);
VELLUM_LATE_FUNCTION(drawing_function, cairo_fill);
VELLUM_LATE_FUNCTION(drawing_function, cairo_font_options_create);
VELLUM_LATE_FUNCTION(drawing_function, cairo_font_options_destroy);
VELLUM_LATE_FUNCTION(drawing_function, cairo_font_options_set_antialias);
VELLUM_LATE_FUNCTION(drawing_function, cairo_font_options_set_hint_metrics);
VELLUM_LATE_FUNCTION(drawing_function, cairo_font_options_set_hint_style);
VELLUM_LATE_FUNCTION(drawing_function, cairo_get_source);
VELLUM_LATE_FUNCTION(drawing_function, cairo_image_surface_create);
VELLUM_LATE_FUNCTION(drawing_function, cairo_image_surface_get_data);
VELLUM_LATE_FUNCTION(drawing_function, cairo_image_surface_get_stride);
VELLUM_LATE_FUNCTION(drawing_function, cairo_line_to);
VELLUM_LATE_FUNCTION(drawing_function, cairo_move_to);
VELLUM_LATE_FUNCTION(drawing_function, cairo_new_sub_path);
VELLUM_LATE_FUNCTION(drawing_function, cairo_paint);
VELLUM_LATE_FUNCTION(drawing_function, cairo_pattern_set_extend);
VELLUM_LATE_FUNCTION(drawing_function, cairo_pattern_set_filter);
VELLUM_LATE_FUNCTION(drawing_function, cairo_pdf_surface_create_for_stream);
VELLUM_LATE_FUNCTION(drawing_function, cairo_pdf_surface_set_metadata);
VELLUM_LATE_FUNCTION(drawing_function, cairo_rectangle);
VELLUM_LATE_FUNCTION(drawing_function, cairo_restore);
VELLUM_LATE_FUNCTION(drawing_function, cairo_rotate);
VELLUM_LATE_FUNCTION(drawing_function, cairo_save);
VELLUM_LATE_FUNCTION(drawing_function, cairo_scale);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_antialias);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_line_cap);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_line_width);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_operator);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_source_rgb);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_source_rgba);
VELLUM_LATE_FUNCTION(drawing_function, cairo_set_source_surface);
VELLUM_LATE_FUNCTION(drawing_function, cairo_show_page);
VELLUM_LATE_FUNCTION(drawing_function, cairo_status);
VELLUM_LATE_FUNCTION(drawing_function, cairo_stroke);
VELLUM_LATE_FUNCTION(drawing_function, cairo_surface_destroy);
VELLUM_LATE_FUNCTION(drawing_function, cairo_surface_finish);
VELLUM_LATE_FUNCTION(drawing_function, cairo_surface_flush);
VELLUM_LATE_FUNCTION(drawing_function, cairo_surface_mark_dirty);
VELLUM_LATE_FUNCTION(drawing_function, cairo_surface_status);
VELLUM_LATE_FUNCTION(drawing_function, cairo_translate);
VELLUM_LATE_FUNCTION(drawing_function, g_free);
VELLUM_LATE_FUNCTION(drawing_function, g_object_unref);
VELLUM_LATE_FUNCTION(drawing_function, g_type_check_instance_cast);
VELLUM_LATE_FUNCTION(drawing_function, g_utf8_make_valid);
VELLUM_LATE_FUNCTION(drawing_function, g_utf8_pointer_to_offset);
VELLUM_LATE_FUNCTION(drawing_function, pango_attr_foreground_alpha_new);
VELLUM_LATE_FUNCTION(drawing_function, pango_attr_letter_spacing_new);
VELLUM_LATE_FUNCTION(drawing_function, pango_attr_list_insert);
VELLUM_LATE_FUNCTION(drawing_function, pango_attr_list_new);
VELLUM_LATE_FUNCTION(drawing_function, pango_attr_list_unref);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_context_set_font_options);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_create_layout);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_font_map_get_type);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_font_map_new_for_font_type);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_font_map_set_resolution);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_show_layout);
VELLUM_LATE_FUNCTION(drawing_function, pango_cairo_show_layout_line);
VELLUM_LATE_FUNCTION(drawing_function, pango_context_set_language);
VELLUM_LATE_FUNCTION(drawing_function, pango_context_set_round_glyph_positions);
VELLUM_LATE_FUNCTION(drawing_function, pango_extents_to_pixels);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_describe);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_free);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_get_family);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_new);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_set_absolute_size);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_set_family);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_set_size);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_set_style);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_description_set_weight);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_family_get_name);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_map_create_context);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_map_list_families);
VELLUM_LATE_FUNCTION(drawing_function, pango_font_map_load_font);
VELLUM_LATE_FUNCTION(drawing_function, pango_language_from_string);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_get_iter);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_get_lines_readonly);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_get_log_attrs_readonly);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_get_pixel_extents);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_get_text);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_index_to_pos);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_iter_free);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_iter_get_baseline);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_iter_get_line_extents);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_iter_get_line_readonly);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_iter_next_line);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_new);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_alignment);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_attributes);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_ellipsize);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_font_description);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_single_paragraph_mode);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_spacing);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_text);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_width);
VELLUM_LATE_FUNCTION(drawing_function, pango_layout_set_wrap);
#pragma GCC diagnostic pop

}  // namespace vellum
