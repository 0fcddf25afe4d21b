// Records the fingerprint of every layout of the corpus (HarnessTree.h) with the library it is
// linked against, one tree per child process with a time limit, so that layouts that do not end
// are recorded as "hang" rather than stopping the recording.
//
//   record_fingerprints SHARD SHARDS SECONDS_BASE SECONDS_PER_SEGMENT > part.txt
//
// Prints one line per layout: kind size seed type fingerprint (16 hex digits) or "hang".
#include "HarnessTree.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: %s SHARD SHARDS SECONDS_BASE SECONDS_PER_SEGMENT\n", argv[0]);
        return 2;
    }
    int const shard = std::atoi(argv[1]);
    int const shards = std::atoi(argv[2]);
    double const base = std::atof(argv[3]);
    double const perSegment = std::atof(argv[4]);
    long job = 0;
    for (harness::CorpusGroup const& g : harness::FingerprintCorpus()) {
        for (int i = 0; i < g.count; ++i) {
            unsigned const seed = harness::CorpusSeed(g, i);
            for (e_LayOutType type : {LayOutByDiameter, LayOutByLength}) {
                if (job++ % shards != shard) {
                    continue;
                }
                int fds[2];
                if (pipe(fds) != 0) {
                    return 3;
                }
                std::fflush(stdout);
                pid_t const pid = fork();
                if (pid == 0) {
                    close(fds[0]);
                    alarm(static_cast<unsigned>(base + perSegment * g.size));
                    unsigned long long const fp = harness::RunTree(g.kind, seed, g.size, type);
                    ssize_t const w = write(fds[1], &fp, sizeof fp);
                    _exit(w == static_cast<ssize_t>(sizeof fp) ? 0 : 4);
                }
                close(fds[1]);
                unsigned long long fp = 0;
                ssize_t const r = read(fds[0], &fp, sizeof fp);
                close(fds[0]);
                int status = 0;
                waitpid(pid, &status, 0);
                if (r == static_cast<ssize_t>(sizeof fp) && WIFEXITED(status) && WEXITSTATUS(status) == 0) {
                    std::printf("%s %d %u %d %016llx\n", harness::KindName(g.kind), g.size, seed,
                                static_cast<int>(type), fp);
                } else if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) {
                    std::printf("%s %d %u %d hang\n", harness::KindName(g.kind), g.size, seed,
                                static_cast<int>(type));
                } else {
                    std::fprintf(stderr, "tree %s %d %u type %d failed (status %d)\n",
                                 harness::KindName(g.kind), g.size, seed, static_cast<int>(type), status);
                    return 5;
                }
            }
        }
    }
    return 0;
}
