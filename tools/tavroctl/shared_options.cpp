#include "tavroctl/shared_options.h"

#include <CLI/CLI.hpp>

#include "account/account_requests.h"

namespace tavro::tools {

void addFlag(CLI::App& command, const std::string& name, bool& isSet,
             const std::string& description) {
    command.add_flag(name, isSet, description);
}

void addSendable(CLI::App& command, const std::string& name, std::string& text,
                 const std::string& description) {
    command.add_option(name, text, description)
        ->check(CLI::Validator(whyUnsendable, ""))
        ->option_text("TEXT");
}

void addEmailAddress(CLI::App& command, const std::string& name, std::string& text,
                     const std::string& description) {
    command.add_option(name, text, description)
        ->check(CLI::Validator(whyNoAddress, ""))
        ->option_text("TEXT");
}

void addPasswordOption(CLI::App& command, bool& fromStandardInput) {
    addFlag(command, "--password-stdin", fromStandardInput,
            "Take the password from the first line of standard input");
}

void addFile(CLI::App& command, std::string& file, bool isRequired) {
    const auto reason = [](const std::string& text) { return text.empty() ? "is empty" : ""; };
    command.add_option("FILE", file, "A name in the download folder, or a path with a \"/\"")
        ->check(CLI::Validator(reason, ""))
        ->required(isRequired);
}

}  // namespace tavro::tools
