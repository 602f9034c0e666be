#include "message/ZANFieldGroup.h"

#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>
#include <string>

namespace {

std::string printed(ZANFieldGroup const& group) {
    std::ostringstream os;
    os << group;
    return os.str();
}

TEST(FieldGroupText, OfAnEmptyGroupIsItsStartAndEndLine) {
    EXPECT_EQ("Start group tag = 0\nEnd group tag = 0\n", printed(ZANFieldGroup()));
    EXPECT_EQ("Start group tag = -5\nEnd group tag = -5\n", printed(ZANFieldGroup(-5)));
}

TEST(FieldGroupText, ShowsFieldsBeforeSubGroupsAndIndentsByFour) {
    ZANFieldGroup order("D", "FIX.4.4");
    counted_ptr<ZANFieldGroup> party(new ZANFieldGroup(453));
    party->setFieldValue(448, "BROKER");
    counted_ptr<ZANFieldGroup> sub(new ZANFieldGroup(802));
    sub->setFieldValue(523, "DESK");
    party->addGroup(sub);
    order.addGroup(party);
    order.setFieldValue(38, 100);
    order.setFieldValue(44, 101.25);
    EXPECT_EQ("Start group tag = 0\n"
              "    Field  tag = 8 type = 3 value = FIX.4.4\n"
              "    Field  tag = 35 type = 3 value = D\n"
              "    Field  tag = 38 type = 1 value = 100\n"
              "    Field  tag = 44 type = 2 value = 101.25\n"
              "    Start group tag = 453\n"
              "        Field  tag = 448 type = 3 value = BROKER\n"
              "        Start group tag = 802\n"
              "            Field  tag = 523 type = 3 value = DESK\n"
              "        End group tag = 802\n"
              "    End group tag = 453\n"
              "End group tag = 0\n",
              printed(order));
}

TEST(FieldGroupText, IndentsGroupsOfAnyDepth) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(0));
    for (int depth = 1; depth <= 30; ++depth) {
        counted_ptr<ZANFieldGroup> const outer(new ZANFieldGroup(depth));
        outer->addGroup(group);
        group = outer;
    }
    std::string const text = printed(*group);
    EXPECT_NE(std::string::npos, text.find("\n" + std::string(120, ' ') + "Start group tag = 0\n" +
                                           std::string(120, ' ') + "End group tag = 0\n"));
}

TEST(FieldGroupText, IsFlushedAfterEachLine) {
    class CountingBuffer : public std::stringbuf {
    public:
        int flushes = 0;

    protected:
        int sync() override {
            EXPECT_EQ('\n', str().back());
            ++flushes;
            return 0;
        }
    };
    CountingBuffer buffer;
    std::ostream os(&buffer);
    ZANFieldGroup group;
    group.setFieldValue(1, 1);
    group.setFieldValue(2, 2);
    os << group;
    EXPECT_EQ(4, buffer.flushes);
}

} // namespace
