#include "support/WorkerThreads.h"

#include <gmock/gmock.h>

#include <functional>
#include <latch>
#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;

TEST(WorkerThreadsTest, UrgentTasksFirst) {
    std::vector<int> order;
    std::latch posted(1);
    {
        WorkerThreads thread(1, WorkerThreads::AtEnd::runTasks);
        thread.post([&] { posted.wait(); });
        for (const int number : {3, 4}) {
            thread.post([&order, number] { order.push_back(number); });
        }
        for (const int number : {1, 2}) {
            thread.post([&order, number] { order.push_back(number); },
                        WorkerThreads::Priority::urgent);
        }
        posted.count_down();
    }
    EXPECT_THAT(order, ElementsAre(1, 2, 3, 4)) << "what is left is run at the end";
}

TEST(WorkerThreadsTest, AsManyAtOnceAsTheLimit) {
    std::latch bothRun(2);
    WorkerThreads threads(2, WorkerThreads::AtEnd::dropTasks);
    for (int task = 0; task < 2; ++task) {
        threads.post([&] { bothRun.arrive_and_wait(); });
    }
    bothRun.wait();
    const std::function<void()> endless = [&] { threads.post(endless); };
    threads.post(endless); // which the end must not wait for
}

} // namespace
} // namespace lumo
