#include "apps/zan/Table.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace zan::cli;

TableCell text(std::string const& value) {
    return {value, false, Tone::Plain};
}

TableCell number(std::string const& value) {
    return {value, true, Tone::Plain};
}

std::string shown(Table& table, std::vector<std::vector<TableCell>> const& rows) {
    std::ostringstream out;
    for (auto const& row : rows) {
        table.add(out, row);
    }
    table.flush(out);
    return out.str();
}

TEST(Table, AlignsTextToTheLeftAndNumbersToTheRight) {
    Table table({{"name"}, {"count"}}, std::nullopt, false);
    EXPECT_EQ(shown(table, {{text("A"), number("1")}, {text("LONGER"), number("100")}}),
              "name    count\nA       1\nLONGER  100\n");
    Table first({{"count"}, {"name"}}, std::nullopt, false);
    EXPECT_EQ(shown(first, {{number("1"), text("A")}, {number("1000000"), text("B")}}),
              "count    name\n      1  A\n1000000  B\n");
}

TEST(Table, CutsTheLastColumnAtTheEdgeOfTheTerminal) {
    Table table({{"id"}, {"text"}}, 20, false);
    EXPECT_EQ(shown(table, {{text("7"), text("abcdefghijklmnopqrstuvwxyz")}}),
              "id  text\n7   abcdefghijklmno…\n");
}

TEST(Table, KeepsTheEndOfATime) {
    Table table({columnOf("time"), columnOf("text")}, 28, false);
    EXPECT_EQ(shown(table, {{text("20261121-09:30:00.123"), text("abcdefghijklmnopq")}}),
              "time            text\n…-09:30:00.123  abcdefghijk…\n");
}

TEST(Table, CutsNothingWithoutATerminal) {
    Table table({{"id"}, {"text"}}, std::nullopt, false);
    std::string const longText(500, 'x');
    EXPECT_EQ(shown(table, {{text("7"), text(longText)}}), "id  text\n7   " + longText + "\n");
}

TEST(Table, TakesRoomFromTheWidestColumnForTheLastOne) {
    Table table({{"name"}, {"text"}}, 30, false);
    std::string const output =
        shown(table, {{text(std::string(40, 'n')), text(std::string(40, 't'))}});
    EXPECT_EQ(output, "name              text\nnnnnnnnnnnnnnnn…  ttttttttttt…\n");
}

TEST(Table, NeverWritesALineThatIsWiderThanTheTerminal) {
    for (std::size_t width = 16; width < 60; ++width) {
        Table table({{"one"}, {"two"}, {"three"}}, width, false);
        std::istringstream lines(
            shown(table, {{text(std::string(20, 'a')), text("bb"), text(std::string(30, 'c'))}}));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(widthOf(line), width) << line;
        }
    }
}

TEST(Table, KeepsItsTitlesAndItsColumnsWhenRowsComeLater) {
    Table table({{"id"}, {"text"}}, std::nullopt, false);
    EXPECT_EQ(shown(table, {{number("1"), text("a")}}), "id  text\n 1  a\n");
    EXPECT_EQ(shown(table, {{number("22"), text("b")}}), "22  b\n");
    EXPECT_EQ(shown(table, {{number("333"), text("c")}}), "333  c\n");
    EXPECT_EQ(shown(table, {{number("4"), text("d")}}), "  4  d\n");
}

TEST(Table, KeepsRoomForWiderCellsThatComeLater) {
    Table table({{"type", 6}, {"text"}}, std::nullopt, false);
    EXPECT_EQ(shown(table, {{text("A"), text("x")}}), "type    text\nA       x\n");
    EXPECT_EQ(shown(table, {{text("LONGER"), text("y")}}), "LONGER  y\n");
}

TEST(Table, PrintsNothingWithoutRows) {
    Table table({{"id"}}, 80, false);
    EXPECT_EQ(shown(table, {}), "");
}

TEST(Table, ColoursACellWithoutChangingItsWidth) {
    Table table({{"s"}, {"t"}}, std::nullopt, true);
    EXPECT_EQ(shown(table, {{{"on", false, Tone::Good}, text("x")}}),
              "\x1b[1ms\x1b[0m   \x1b[1mt\x1b[0m\n\x1b[32mon\x1b[0m  x\n");
}

TEST(Terminal, CountsAndCutsCharactersInsteadOfBytes) {
    EXPECT_EQ(widthOf("Grüße"), 5U);
    EXPECT_EQ(cut("Grüße", 4), "Grü…");
    EXPECT_EQ(cut("Grüße", 5), "Grüße");
    EXPECT_EQ(cut("abc", 1), "…");
    EXPECT_EQ(cutBeginning("Größe", 4), "…öße");
    EXPECT_EQ(cutBeginning("Größe", 5), "Größe");
    EXPECT_EQ(cutBeginning("abc", 1), "…");
}

TEST(Terminal, LetsNoByteOfAMessageReachTheTerminalAsACommand) {
    EXPECT_EQ(printable("35=D\x01"
                        "58=\x1b[31mred\x7f\n"),
              "35=D|58=\\x1b[31mred\\x7f\\x0a");
    EXPECT_EQ(printable("\xC2\x9Bm \xFF Grüße"), "\\xc2\\x9bm \\xff Grüße");
}

TEST(Terminal, ShowsTheMarksThatTurnATextOrEndALine) {
    EXPECT_EQ(printable("a\u202Egpj.exe"), "a\\u202egpj.exe");
    for (char const* mark :
         {"\u061C", "\u200E", "\u200F", "\u2028", "\u202A", "\u2066", "\u2069"}) {
        EXPECT_EQ(printable(mark).substr(0, 2), "\\u") << printable(mark);
    }
    EXPECT_EQ(printable("\u200D\u2010\u2030\u2065\u20AC"), "\u200D\u2010\u2030\u2065\u20AC");
}

TEST(Terminal, TakesColoursFromTheSetting) {
    EXPECT_TRUE(wantsColor("always", -1));
    EXPECT_FALSE(wantsColor("never", -1));
    EXPECT_FALSE(wantsColor("auto", -1));
}

} // namespace
