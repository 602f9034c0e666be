// The dictionaries that are built in, used as sessions use them.
#include "server/dictionaries/Dictionaries.h"

#include "message/ZAN.h"
#include "server/wire/FieldText.h"
#include "server/wire/GroupReader.h"
#include "server/wire/OutgoingMessage.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

namespace {

using namespace zan::server;

CompiledDictionary const& dictionary(std::string const& version) {
    static CompiledDictionary const old = compileDictionary(dictionaryFor("FIX.4.2"), "4.2");
    static CompiledDictionary const current = compileDictionary(dictionaryFor("FIX.4.4"), "4.4");
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
    EXPECT_EQ(dictionary("FIX.4.2").beginString(), "FIX.4.2");
    EXPECT_EQ(dictionary("FIX.4.4").beginString(), "FIX.4.4");
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

struct Case {
    char const* version;
    char const* type;
    /// In the order in which it is written, with two instances of each group.
    char const* body;
};

class DictionaryType : public testing::TestWithParam<Case> {};

// A group that the dictionary did not know would be refused for its second instance.
TEST_P(DictionaryType, GoesThroughAModelWithAllItsGroups) {
    auto const& [version, type, body] = GetParam();
    EXPECT_EQ(throughAModel(std::string("35=") + type + "|" + body, version), body);
}

std::string nameOf(testing::TestParamInfo<Case> const& tested) {
    std::string name = std::string(tested.param.version) + tested.param.type;
    // Types that differ in case only need names that differ in more.
    name += std::islower(static_cast<unsigned char>(tested.param.type[0])) ? "Small" : "";
    std::erase(name, '.');
    return name;
}

INSTANTIATE_TEST_SUITE_P(
    All, DictionaryType,
    testing::Values(
        Case{"FIX.4.2", "0", "112=id|"}, Case{"FIX.4.2", "1", "112=id|"},
        Case{"FIX.4.2", "2", "7=1|16=0|"}, Case{"FIX.4.2", "3", "45=2|58=why|371=55|372=D|373=1|"},
        Case{"FIX.4.2", "4", "36=5|123=Y|"}, Case{"FIX.4.2", "5", "58=bye|"},
        Case{"FIX.4.2", "6",
             "23=i|28=N|55=IBM|199=2|104=A|104=B|215=2|216=1|217=x|216=2|2"
             "17=y|"},
        Case{"FIX.4.2", "7", "2=a|5=N|55=IBM|"},
        Case{"FIX.4.2", "8", "11=x|37=o|382=2|375=b|337=t|375=c|337=u|"},
        Case{"FIX.4.2", "9", "11=x|37=o|39=8|41=y|434=1|"},
        Case{"FIX.4.2", "A", "98=0|108=30|384=2|372=D|385=S|372=8|385=R|"},
        Case{"FIX.4.2", "B",
             "33=2|58=one|58=two|146=2|46=IBM|46=MSFT|148=news|215=2|216=1"
             "|217=x|216=2|217=y|"},
        Case{"FIX.4.2", "C",
             "33=2|58=one|58=two|94=0|146=2|46=IBM|46=MSFT|147=mail|164=t|"
             "215=2|216=1|217=x|216=2|217=y|"},
        Case{"FIX.4.2", "D", "11=x|55=IBM|78=2|79=a|80=1|79=b|80=2|386=2|336=d|336=n|"},
        Case{"FIX.4.2", "E",
             "66=l|68=2|73=2|11=a|67=1|78=2|79=a|80=1|79=b|80=2|386=2|336="
             "d|336=n|55=X|11=b|67=2|55=Y|"},
        Case{"FIX.4.2", "F", "11=x|41=y|55=IBM|"},
        Case{"FIX.4.2", "G", "11=x|41=y|78=2|79=a|80=1|79=b|80=2|386=2|336=d|336=n|"},
        Case{"FIX.4.2", "H", "11=x|37=o|55=IBM|"},
        Case{"FIX.4.2", "J",
             "70=a|73=2|11=x|37=y|11=z|37=w|78=2|79=a|80=3|136=2|137=1|139"
             "=7|137=2|139=4|79=b|80=4|124=2|32=5|17=e|32=6|17=f|"},
        Case{"FIX.4.2", "K", "58=why|66=l|"}, Case{"FIX.4.2", "L", "58=go|66=l|"},
        Case{"FIX.4.2", "M", "66=l|"}, Case{"FIX.4.2", "N", "66=l|73=2|11=a|39=2|11=b|39=0|429=1|"},
        Case{"FIX.4.2", "P", "70=a|87=0|"}, Case{"FIX.4.2", "Q", "17=e|37=o|127=A|"},
        Case{"FIX.4.2", "R", "131=q|146=2|55=IBM|54=1|55=MSFT|54=2|"},
        Case{"FIX.4.2", "S", "55=IBM|117=q|132=1|"}, Case{"FIX.4.2", "T", "160=1|162=i|163=N|"},
        Case{"FIX.4.2", "r", "146=2|55=IBM|55=MSFT|262=r|263=1|264=0|267=2|269=0|269=1|"},
        Case{"FIX.4.2", "s",
             "55=IBM|262=r|268=2|269=0|278=a|270=10|15=USD|271=5|269=1|278"
             "=b|"},
        Case{"FIX.4.2", "t",
             "262=r|268=2|279=0|278=a|280=b|55=IBM|269=0|270=10|279=2|278="
             "c|"},
        Case{"FIX.4.2", "u", "58=no|262=r|281=0|"},
        Case{"FIX.4.2", "UAJ",
             "70=a|73=2|11=x|37=y|11=z|37=w|78=2|79=a|80=3|136=2|137=1|139"
             "=7|137=2|139=4|79=b|80=4|124=2|32=5|17=e|32=6|17=f|"},
        Case{"FIX.4.2", "UCC", "58=do it|"}, Case{"FIX.4.4", "0", "112=id|"},
        Case{"FIX.4.4", "1", "112=id|"}, Case{"FIX.4.4", "2", "7=1|16=0|"},
        Case{"FIX.4.4", "3", "45=2|58=why|371=55|372=D|373=1|"},
        Case{"FIX.4.4", "4", "36=5|123=Y|"}, Case{"FIX.4.4", "5", "58=bye|"},
        Case{"FIX.4.4", "6",
             "23=i|28=N|55=IBM|199=2|104=A|104=B|215=2|216=1|217=x|216=2|2"
             "17=y|232=2|233=s|234=1|233=t|234=2|454=2|455=a|455=b|555=2|6"
             "00=L|604=2|605=a|605=b|683=2|688=s|688=t|600=M|711=2|311=U|4"
             "57=2|458=a|458=b|887=2|888=s|888=t|311=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "7",
             "2=a|5=N|55=IBM|454=2|455=a|455=b|555=2|600=L|604=2|605=a|605"
             "=b|600=M|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|311"
             "=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "8",
             "11=x|37=o|136=2|137=1|139=7|137=2|232=2|233=s|234=1|233=t|23"
             "4=2|382=2|375=b|337=t|375=c|453=2|448=A|447=D|802=2|523=x|52"
             "3=y|448=B|454=2|455=a|455=b|518=2|519=1|520=2|519=2|555=2|60"
             "0=L|604=2|605=a|605=b|683=2|688=s|688=t|539=2|524=n|804=2|54"
             "5=s|545=t|524=m|600=M|711=2|311=U|457=2|458=a|458=b|887=2|88"
             "8=s|888=t|311=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "9", "11=x|37=o|39=8|41=y|434=1|"},
        Case{"FIX.4.4", "A", "98=0|108=30|384=2|372=D|385=S|372=8|385=R|"},
        Case{"FIX.4.4", "B",
             "33=2|58=one|58=two|146=2|55=IBM|454=2|455=a|455=b|864=2|865="
             "1|865=2|55=MSFT|148=news|215=2|216=1|217=x|216=2|217=y|555=2"
             "|600=L|604=2|605=a|605=b|600=M|711=2|311=U|457=2|458=a|458=b"
             "|887=2|888=s|888=t|311=V|"},
        Case{"FIX.4.4", "C",
             "33=2|58=one|58=two|94=0|146=2|55=IBM|454=2|455=a|455=b|864=2"
             "|865=1|865=2|55=MSFT|147=mail|164=t|215=2|216=1|217=x|216=2|"
             "217=y|555=2|600=L|604=2|605=a|605=b|600=M|711=2|311=U|457=2|"
             "458=a|458=b|887=2|888=s|888=t|311=V|"},
        Case{"FIX.4.4", "D",
             "11=x|55=IBM|78=2|79=a|539=2|524=n|804=2|545=s|545=t|524=m|80"
             "=1|79=b|232=2|233=s|234=1|233=t|234=2|386=2|336=d|625=a|336="
             "n|453=2|448=A|447=D|802=2|523=x|523=y|448=B|454=2|455=a|455="
             "b|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|311=V|864="
             "2|865=1|865=2|"},
        Case{"FIX.4.4", "E",
             "66=l|68=2|73=2|11=a|67=1|453=2|448=A|447=D|802=2|523=x|523=y"
             "|448=B|78=2|79=a|539=2|524=n|804=2|545=s|545=t|524=m|80=1|79"
             "=b|386=2|336=d|336=n|55=X|454=2|455=a|455=b|864=2|865=1|865="
             "2|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|311=V|232="
             "2|233=s|234=1|233=t|234=2|11=b|67=2|55=Y|"},
        Case{"FIX.4.4", "F",
             "11=x|41=y|453=2|448=A|447=D|802=2|523=x|523=y|448=B|454=2|45"
             "5=a|455=b|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|31"
             "1=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "G",
             "11=x|41=y|78=2|79=a|539=2|524=n|804=2|545=s|545=t|524=m|80=1"
             "|79=b|386=2|336=d|336=n|453=2|448=A|447=D|802=2|523=x|523=y|"
             "448=B|454=2|455=a|455=b|711=2|311=U|457=2|458=a|458=b|887=2|"
             "888=s|888=t|311=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "H",
             "11=x|37=o|453=2|448=A|447=D|802=2|523=x|523=y|448=B|454=2|45"
             "5=a|455=b|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|31"
             "1=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "J",
             "70=a|73=2|11=x|37=y|756=2|757=n|806=2|760=s|760=t|757=m|11=z"
             "|78=2|79=a|80=3|539=2|524=n|804=2|545=s|545=t|524=m|136=2|13"
             "7=1|139=7|137=2|576=2|577=1|577=2|85=2|165=1|781=2|782=p|801"
             "=2|785=s|785=t|782=q|165=2|79=b|124=2|32=5|17=e|32=6|17=f|23"
             "2=2|233=s|234=1|233=t|234=2|453=2|448=A|447=D|802=2|523=x|52"
             "3=y|448=B|454=2|455=a|455=b|555=2|600=L|604=2|605=a|605=b|60"
             "0=M|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|311=V|86"
             "4=2|865=1|865=2|870=2|871=1|872=x|871=2|872=y|"},
        Case{"FIX.4.4", "K", "58=why|66=l|"}, Case{"FIX.4.4", "L", "58=go|66=l|"},
        Case{"FIX.4.4", "M", "66=l|"}, Case{"FIX.4.4", "N", "66=l|73=2|11=a|39=2|11=b|39=0|429=1|"},
        Case{"FIX.4.4", "P",
             "70=a|78=2|79=a|79=b|87=0|453=2|448=A|447=D|802=2|523=x|523=y"
             "|448=B|"},
        Case{"FIX.4.4", "Q",
             "17=e|37=o|127=A|454=2|455=a|455=b|555=2|600=L|604=2|605=a|60"
             "5=b|600=M|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|31"
             "1=V|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "R",
             "131=q|146=2|55=IBM|454=2|455=a|455=b|864=2|865=1|865=2|711=2"
             "|311=U|457=2|458=a|458=b|887=2|888=s|888=t|311=V|54=1|232=2|"
             "233=s|234=1|233=t|234=2|555=2|600=L|604=2|605=a|605=b|683=2|"
             "688=s|688=t|539=2|524=n|804=2|545=s|545=t|524=m|600=M|735=2|"
             "695=A|695=B|453=2|448=A|447=D|802=2|523=x|523=y|448=B|55=MSF"
             "T|"},
        Case{"FIX.4.4", "S",
             "55=IBM|117=q|232=2|233=s|234=1|233=t|234=2|453=2|448=A|447=D"
             "|802=2|523=x|523=y|448=B|454=2|455=a|455=b|555=2|600=L|604=2"
             "|605=a|605=b|683=2|688=s|688=t|539=2|524=n|804=2|545=s|545=t"
             "|524=m|600=M|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t"
             "|311=V|735=2|695=A|695=B|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "T",
             "160=1|777=i|778=2|162=s|453=2|448=A|447=D|802=2|523=x|523=y|"
             "448=B|85=2|165=1|781=2|782=p|801=2|785=s|785=t|782=q|165=2|1"
             "62=t|"},
        Case{"FIX.4.4", "r",
             "146=2|55=IBM|454=2|455=a|455=b|864=2|865=1|865=2|55=MSFT|262"
             "=r|263=1|264=0|267=2|269=0|269=1|"},
        Case{"FIX.4.4", "s",
             "55=IBM|262=r|268=2|269=0|278=a|270=10|15=USD|271=5|269=1|278"
             "=b|454=2|455=a|455=b|864=2|865=1|865=2|"},
        Case{"FIX.4.4", "t",
             "262=r|268=2|279=0|278=a|280=b|55=IBM|269=0|270=10|279=2|278="
             "c|"},
        Case{"FIX.4.4", "u", "58=no|262=r|281=0|"},
        Case{"FIX.4.4", "UAJ",
             "70=a|73=2|11=x|37=y|756=2|757=n|806=2|760=s|760=t|757=m|11=z"
             "|78=2|79=a|80=3|539=2|524=n|804=2|545=s|545=t|524=m|136=2|13"
             "7=1|139=7|137=2|576=2|577=1|577=2|85=2|165=1|781=2|782=p|801"
             "=2|785=s|785=t|782=q|165=2|79=b|124=2|32=5|17=e|32=6|17=f|23"
             "2=2|233=s|234=1|233=t|234=2|453=2|448=A|447=D|802=2|523=x|52"
             "3=y|448=B|454=2|455=a|455=b|555=2|600=L|604=2|605=a|605=b|60"
             "0=M|711=2|311=U|457=2|458=a|458=b|887=2|888=s|888=t|311=V|86"
             "4=2|865=1|865=2|870=2|871=1|872=x|871=2|872=y|"},
        Case{"FIX.4.4", "UCC", "58=do it|"}),
    nameOf);

} // namespace
