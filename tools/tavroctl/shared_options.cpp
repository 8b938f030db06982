#include "tavroctl/shared_options.h"

#include "account/account_requests.h"

namespace tavro::tools {

void addSendable(CLI::App& command, const std::string& name, std::string& text,
                 const std::string& description) {
    command.add_option(name, text, description)
        ->check(CLI::Validator(whyUnsendable, ""))
        ->option_text("TEXT");
}

void addPasswordOption(CLI::App& command, bool& fromStandardInput) {
    command.add_flag("--password-stdin", fromStandardInput,
                     "Take the password from the first line of standard input");
}

CLI::Option& addFile(CLI::App& command, std::string& file) {
    const auto reason = [](const std::string& text) { return text.empty() ? "is empty" : ""; };
    return *command
                .add_option("FILE", file, "A name in the download folder, or a path with a \"/\"")
                ->check(CLI::Validator(reason, ""));
}

}  // namespace tavro::tools
