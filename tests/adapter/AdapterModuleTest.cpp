#include "adapter/AdapterModule.h"
#include "conformance/RecordingAdapter.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using zan::conformance::RecordingAdapter;

counted_ptr<IZANEngineAdapter> makeAdapter(Url const& url) {
    if (url.getPath() == "broken") {
        throw std::runtime_error("broken");
    }
    return counted_ptr<IZANEngineAdapter>(new RecordingAdapter);
}

} // namespace

ZAN_ADAPTER_MODULE(testing, makeAdapter);

namespace {

TEST(AdapterModule, CreationFunctionCallsTheModulesOwn) {
    counted_ptr<IZANEngineAdapter> (*const create)(Url const&) = &create_testing_engineadapter;
    auto const adapter = create(Url("testing:good"));
    EXPECT_NE(dynamic_cast<RecordingAdapter*>(adapter.get()), nullptr);
    EXPECT_EQ(adapter.use_count(), 1u);
}

TEST(AdapterModule, CreationFunctionLetsExceptionsOut) {
    EXPECT_THROW(create_testing_engineadapter(Url("testing:broken")), std::runtime_error);
}

TEST(AdapterModule, CarriesTheMarkOfItsBuild) {
    EXPECT_STREQ(zan_abi_mark_testing, ZAN_ABI_MARK);
}

TEST(AdapterModule, MarkTellsAbiNumberCountsAndStrings) {
#ifdef ZAN_ATOMIC_COUNTS
    std::string const expected = "ZANEngine ABI 1, atomic counts, ";
#else
    std::string const expected = "ZANEngine ABI 1, plain counts, ";
#endif
    std::string const mark = ZAN_ABI_MARK;
    EXPECT_EQ(mark.substr(0, expected.size()), expected);
    EXPECT_NE(mark.find("strings", expected.size()), std::string::npos);
}

} // namespace
