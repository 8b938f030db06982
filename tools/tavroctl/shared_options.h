#pragma once

#include <string>

// NOLINTNEXTLINE(readability-identifier-naming): the library's own name
namespace CLI {
class App;
}

namespace tavro::tools {

// Options of the kinds that several commands have. What they are bound to must outlive the parsing.

/// Adds an option without a value.
void addFlag(CLI::App& command, const std::string& name, bool& isSet,
             const std::string& description);

/// Adds an option whose text goes to the service.
void addSendable(CLI::App& command, const std::string& name, std::string& text,
                 const std::string& description);

/// Adds an option whose text is the e-mail address of an account.
void addEmailAddress(CLI::App& command, const std::string& name, std::string& text,
                     const std::string& description);

/// Adds --password-stdin.
void addPasswordOption(CLI::App& command, bool& fromStandardInput);

/// Adds the argument FILE, which is a book file (see `fullPath`).
void addFile(CLI::App& command, std::string& file, bool isRequired);

}  // namespace tavro::tools
