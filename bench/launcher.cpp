// Runs a program, without its output, and prints what it took: seconds of processor time, seconds
// until it ended, bytes of memory at most, its exit status.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>

namespace {

double now() {
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

int main(int count, char** values) {
    if (count < 2)
        return 2;
    posix_spawn_file_actions_t streams;
    ::posix_spawn_file_actions_init(&streams);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        ::posix_spawn_file_actions_addopen(&streams, stream, "/dev/null", O_WRONLY, 0);
    const double start = now();
    pid_t process = -1;
    int status = -1;
    rusage usage = {};
    if (::posix_spawn(&process, values[1], &streams, nullptr, values + 1, environ) != 0 ||
        ::wait4(process, &status, 0, &usage) != process)
        return 1;
    std::printf("%f %f %f %d\n", seconds(usage.ru_utime) + seconds(usage.ru_stime), now() - start,
                static_cast<double>(usage.ru_maxrss) * 1024,
                WIFEXITED(status) ? WEXITSTATUS(status) : -1);
    return 0;
}
