// The facts of single chunks, one function for each; a row of chunk_facts.cpp names it.
#pragma once

#include "core/chunks/chunk_facts.h"
#include "core/chunks/chunk_field_sets.h"

namespace vellum {

// Of pictures.
ChunkFacts facts_of_image(const EntryPlace& place);
ChunkFacts facts_of_frame_control(const EntryPlace& place);
ChunkFacts facts_of_stored_frame(const EntryPlace& place);
// Of headers and control chunks.
ChunkFacts facts_of_header(const EntryPlace& place);
ChunkFacts facts_of_mng_header(const EntryPlace& place);
ChunkFacts facts_of_webp_header(const EntryPlace& place);
ChunkFacts facts_of_animation(const EntryPlace& place);
ChunkFacts facts_of_termination(const EntryPlace& place);
ChunkFacts facts_of_loop(const EntryPlace& place);
ChunkFacts facts_of_framing(const EntryPlace& place);
ChunkFacts facts_of_definition(const EntryPlace& place);
ChunkFacts facts_of_move(const EntryPlace& place);
ChunkFacts facts_of_show(const EntryPlace& place);
// Of colors.
ChunkFacts facts_of_palette(const EntryPlace& place);
ChunkFacts facts_of_transparency(const EntryPlace& place);
ChunkFacts facts_of_background(const EntryPlace& place);
ChunkFacts facts_of_mng_background(const EntryPlace& place);
ChunkFacts facts_of_gamma(const EntryPlace& place);
ChunkFacts facts_of_profile(const EntryPlace& place);
ChunkFacts facts_of_bare_profile(const EntryPlace& place);
ChunkFacts facts_of_code_points(const EntryPlace& place);
ChunkFacts facts_of_display(const EntryPlace& place);
ChunkFacts facts_of_light(const EntryPlace& place);
// Of texts and measures.
ChunkFacts facts_of_text(const EntryPlace& place);
ChunkFacts facts_of_xmp(const EntryPlace& place);
ChunkFacts facts_of_size(const EntryPlace& place);
ChunkFacts facts_of_camera(const EntryPlace& place);
/// The first lines of its reading, a name and a value each.
ChunkFacts facts_of_reading(const EntryPlace& place);
ChunkFacts facts_of_histogram(const EntryPlace& place);
ChunkFacts facts_of_suggested_palette(const EntryPlace& place);
/// How many bytes it has.
ChunkFacts facts_of_bytes(const EntryPlace& place);

/// The parts that are not empty, with a comma between.
std::string joined_facts(std::initializer_list<std::string> parts);

}  // namespace vellum
