// Movies, without a window: what reads them frame by frame and what writes them. Only the files beside this
// one that begin with `movie_` know the libraries behind it; without those libraries `movie_none.cpp` stands
// for them.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/file.h"
#include "core/build/frame_stream.h"

namespace vellum {

/// Whether this program was built with the libraries.
bool movies_built();

struct MovieEncoder {
  std::string name, description;
};
/// Those of pictures, by name.
std::vector<MovieEncoder> movie_encoders();

struct MovieFacts {
  std::string format, codec;            ///< "mov,mp4", "h264"
  std::uint32_t width = 0, height = 0;  ///< as shown: upright, with square pixels
  int turned = 0;                       ///< degrees clockwise, a quarter at a time
  std::int64_t duration = 0;            ///< microseconds; 0: not known
  double rate = 0;                      ///< frames a second, on average; 0: not known
  std::uint64_t frames = 0;             ///< as the file says, or guessed; 0: not known
  bool alpha = false, sound = false;
};

/// A movie on its way. The functions share one state and are called by one thread.
struct MovieReader {
  MovieFacts facts;
  /// Goes to the next frame: its time from the beginning, in microseconds, which never falls. Nothing at the
  /// end, or where the rest can't be read.
  std::function<std::optional<std::int64_t>()> next;
  /// The frame that `next` came to: 24 bits, or 32 where the movie has alpha. Null when memory is exhausted.
  std::function<Picture()> picture;
  /// Goes back or on, so that `next` gives a frame at `time` or in front of it.
  std::function<bool(std::int64_t time)> seek;
  /// Whether something could not be read so far.
  std::function<bool()> damaged;
};

/// Pictures are made smaller so that neither side is above `largest`; 0: they are as they are. Nothing with
/// the reason kept in the host.
std::optional<MovieReader> open_movie(const std::filesystem::path& file, std::uint32_t largest, Host& host);

struct MovieForm {
  std::string extension;              ///< settles the format
  std::vector<std::uint32_t> delays;  ///< of each frame, milliseconds
  bool compress = true;               ///< off: AVI without compression, MOV of PNG pictures
  std::string codec;                  ///< name of an encoder; empty: the usual one of the format
  std::uint32_t quality = 0;          ///< 10 to 10000
  bool roundUp = false;               ///< sides become multiples of 4
  Colour background = 0;              ///< below transparent pixels, and around
  std::filesystem::path sound;        ///< empty: none
  std::uint32_t passes = 1;           ///< how often the animation is played
};

/// Why a movie couldn't be written, beside what the host keeps.
enum class MovieFault { None, NoEncoder, SoundNotRead, Stopped, Other };

/// Writes the canvases of a stream as a movie into the sink. `scratch` is a folder with room for it.
/// `missing` gets the name of an encoder that isn't there.
MovieFault write_movie(const FrameStream& stream, const MovieForm& form, const std::filesystem::path& scratch,
                       const Sink& sink, Host& host, std::string& missing);

}  // namespace vellum
