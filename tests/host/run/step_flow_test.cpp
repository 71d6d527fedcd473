#include "host/run/step_flow.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <set>
#include <stdexcept>

namespace Nifikral {
namespace {

class StepFlowTest : public ::testing::TestWithParam<int> {
 protected:
    // Hands out steps 0 to count - 1.
    std::optional<SourceStep> Read(long long count) {
        const Only only(reading);
        if (next == count) return std::nullopt;
        most = std::max(most, next - written.load());
        SourceStep step;
        step.number = next++;
        return step;
    }
    void Write(const SourceStep& step) {
        const Only only(writing);
        EXPECT_EQ(step.number, written++);
    }

    // One thread at a time.
    struct Only {
        explicit Only(std::atomic<int>& count) : inside(count) { EXPECT_EQ(inside++, 0); }
        ~Only() { --inside; }
        Only(const Only&) = delete;
        Only& operator=(const Only&) = delete;
        std::atomic<int>& inside;
    };

    std::atomic<int> reading = 0, writing = 0;
    long long next = 0, most = 0;
    std::atomic<long long> written = 0;
};

INSTANTIATE_TEST_SUITE_P(, StepFlowTest, ::testing::Values(1, 2, 7));

TEST_P(StepFlowTest, WritesEachStepOnceInOrderAndHoldsFewAtATime) {
    std::atomic<long long> worked = 0;
    StepFlow flow(GetParam(), {[&] { return Read(500); },
                               [&](SourceStep& step) {
                                   // Some take longer than those behind them.
                                   if (step.number % 3 == 0)
                                       std::this_thread::sleep_for(std::chrono::microseconds(200));
                                   ++worked;
                               },
                               [&](SourceStep& step) { Write(step); }});
    flow.Run();
    EXPECT_EQ(worked, 500);
    EXPECT_EQ(written, 500);
    EXPECT_LE(most, 2 * GetParam());
}

TEST_P(StepFlowTest, TheFirstErrorOfAnyStageEndsIt) {
    for (const int stage : {0, 1, 2}) {
        next = written = 0;
        const auto fail = [&](int in, long long number) {
            if (in == stage && number == 20) throw std::runtime_error("broken");
        };
        StepFlow flow(GetParam(), {[&] {
                                       fail(0, next);
                                       return Read(500);
                                   },
                                   [&](SourceStep& step) { fail(1, step.number); },
                                   [&](SourceStep& step) {
                                       fail(2, step.number);
                                       Write(step);
                                   }});
        EXPECT_THROW(flow.Run(), std::runtime_error) << stage;
        EXPECT_LE(written, 20) << stage;
        EXPECT_LE(next, 20 + 2 * GetParam() + 1) << stage;
    }
}

TEST(StepFlowThreads, WorkAtTheSameTimeAndWaitWithoutTakingTime) {
    // Each of three waits for the two others.
    std::atomic<int> met = 0;
    long long next = 0;
    const auto begin = std::clock();
    StepFlow flow(3, {[&]() -> std::optional<SourceStep> {
                          std::this_thread::sleep_for(std::chrono::milliseconds(50));
                          if (next == 6) return std::nullopt;
                          return SourceStep{nullptr, next++, {}};
                      },
                      [&](SourceStep& step) {
                          if (step.number >= 3) return;
                          const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
                          for (++met; met < 3 && std::chrono::steady_clock::now() < end;)
                              std::this_thread::sleep_for(std::chrono::milliseconds(1));
                          EXPECT_EQ(met, 3);
                      },
                      [](SourceStep&) {}});
    flow.Run();
    EXPECT_LT(double(std::clock() - begin) / CLOCKS_PER_SEC, 0.1);
}

}  // namespace
}  // namespace Nifikral
