#include <CLI/CLI.hpp>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>

#include "account/account_requests.h"
#include "console/quiet_library.h"
#include "platform/device_paths.h"
#include "session/account_keys.h"
#include "tavroctl/commands.h"

namespace {

using tavro::tools::Arguments;
using tavro::tools::Output;

constexpr int exit_failed = 1;
constexpr int exit_wrong_usage = 2;

using Command = void (*)(const Arguments&, const Output&);

/// The arguments, and the command that the command line chose.
class CommandLine {
public:
    CommandLine() {
        arguments.folder = device_paths::configuration_folder;
        app_.require_subcommand(1);
        app_.fallthrough();
        app_.set_version_flag("--version", "tavroctl " TAVRO_VERSION);
        app_.add_option("--config", arguments.folder, "Configuration folder")
            ->capture_default_str();
        app_.add_flag("--json", arguments.json, "Results as JSON, errors as a JSON line");
        app_.add_flag("--trace", arguments.trace, "Show the exchange with the service");
        app_.footer(
            "Passwords come from the terminal or, with --password-stdin, from standard input.\n"
            "Exit status: 0 done, 1 failed, 2 wrong use. A first run:\n"
            "  tavroctl setup --service http://127.0.0.1:8080 --email ada@reader.example\n"
            "  tavroctl register; tavroctl signup; tavroctl login\n"
            "  tavroctl sync; tavroctl books; tavroctl download --all\n"
            "As the library browser sees a book (FILE: a name in the download folder, or a path):\n"
            "  tavroctl status FILE; tavroctl info FILE; tavroctl cover FILE --ascii");
        addAccountCommands();
        addBookCommands();
        addBrowserCommands();
        addChangeCommands();
    }

    void parse(int count, char** values) {
        // The parser sets nothing before all is right, but errors have to know.
        arguments.json = std::find(values, values + count, std::string("--json")) != values + count;
        app_.parse(count, values);
        if (arguments.folder != device_paths::configuration_folder)
            arguments.folder = std::filesystem::absolute(arguments.folder).lexically_normal();
    }

    /// Prints what `error` has to say (help and version are such, too). @return the exit status.
    int report(const CLI::ParseError& error) const {
        if (error.get_exit_code() == 0)
            return app_.exit(error);
        const std::vector<std::string> rest = app_.remaining();
        const bool unknown = app_.get_subcommands().empty() && !rest.empty() && rest[0][0] != '-';
        reportWrongUse(unknown ? "there is no command '" + rest[0] + "'" : error.what());
        return exit_wrong_usage;
    }

    /// Tells that the command line is wrong, and where the right one is explained.
    void reportWrongUse(const std::string& what) const {
        const auto chosen = app_.get_subcommands();
        const std::string name = chosen.empty() ? "" : chosen[0]->get_name() + " ";
        Output("tavroctl", arguments.json)
            .error(tavro::tools::Failure(what, "see 'tavroctl " + name + "--help'"));
    }

    Arguments arguments;
    Command command = nullptr;

private:
    CLI::App* add(const char* name, const char* description, const char* example, Command chosen) {
        CLI::App* added = app_.add_subcommand(name, description);
        added->footer(std::string("Example:\n  tavroctl ") + example);
        added->callback([this, chosen] { command = chosen; });
        return added;
    }

    void addSetting(CLI::App* setup, const char* option, const char* key, const char* description) {
        addSendable(setup, option, arguments.settings[key], description);
    }

    /// Adds an option whose text goes to the service.
    static void addSendable(CLI::App* subcommand, const char* option, std::string& text,
                            const char* description) {
        subcommand->add_option(option, text, description)
            ->check(CLI::Validator(tavro::tools::whyUnsendable, ""))
            ->option_text("TEXT");
    }

    void addAccountCommands() {
        auto* setup = add("setup", "Write the account configuration, keeping what it holds",
                          "setup --service http://127.0.0.1:8080 --email ada@reader.example",
                          tavro::tools::setUp);
        setup->add_option("--service", arguments.service, "The service, as http://HOST:PORT");
        addSetting(setup, "--email", account_keys::email, "E-mail address of the account");
        addSetting(setup, "--first-name", account_keys::first_name, "First name, sent by signup");
        addSetting(setup, "--last-name", account_keys::last_name, "Last name, sent by signup");
        addSetting(setup, "--serial", account_keys::serial_number,
                   "Serial number (default: a random one)");
        addSetting(setup, "--consumer", account_keys::consumer_id,
                   "Consumer ID sent at registration");
        addSetting(setup, "--type", account_keys::device_type, "Device type sent at registration");
        setup->add_option("--folder", arguments.settings[account_keys::download_folder],
                          "Folder of the downloaded books");

        add("register", "Register the device with the service", "register",
            tavro::tools::registerCommand)
            ->add_flag("--renew", arguments.renew, "Also if it is registered; ends the session");
        addPasswordOption(add("signup", "Open an account with the configured e-mail address",
                              "signup", tavro::tools::signUp));
        addPasswordOption(add("login", "Log in and keep the session for later commands",
                              "login --password-stdin < password.txt", tavro::tools::logInCommand));
        addSendable(add("remind", "Have a password reminder sent", "remind ada@reader.example",
                        tavro::tools::remind),
                    "EMAIL", arguments.email, "Address (default: the configured one)");
        add("shop", "Show the shop's details", "shop", tavro::tools::shop);
        add("wizard", "Log in with the device's login wizard", "wizard", tavro::tools::wizard);
        add("logout", "Remove all local state of the account and its books", "logout",
            tavro::tools::logOut)
            ->add_flag("--yes", arguments.yes, "Without asking first");
    }

    void addPasswordOption(CLI::App* subcommand) {
        subcommand->add_flag("--password-stdin", arguments.passwordFromStandardInput,
                             "Take the password from the first line of standard input");
    }

    void addBookCommands() {
        add("sync", "Fetch the catalogue", "sync --background", tavro::tools::sync)
            ->add_flag("--background", arguments.background,
                       "Start the device's synchronisation application instead: all in one round");
        add("books", "List the books of the catalogue", "books", tavro::tools::listBooks);
        auto* download =
            add("download", "Download books", "download --all", tavro::tools::download);
        download->add_option("ITEM", arguments.items, "Item IDs, also of books that are there");
        download->add_flag("--all", arguments.all, "All books that are not there yet");
        add("map", "Show which file belongs to which item", "map", tavro::tools::showMap);
    }

    CLI::Option* addFile(CLI::App* subcommand, const char* description) {
        const auto reason = [](const std::string& text) { return text.empty() ? "is empty" : ""; };
        return subcommand->add_option("FILE", arguments.file, description)
            ->check(CLI::Validator(reason, ""));
    }

    void addBrowserCommands() {
        constexpr const char* file = "A name in the download folder, or a path with a \"/\"";
        addFile(add("status", "Show where things stand, or whether a file is present or pending",
                    "status novel.epub", tavro::tools::status),
                file);
        addFile(add("info", "Show what the library browser learns about a book", "info novel.epub",
                    tavro::tools::info),
                file)
            ->required();
        auto* cover = add("cover", "Show or save a book's cover",
                          "cover novel.epub --output cover.png", tavro::tools::cover);
        addFile(cover, file)->required();
        cover->add_option("--size", arguments.size, "Pixels at most, each from 1 to 8192")
            ->option_text("WxH [300x400]");
        cover->add_option("--output", arguments.outputFile, "Write it as a grey PNG")
            ->option_text("FILE.png");
        cover->add_flag("--ascii", arguments.ascii, "Print it as a picture of characters");
    }

    void addChangeCommands() {
        auto* replace = add("replace", "Replace a book's file and journal that for the service",
                            "replace novel.epub corrected/novel-2.epub", tavro::tools::replace);
        replace->add_option("OLD", arguments.oldName, "A file of 'tavroctl map'")->required();
        replace->add_option("NEW", arguments.newPath, "Path of the new file")->required();
        replace->add_flag("--upload", arguments.upload,
                          "Upload it at once: 5 attempts, 5 seconds after each that fails");
        add("replay", "Upload the journalled changes", "replay", tavro::tools::replay);
        add("journal", "Show the changes still to be replayed", "journal",
            tavro::tools::showJournal);
    }

    CLI::App app_{"Works with the Tavro cloud book service as a reader's applications do"};
};

int run(const CommandLine& commandLine) {
    const Output output("tavroctl", commandLine.arguments.json);
    try {
        std::optional<tavro::tools::QuietLibrary> quiet;
        if (commandLine.command != tavro::tools::wizard)
            quiet.emplace(output, commandLine.arguments.trace);
        commandLine.command(commandLine.arguments, output);
        return 0;
    } catch (const tavro::tools::UsageError& usageError) {
        commandLine.reportWrongUse(usageError.what());
        return exit_wrong_usage;
    } catch (const tavro::tools::Failure& failure) {
        output.error(failure);
    } catch (const std::exception& error) {
        output.error(tavro::tools::Failure(error.what()));
    }
    return exit_failed;
}

/// Does what the command line says. @return the exit status.
int parseAndRun(int count, char** values) {
    CommandLine commandLine;
    try {
        commandLine.parse(count, values);
    } catch (const CLI::ParseError& error) {
        return commandLine.report(error);
    }
    return run(commandLine);
}

}  // namespace

int main(int count, char** values) {
    std::setlocale(LC_CTYPE, "C.UTF-8");  // the service's texts are UTF-8, whatever the terminal
    try {
        return parseAndRun(count, values);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavroctl: %s\n", error.what());
        return exit_failed;
    }
}
