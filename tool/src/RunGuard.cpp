#include "RunGuard.h"

#include "ToolApplication.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

namespace krtool {

namespace {

constexpr int kSlots = 64;
constexpr std::size_t kPathSize = 4096;
static_assert(std::atomic<int>::is_always_lock_free, "the handlers read the slots' flags");

// The temporary files to remove: a slot's path is valid while its flag is set.
char temporaryPaths[kSlots][kPathSize];
std::atomic<int> temporaryUsed[kSlots];

// "krlayout: --time-limit of N s ran out while ", made when the timer is started.
char timeoutPrefix[128];
volatile std::sig_atomic_t currentStep = 0;
char stepDetail[kPathSize];

char const* const kStepText[] = {"starting", "loading the document", "laying out",
                                 "measuring the result", "writing ", "replacing the outputs"};

void writeText(char const* text)
{
    std::size_t length = std::strlen(text);
    while (length > 0) {
        ssize_t const n = ::write(STDERR_FILENO, text, length);
        if (n <= 0)
            return;
        text += n;
        length -= static_cast<std::size_t>(n);
    }
}

void removeTemporaries()
{
    for (int i = 0; i < kSlots; ++i) {
        if (temporaryUsed[i].load(std::memory_order_acquire) != 0)
            ::unlink(temporaryPaths[i]);
    }
}

sigset_t guardedSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGALRM);
    return set;
}

// Only async-signal-safe calls in the handlers.
extern "C" void onTimeLimit(int)
{
    removeTemporaries();
    writeText(timeoutPrefix);
    int const step = currentStep;
    writeText(kStepText[step]);
    if (step == static_cast<int>(RunGuard::Step::Writing))
        writeText(stepDetail);
    writeText("; stopped, no output written\n");
    ::_exit(ToolApplication::kTimeLimit);
}

extern "C" void onTermination(int signal)
{
    removeTemporaries();
    // End the way the signal would have ended the process without this handler.
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
    ::raise(signal);
    ::_exit(128 + signal);
}

void install(int signal, void (*handler)(int), bool keepIgnored)
{
    struct sigaction action {};
    if (keepIgnored) {
        struct sigaction old {};
        if (::sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN)
            return;
    }
    action.sa_handler = handler;
    action.sa_mask = guardedSignals();
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

void RunGuard::start(double seconds)
{
    install(SIGINT, onTermination, true);
    install(SIGTERM, onTermination, true);
    if (!(seconds > 0.0))
        return;
    std::snprintf(timeoutPrefix, sizeof timeoutPrefix, "krlayout: --time-limit of %g s ran out while ",
                  seconds);
    install(SIGALRM, onTimeLimit, false);
    struct itimerval timer {};
    double const whole = std::floor(seconds);
    timer.it_value.tv_sec = static_cast<time_t>(whole);
    timer.it_value.tv_usec = static_cast<suseconds_t>(std::ceil((seconds - whole) * 1e6));
    if (timer.it_value.tv_usec >= 1000000) {
        timer.it_value.tv_sec += 1;
        timer.it_value.tv_usec = 0;
    }
    // A zero value would disarm the timer.
    if (timer.it_value.tv_sec == 0 && timer.it_value.tv_usec == 0)
        timer.it_value.tv_usec = 1;
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

void RunGuard::stopTimer()
{
    struct itimerval timer {};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    // Ignoring SIGALRM also drops one that is pending while blocked.
    struct sigaction action {};
    action.sa_handler = SIG_IGN;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGALRM, &action, nullptr);
}

void RunGuard::setStep(Step step, std::string const& detail)
{
    SignalBlock block;
    std::size_t const n = std::min(detail.size(), kPathSize - 1);
    std::memcpy(stepDetail, detail.data(), n);
    stepDetail[n] = '\0';
    currentStep = static_cast<int>(step);
}

int RunGuard::registerTemporary(std::string const& path)
{
    if (path.size() >= kPathSize || path.find('\0') != std::string::npos)
        return -1;
    for (int i = 0; i < kSlots; ++i) {
        if (temporaryUsed[i].load(std::memory_order_relaxed) != 0)
            continue;
        std::memcpy(temporaryPaths[i], path.c_str(), path.size() + 1);
        temporaryUsed[i].store(1, std::memory_order_release);
        return i;
    }
    return -1;
}

void RunGuard::unregisterTemporary(int slot)
{
    if (slot >= 0 && slot < kSlots)
        temporaryUsed[slot].store(0, std::memory_order_release);
}

void RunGuard::expireIfDue()
{
    sigset_t pending;
    sigemptyset(&pending);
    if (::sigpending(&pending) == 0 && sigismember(&pending, SIGALRM) == 1) {
        struct sigaction current {};
        if (::sigaction(SIGALRM, nullptr, &current) == 0 && current.sa_handler == onTimeLimit)
            onTimeLimit(SIGALRM);
    }
}

RunGuard::SignalBlock::SignalBlock()
{
    sigset_t const set = guardedSignals();
    ::sigprocmask(SIG_BLOCK, &set, &previous_);
}

RunGuard::SignalBlock::~SignalBlock()
{
    ::sigprocmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace krtool
