// The listener of the orders page, which is compiled here as it stands there.
#include "comfort/comfort.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

namespace tag = zan::tag;

// NOLINTNEXTLINE: the page shows no constructor
#include "Book.h"

std::string updates;
int lookedInto = 0;

void Book::update(std::string const& order, double filled, double open) {
    updates += order + " " + std::to_string(static_cast<int>(filled)) + " " +
               std::to_string(static_cast<int>(open)) + "; ";
}

void Book::lookInto(ZANEvent const&) {
    ++lookedInto;
}

void show(Book& book, std::vector<std::pair<int, char const*>> const& fields) {
    zan::MessageBuilder message(zan::MsgType::ExecutionReport);
    for (auto const& [number, text] : fields) {
        message.set(number, text);
    }
    book.processEvent(make_counted<ZANEvent, ZANAppMessageEvent>("BROKER", message.build()));
}

TEST(Book, TakesWhatIsFilledAndOpen) {
    updates.clear();
    lookedInto = 0;
    Book book;
    show(book, {{11, "order-1"}, {14, "50"}, {151, "50"}});
    show(book, {{35, "D"}, {11, "order-1"}, {14, "7"}, {151, "7"}});
    EXPECT_EQ(updates, "order-1 50 50; ");
    EXPECT_EQ(lookedInto, 0);
}

TEST(Book, LooksIntoReportsThatSayNothingOfIt) {
    updates.clear();
    lookedInto = 0;
    Book book;
    show(book, {});
    show(book, {{11, "order-1"}, {14, "50"}});
    show(book, {{11, "order-1"}, {14, "50"}, {151, "many"}});
    show(book, {{14, "1e5"}, {151, "0"}});
    EXPECT_EQ(updates, "");
    EXPECT_EQ(lookedInto, 4);
}

TEST(Book, PassesOverAnEventWithoutFields) {
    updates.clear();
    Book book;
    book.processEvent(
        make_counted<ZANEvent, ZANAppMessageEvent>("BROKER", make_counted<ZANMessage>()));
    EXPECT_EQ(updates, "");
}

} // namespace
