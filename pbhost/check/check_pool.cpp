#include "pbhost/check/check_pool.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include "pbhost/check/check_worker.h"

namespace pbhost {

namespace {

using Clock = CheckWorker::Clock;

struct Slot {
    CheckWorker worker;
    std::size_t index = 0; // of the file
    Clock::time_point started;
};

class Pool {
public:
    Pool(const std::vector<std::string>& files, std::size_t jobs, double timeoutSeconds)
        : files_(files), results_(files.size()) {
        for (std::size_t i = 0; i < std::min(std::max<std::size_t>(jobs, 1), files.size()); ++i)
            slots_.push_back({CheckWorker(timeoutSeconds), 0, {}});
    }

    std::vector<CheckedFile> run() {
        while (done_ < files_.size()) {
            for (Slot& slot : slots_)
                if (!slot.worker.isBusy() && next_ < files_.size())
                    give(slot);
            wait();
        }
        return std::move(results_);
    }

private:
    void give(Slot& slot) {
        slot.index = next_++;
        slot.started = Clock::now();
        slot.worker.send({files_[slot.index], {}});
    }

    // Waits for an answer or a deadline, and takes what there is.
    void wait() {
        std::vector<pollfd> polled;
        std::vector<Slot*> busy;
        std::optional<Clock::time_point> first;
        for (Slot& slot : slots_) {
            if (!slot.worker.isBusy())
                continue;
            busy.push_back(&slot);
            polled.push_back({slot.worker.descriptor(), POLLIN, 0});
            if (const auto deadline = slot.worker.deadline())
                first = first ? std::min(*first, *deadline) : *deadline;
        }
        poll(polled.data(), polled.size(), first ? millisecondsTo(*first) : -1);
        for (std::size_t i = 0; i < busy.size(); ++i) {
            const auto deadline = busy[i]->worker.deadline();
            if (polled[i].revents != 0 || (deadline && Clock::now() >= *deadline))
                take(*busy[i]);
        }
    }

    static int millisecondsTo(Clock::time_point when) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(when - Clock::now()).count();
        return static_cast<int>(std::clamp<std::int64_t>(left + 1, 0, 1'000'000));
    }

    void take(Slot& slot) {
        auto found = slot.worker.receive();
        if (!found)
            return;
        const std::chrono::duration<double> taken = Clock::now() - slot.started;
        results_[slot.index] = {files_[slot.index], std::move(*found), taken.count()};
        ++done_;
    }

    const std::vector<std::string>& files_;
    std::vector<CheckedFile> results_;
    std::vector<Slot> slots_;
    std::size_t next_ = 0;
    std::size_t done_ = 0;
};

} // namespace

std::vector<CheckedFile> checkFiles(const std::vector<std::string>& files, std::size_t jobs,
                                    double timeoutSeconds) {
    return Pool(files, jobs, timeoutSeconds).run();
}

} // namespace pbhost
