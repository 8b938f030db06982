#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "service.h"
#include "support/device_root.h"
#include "support/shell_guard.h"
#include "support/temporary_folder.h"

using Words = std::vector<std::string>;

inline const std::string password = "correct horse";

struct Outcome {
    int status;  ///< exit status, or minus the signal that ended the program
    std::string out;
    std::string err;
};

/// Waits until `process` has ended. @return its exit status, or minus the signal that ended it.
inline int statusOf(pid_t process) {
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

/// The command-line tool as a process of its own, with a running service and a fresh device root.
class Tavroctl : public testing::Test {
protected:
    Tavroctl() : service_(optionsFor(folder_)) { guardStartedPrograms(folder_); }

    static tavro::service::Options optionsFor(const TemporaryFolder& folder) {
        tavro::service::Options options;
        options.books = folder / "books";
        writeFile(options.books / "first.txt", "The first book.\n");
        writeFile(options.books / "second.txt", "The second book.\n");
        return options;
    }

    static std::vector<char*> argumentsFor(Words& words) {
        words.insert(words.begin(), TAVRO_TEST_TAVROCTL);
        std::vector<char*> arguments;
        for (auto& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        return arguments;
    }

    /// Starts the tool with `input` as its standard input, writing to files of the test.
    pid_t start(Words words, const std::string& input) const {
        writeFile(folder_ / "in", input);
        posix_spawn_file_actions_t streams;
        ::posix_spawn_file_actions_init(&streams);
        const int created = O_WRONLY | O_CREAT | O_TRUNC;
        const std::string in = folder_ / "in", out = folder_ / "out", err = folder_ / "err";
        ::posix_spawn_file_actions_addopen(&streams, 0, in.c_str(), O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&streams, 1, out.c_str(), created, 0600);
        ::posix_spawn_file_actions_addopen(&streams, 2, err.c_str(), created, 0600);
        pid_t process = -1;
        const int error = ::posix_spawn(&process, TAVRO_TEST_TAVROCTL, &streams, nullptr,
                                        argumentsFor(words).data(), environ);
        ::posix_spawn_file_actions_destroy(&streams);
        if (error != 0)  // a signal to process -1 would go to all that there are
            throw std::runtime_error("tavroctl cannot be started");
        return process;
    }

    Outcome run(const Words& words, const std::string& input = {}) const {
        const int status = statusOf(start(words, input));
        return {status, readFile(folder_ / "out"), readFile(folder_ / "err")};
    }

    /// Runs a command that must succeed with nothing but one JSON document on its output.
    nlohmann::json done(Words words, const std::string& input = {}) const {
        words.push_back("--json");
        const Outcome outcome = run(words, input);
        EXPECT_EQ(0, outcome.status) << words[0] << ": " << outcome.err;
        EXPECT_EQ("", outcome.err) << words[0];
        return nlohmann::json::parse(outcome.out);
    }

    /// Runs a command that must fail with status 1 and returns its error line.
    nlohmann::json failed(Words words, const std::string& input = {}) const {
        words.push_back("--json");
        const Outcome outcome = run(words, input);
        EXPECT_EQ(1, outcome.status) << words[0];
        return nlohmann::json::parse(outcome.err);
    }

    void setUpAccount() const {
        done({"setup", "--service", service_.url(), "--email", "ada@reader.example", "--first-name",
              "Ada", "--last-name", "Lovelace"});
        done({"register"});
        done({"signup", "--password-stdin"}, password + "\n");
    }

    void downloadBooks() const {
        setUpAccount();
        done({"login", "--password-stdin"}, password + "\n");
        EXPECT_EQ(2, done({"sync"})["books"]);
        done({"download", "--all"});
    }

    /// Puts the shell script `text` where the library starts the application `name`.
    static void installApplication(const std::string& name, const std::string& text) {
        writeProgram(deviceFile("ebrmain/bin/" + name), text);
    }

    /// Full path of the device's file `path`.
    static std::string deviceFile(const std::string& path) {
        return std::string(TAVRO_TEST_DEVICE_ROOT) + "/" + path;
    }

    std::size_t requests(tavro::service::Operation operation) const {
        std::size_t count = 0;
        for (const auto& request : service_.requests())
            count += request.operation == operation;
        return count;
    }

    std::string book(const std::string& name) const {
        return readFile(std::filesystem::path(root_.syncFolder()) / name);
    }

    DeviceRoot root_;
    TemporaryFolder folder_;
    tavro::service::Service service_;
};
