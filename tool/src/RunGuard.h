// Bounds one run of the tool in time and keeps it from leaving temporary files behind.
//
// The time limit is a real-time interval timer started before the document is read; when it runs
// out, SIGALRM ends the process with ToolApplication::kTimeLimit, saying which step was running.
// SIGINT and SIGTERM end it as they would anyway, with the usual exit status. In all three cases
// the temporary files registered here are removed first. Everything the signal handlers touch
// lives in fixed-size static storage, so that they only make async-signal-safe calls.
#pragma once

#include <csignal>
#include <string>

namespace krtool {

class RunGuard {
public:
    // What the run is doing; named in the message when the time limit runs out.
    enum class Step { Starting, Loading, LayingOut, Measuring, Writing, Replacing };

    // Installs the handlers (SIGINT and SIGTERM keep being ignored when they were ignored on
    // entry) and starts the timer: seconds > 0 bounds the run, 0 leaves it unbounded.
    static void start(double seconds);
    // Stops the timer; a timeout already due but not yet delivered is dropped.
    static void stopTimer();

    // The current step; detail (an output's path for Writing) is kept up to a fixed length.
    static void setStep(Step step, std::string const& detail = std::string());

    // Registers a temporary file to be removed when a signal ends the run; returns its slot, or
    // -1 when the table is full (the file is then only removed by its owner). Call with the
    // signals blocked (SignalBlock) between creating the file and registering it.
    static int registerTemporary(std::string const& path);
    static void unregisterTemporary(int slot);

    // Ends the run now as an expired time limit would, if the timer has run out while its signal
    // was blocked; returns when it has not.
    static void expireIfDue();

    // Blocks SIGINT, SIGTERM and SIGALRM for its lifetime, so that a file created or renamed
    // within it and the table of temporary files always agree.
    class SignalBlock {
    public:
        SignalBlock();
        ~SignalBlock();
        SignalBlock(SignalBlock const&) = delete;
        SignalBlock& operator=(SignalBlock const&) = delete;

    private:
        sigset_t previous_;
    };
};

}  // namespace krtool
