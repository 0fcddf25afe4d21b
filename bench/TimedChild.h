// Runs a piece of work in a forked child process and waits for it at most a given time, so that a
// layout that runs too long is reported (and killed) instead of stalling a benchmark or a script.
// The child inherits the parent's memory (copy on write), hands a few numbers back through a pipe
// and reports its own peak resident memory. While it runs it can post progress (which step it is in,
// how long earlier steps took) to a small block shared with the parent, so that a run that was
// killed still says how far it got. Linux only: the peak of a killed child comes from
// /proc/<pid>/status.
#pragma once

#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace bench_support {

// Progress numbers the child posts and the parent reads, also after killing it.
constexpr int kProgressSlots = 8;
using Progress = double volatile*;

struct ChildResult {
    enum class Outcome { Done, TimedOut, Failed };
    Outcome outcome = Outcome::Failed;
    std::vector<double> values;  // what the work returned (Done only)
    double progress[kProgressSlots] = {};  // the last progress the child posted
    long peakKb = 0;             // peak resident set of the child in KiB; 0 when unknown
    std::string error;           // why it failed (Failed only)
};

// Peak resident set of a live process in KiB (VmHWM), 0 when it cannot be read.
inline long PeakOfProcessKb(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.compare(0, 6, "VmHWM:") == 0) {
            return std::atol(line.c_str() + 6);
        }
    }
    return 0;
}

// Peak resident set of this process in KiB.
inline long PeakOfSelfKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;  // KiB on Linux
}

// Runs work(progress) in a child process. limitSeconds <= 0 waits for as long as it takes. The
// child writes the returned numbers, then its own peak resident set, to a pipe and leaves with
// _exit, so that nothing of the parent (buffers, atexit handlers, benchmark state) runs twice.
// progress points to kProgressSlots zeroed numbers shared with the parent.
inline ChildResult RunInChild(double limitSeconds, std::function<std::vector<double>(Progress)> const& work) {
    ChildResult result;
    void* const shared = mmap(nullptr, sizeof(double) * kProgressSlots, PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        result.error = std::string("mmap: ") + std::strerror(errno);
        return result;
    }
    Progress const progress = static_cast<double*>(shared);
    for (int i = 0; i < kProgressSlots; ++i) {
        progress[i] = 0.0;
    }
    struct Unmap {
        void* p;
        ~Unmap() { munmap(p, sizeof(double) * kProgressSlots); }
    } const unmap{shared};
    auto const collect = [&result, progress]() {
        for (int i = 0; i < kProgressSlots; ++i) {
            result.progress[i] = progress[i];
        }
    };
    int fds[2];
    if (pipe(fds) != 0) {
        result.error = std::string("pipe: ") + std::strerror(errno);
        return result;
    }
    std::fflush(nullptr);  // buffered output would otherwise be written by both processes
    pid_t const pid = fork();
    if (pid < 0) {
        result.error = std::string("fork: ") + std::strerror(errno);
        close(fds[0]);
        close(fds[1]);
        return result;
    }
    if (pid == 0) {
        close(fds[0]);
        int code = 0;
        std::vector<double> values;
        try {
            values = work(progress);
        } catch (std::exception const& e) {
            std::fprintf(stderr, "error: %s\n", e.what());
            code = 3;
        } catch (...) {
            code = 3;
        }
        if (code == 0) {
            values.push_back(static_cast<double>(PeakOfSelfKb()));
            char const* p = reinterpret_cast<char const*>(values.data());
            std::size_t left = values.size() * sizeof(double);
            while (left > 0) {
                ssize_t const n = write(fds[1], p, left);
                if (n < 0 && errno == EINTR) {
                    continue;
                }
                if (n <= 0) {
                    code = 4;
                    break;
                }
                p += n;
                left -= static_cast<std::size_t>(n);
            }
        }
        std::fflush(nullptr);
        _exit(code);
    }

    close(fds[1]);
    using Clock = std::chrono::steady_clock;
    Clock::time_point const deadline =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(limitSeconds));
    std::vector<char> bytes;
    bool timedOut = false;
    for (;;) {
        int waitMs = -1;
        if (limitSeconds > 0) {
            auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) {
                timedOut = true;
                break;
            }
            waitMs = static_cast<int>(left < 60000 ? left : 60000);
        }
        pollfd pfd{fds[0], POLLIN, 0};
        int const ready = poll(&pfd, 1, waitMs);
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready == 0) {
            continue;  // the loop head checks the deadline
        }
        char buf[4096];
        ssize_t const n = read(fds[0], buf, sizeof buf);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            break;  // end of file: the child is done (or died)
        }
        bytes.insert(bytes.end(), buf, buf + n);
    }
    close(fds[0]);

    if (timedOut) {
        result.outcome = ChildResult::Outcome::TimedOut;
        result.peakKb = PeakOfProcessKb(pid);
        kill(pid, SIGKILL);
        int status = 0;
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        collect();
        return result;
    }

    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    collect();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || bytes.size() < sizeof(double) ||
        bytes.size() % sizeof(double) != 0) {
        if (WIFSIGNALED(status)) {
            result.error = std::string("child killed by signal ") + std::to_string(WTERMSIG(status));
        } else {
            int const code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            result.error = "child failed with exit code " + std::to_string(code);
        }
        return result;
    }
    std::vector<double> values(bytes.size() / sizeof(double));
    std::memcpy(values.data(), bytes.data(), bytes.size());
    result.peakKb = static_cast<long>(values.back());
    values.pop_back();
    result.values = std::move(values);
    result.outcome = ChildResult::Outcome::Done;
    return result;
}

}  // namespace bench_support
