// Groups of many fields, filled in different orders, against the plainest model of a group.
#include "infra/Value.h"
#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <vector>

namespace {

enum class Order { random, ascending, descending };

std::vector<int> tagsIn(Order insertion, int count) {
    std::vector<int> tags(static_cast<std::size_t>(count));
    std::iota(tags.begin(), tags.end(), 1);
    if (insertion == Order::random) {
        std::shuffle(tags.begin(), tags.end(), std::mt19937(20261121));
    } else if (insertion == Order::descending) {
        std::reverse(tags.begin(), tags.end());
    }
    return tags;
}

/// What a field is at least: a tag and a typed value behind virtual operations.
class MapField {
public:
    MapField(int tag, Value const& value) : tag_(tag), value_(value) {}
    MapField(MapField const&) = delete;
    MapField& operator=(MapField const&) = delete;
    virtual ~MapField() = default;
    virtual int getTag() const { return tag_; }
    virtual void setValue(Value const& value) { value_ = value; }

private:
    int tag_;
    Value value_;
};

class MapGroup {
public:
    MapGroup() = default;
    MapGroup(MapGroup const&) = delete;
    MapGroup& operator=(MapGroup const&) = delete;
    virtual ~MapGroup() = default;

    virtual void setFieldValue(int tag, long number) {
        Value value;
        value.setLong(number);
        auto const place = fields_.lower_bound(tag);
        if (place != fields_.end() && place->first == tag) {
            place->second->setValue(value);
        } else {
            fields_.emplace_hint(place, tag, counted_ptr<MapField>(new MapField(tag, value)));
        }
    }

private:
    std::map<int, counted_ptr<MapField>> fields_;
};

template <class Group>
void insert(benchmark::State& state, Order insertion) {
    auto const tags = tagsIn(insertion, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Group group;
        Group* filled = &group;
        benchmark::DoNotOptimize(filled);
        for (int const tag : tags) {
            filled->setFieldValue(tag, static_cast<long>(tag));
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(100)->Arg(1000)->Arg(10000);
}

void insertFields(benchmark::State& state, Order insertion) {
    insert<ZANFieldGroup>(state, insertion);
}

void insertFieldsMap(benchmark::State& state, Order insertion) {
    insert<MapGroup>(state, insertion);
}

} // namespace

BENCHMARK_CAPTURE(insertFields, random, Order::random)->Apply(sizes);
BENCHMARK_CAPTURE(insertFields, ascending, Order::ascending)->Apply(sizes);
BENCHMARK_CAPTURE(insertFields, descending, Order::descending)->Apply(sizes);
BENCHMARK_CAPTURE(insertFieldsMap, random, Order::random)->Apply(sizes);
BENCHMARK_CAPTURE(insertFieldsMap, ascending, Order::ascending)->Apply(sizes);
BENCHMARK_CAPTURE(insertFieldsMap, descending, Order::descending)->Apply(sizes);
