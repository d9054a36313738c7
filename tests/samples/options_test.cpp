#include "common/options.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vok::sample {
namespace {

std::optional<Options> parse(std::vector<std::string> words) {
    std::vector<char*> line{const_cast<char*>("program.exe")};
    for (std::string& word : words)
        line.push_back(word.data());
    return parseOptions(static_cast<int>(line.size()), line.data(), {"--printer", "--port"});
}

TEST(OptionsTest, TakesOneArgumentAndTheOptionsInAnyOrder) {
    const auto options = parse({"--printer", "My printer", "file.txt", "--port", "LPT1:"});
    ASSERT_TRUE(options);
    EXPECT_EQ(options->argument, "file.txt");
    EXPECT_EQ(options->get("--printer", ""), "My printer");
    EXPECT_EQ(options->get("--port", ""), "LPT1:");
}

TEST(OptionsTest, AnOptionThatIsNotGivenHasItsDefault) {
    EXPECT_EQ(parse({})->get("--printer", "Demo"), "Demo");
}

TEST(OptionsTest, RefusesWhatItDoesNotKnow) {
    EXPECT_FALSE(parse({"--colour", "red"}));
    EXPECT_FALSE(parse({"--printer"}));
    EXPECT_FALSE(parse({"one.txt", "two.txt"}));
}

}  // namespace
}  // namespace vok::sample
