#include "pbhost/sequence/worker_pool.h"

namespace pbhost {

WorkerPool::WorkerPool(unsigned threads) {
    for (unsigned i = 0; i < threads; ++i)
        threads_.emplace_back([this] { work(); });
}

WorkerPool::~WorkerPool() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
        tasks_.clear();
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void WorkerPool::enqueue(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    changed_.notify_one();
}

void WorkerPool::work() {
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return isEnding_ || !tasks_.empty(); });
            if (isEnding_)
                return;
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

} // namespace pbhost
