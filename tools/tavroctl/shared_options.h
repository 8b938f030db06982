#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tavro::tools {

// Options that several commands have. What they are bound to must outlive the parsing.

/// Adds an option whose text goes to the service.
void addSendable(CLI::App& command, const std::string& name, std::string& text,
                 const std::string& description);

/// Adds --password-stdin.
void addPasswordOption(CLI::App& command, bool& fromStandardInput);

/// Adds the argument FILE, which is a book file (see `fullPath`).
CLI::Option& addFile(CLI::App& command, std::string& file);

}  // namespace tavro::tools
