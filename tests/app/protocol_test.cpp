#include "app/protocol.h"
#include "tests/app/fakes.h"

#include <nlohmann/json.hpp>

using app::Command;

TEST(Protocol, ServesThoseWhoKnowTheToken) {
    Evening evening;
    evening.run(100);
    std::vector<std::pair<Command, std::wstring>> forWindow;
    app::ProtocolConnection hand(*evening.session, L"gehe\xefm",
                                 [&](Command command, const std::wstring& argument) {
                                     forWindow.push_back({command, argument});
                                     return command == Command::help;
                                 });
    const auto ask = [&hand](const std::string& line) {
        return nlohmann::json::parse(hand.receive(line + "\r\n"));
    };
    EXPECT_EQ(hand.receive("gehe\xc3"), "");
    EXPECT_EQ(hand.receive("\xafm\n"), "{\"ok\":true,\"message\":\"marvo-replay\"}\n");
    EXPECT_EQ(ask("hold")["ok"], true);
    EXPECT_EQ(ask("11")["ok"], true);
    EXPECT_TRUE(ask("status")["held"] == true && ask("status")["mode"] == "held" &&
                ask("status")["newest"] == 99);
    EXPECT_EQ(ask("hold")["error"], "The picture is held already.");
    EXPECT_EQ(ask("again 2")["ok"], true);
    EXPECT_EQ(ask("call XI01 5")["message"], "Marker XI01 5.");
    EXPECT_TRUE(ask("help")["ok"] == true && ask("settings")["ok"] == false && forWindow.size() == 2);
    EXPECT_GT(ask("commands")["commands"].size(), 50u);
    for (const char* bad : {"", " ", "fly", "999", "-1", "hold 3", "again", "again x", "call", "go-to 1e99",
                            "open C:\\none.avi", "rename-clip \xff", "status\x01", "{\"command\":1}"}) {
        const nlohmann::json answer = ask(bad);
        EXPECT_TRUE(answer["ok"] == false && answer["error"].is_string() && answer["error"] != "") << bad;
    }
    EXPECT_EQ(hand.receive("clip-last-10\nstatus\n").find("{\"ok\":true"), 0u);
    EXPECT_EQ(ask("status")["clips"][0]["name"], "Clip 1");
    ask("export-clip a b.avi");
    EXPECT_TRUE(forWindow.back().first == Command::exportClip && forWindow.back().second == L"a b.avi");
    EXPECT_FALSE(hand.closed());
    const nlohmann::json tooLong = nlohmann::json::parse(hand.receive(std::string(5000, 'x')));
    EXPECT_TRUE(tooLong["ok"] == false && hand.closed() && hand.receive("status\n").empty());
}

TEST(Protocol, DoesNotHearOthers) {
    Evening evening;
    for (const char* token : {"", "secre", "secret1", "Secret", "xxxxxx", "secret\0x"}) {
        app::ProtocolConnection hand(*evening.session, L"secret");
        const std::string answer = hand.receive(std::string(token) + "x\nrecord\n");
        EXPECT_EQ(answer, "{\"ok\":false,\"error\":\"wrong token\"}\n");
        EXPECT_TRUE(hand.closed() && evening.view().recording == app::View::Recording::rolling);
    }
    app::ProtocolConnection none(*evening.session, L"");
    EXPECT_TRUE(none.closed() && none.receive("\nrecord\n").empty());
}
