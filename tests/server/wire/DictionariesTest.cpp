// The dictionaries that are built in, used as sessions use them.
#include "server/dictionaries/Dictionaries.h"

#include "message/ZAN.h"
#include "server/sessions/GroupDictionary.h"
#include "server/wire/FieldText.h"
#include "server/wire/GroupReader.h"
#include "server/wire/OutgoingMessage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace zan::server;

GroupDictionary const& dictionary(std::string const& version) {
    static GroupDictionary const old = parseGroups(std::string(dictionaryFor("FIX.4.2")), "4.2");
    static GroupDictionary const current =
        parseGroups(std::string(dictionaryFor("FIX.4.4")), "4.4");
    return version == "FIX.4.2" ? old : current;
}

std::string throughAModel(std::string const& text, std::string const& version) {
    auto const model = readMessage(text, '|', Reading::Strict, dictionary(version));
    std::string printed;
    for (FixField const& field : outgoingFromModel(*model, dictionary(version)).body) {
        printed += std::to_string(field.tag) + "=" + field.value + "|";
    }
    return printed;
}

TEST(Dictionaries, ServeTheVersionsByAge) {
    for (char const* version : {"FIX.4.0", "FIX.4.1", "FIX.4.2"}) {
        EXPECT_EQ(dictionaryFor(version), dictionaryFor("FIX.4.2"));
    }
    for (char const* version : {"FIX.4.3", "FIX.4.4", "FIXT.1.1"}) {
        EXPECT_EQ(dictionaryFor(version), dictionaryFor("FIX.4.4"));
    }
    EXPECT_EQ(dictionary("FIX.4.2").beginString, "FIX.4.2");
    EXPECT_EQ(dictionary("FIX.4.4").beginString, "FIX.4.4");
}

TEST(Dictionaries, HoldEveryMessageTypeThatHasAName) {
    for (char const* version : {"FIX.4.2", "FIX.4.4"}) {
        std::string const text(dictionaryFor(version));
        for (std::string const& type : {ZAN::MSGTYPE_HEARTBEAT,
                                        ZAN::MSGTYPE_TEST_REQUEST,
                                        ZAN::MSGTYPE_RESEND_REQUEST,
                                        ZAN::MSGTYPE_REJECT,
                                        ZAN::MSGTYPE_SEQUENCE_RESET,
                                        ZAN::MSGTYPE_LOGOUT,
                                        ZAN::MSGTYPE_INDICATION_OF_INTEREST,
                                        ZAN::MSGTYPE_ADVERTISEMENT,
                                        ZAN::MSGTYPE_EXECUTION_REPORT,
                                        ZAN::MSGTYPE_ORDER_CANCEL_REJECT,
                                        ZAN::MSGTYPE_LOGON,
                                        ZAN::MSGTYPE_NEWS,
                                        ZAN::MSGTYPE_EMAIL,
                                        ZAN::MSGTYPE_NEW_ORDER_SINGLE,
                                        ZAN::MSGTYPE_ORDER_LIST,
                                        ZAN::MSGTYPE_ORDER_CANCEL_REQUEST,
                                        ZAN::MSGTYPE_ORDER_CANCEL_REPLACE_REQUEST,
                                        ZAN::MSGTYPE_ORDER_STATUS_REQUEST,
                                        ZAN::MSGTYPE_ALLOCATION,
                                        ZAN::MSGTYPE_LIST_CANCEL_REQUEST,
                                        ZAN::MSGTYPE_LIST_EXECUTE,
                                        ZAN::MSGTYPE_LIST_STATUS_REQUEST,
                                        ZAN::MSGTYPE_LIST_STATUS,
                                        ZAN::MSGTYPE_ALLOCATION_ACK,
                                        ZAN::MSGTYPE_DONT_KNOW_TRADE,
                                        ZAN::MSGTYPE_QUOTE_REQUEST,
                                        ZAN::MSGTYPE_QUOTE,
                                        ZAN::MSGTYPE_SETTLEMENT_INSTRUCTIONS,
                                        ZAN::MSGTYPE_BOOK_REQUEST,
                                        ZAN::MSGTYPE_BOOK_FULL,
                                        ZAN::MSGTYPE_BOOK_INCREMENTAL,
                                        ZAN::MSGTYPE_BOOK_REQUESTREJECT,
                                        ZAN::MSGTYPE_ACCOUNT_ALLOCATION,
                                        ZAN::MSGTYPE_COMMAND}) {
            EXPECT_NE(text.find("msgtype=\"" + type + "\""), std::string::npos)
                << version << " " << type;
        }
    }
}

TEST(Dictionaries, KnowTheGroupsOfTheirMessages) {
    struct Case {
        char const* version;
        char const* type;
        char const* body;
    };
    for (Case const& each : {
             Case{"FIX.4.2", "D", "11=x|78=2|79=a|80=1|79=b|80=2|386=1|336=day|"},
             Case{"FIX.4.2", "E", "66=l|73=2|11=a|78=1|79=acc|80=5|55=X|11=b|55=Y|"},
             Case{"FIX.4.2", "J", "70=a|73=1|11=x|37=y|78=1|79=acc|80=3|136=1|137=1|139=7|"},
             Case{"FIX.4.2", "B", "33=2|58=one|58=two|148=news|"},
             Case{"FIX.4.4", "A", "98=0|108=30|384=1|372=D|385=S|"},
             Case{"FIX.4.4", "D",
                  "11=x|78=1|79=a|539=1|524=n|804=1|545=s|805=1|80=4|"
                  "453=1|448=A|447=D|452=1|802=1|523=x|803=4|"},
             Case{"FIX.4.4", "8",
                  "37=o|382=1|375=b|453=1|448=A|518=1|519=1|520=2|555=1|600=L|"
                  "604=1|605=alt|606=4|564=O|"},
             Case{"FIX.4.4", "J",
                  "70=a|78=1|79=x|80=1|85=1|165=1|781=1|782=p|801=1|785=s|"
                  "124=1|32=5|17=e|"},
             Case{"FIX.4.4", "T", "777=i|778=1|162=s|453=1|448=A|85=1|165=1|781=1|782=p|"},
             Case{"FIX.4.4", "R", "131=q|146=1|55=IBM|454=1|455=alt|711=1|311=U|457=1|458=ua|"},
             Case{"FIX.4.4", "t", "262=r|268=1|279=0|269=1|270=10.5|"},
             Case{"FIX.4.4", "UAJ", "70=a|78=1|79=x|80=1|"},
             Case{"FIX.4.4", "UCC", "58=do it|"},
         }) {
        // The writer sorts the top by tags: nothing may be lost, and a second pass is stable.
        std::string const text = std::string("35=") + each.type + "|" + each.body;
        std::string const printed = throughAModel(text, each.version);
        EXPECT_EQ(printed.size(), std::string(each.body).size()) << each.type << " " << printed;
        EXPECT_EQ(throughAModel(std::string("35=") + each.type + "|" + printed, each.version),
                  printed);
    }
}

} // namespace
