#include "EmbeddedFixture.h"

#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "message/ZANMessage.h"

namespace {

using MessagesTest = EmbeddedTest;

counted_ptr<ZANFieldGroup> instanceOf(int groupTag, int tag, std::string const& value) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(groupTag));
    group->setFieldValue(tag, value);
    return group;
}

counted_ptr<ZANMessage> orderModel() {
    counted_ptr<ZANFieldGroup> const order(new ZANFieldGroup(std::string("D")));
    order->setFieldValue(11, "model-1");
    order->setFieldValue(55, "IBM");
    order->setFieldValue(54, '1');
    order->setFieldValue(38, 100);
    order->setFieldValue(40, "2");
    order->setFieldValue(44, 10.5);
    order->setFieldValue(60, "20261121-09:30:00");
    auto const broker = instanceOf(453, 448, "BROKER");
    broker->setFieldValue(447, "D");
    broker->setFieldValue(452, 1);
    auto const desk = instanceOf(802, 523, "DESK");
    desk->setFieldValue(803, 4);
    broker->addGroup(desk);
    broker->addGroup(instanceOf(802, 523, "FLOOR"));
    order->addGroup(broker);
    order->addGroup(instanceOf(453, 448, "CLIENT"));
    return counted_ptr<ZANMessage>(new ZANMessage(order));
}

std::string const orderGroups = "453(447=D|448=BROKER|452=1|802(523=DESK|803=4|)802(523=FLOOR|))"
                                "453(448=CLIENT|)";

TEST_F(MessagesTest, SendsAModelWithNestedGroupsInTheOrderOfTheWire) {
    startAndConnect();
    engine().sendMessage(me, "C", orderModel());
    std::string const order = acceptor_->waitForLine("|35=D|");
    EXPECT_NE(order.find("|453=2|448=BROKER|447=D|452=1|802=2|523=DESK|803=4|523=FLOOR|"
                         "448=CLIENT|"),
              std::string::npos)
        << order;
}

TEST_F(MessagesTest, DeliversNestedGroupsOfBothDirections) {
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(me, "C", orderModel());
    ASSERT_TRUE(recorder.waitFor(isReport));
    SeenEvent const report = recorder.first(isReport);
    EXPECT_EQ(report.groups, orderGroups);
    EXPECT_EQ(report.field(39), "2");
    EXPECT_EQ(report.field(49), "THEM");
    SeenEvent const order = recorder.first([](SeenEvent const& e) { return e.isType("D"); });
    EXPECT_EQ(order.groups, orderGroups);
    EXPECT_EQ(order.field(44), "10.5");
    EXPECT_EQ(order.field(49), "US");
}

TEST_F(MessagesTest, SendsTextInItsOwnOrder) {
    startAndConnect();
    engine().sendMessage(me, "C", "55=IBM|35=D|60=20261121-09:30:00|453=1|448=A|447=D|11=t-1|38=1");
    std::string const order = acceptor_->waitForLine("|35=D|");
    EXPECT_NE(order.find("|55=IBM|60=20261121-09:30:00|453=1|448=A|447=D|11=t-1|38=1|10="),
              std::string::npos)
        << order;
}

TEST_F(MessagesTest, CarriesDataThatHoldsTheSeparator) {
    startAndConnect();
    EventRecorder& recorder = record();
    counted_ptr<ZANFieldGroup> const news(new ZANFieldGroup(std::string("B")));
    news->setFieldValue(148, "headline");
    news->setFieldValue(96, std::string("a\x01") + "b=c");
    engine().sendMessage(me, "C", counted_ptr<ZANMessage>(new ZANMessage(news)));
    auto const isNews = [](SeenEvent const& e) { return e.isType("B"); };
    ASSERT_TRUE(recorder.waitFor(isNews));
    EXPECT_EQ(recorder.first(isNews).field(96), std::string("a\x01") + "b=c");
    EXPECT_EQ(recorder.first(isNews).field(95), "5");
}

TEST_F(MessagesTest, DeliversEveryMessageOfTheSessionInItsOrder) {
    startAcceptor();
    startEngine();
    EventRecorder& recorder = record();
    engine().connect(me, "C");
    engine().sendMessage(me, "C", order("o-1"));
    ASSERT_TRUE(recorder.waitFor(isReport));
    engine().disconnect(me, "C", "done");
    ASSERT_TRUE(recorder.waitFor(
        [](SeenEvent const& e) { return e.isType("5") && e.field(49) == "THEM"; }));
    std::string flow;
    int id = 0;
    for (SeenEvent const& event : recorder.events()) {
        if (event.kind != SeenEvent::Kind::State) {
            flow += (event.field(49) == "US" ? ">" : "<") + event.field(35);
            EXPECT_GT(event.id, id);
            id = event.id;
        }
    }
    EXPECT_EQ(flow, ">A<A>D<8>5<5");
}

TEST_F(MessagesTest, KnowsGroupsByTheDictionaryOfTheSession) {
    startAcceptor();
    std::string const dictionary = folder_ + "/own.xml";
    std::ofstream(dictionary)
        << "<fix major='4' minor='4' type='FIX' servicepack='0'><header><field name='BeginString' "
           "required='Y'/></header><trailer><field name='CheckSum' required='Y'/></trailer>"
           "<messages><message name='Own' msgtype='U1' msgcat='app'><group name='NoOwn' "
           "required='N'><field name='OwnId' required='N'/></group></message></messages>"
           "<components/><fields><field number='8' name='BeginString' type='STRING'/>"
           "<field number='10' name='CheckSum' type='STRING'/>"
           "<field number='9100' name='NoOwn' type='NUMINGROUP'/>"
           "<field number='9101' name='OwnId' type='STRING'/></fields></fix>";
    startEngine("DataDictionary=" + dictionary + "\n");
    EventRecorder& recorder = record();
    engine().connect(me, "C");
    engine().sendMessage(me, "C", "35=U1|9100=2|9101=a|9101=b");
    auto const isOwn = [](SeenEvent const& e) { return e.isType("U1"); };
    ASSERT_TRUE(recorder.waitFor(isOwn));
    EXPECT_EQ(recorder.first(isOwn).groups, "9100(9101=a|)9100(9101=b|)");
}

TEST_F(MessagesTest, SendsNothingWhileItIsNotLoggedOn) {
    startAcceptor();
    startEngine();
    std::string const failure =
        "kestrow.moravane.engine.ZANNotConnectedException: connection C: not logged on";
    EXPECT_EQ(
        failureOf<ZANNotConnectedException>([&] { engine().sendMessage(me, "C", order("early")); }),
        failure);
    EXPECT_EQ(
        failureOf<ZANNotConnectedException>([&] { engine().sendMessage(me, "C", orderModel()); }),
        failure);
    EXPECT_EQ(
        failureOf<ZANNotConnectedException>([&] { engine().sendAdminMessage(me, "C", "35=0"); }),
        failure);
    engine().connect(me, "C");
    engine().sendMessage(me, "C", order("late"));
    EXPECT_FALSE(acceptor_->waitForLine("|11=late|").empty());
    for (std::string const& line : acceptor_->lines()) {
        EXPECT_EQ(line.find("|11=early|"), std::string::npos) << line;
    }
}

std::string refusalOf(std::string const& message, bool admin = false) {
    UserTicket const me("tester", "");
    std::string const failure = failureOf<ZANInvalidMessageException>([&] {
        admin ? ZANEngineProxy::getInstance().sendAdminMessage(me, "C", message)
              : ZANEngineProxy::getInstance().sendMessage(me, "C", message);
    });
    std::string const start = "kestrow.moravane.message.ZANInvalidMessageException: connection C: ";
    return failure.starts_with(start) ? failure.substr(start.size()) : failure;
}

TEST_F(MessagesTest, RefusesMalformedTextWithTagAndReason) {
    startAndConnect();
    struct Case {
        char const* text;
        char const* reason;
    };
    for (Case const& each :
         {Case{"", "tag 35, the type of the message, is missing"},
          Case{"11=x", "tag 35, the type of the message, is missing"},
          Case{"35=D|55", "field 2 of the message, \"55\", has no '='"},
          Case{"35=D|Symbol=IBM",
               "field 2 of the message, \"Symbol=IBM\", has no positive number as its tag"},
          Case{"35=D|-1=IBM",
               "field 2 of the message, \"-1=IBM\", has no positive number as its tag"},
          Case{"35=D|55=", "field 2 of the message, \"55=\", has an empty value"},
          Case{"35=D|55=A|55=B",
               "tag 55 stands twice, and the session's dictionary knows no group of message type "
               "D that holds it; a DataDictionary that knows the group would be right"},
          Case{"35=D|453=2|448=A",
               "tag 453 tells 2 instances of its group, but the number of those that follow is "
               "1"}}) {
        EXPECT_EQ(refusalOf(each.text), each.reason);
    }
    EXPECT_TRUE(isConnected());
}

TEST_F(MessagesTest, RefusesMessagesOfTheOtherKind) {
    startAndConnect();
    EXPECT_EQ(refusalOf("35=0"), "tag 35: message type 0 is an administrative message; "
                                 "sendAdminMessage would be right");
    EXPECT_EQ(refusalOf("35=D|11=x", true),
              "tag 35: message type D is an application message; sendMessage would be right");
    for (char const* type : {"A", "5", "4"}) {
        EXPECT_EQ(refusalOf(std::string("35=") + type, true),
                  std::string("tag 35: message type ") + type +
                      " is sent by the engine itself; connect, disconnect or resetConnection "
                      "would be right");
    }
}

TEST_F(MessagesTest, RefusesAMessageWithoutAModel) {
    startAndConnect();
    std::string const failure = "kestrow.moravane.message.ZANInvalidMessageException: connection "
                                "C: the message has no field group";
    EXPECT_EQ(failureOf<ZANInvalidMessageException>(
                  [&] { engine().sendMessage(me, "C", counted_ptr<ZANMessage>()); }),
              failure);
    EXPECT_EQ(failureOf<ZANInvalidMessageException>(
                  [&] { engine().sendMessage(me, "C", counted_ptr<ZANMessage>(new ZANMessage)); }),
              failure);
}

} // namespace
