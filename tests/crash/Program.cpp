// The program that is killed: it sends orders from several threads, and takes reports with a
// guaranteed listener.
//
//   crash_program load URL FOLDER RUN    sends until it is killed; posts, edits and deletes
//   entries,
//                                        sends orders again, disconnects and connects beside it
//   crash_program resets URL FOLDER RUN  the same, and resets the sequence numbers now and then
//   crash_program finish URL FOLDER RUN  takes what is left, and ends in good order
//
// It writes down in `FOLDER/acknowledged.RUN`, after a call has returned,
//   one <id> <ClOrdID>           an order that was sent alone
//   batch <ClOrdID> <ClOrdID>... orders that were sent together
//   posted <id> <name>           a message for the listeners alone
//   edited <id>, removed <id>    of what was posted: has a note, is deleted
// and in `FOLDER/consumed.RUN`
//   got <id> <stream> <again>    an event of the guaranteed listener
//   kept <id> <stream>           a mark that was set before a flush that has returned
// Each line is one write to the file, so that it survives the process, whole or not at all.
// The lines `logged on` and `done` on standard output tell how far it is.
#include "crash/OrderText.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANCannotConnectException.h"
#include "errors/ZANNotConnectedException.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/InfraException.h"
#include "infra/Time.h"
#include "infra/Url.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using Stream = ZANGuaranteedEngineMessageListener::MessageTypeIds;

UserTicket const ticket("crash", "");
std::string const connection = "C";

ZANEngineProxy& engine() {
    return ZANEngineProxy::getInstance();
}

class LineFile {
public:
    explicit LineFile(std::string const& path)
        : file_(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {
        if (file_ < 0) {
            throw std::runtime_error("cannot write " + path);
        }
    }
    LineFile(LineFile const&) = delete;
    LineFile& operator=(LineFile const&) = delete;
    ~LineFile() { close(file_); }

    void add(std::string const& line) const {
        std::string const whole = line + "\n";
        if (write(file_, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
            std::abort();
        }
    }

private:
    int const file_;
};

/// Writes each event down, then marks it as consumed.
class Consumer : public IZANEventListener {
public:
    explicit Consumer(std::string const& path) : file_(path) {}

    ZANGuaranteedEngineMessageListener* listener = nullptr;

    void processEvent(counted_ptr<ZANEvent> event) override {
        counted_ptr<ZANMessage> const message = event->getMessage();
        ZANFieldGroup const& fields = *message->getFieldGroup();
        int const id = message->getConnectionMessageId();
        Stream const stream = streamOf(fields, event->isAdmin(), id);
        bool const isAgain = fields.isFieldPresent(97);
        file_.add("got " + std::to_string(id) + " " + std::to_string(stream) + " " +
                  std::to_string(isAgain));
        listener->getAdapter().setLastConsumedMessage(connection, id, stream);
        marks_.at(stream) = id;
        if (++count_ % 64 == 0) {
            flush();
        }
    }

    void processStateEvent(counted_ptr<ZANConnectionStateEvent>) override {}

private:
    static Stream streamOf(ZANFieldGroup const& fields, bool isAdmin, int id) {
        bool const isOurs = fields.getField(49)->getValue().asString() == "US";
        if (isAdmin) {
            return isOurs ? Stream::ADMIN_MSG_TO_COUNTERPARTY : Stream::ADMIN_MSG_FROM_COUNTERPARTY;
        }
        if (!isOurs || fields.getField(56)->getValue().asString() == "US") {
            return Stream::APP_MSG_FROM_COUNTERPARTY;
        }
        bool const isResent =
            fields.isFieldPresent(43) || (fields.isFieldPresent(97) && isInResentStream(id));
        return isResent ? Stream::RESENT_MSG : Stream::APP_MSG_TO_COUNTERPARTY;
    }

    // What is delivered again and what was sent again look alike.
    static bool isInResentStream(int id) {
        std::vector<counted_ptr<ZANMessage>> found;
        engine().retrieveMessagesByIdRange(ticket, connection, found, Stream::RESENT_MSG, id, id,
                                           "", false);
        return !found.empty();
    }

    void flush() {
        listener->getAdapter().flush();
        for (std::size_t stream = 0; stream < marks_.size(); ++stream) {
            if (marks_[stream] > 0) {
                file_.add("kept " + std::to_string(marks_[stream]) + " " + std::to_string(stream));
            }
        }
    }

    LineFile const file_;
    std::array<int, 5> marks_{};
    long count_ = 0;
};

counted_ptr<ZANMessage> orderModel(std::string const& clientOrderId) {
    counted_ptr<ZANFieldGroup> order(new ZANFieldGroup(std::string("D")));
    std::string const fields = crash::orderFields(clientOrderId);
    for (std::size_t at = 0; at < fields.size();) {
        std::size_t const sign = fields.find('=', at);
        std::size_t const end = fields.find('|', sign);
        order->setFieldValue(std::stoi(fields.substr(at)), fields.substr(sign + 1, end - sign - 1));
        at = end + 1;
    }
    return counted_ptr<ZANMessage>(new ZANMessage(order));
}

// The counterparty may not have noticed yet that the last process is gone.
void connect() {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (;;) {
        try {
            engine().connect(ticket, connection);
            return;
        } catch (ZANCannotConnectException const&) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
}

class Load {
public:
    Load(LineFile const& acknowledged, std::string run)
        : acknowledged_(acknowledged), run_(std::move(run)) {}

    void sendOnes(int sender) const {
        for (int i = 0;; ++i) {
            std::string const order = orderId(sender, i);
            whenConnected([&] {
                long const id =
                    engine().sendMessage(ticket, connection, "35=D|" + crash::orderFields(order));
                acknowledged_.add("one " + std::to_string(id) + " " + order);
            });
            rest(i);
        }
    }

    void sendBatches(int sender) const {
        for (int i = 0;; i += batchSize) {
            std::vector<counted_ptr<ZANMessage>> batch;
            std::string line = "batch";
            for (int k = 0; k < batchSize; ++k) {
                batch.push_back(orderModel(orderId(sender, i + k)));
                line += " " + orderId(sender, i + k);
            }
            whenConnected([&] {
                engine().sendMultipleMessages(ticket, connection, batch);
                acknowledged_.add(line);
            });
            rest(i);
        }
    }

    /// Everything else that an application does with a connection.
    void disturb(bool withResets) const {
        for (int i = 0;; ++i) {
            postAndEdit(i);
            if (i % 5 == 4) {
                whenConnected([&] { sendAgain(); });
            }
            if (i % 8 == 7) {
                engine().disconnect(ticket, connection, "a pause");
                connect();
            }
            if (withResets && i % 10 == 9) {
                whenConnected([] { engine().resetConnection(ticket, connection); });
                connect();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

private:
    static constexpr int batchSize = 5;

    void postAndEdit(int number) const {
        std::string const name = crash::postName(run_, number);
        long const id = engine().postInternalMessage(ticket, connection, "35=B|148=" + name + "|");
        std::string const key = std::to_string(id);
        acknowledged_.add("posted " + key + " " + name);
        engine().updateMessageLogData(ticket, connection, 2, "note = 'edited'", "id = " + key);
        acknowledged_.add("edited " + key);
        if (crash::isToBeRemoved(number)) {
            engine().deleteMessageLogData(ticket, connection, 2, "id = " + key);
            acknowledged_.add("removed " + key);
        }
    }

    static void sendAgain() {
        infra::Time const now = infra::Time::now();
        engine().resendMessages(ticket, connection, infra::Time(now.getMillis() - 50), now,
                                "type = 'D' AND seq % 5 = 0");
    }

    // Another thread may have disconnected: then nothing was stored.
    template <class Send>
    static void whenConnected(Send send) {
        try {
            send();
        } catch (ZANNotConnectedException const&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        } catch (ZANCannotConnectException const&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    std::string orderId(int sender, int number) const {
        return run_ + "-" + std::to_string(sender) + "-" + std::to_string(number);
    }

    // Bursts and pauses: commits of many messages, and commits of one.
    static void rest(int count) {
        if (count % 20 == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    LineFile const& acknowledged_;
    std::string const run_;
};

void say(std::string const& text) {
    std::cout << text + "\n" << std::flush;
}

// What is under way when the connection is not there is no concern of this program's: the link
// comes back by itself.
template <class Send>
void keepSending(Send send) {
    try {
        send();
    } catch (std::exception const& e) {
        say(std::string("failed: ") + e.what());
        _exit(1);
    }
}

void sendUntilKilled(LineFile const& acknowledged, std::string const& run, bool withResets) {
    Load const load(acknowledged, run);
    std::vector<std::thread> senders;
    for (int sender = 0; sender < 3; ++sender) {
        senders.emplace_back([&load, sender] { keepSending([&] { load.sendOnes(sender); }); });
    }
    senders.emplace_back([&load] { keepSending([&] { load.sendBatches(3); }); });
    senders.emplace_back([&] { keepSending([&] { load.disturb(withResets); }); });
    for (std::thread& sender : senders) {
        sender.join();
    }
}

// The answer to a test request comes after everything that was missing in both directions. One that
// came too early, while something was missing, is not answered: its number is filled as a gap.
bool isInStep() {
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (engine().pingConnection(ticket, connection, 300)) {
            return true;
        }
    }
    return false;
}

void takeWhatIsLeft() {
    if (!isInStep()) {
        throw std::runtime_error("the counterparty does not answer");
    }
    engine().disconnect(ticket, connection, "done");
    ZANEngineProxy::uninitialize();
    say("done");
}

void run(std::string const& mode, std::string const& url, std::string const& folder,
         std::string const& number) {
    LineFile const acknowledged(folder + "/acknowledged." + number);
    auto* const consumer = new Consumer(folder + "/consumed." + number);
    counted_ptr<IZANEventListener> const events(consumer);
    ZANEngineProxy::initialize(Url(url));
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(events));
    consumer->listener = listener.get();
    engine().subscribeDirect(ticket, connection, true, true, false, listener);
    listener->retrievePotentiallyLostMessages();
    connect();
    say("logged on");
    mode == "finish" ? takeWhatIsLeft() : sendUntilKilled(acknowledged, number, mode == "resets");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "crash_program load|resets|finish URL FOLDER RUN\n";
        return 2;
    }
    try {
        run(argv[1], argv[2], argv[3], argv[4]);
        return 0;
    } catch (std::exception const& e) {
        say(std::string("failed: ") + e.what());
        return 1;
    }
}
