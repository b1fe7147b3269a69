// Samples of 16 bits: an image that nobody changes keeps them, one that is changed has 8 bits.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// How many images of `before` came from streams of 16 bits a sample and are no longer in `after`, where they
/// were not just deleted.
std::size_t deep_images_changed(const ChunkList& before, const ChunkList& after);

/// Tells the host and the document of that, where there are any, so that it is known before anything is
/// saved.
void note_deep_images(const ChunkList& before, const ChunkList& after, Document& document, const Host& host);

}  // namespace vellum
