#include "support/processes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

std::vector<char*> argumentsOf(Words& words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return arguments;
}

pid_t start(Words words, const std::map<int, std::string>& files) {
    posix_spawn_file_actions_t streams;
    ::posix_spawn_file_actions_init(&streams);
    for (const auto& [stream, file] : files)
        ::posix_spawn_file_actions_addopen(
            &streams, stream, file.c_str(),
            stream == STDIN_FILENO ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t process = -1;
    const std::vector<char*> arguments = argumentsOf(words);
    const int error =
        ::posix_spawn(&process, arguments[0], &streams, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&streams);
    if (error != 0)  // a signal to process -1 would go to all that there are
        throw std::runtime_error(words[0] + " cannot be started");
    return process;
}

int statusOf(pid_t process) {
    int status = -1;
    EXPECT_GT(::waitpid(process, &status, 0), 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

void inProcesses(int count, const std::function<void(int)>& action) {
    std::vector<pid_t> processes;
    for (int number = 0; number < count; ++number) {
        processes.push_back(::fork());
        if (processes.back() == 0) {
            action(number);
            ::_exit(testing::Test::HasFailure() ? 1 : 0);
        }
    }
    for (const pid_t process : processes)
        EXPECT_EQ(statusOf(process), 0);
}
