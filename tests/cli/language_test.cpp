// What people read follows their language, what programs read doesn't.
#include <gtest/gtest.h>

#include "support/corpus.h"
#include "support/judge.h"

namespace vellum::testing {
namespace {

std::string said(const char* locale, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"env", std::string("LC_ALL=") + locale, program_folder() / "vellum"});
  const ToolResult result = run_tool(arguments);
  EXPECT_EQ(result.status, 0) << result.output;
  return result.output;
}

TEST(Language, FollowsTheSystemForPeopleAlone) {
  const std::string sample = source_folder() / "data/samples/welcome.png";
  const std::vector<std::string> for_people[] = {
      {"--help"}, {"resize", "--help"}, {"list", sample}, {"properties", sample}, {"check", sample}};
  for (const auto& arguments : for_people)
    EXPECT_NE(said("de_DE.UTF-8", arguments), said("C.UTF-8", arguments)) << arguments[0];
  const std::vector<std::string> for_programs[] = {{"list", "--json", sample},
                                                   {"properties", "--json", sample},
                                                   {"check", "--json", sample},
                                                   {"config", "list", "--json"},
                                                   {"--completion", "bash"},
                                                   {"--completion=fish"},
                                                   {"--man"}};
  for (const auto& arguments : for_programs)
    EXPECT_EQ(said("de_DE.UTF-8", arguments), said("C.UTF-8", arguments)) << arguments[0];
}

}  // namespace
}  // namespace vellum::testing
