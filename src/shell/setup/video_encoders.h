// The encoders that movies can be written with.
#pragma once

#include <QWidget>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellum {

struct VideoEncoder {
  std::string name, description;
};

/// The video encoders in the list that the movie program prints of itself.
std::vector<VideoEncoder> parse_video_encoders(std::string_view list);

/// Those of the movie program in the search path; none without it.
std::vector<VideoEncoder> find_video_encoders();

/// Asks for one. An empty name is the usual encoder of the file type; nothing when the user cancelled, or
/// after a line that says so when there are none.
std::optional<std::string> ask_for_video_encoder(QWidget* parent, const std::string& now,
                                                 const std::vector<VideoEncoder>& encoders);

}  // namespace vellum
