#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <string>

/// A folder of its own for one test, removed with all it holds.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Path of `name` in the folder.
    std::string operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
    const pid_t owner_;
};

/// Content of the file `path`; empty when it cannot be read.
std::string readFile(const std::filesystem::path& path);

/// Makes `content` the whole content of the file `path`, creating its folder.
void writeFile(const std::filesystem::path& path, const std::string& content);

/// Makes the shell script `text` the program `path`.
void writeProgram(const std::filesystem::path& path, const std::string& text);

/// Text of a complete account configuration whose books go to the folder `syncFolder`.
std::string accountConfiguration(const std::string& syncFolder);

/// Adds `books`, file names with their items, to the book map of the folder `configuration`.
void addToMap(const std::string& configuration, const std::map<std::string, int>& books);
