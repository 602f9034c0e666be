// Whatever is printed to a stream that fails does what the standard's own types do.
#include "events/ZANAppMessageEvent.h"
#include "events/ZANConnectionStateEvent.h"
#include "message/ZANField.h"
#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"
#include "support/FailingBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ios>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Printed {
    char const* name;
    std::function<void(std::ostream&)> print;
};

counted_ptr<ZANFieldGroup> newBody() {
    counted_ptr<ZANFieldGroup> body(new ZANFieldGroup("D", "FIX.4.4"));
    body->setFieldValue(58, std::string(300, 'x'));
    body->addField(counted_ptr<ZANField>(new ZANField(59, 0, Value())));
    counted_ptr<ZANFieldGroup> party(new ZANFieldGroup(453));
    party->setFieldValue(448, 1.5);
    body->addGroup(party);
    return body;
}

counted_ptr<ZANMessage> newMessage() {
    return counted_ptr<ZANMessage>(new ZANMessage(newBody()));
}

counted_ptr<ZANConnectionState> newState() {
    return counted_ptr<ZANConnectionState>(new ZANConnectionState);
}

std::vector<Printed> const everything = {
    {"value", [](std::ostream& os) { os << newBody()->getField(58)->getValue(); }},
    {"field", [](std::ostream& os) { os << *newBody()->getField(58); }},
    {"field without a value", [](std::ostream& os) { os << *newBody()->getField(59); }},
    {"group", [](std::ostream& os) { os << *newBody(); }},
    {"message", [](std::ostream& os) { os << *newMessage(); }},
    {"message event", [](std::ostream& os) { os << ZANAppMessageEvent("LINK", newMessage()); }},
    {"state", [](std::ostream& os) { os << *newState(); }},
    {"state event", [](std::ostream& os) { os << ZANConnectionStateEvent("LINK", newState()); }},
};

class FailingStream : public testing::TestWithParam<Printed> {
protected:
    std::string wholeText() const {
        std::ostringstream os;
        GetParam().print(os);
        return os.str();
    }
};

INSTANTIATE_TEST_SUITE_P(OfEverything, FailingStream, testing::ValuesIn(everything),
                         [](auto const& tested) {
                             std::string name = tested.param.name;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

TEST_P(FailingStream, IsMarkedAsBadAndHasTheTextThatItTook) {
    std::string const text = wholeText();
    for (std::size_t room = 0; room < text.size(); ++room) {
        for (bool const throws : {false, true}) {
            FailingBuffer buffer(room, throws);
            std::ostream os(&buffer);
            ASSERT_NO_THROW(GetParam().print(os));
            ASSERT_TRUE(os.bad()) << "room for " << room;
            ASSERT_EQ(buffer.text(), text.substr(0, room));
        }
    }
}

TEST_P(FailingStream, ThrowsToTheCallerWhatItIsSetToThrow) {
    std::size_t const size = wholeText().size();
    for (std::size_t room = 0; room < size; ++room) {
        FailingBuffer refusing(room, false);
        std::ostream os(&refusing);
        os.exceptions(std::ios_base::badbit);
        ASSERT_THROW(GetParam().print(os), std::ios_base::failure) << "room for " << room;
    }
}

TEST_P(FailingStream, LetsTheExceptionOfItsBufferThrough) {
    std::size_t const size = wholeText().size();
    for (std::size_t room = 0; room < size; ++room) {
        FailingBuffer throwing(room, true);
        std::ostream os(&throwing);
        os.exceptions(std::ios_base::badbit);
        ASSERT_THROW(GetParam().print(os), FailingBuffer::Full) << "room for " << room;
    }
}

TEST_P(FailingStream, GetsNothingWhenItHasFailedAlready) {
    FailingBuffer buffer(1000, false);
    std::ostream os(&buffer);
    os.setstate(std::ios_base::failbit);
    GetParam().print(os);
    EXPECT_EQ(buffer.text(), "");
}

} // namespace
