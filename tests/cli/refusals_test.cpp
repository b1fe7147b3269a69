// What the tool refuses: the exit status tells wrong usage from failure, the message says why, and nothing is
// written.
#include <sstream>

#include "cli/tool.h"

namespace vellum {
namespace {

struct Refusal {
  const char* line;  ///< IN, OUT and GIF stand for files, DIR for a folder, NONE for a file that isn't there
  int status;
  const char* message;
};

constexpr Refusal kRefusals[] = {
    {"", 2, "subcommand"},
    {"fly a", 2, ""},
    {"list", 2, "FILE is required"},
    {"list NONE", 1, "vellum: Error reading file ("},
    {"list GIF", 1, "The content is a GIF file."},
    {"--set Nothing=1 list IN", 2, "there is no setting \"Nothing\""},
    {"--set PngCompression=x list IN", 2, "PngCompression must be a whole number"},
    {"save GIF OUT", 1, "vellum: The file you attempted to load is corrupted."},
    {"save IN DIR", 1, "vellum: There has been an error writing this file."},
    {"save IN OUT.gif", 2, "no name that ends in .gif"},
    {"frames GIF OUT", 1, "corrupted"},
    {"config", 2, "subcommand"},
    {"config get Nothing", 2, "there is no setting \"Nothing\""},
    {"config set Png 3", 2, "there is no setting \"Png\""},
    {"config set PngCompression x", 2, "PngCompression must be a whole number"},
    {"config set WarnBadFileCRC 0", 2, "not read from the file"},
    {"config set PngCompression", 2, "VALUE is required"},
    {"--config IN/x.ini config set UndoLevels 4", 1, "error writing this file"},
    {"new OUT", 2, "--kind"},
    {"new OUT --kind png --bits 4", 2, "do not exist together"},
    {"new OUT --kind png --size 0x5", 2, "--size"},
    {"new OUT --kind png --size 5", 2, "--size"},
    {"new OUT --kind webp", 2, "a WebP file, and no other"},
    {"new OUT --kind png --bits 17", 2, "--bits"},
    {"edit IN OUT --delete 1", 1, "The selected chunk can't be deleted."},
    {"edit IN OUT --delete 99", 1, "there is no entry 99"},
    {"edit IN OUT --delete 0", 2, "is not N"},
    {"edit IN OUT --insert gAMA", 2, "is not TAG@N[:VALUE]"},
    {"edit IN OUT --insert LOOP@1", 1, "There has been an error inserting this chunk."},
    {"edit IN OUT --insert acTL@1", 1, "There has been an error inserting this chunk."},
    {"edit IN OUT --insert tEXt@1:nokeyword", 1, "Keyword=text"},
    {"edit IN OUT --insert gAMA@1:0", 1, "0.01 to 100"},
    {"edit IN OUT --insert abCd@1:hex:0", 1, "hexadecimal"},
    {"edit IN OUT --insert IDAT@4:none.png", 1, "Error reading file"},
    {"edit IN OUT --insert iCCP@1", 1, "The profile can't be taken"},
    {"edit IN OUT --insert MAGN@1:hex:", 1, "inappropriate for this document"},
    {"edit IN OUT --move 1@2", 1, "The selected chunk can't be dropped in this location."},
    {"edit IN OUT --move 1", 2, "is not N@M"},
    {"edit IN OUT --set-field 2.numPlays=-1", 2, "must be a whole number from 0 to 2147483647."},
    {"edit IN OUT --set-field 2.nothing=1", 2, "nothing"},
    {"edit IN OUT --set-field 99.numPlays=1", 1, "there is no entry 99"},
    {"edit IN OUT --set-field numPlays=1", 2, "is not N.FIELD=VALUE"},
    {"edit IN OUT --dump 4=OUT.bytes", 2, "the data of an image"},
    {"edit IN OUT.JPG --set-field 1.delayNum=7", 2, "no name that ends in .jpg"},
    {"play", 2, "FILE is required"},
    {"play IN --steps 0", 2, "--steps"},
    {"play IN --steps many", 2, "--steps"},
    {"play IN --unknown", 2, "--unknown"},
    {"play NONE", 1, "Error reading file"},
    {"convert IN OUT --kind png", 1, "image"},
    {"convert IN OUT.webp --kind mng", 2, "a WebP file, and no other"},
    {"convert IN OUT --kind fly", 2, "\"fly\" is none of png"},
    {"convert IN OUT.gif", 2, "ends in .gif"},
    {"convert IN OUT --color mono --threshold 0", 2, "1 to 254"},
    {"convert IN OUT --color palette --colors 257", 2, "2 to 256"},
    {"manage IN OUT --frames 4", 2, "no list of frames from 1 to 3"},
    {"manage IN OUT --scale-delay 0", 2, "--scale-delay: \"0\" is out of range"},
    {"manage IN OUT --add-delay 60001", 2, "out of range"},
    {"manage IN OUT --align middle", 2, "--align"},
    {"manage IN OUT --ticks 100", 2, "--ticks"},
    {"manage IN OUT --delay 1/0", 2, "--delay"},
    {"manage IN OUT --delete", 1, "An animation must keep at least one image."},
    {"manage IN OUT.jpg --plays 2", 2, "ends in .jpg"},
    {"strip IN OUT.xyz", 2, "no extension of a picture"},
    {"strip IN OUT --cell 5000x2", 2, "Cell width must be"},
    {"unstrip IN OUT --cell 5x5 --kind apng", 1, "The picture is smaller than one cell."},
    {"unstrip IN OUT --cell 5x5 --kind png", 2, "is none of apng|mng|webp"},
    {"unstrip NONE OUT --cell 5x5 --kind apng", 1, "Error reading file"},
    {"properties NONE", 1, "Error reading file"},
    {"resize IN OUT", 2, "give one of --size"},
    {"resize IN OUT --percent 0", 2, "must be a number from 0.01"},
    {"resize IN OUT --percent 50,", 2, "Height in %"},
    {"resize IN OUT --percent 50 --size 3x3", 2, "give one of --size"},
    {"resize IN OUT --size 3", 2, "--size is not WxH"},
    {"resize IN OUT --size 3x3 --filter Best", 2, "Filter must be one of these"},
    {"resize IN OUT.gif --percent 50", 2, "ends in .gif"},
    {"palette IN OUT", 2, "give one of --colors"},
    {"palette IN", 2, "give OUT, or --export"},
    {"palette IN OUT --id 13", 2, "must be one of these"},
    {"palette IN OUT --id 1 --colors 3", 2, "give one of --colors"},
    {"palette IN OUT --file NONE", 1, "Error reading file"},
    {"palette IN OUT.gif --colors 4", 2, "ends in .gif"},
};

using Refusals = ToolTest;

TEST_F(Refusals, SayWhyAndWriteNothing) {
  namespace fs = std::filesystem;
  const std::string in = animation(3, testing::frame_control(3, 2, 1, 2, 1)), gif = folder_ / "bad.png",
                    out = folder_ / "out";
  std::ofstream(gif) << "GIF89a, in truth";
  fs::create_directory(folder_ / "dir");
  const auto word_of = [&](std::string word) {
    if (word.starts_with("IN/")) return in + word.substr(2);
    if (word == "OUT") return out + ".png";
    if (const auto at = word.find("OUT."); at != std::string::npos) return word.replace(at, 3, out);
    const std::map<std::string, std::string> files = {
        {"IN", in}, {"GIF", gif}, {"DIR", folder_ / "dir"}, {"NONE", folder_ / "no.png"}};
    return files.contains(word) ? files.at(word) : word;
  };
  const auto files = [&] {
    std::map<std::string, std::uintmax_t> sizes;
    for (const auto& file : fs::recursive_directory_iterator(folder_.path()))
      sizes[file.path()] = file.is_regular_file() ? file.file_size() : 0;
    return sizes;
  };
  const auto before = files();
  for (const Refusal& refusal : kRefusals) {
    std::istringstream line(refusal.line);
    std::vector<std::string> words;
    for (std::string word; line >> word;) words.push_back(word_of(word));
    const auto result = vellum(words);
    EXPECT_EQ(result.status, refusal.status) << refusal.line << " | " << result.output;
    EXPECT_NE(result.output.find(refusal.message), std::string::npos)
        << refusal.line << " | " << result.output;
    EXPECT_EQ(files(), before) << refusal.line;
  }
}

}  // namespace
}  // namespace vellum
