// Listeners that do anything, on two connections and at the facade, while another thread takes them
// off and puts them back. Sanitizers watch this; counts are plain.
#include "EmbeddedFixture.h"

#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "support/Seed.h"

#include <array>
#include <atomic>
#include <new>
#include <random>
#include <stdexcept>

namespace {

using Guaranteed = counted_ptr<ZANGuaranteedEngineMessageListener>;
using Plain = counted_ptr<IZANEventListener>;

constexpr std::array connections = {"C", "D"};

/// What all listeners of a test share.
struct World {
    std::atomic<int> alive{0};
    std::atomic<int> events{0};
    std::atomic<int> messagesLeft{1500};
    UserTicket const me{"wild", ""};

    void post(std::string const& connection) {
        if (messagesLeft-- > 0) {
            ZANEngineProxy::getInstance().postInternalMessage(me, connection, "35=B|148=wild");
        }
    }
};

class Wild : public IZANEventListener {
public:
    Wild(World& world, unsigned seed) : world_(world), random_(seed) { ++world_.alive; }
    Wild(Wild const&) = delete;
    Wild& operator=(Wild const&) = delete;
    ~Wild() override { --world_.alive; }

    void processEvent(counted_ptr<ZANEvent> event) override {
        ++world_.events;
        std::string const& connection = event->getConnectionName();
        ZANEngineProxy& engine = ZANEngineProxy::getInstance();
        switch (roll(10)) {
        case 0:
            throw std::runtime_error("wild");
        case 1:
            throw std::bad_alloc();
        case 2:
            throw 42;
        case 3:
            world_.post(connections[roll(2)]);
            break;
        case 4:
            engine.unsubscribeDirect(world_.me, connection, true, true, true, *self);
            engine.subscribeDirect(world_.me, connection, false, true, true, *self);
            break;
        case 5:
            engine.destroyDirectSubscriber(*self);
            engine.subscribeDirect(world_.me, connections[roll(2)], false, true, true, *self);
            break;
        case 6:
            engine.unsubscribe(world_.me, *self, connection, "APP");
            engine.subscribe(world_.me, *self, connection, "APP");
            break;
        case 7:
            engine.getConnectionState(world_.me, connection);
            break;
        default:
            break;
        }
    }
    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}

    Plain* self = nullptr;

private:
    unsigned roll(unsigned below) {
        std::lock_guard const lock(mutex_);
        return std::uniform_int_distribution<unsigned>(0, below - 1)(random_);
    }

    World& world_;
    std::mutex mutex_;
    std::mt19937 random_;
};

class WildListenersTest : public EmbeddedTest {
protected:
    void SetUp() override {
        EmbeddedTest::SetUp();
        port_ = 1; // nobody connects
        std::string second = sessionText("SessionQualifier=2\n");
        second.replace(second.find("ConnectionName=C"), 16, "ConnectionName=D");
        startEngine(second);
    }

    void toggle(std::atomic<bool> const& isOver) {
        for (unsigned i = 0; !isOver; ++i) {
            Plain& listener = plain_[i % plain_.size()];
            char const* const connection = connections[i / 2 % 2];
            engine().subscribe(world_.me, listener, connection, "APP");
            engine().subscribeDirect(world_.me, connection, false, true, true, listener);
            engine().unsubscribe(world_.me, listener, connection, "APP");
            engine().unsubscribeDirect(world_.me, connection, false, true, true, listener);
        }
    }

    World world_;
    std::array<Plain, 4> plain_;
    std::array<Guaranteed, 2> guaranteed_;
};

TEST_F(WildListenersTest, DoNoHarmAndAreCountedRight) {
    unsigned const seed = testSeed();
    testing::internal::CaptureStdout(); // thousands of lines of what they throw
    for (std::size_t i = 0; i < plain_.size(); ++i) {
        auto* const wild = new Wild(world_, seed + static_cast<unsigned>(i));
        plain_[i] = Plain(wild);
        wild->self = &plain_[i];
    }
    for (std::size_t i = 0; i < guaranteed_.size(); ++i) {
        // The same listeners once more, by way of guaranteed ones.
        guaranteed_[i] = Guaranteed(new ZANGuaranteedEngineMessageListener(plain_[i]));
    }
    for (char const* const connection : connections) {
        for (Plain& listener : plain_) {
            engine().subscribe(world_.me, listener, connection, "APP");
            engine().subscribeDirect(world_.me, connection, false, true, true, listener);
        }
        for (Guaranteed& listener : guaranteed_) {
            engine().subscribeDirect(world_.me, connection, false, true, true, listener);
        }
    }
    std::atomic<bool> isOver{false};
    std::thread toggling([&] { toggle(isOver); });
    while (world_.messagesLeft > 0) {
        world_.post(connections[0]);
        world_.post(connections[1]);
    }
    isOver = true;
    toggling.join();
    ZANEngineProxy::uninitialize();
    testing::internal::GetCapturedStdout();
    EXPECT_GT(world_.events, 1000);
    for (Guaranteed& listener : guaranteed_) {
        EXPECT_EQ(listener.use_count(), 1u);
        listener.reset();
    }
    for (Plain& listener : plain_) {
        EXPECT_EQ(listener.use_count(), 1u) << "seed " << seed;
        listener.reset();
    }
    EXPECT_EQ(world_.alive, 0);
}

} // namespace
