// A watchdog for tests that must end: it fails the test program (prints what was running and
// aborts) only when one guarded piece of work runs for longer than its limit, which is set to tens
// of seconds, far beyond any normal run. It never fails on speed.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace layout_test {

class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds limit) : limit_(limit), thread_([this] { Run(); }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            stop_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;

    // Starts guarding a new piece of work, named in the message a hang prints.
    void Arm(std::string what) {
        std::lock_guard<std::mutex> lock(mutex_);
        what_ = std::move(what);
        deadline_ = std::chrono::steady_clock::now() + limit_;
        armed_ = true;
        wake_.notify_all();
    }
    void Disarm() {
        std::lock_guard<std::mutex> lock(mutex_);
        armed_ = false;
    }

private:
    void Run() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!stop_) {
            if (!armed_) {
                wake_.wait(lock);
                continue;
            }
            auto const deadline = deadline_;
            if (wake_.wait_until(lock, deadline) == std::cv_status::timeout && armed_ && !stop_ &&
                deadline_ == deadline) {
                std::fprintf(stderr, "watchdog: %s did not end within %lld s\n", what_.c_str(),
                             static_cast<long long>(limit_.count()));
                std::fflush(stderr);
                std::abort();
            }
        }
    }

    std::chrono::seconds limit_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::string what_;
    std::chrono::steady_clock::time_point deadline_{};
    bool armed_ = false;
    bool stop_ = false;
    std::thread thread_;
};

}  // namespace layout_test
