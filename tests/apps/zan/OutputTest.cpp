#include "apps/zan/Output.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/Record.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace {

using namespace zan::cli;

Record message(std::string const& text) {
    return {{"id", 7LL}, {"stream", 3LL, "app-out"}, {"text", text}, {"none", nullptr}};
}

std::string printed(OutputSettings const& settings, Record const& record) {
    std::ostringstream out;
    Output output(out, settings);
    output.print(record);
    output.flush();
    return out.str();
}

TEST(Output, ShowsPeopleNamesAndProgramsValues) {
    EXPECT_EQ(printed({}, message("a\x01"
                                  "b")),
              "id  stream   text  none\n 7  app-out  a|b\n");
    EXPECT_EQ(printed({OutputFormat::Json, {}, false}, message("a\x01"
                                                               "b")),
              "{\"id\":7,\"stream\":3,\"text\":\"a\\u0001b\",\"none\":null}\n");
}

TEST(Output, LeavesOutOfJsonWhatIsForPeopleOnly) {
    Record const record{{"id", 7LL}, {"fields", std::monostate(), "shown"}};
    EXPECT_EQ(printed({OutputFormat::Json, {}, false}, record), "{\"id\":7}\n");
    EXPECT_EQ(printed({}, record), "id  fields\n 7  shown\n");
}

TEST(Output, MakesSoundJsonOfAnyBytes) {
    EXPECT_EQ(printed({OutputFormat::Json, {}, false}, {{"text", std::string("\xFF\"\n")}}),
              "{\"text\":\"\xEF\xBF\xBD\\\"\\n\"}\n");
}

TEST(Output, HidesNothingInJson) {
    std::string const text = "\x7F\u0085\u202E\u2069 Gr\u00FC\u00DFe";
    std::string const line = jsonLine({{"te\u200Ext", text}});
    EXPECT_EQ(line, "{\"te\\u200ext\":\"\\u007f\\u0085\\u202e\\u2069 Gr\u00FC\u00DFe\"}");
    EXPECT_EQ(nlohmann::json::parse(line)["te\u200Ext"], text);
}

TEST(Output, PutsListsOfRecordsIntoJson) {
    std::vector<Record> const fields{{{"tag", 35LL}}, {{"tag", 55LL}, {"value", std::string("X")}}};
    EXPECT_EQ(jsonLine({{"id", 1LL}, {"decoded", fields}}),
              "{\"id\":1,\"decoded\":[{\"tag\":35},{\"tag\":55,\"value\":\"X\"}]}");
}

TEST(Output, WritesTheBytesOfMessagesAsTheyAre) {
    std::string const bytes = "8=FIX.4.4\x01"
                              "58=\x1b[31m\xFF\x01";
    EXPECT_EQ(printed({OutputFormat::Raw, {}, false}, message(bytes)), bytes + "\n");
}

TEST(Output, WritesNoHarmfulBytesToATerminal) {
    EXPECT_EQ(printed({OutputFormat::Raw, 80, false}, message("35=D\x01"
                                                              "58=\x1b[31m\x01")),
              "35=D|58=\\x1b[31m|\n");
}

TEST(Output, HasNothingRawToShowOfWhatIsNoMessage) {
    EXPECT_THROW(printed({OutputFormat::Raw, {}, false}, {{"name", std::string("C")}}), UsageError);
}

TEST(Output, ShowsChosenColumnsInTheirOrder) {
    std::ostringstream out;
    Output output(out, {});
    output.setColumns({{"text"}, {"id"}});
    output.print(message("x"));
    output.flush();
    EXPECT_EQ(out.str(), "text  id\nx     7\n");
}

TEST(Output, NoticesThatNobodyReadsIt) {
    std::ostringstream out;
    Output output(out, {});
    out.setstate(std::ios::badbit);
    EXPECT_THROW(output.flush(), OutputIsClosed);
}

} // namespace
