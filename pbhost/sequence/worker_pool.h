// Threads that run tasks in the order in which they were submitted. The destructor waits for the
// tasks that have begun and drops the others.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace pbhost {

class WorkerPool {
public:
    explicit WorkerPool(unsigned threads);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // The future throws what the task throws.
    template<typename Task>
    auto submit(Task task) -> std::future<std::invoke_result_t<Task&>> {
        auto packaged =
            std::make_shared<std::packaged_task<std::invoke_result_t<Task&>()>>(std::move(task));
        auto result = packaged->get_future();
        enqueue([packaged = std::move(packaged)]() mutable {
            (*packaged)();
            packaged.reset(); // frees what the task holds before the thread waits
        });
        return result;
    }

private:
    void enqueue(std::function<void()> task);
    void work();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
    bool isEnding_ = false;
    std::vector<std::thread> threads_;
};

} // namespace pbhost
