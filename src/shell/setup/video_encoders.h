// The encoders that movies can be written with.
#pragma once

#include <QWidget>
#include <optional>
#include <string>
#include <vector>

#include "exchange/movie.h"

namespace vellum {

/// Asks for one. An empty name is the usual encoder of the file type; nothing when the user cancelled, or
/// after a line that says so when there are none.
std::optional<std::string> ask_for_video_encoder(QWidget* parent, const std::string& now,
                                                 const std::vector<MovieEncoder>& encoders);

}  // namespace vellum
