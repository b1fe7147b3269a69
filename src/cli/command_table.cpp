#include "cli/command.h"

namespace vellum::cli {
namespace {

constexpr CommandRow kCommands[] = {
    {"list", "Show the chunks of a file", prepare_list},
    {"check", "Say everything that is wrong with files", prepare_check},
    {"repair", "Save what can be saved of a damaged file, and say what is given up", prepare_repair},
    {"save", "Read a file and write it again", prepare_save},
    {"convert", "To another kind of file: frames, delays, offsets and disposal go along", prepare_convert},
    {"new", "Write a new document", prepare_new},
    {"edit", "Delete, insert and move chunks, in the order of the options", prepare_edit},
    {"build", "An animation of pictures", prepare_build},
    {"wizard", "An animation of picture files with the palette choices of the Animation Wizard",
     prepare_wizard},
    {"combine", "The frames of several files, one after the other, as one animation", prepare_combine},
    {"plugins", "Animation plugins that are there", prepare_plugins},
    {"plugin", "An animation that a plugin makes", prepare_plugin},
    {"play", "Walk an animation as the viewer does: a line for each shown frame", prepare_play},
    {"properties", "Say what an animation is and what it takes", prepare_properties},
    {"manage", "Change many frames at a time, in the order of the options below", prepare_manage},
    {"strip", "All frames of an animation as cells of one picture", prepare_strip},
    {"unstrip", "An animation from the cells of a picture", prepare_unstrip},
    {"palette", "To the colors of a palette: built in, from a file, or computed", prepare_palette},
    {"gallery", "Pages of pictures and animations with thumbnails, in a folder", prepare_gallery},
    {"favorites", "Show and change the galleries of favorites", prepare_favorites},
    {"thumbnail", "A small PNG of what a file shows first", prepare_thumbnail},
    {"movie-info", "Say what a movie is", prepare_movie_info},
    {"batch", "One operation over many files", prepare_batch},
    {"config", "Show and change settings", prepare_config},
};

}  // namespace

std::span<const CommandRow> command_table() { return kCommands; }

}  // namespace vellum::cli
