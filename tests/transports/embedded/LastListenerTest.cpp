// What an application may do as soon as it sees the last of its listeners end, after one of them
// has ended the engine.
#include "EmbeddedFixture.h"

#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "support/Ender.h"

#include <array>
#include <cstdlib>
#include <thread>

namespace {

enum class Sort { Facade, Direct, Guaranteed, Leaving };

// A direct listener that takes itself off before it ends the engine.
class Leaving : public Ender {
public:
    using Ender::Ender;
    void processEvent(counted_ptr<ZANEvent> event) override {
        if (self) {
            counted_ptr<IZANEventListener> own;
            own.swap(self);
            ZANEngineProxy::getInstance().destroyDirectSubscriber(own);
        }
        Ender::processEvent(event);
    }
    counted_ptr<IZANEventListener> self;
};

class LastListenerTest : public EmbeddedTest, public testing::WithParamInterface<Sort> {
protected:
    static void subscribe(std::string const& connection, std::shared_ptr<Ending> const& ending) {
        auto* const leaving = GetParam() == Sort::Leaving ? new Leaving(ending) : nullptr;
        counted_ptr<IZANEventListener> ender(leaving ? leaving : new Ender(ending));
        if (GetParam() == Sort::Facade) {
            engine().subscribe(me, ender, connection, ZANEngineDefs::APP_EVENT_TYPE);
        } else if (GetParam() == Sort::Guaranteed) {
            counted_ptr<ZANGuaranteedEngineMessageListener> guaranteed(
                new ZANGuaranteedEngineMessageListener(ender));
            engine().subscribeDirect(me, connection, false, true, false, guaranteed);
        } else {
            engine().subscribeDirect(me, connection, false, true, false, ender);
            if (leaving) {
                leaving->self = ender;
            }
        }
    }

    static void waitFor(std::atomic<bool> const& flag) {
        while (!flag) {
            std::this_thread::yield();
        }
    }
};

TEST_P(LastListenerTest, HasGoneWhenANewEngineMayStart) {
    startAcceptor();
    for (int i = 0; i < 5; ++i) {
        auto const ending = std::make_shared<Ending>();
        startEngine();
        engine().connect(me, "C");
        subscribe("C", ending);
        engine().sendMessage(me, "C", order("last-" + std::to_string(i)));
        waitFor(ending->isGone);
        EXPECT_FALSE(ending->hasFailed);
    }
    startEngine(); // no connection or thread of before has the data folder
}

TEST_P(LastListenerTest, HasGoneWhenTheProgramMayEnd) {
    for (int i = 0; i < 5; ++i) {
        EXPECT_EXIT(
            {
                auto const ending = std::make_shared<Ending>();
                ZANEngineProxy::initialize(Url("embedded:demo"));
                engine().connect(me, "DEMO");
                subscribe("DEMO", ending);
                engine().sendMessage(me, "DEMO", order("last"));
                waitFor(ending->isGone);
                std::exit(7);
            },
            testing::ExitedWithCode(7), "");
    }
}

// The listener is still inside of its callback, or on its way out.
TEST_P(LastListenerTest, NeedNotHaveGoneWhenTheProgramEnds) {
    for (int i = 0; i < 5; ++i) {
        EXPECT_EXIT(
            {
                auto const ending = std::make_shared<Ending>();
                ZANEngineProxy::initialize(Url("embedded:demo"));
                engine().connect(me, "DEMO");
                subscribe("DEMO", ending);
                engine().sendMessage(me, "DEMO", order("last"));
                waitFor(ending->hasEnded);
                std::exit(7);
            },
            testing::ExitedWithCode(7), "");
    }
}

std::string nameOfSort(testing::TestParamInfo<Sort> const& tested) {
    constexpr std::array names = {"OfTheFacade", "Direct", "Guaranteed", "ThatTakesItselfOff"};
    return names[static_cast<std::size_t>(tested.param)];
}

INSTANTIATE_TEST_SUITE_P(Sorts, LastListenerTest,
                         testing::Values(Sort::Facade, Sort::Direct, Sort::Guaranteed,
                                         Sort::Leaving),
                         nameOfSort);

// A handle that is a static object ends after the facade.
counted_ptr<ZANGuaranteedEngineMessageListener>& staticHandle() {
    static counted_ptr<ZANGuaranteedEngineMessageListener> handle;
    return handle;
}

TEST_F(EmbeddedTest, EndsWithTheProgramThoughAListenerIsAStaticObject) {
    EXPECT_EXIT(
        {
            staticHandle();
            ZANEngineProxy::initialize(Url("embedded:demo"));
            staticHandle() = counted_ptr<ZANGuaranteedEngineMessageListener>(
                new ZANGuaranteedEngineMessageListener(
                    counted_ptr<IZANEventListener>(new EventRecorder)));
            engine().subscribeDirect(me, "DEMO", true, true, true, staticHandle());
            engine().connect(me, "DEMO");
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

} // namespace
