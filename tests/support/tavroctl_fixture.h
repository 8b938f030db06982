#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "support/device_root.h"
#include "support/processes.h"
#include "support/shell_guard.h"
#include "support/test_service.h"

inline const std::string password = "correct horse";

struct Outcome {
    int status;  ///< exit status, or minus the signal that ended the program
    std::string out;
    std::string err;
};

/// The command-line tool as a process of its own, with a running service and a fresh device root.
class Tavroctl : public testing::Test {
protected:
    Tavroctl() { guardStartedPrograms(folder); }

    /// The tool's program and `words` behind it.
    static Words tavroctl(Words words) {
        words.insert(words.begin(), TAVRO_TEST_TAVROCTL);
        return words;
    }

    /// Starts the tool with `input` as its standard input, writing to files of the test.
    pid_t start(const Words& words, const std::string& input) const {
        writeFile(folder / "in", input);
        return ::start(tavroctl(words),
                       {{0, folder / "in"}, {1, folder / "out"}, {2, folder / "err"}});
    }

    Outcome run(const Words& words, const std::string& input = {}) const {
        const int status = statusOf(start(words, input));
        return {status, readFile(folder / "out"), readFile(folder / "err")};
    }

    /// Runs a command that must succeed with nothing but one JSON document on its output.
    nlohmann::json done(Words words, const std::string& input = {}) const {
        words.push_back("--json");
        const Outcome outcome = run(words, input);
        EXPECT_EQ(0, outcome.status) << words[0] << ": " << outcome.err;
        EXPECT_EQ("", outcome.err) << words[0];
        return nlohmann::json::parse(outcome.out);
    }

    /// Runs a command that must fail with `status` and returns its error line.
    nlohmann::json failed(Words words, const std::string& input = {}, int status = 1) const {
        words.push_back("--json");
        const Outcome outcome = run(words, input);
        EXPECT_EQ(status, outcome.status) << words[0];
        return nlohmann::json::parse(outcome.err);
    }

    void setUpAccount() const {
        done({"setup", "--service", service.url(), "--email", "ada@reader.example", "--first-name",
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
        std::filesystem::remove(deviceFile("ebrmain/bin/" + name));  // a link to the real one
        writeProgram(deviceFile("ebrmain/bin/" + name), text);
    }

    /// Full path of the device's file `path`.
    static std::string deviceFile(const std::string& path) { return deviceRoot() + "/" + path; }

    std::string book(const std::string& name) const {
        return readFile(std::filesystem::path(root.syncFolder()) / name);
    }

    DeviceRoot root;
    TemporaryFolder folder;
    TestService service{folder};
};
