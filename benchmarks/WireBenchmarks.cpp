// From the model of a message to its text, and back.
#include "Model.h"
#include "Order.h"
#include "QuickFixPeer.h"
#include "server/wire/GroupReader.h"
#include "server/wire/WireText.h"
#include "tests/support/GroupDictionary.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

using zan::server::CompiledDictionary;

CompiledDictionary newDictionary() {
    GroupDictionary dictionary;
    for (auto const& group : order::repeating) {
        GroupRule& rule = dictionary.messages[order::msgType][group.countTag];
        rule.delimiter = group.fields[0].tag;
        for (auto const& field : group.fields) {
            rule.members.push_back(field.tag);
        }
    }
    return dictionary.compiled();
}

CompiledDictionary const& dictionary() {
    static CompiledDictionary const compiled = newDictionary();
    return compiled;
}

// The order as it comes from a session.
std::string incomingText(bool grouped) {
    auto const body = model::newBody(grouped);
    body->setFieldValue(34, 1042);
    body->setFieldValue(49, "BROKER");
    body->setFieldValue(52, "20261121-14:05:09.118");
    body->setFieldValue(56, "EXCHANGE");
    return zan::server::wireText(*body, dictionary());
}

void writeWire(benchmark::State& state, bool grouped) {
    auto const body = model::newBody(grouped);
    std::string text;
    for (auto _ : state) {
        text.clear();
        zan::server::appendWireText(text, *body, dictionary());
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations());
}

// QuickFIX keeps the text of each field that it has once written.
void writeWireQuickFix(benchmark::State& state, bool grouped) {
    std::unique_ptr<void, void (*)(void*)> const message(
        quickfix::newOrder(grouped, quickfix::Values::typed), &quickfix::destroy);
    std::string text;
    for (auto _ : state) {
        quickfix::write(message.get(), text);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void buildAndWriteWire(benchmark::State& state, bool grouped) {
    std::string text;
    for (auto _ : state) {
        auto const body = model::newBody(grouped);
        text.clear();
        zan::server::appendWireText(text, *body, dictionary());
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void buildAndWriteWireQuickFix(benchmark::State& state, bool grouped, quickfix::Values values) {
    std::string text;
    for (auto _ : state) {
        quickfix::buildWriteAndDestroy(grouped, values, text);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations());
}

void parseWire(benchmark::State& state, bool grouped) {
    std::string const text = incomingText(grouped);
    for (auto _ : state) {
        auto const body = zan::server::readMessage(text, zan::server::fieldSeparator,
                                                   zan::server::Reading::Tolerant, dictionary());
        benchmark::DoNotOptimize(body.get());
    }
    state.SetItemsProcessed(state.iterations());
}

void parseWireQuickFix(benchmark::State& state, bool grouped, quickfix::Checks checks) {
    std::string const text = incomingText(grouped);
    for (auto _ : state) {
        quickfix::parseAndDestroy(text, checks);
    }
    state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK_CAPTURE(writeWire, 12, false);
BENCHMARK_CAPTURE(writeWire, G, true);
BENCHMARK_CAPTURE(writeWireQuickFix, 12, false);
BENCHMARK_CAPTURE(writeWireQuickFix, G, true);
BENCHMARK_CAPTURE(buildAndWriteWire, 12, false);
BENCHMARK_CAPTURE(buildAndWriteWire, G, true);
BENCHMARK_CAPTURE(buildAndWriteWireQuickFix, 12_typed, false, quickfix::Values::typed);
BENCHMARK_CAPTURE(buildAndWriteWireQuickFix, G_typed, true, quickfix::Values::typed);
BENCHMARK_CAPTURE(buildAndWriteWireQuickFix, 12_ready, false, quickfix::Values::ready);
BENCHMARK_CAPTURE(buildAndWriteWireQuickFix, G_ready, true, quickfix::Values::ready);
BENCHMARK_CAPTURE(parseWire, 12, false);
BENCHMARK_CAPTURE(parseWire, G, true);
BENCHMARK_CAPTURE(parseWireQuickFix, 12, false, quickfix::Checks::none);
BENCHMARK_CAPTURE(parseWireQuickFix, G, true, quickfix::Checks::none);
BENCHMARK_CAPTURE(parseWireQuickFix, 12_checked, false, quickfix::Checks::lengthAndChecksum);
BENCHMARK_CAPTURE(parseWireQuickFix, G_checked, true, quickfix::Checks::lengthAndChecksum);
