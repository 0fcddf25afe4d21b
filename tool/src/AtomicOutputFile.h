// An output file that appears complete or not at all: it is written to a temporary file in the
// same folder and renamed over the target only when everything was written. The temporary file is
// registered with RunGuard, which removes it when a signal ends the run.
#pragma once

#include <fstream>
#include <string>

namespace krtool {

class AtomicOutputFile {
public:
    // Creates the temporary file; throws std::runtime_error when the folder cannot take it.
    explicit AtomicOutputFile(std::string path);
    // Removes the temporary file unless commit() succeeded.
    ~AtomicOutputFile();
    AtomicOutputFile(AtomicOutputFile const&) = delete;
    AtomicOutputFile& operator=(AtomicOutputFile const&) = delete;

    std::ostream& stream() { return stream_; }
    // Flushes and closes the temporary file; throws on any failure (the temporary file is
    // removed).
    void close();
    // Closes the temporary file unless done, and renames it over the target; throws on any
    // failure (the temporary file is removed).
    void commit();

    std::string const& path() const { return path_; }
    std::string const& temporaryPath() const { return temporary_; }

private:
    void discard();

    std::string path_;
    std::string temporary_;
    std::ofstream stream_;
    int slot_ = -1;           // in RunGuard's table of temporary files
    bool committed_ = false;
};

}  // namespace krtool
