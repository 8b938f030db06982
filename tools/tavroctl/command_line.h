#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "account/account.h"
#include "console/output.h"

// Its header takes seconds to compile: for those that use it only.
// NOLINTNEXTLINE(readability-identifier-naming): the library's own name
namespace CLI {
class App;
}

namespace tavro::tools {

/// The command line as the person typed it: what holds for every command, and the command chosen.
class CommandLine {
public:
    /// Does a command for an account. Prints the results, and throws Failure or UsageError when it
    /// could not do what was asked.
    using Command = std::function<void(Account&, const Output&)>;

    /// Where a command lets the standard streams go.
    enum class Streams {
        KeptFromLibrary,  ///< what the library writes shows with --trace only, see QuietLibrary
        AsTheyAre
    };

    CommandLine();
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// Adds the command `name`, for which the caller declares the options. They lie in what
    /// `command` holds, which runs after all of the command line is known to be right.
    /// @param example arguments to show in its help.
    CLI::App& add(const std::string& name, const std::string& description,
                  const std::string& example, Command command,
                  Streams streams = Streams::KeptFromLibrary);

    /// Parses the arguments and runs the command that they choose, or prints help or version.
    /// @return the exit status. Throws what commands throw; UsageError for wrong arguments.
    int run(int count, char** values);

    /// Tells why `run` ended with `status`.
    void tell(const std::exception& error, int status) const;

private:
    void addHelp();
    void parse(int count, char** values);
    void chooseDevice();

    std::unique_ptr<CLI::App> app_;
    std::optional<std::string> device_;  // its folder
    bool json_ = false;
    bool isAlone_ = false;  // without any word behind the program's name
    bool trace_ = false;
    std::string help_;  // to be shown in place of a command's work; empty for none
    Command command_;
    Streams streams_ = Streams::KeptFromLibrary;
};

/// The command that `run(options, account, output)` does, with the options that the command line
/// fills later.
template <typename Run, typename Options>
CommandLine::Command withOptions(Run run, std::shared_ptr<Options> options) {
    return [run, options = std::move(options)](Account& account, const Output& output) {
        run(*options, account, output);
    };
}

/// Adds all commands, in the order of the help. Made by CMake from the list of their names.
void addCommands(CommandLine& commandLine);

}  // namespace tavro::tools
