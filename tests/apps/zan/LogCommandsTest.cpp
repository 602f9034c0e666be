// The message log as people and programs read it.
#include "apps/zan/ZanFixture.h"

namespace {

class LogCommands : public ZanTest {
protected:
    // Two orders and the three reports on each.
    void SetUp() override {
        ZanTest::SetUp();
        useCounterparty();
        ASSERT_EQ(
            zan({"send", "C", order("one"), order("two"), "--wait", "20", "--answers", "6"}).code,
            0);
    }

    std::string column(std::vector<std::string> arguments, std::string const& name) const {
        arguments.insert(arguments.begin(), "--json");
        std::string all;
        RunResult const run = zan(arguments);
        EXPECT_EQ(run.code, 0) << run.errors;
        for (auto const& row : objects(run.output)) {
            all += (row[name].is_string() ? row[name].get<std::string>() : row[name].dump()) + " ";
        }
        return all;
    }
};

TEST_F(LogCommands, AlwaysHaveTheSameFieldsForPrograms) {
    for (auto const& row : objects(zan({"--json", "log"}).output)) {
        std::string names;
        for (auto const& [name, value] : row.items()) {
            names += name + " ";
        }
        EXPECT_EQ(names, "id time stream type seq sender target text note ");
    }
}

TEST_F(LogCommands, FindEntriesByExpressionStreamIdsAndTime) {
    EXPECT_EQ(column({"log", "--stream", "app-out"}, "type"), "D D ");
    EXPECT_EQ(column({"log", "--where", "type = '8' AND tag(39) = '2'", "--columns", "11"}, "11"),
              "one two ");
    EXPECT_EQ(
        column({"log", "--where", "OrdStatus = '2' AND ClOrdID = 'two'", "--columns", "11"}, "11"),
        "two ");
    EXPECT_EQ(column({"log", "--ids", "1-2"}, "type"), "A A ");
    EXPECT_EQ(column({"log", "--ids", "1"}, "id"), "1 ");
    EXPECT_EQ(column({"log", "--to", "20200101"}, "id"), "");
    EXPECT_EQ(column({"log", "--from", "20200101", "--to", "20991231", "--limit", "1"}, "id"),
              "1 ");
}

TEST_F(LogCommands, Sort) {
    EXPECT_EQ(
        column({"log", "--stream", "app-out", "--newest-first", "--columns", "ClOrdID"}, "ClOrdID"),
        "two one ");
    EXPECT_EQ(column({"log", "--stream", "app-in", "--order-by", "tag(39) DESC, id", "-n", "2",
                      "--columns", "ClOrdID"},
                     "ClOrdID"),
              "one two ");
}

TEST_F(LogCommands, GiveTheBytesAsTheyWere) {
    RunResult const run = zan({"--raw", "log", "--stream", "app-out", "-n", "1"});
    EXPECT_TRUE(run.output.starts_with("8=FIX.4.4\x01"
                                       "9="));
    RunResult const checked = zan({"decode"}, run.output);
    EXPECT_EQ(checked.code, 0);
    EXPECT_NE(checked.output.find("  54    Side = 1 (Buy)\n"), std::string::npos);
    EXPECT_NE(checked.output.find("length and checksum are right"), std::string::npos);
}

TEST_F(LogCommands, ShowAMessageFieldByField) {
    RunResult const run = zan({"log", "--stream", "app-out", "-n", "1", "--decode"});
    EXPECT_NE(run.output.find("NewOrderSingle (D, FIX.4.4)\n"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("  11    ClOrdID = one\n"), std::string::npos);
}

TEST_F(LogCommands, DecodeForProgramsToo) {
    auto const rows =
        objects(zan({"--json", "log", "--stream", "app-out", "-n", "1", "--decode"}).output);
    ASSERT_EQ(rows.size(), 1U);
    std::string side;
    for (auto const& field : rows[0]["decoded"]) {
        if (field["tag"] == 54) {
            side = field["name"].get<std::string>() + "=" + field["value"].get<std::string>() +
                   " " + field["meaning"].get<std::string>();
        }
    }
    EXPECT_EQ(side, "Side=1 Buy");
}

TEST_F(LogCommands, MaskPasswordsInEveryForm) {
    std::string const logon = "35=A|49=US|554=hush-1|95=6|96=hush-2|925=hush-3|58=kept";
    ASSERT_EQ(zan({"edit", "insert", "C", "--yes", logon}).code, 0);
    ASSERT_EQ(zan({"edit", "update", "C", "note = 'was 554=hush-4'", "--where", "tag(58) = 'kept'",
                   "--yes"})
                  .code,
              0);
    std::vector<std::vector<std::string>> const forms = {
        {"log"},
        {"--json", "log"},
        {"--raw", "log"},
        {"log", "--decode"},
        {"--json", "log", "--decode"},
        {"log", "--columns", "554,96,Password,text,note"},
        {"tail", "--no-follow"}};
    for (std::vector<std::string> form : forms) {
        RunResult const masked = zan(form);
        EXPECT_EQ(masked.code, 0) << masked.errors;
        EXPECT_EQ(masked.output.find("hush"), std::string::npos) << masked.output;
        EXPECT_NE(masked.output.find("***"), std::string::npos) << masked.output;
        form.insert(form.begin(), "--show-secrets");
        EXPECT_NE(zan(form).output.find("hush-1"), std::string::npos);
    }
    // The audit of the engine has none at all.
    EXPECT_EQ(zan({"--json", "--show-secrets", "audit"}).output.find("hush"), std::string::npos);
    std::string const text = "8=FIX.4.4|" + logon + "|10=000|\n";
    EXPECT_EQ(zan({"decode"}, text).output.find("hush"), std::string::npos);
    EXPECT_NE(zan({"--show-secrets", "decode"}, text).output.find("hush-3"), std::string::npos);
}

TEST_F(LogCommands, FollowTheChainOfAnOrder) {
    EXPECT_EQ(column({"chain", "C", "one", "--columns", "ClOrdID,OrdStatus"}, "OrdStatus"),
              " 0 1 2 ");
    EXPECT_EQ(column({"chain", "C", "one", "--newest-first", "--columns", "39"}, "39"), "2 1 0  ");
    std::string const id = column({"log", "--where", "tag(11) = 'two' AND tag(39) = '2'"}, "id");
    EXPECT_EQ(column({"chain", "C", "#" + id.substr(0, id.size() - 1)}, "type"), "D 8 8 8 ");
}

TEST_F(LogCommands, TakeAPartOfATimeForAllThatBeginsWithIt) {
    auto const rows = objects(zan({"--json", "log"}).output);
    std::string const time = rows[3]["time"].get<std::string>();
    std::string const all = column({"log"}, "id");
    EXPECT_EQ(column({"log", "--from", time.substr(0, 8), "--to", time.substr(0, 8)}, "id"), all);
    std::string exactly;
    for (auto const& row : rows) {
        exactly += row["time"] == time ? row["id"].dump() + " " : "";
    }
    EXPECT_EQ(column({"log", "--from", time, "--to", time}, "id"), exactly);
    EXPECT_EQ(column({"log", "--from", time, "--to", time, "--stream", "app-out", "--newest-first",
                      "--where", "type = '0'"},
                     "id"),
              "");
}

TEST_F(LogCommands, SayOnATerminalThatThereIsNothing) {
    RunResult const shown = onTerminal(80, {"log", "--to", "20200101"});
    EXPECT_EQ(shown.output, "zan: there is nothing to show\n");
    EXPECT_EQ(shown.code, 0);
    EXPECT_EQ(zan({"log", "--to", "20200101"}).errors, "");
}

TEST_F(LogCommands, TakeTimesThatLieATimeAgo) {
    std::string const all = column({"log"}, "id");
    EXPECT_EQ(column({"log", "--from", "-1h"}, "id"), all);
    EXPECT_EQ(column({"log", "--to", "-1h"}, "id"), "");
    EXPECT_EQ(column({"tail", "--no-follow", "--from", "-1h"}, "id"), all);
}

TEST_F(LogCommands, EndWhenNobodyReadsThem) {
    ProgramRun run(settings({"log"}));
    run.closeOutput();
    EXPECT_EQ(run.wait(), 141);
    EXPECT_EQ(run.errors(), "");
}

TEST_F(LogCommands, ReadALongLogPieceByPiece) {
    std::string orders;
    constexpr int count = 6000;
    for (int at = 0; at < count; ++at) {
        orders += "35=B|148=n" + std::to_string(at) + "|33=1|58=x\n";
    }
    ASSERT_EQ(zan({"post", "C", "--batch", "--file", write("many.txt", orders)}).code, 0);
    RunResult const all = zan({"--json", "log", "--where", "type = 'B'"});
    EXPECT_EQ(lines(all.output).size(), static_cast<std::size_t>(count));
    EXPECT_EQ(
        column({"log", "--where", "type = 'B'", "-n", "2", "--newest-first", "--columns", "148"},
               "148"),
        "n5999 n5998 ");
}

} // namespace
