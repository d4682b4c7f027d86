#include "host/expression.h"
#include "host/script.h"

#include <gtest/gtest.h>

using host::Script;

TEST(Expression, SumsNumbersAndNames) {
    const host::Lookup lookup = [](const std::string& name) -> std::optional<double> {
        return name == "newest" ? std::optional<double>(250.0) : std::nullopt;
    };
    const struct {
        const char* text;
        std::optional<double> value;
    } cases[] = {
        {"12", 12.0},  {"-0.5", -0.5},  {"newest-100", 150.0}, {"1+newest-newest", 1.0},
        {"true", 1.0}, {"newest-", {}}, {"--1", {}},           {"", {}},
        {"1 2", {}},   {"3x", {}},      {"older", {}},         {"newest*2", {}},
    };
    for (const auto& [text, value] : cases) {
        std::string error;
        EXPECT_EQ(host::evaluate(text, lookup, error), value) << text;
        EXPECT_EQ(error.empty(), value.has_value()) << text;
    }
}

TEST(Script, ReadsCommandsWithQuotesAndComments) {
    const Script script("# a match\r\n\r\n  record \"my file.dv\"  # the file\n"
                        "let start newest-25\nreplay start start+9\nlog it's # not a comment\n");
    ASSERT_TRUE(script.errors().empty()) << script.errors().front().reason;
    ASSERT_EQ(script.lines().size(), 4u);
    EXPECT_EQ(script.lines()[0].number, 3);
    EXPECT_EQ(script.lines()[0].words, (std::vector<std::string>{"record", "my file.dv"}));
    EXPECT_EQ(script.lines()[2].words[2], "start+9");
    EXPECT_EQ(script.lines()[3].words[1], "it's # not a comment");
}

TEST(Script, RefusesWhatIsNoCommandAndNothingElse) {
    for (const char* line :
         {"rewind", "wait", "wait soon", "wait 5 6", "replay 1", "record \"open", "init 3", "init input",
          "mark at 5", "expect speed = 1", "expect sped == 1", "let newest 5", "let 5 5", "watch start 1",
          "log", "expect-sequence a range 1 2 speed", "set colour 5", "replay later 5"}) {
        const Script script(std::string("live\n") + line);
        ASSERT_EQ(script.errors().size(), 1u) << line;
        EXPECT_EQ(script.errors()[0].line, 2);
        EXPECT_FALSE(script.errors()[0].reason.empty());
    }
    EXPECT_TRUE(Script("init\ninit input 1\nmark in\nmark out 7\nmark out 7 2\nreplay 1 2\nreplay 1 2 a.avi\n"
                       "expect speed near 0.5 0.01\nexpect speed != 2\n")
                    .errors()
                    .empty())
        << "what may be left out";
    EXPECT_FALSE(Script("wait later\nlet later 5").errors().empty()) << "a value is used before it is made";
}
