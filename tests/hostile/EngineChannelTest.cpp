#include "platform/pdf/EngineChannel.h"

#include <QTest>

#include <gtest/gtest.h>

#include <optional>

using namespace inkory;

namespace
{

using Ending = EngineChannel::Ending;

// The helper beside this program is HostileEngine.cpp's.
struct HostileHelper : testing::TestWithParam<const char *>
{
    void SetUp() override { qputenv("INKORY_HOSTILITY", GetParam()); }

    static BusMessage callOf(EngineChannel &channel)
    {
        BusMessage call = channel.newCall(engineBus::draw);
        EXPECT_TRUE(append(call.get(), true));
        return call;
    }
};

// Long before the job's time is up, and before what it sends has been read.
TEST_P(HostileHelper, IsEndedAtOnce)
{
    constexpr EngineChannel::Limits limits{60'000, 60'000};
    auto channel = EngineChannel::start(EngineKind::Documents);
    ASSERT_TRUE(channel);
    std::optional<Ending> ending;
    (*channel)->send(callOf(**channel), limits, [&ending](const auto &answer) { ending = answer.ending; });
    ASSERT_TRUE(QTest::qWaitFor([&ending] { return ending.has_value(); }, 10'000));
    EXPECT_TRUE(ending == Ending::Died || ending == Ending::NotStarted) << static_cast<int>(*ending);
    EXPECT_FALSE((*channel)->isAlive());

    auto another = EngineChannel::start(EngineKind::Documents);
    ASSERT_TRUE(another);
    const Ending waited = (*another)->call(callOf(**another), limits).ending;
    EXPECT_TRUE(waited == Ending::Died || waited == Ending::NotStarted) << static_cast<int>(waited);
}

INSTANTIATE_TEST_SUITE_P(Sends, HostileHelper, testing::Values("huge", "endless", "unasked"),
                         [](const auto &hostility) { return std::string(hostility.param); });

} // namespace
