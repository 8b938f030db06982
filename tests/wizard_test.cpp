// The login wizard at a terminal, opened through the library as the device's programs do.
#include <gmock/gmock.h>

#include "support/tavroctl_fixture.h"
#include "support/terminal.h"

using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;

namespace {

class Wizard : public Tavroctl {
protected:
    Wizard() {
        const fs::path folder = TAVRO_TEST_DEVICE_ROOT "/ebrmain/bin";
        fs::create_directories(folder);
        fs::create_symlink(TAVRO_TEST_WIZARD, folder / "tavro_wizard.app");
    }

    /// Starts the wizard on a device that is set up.
    std::unique_ptr<Terminal> start() {
        words_ = {"wizard"};
        auto terminal = std::make_unique<Terminal>(argumentsFor(words_));
        terminal->expect("Your choice: ");
        return terminal;
    }

    /// Answers each question with the text behind it.
    static void answer(Terminal& wizard,
                       const std::vector<std::pair<std::string, std::string>>& dialogue) {
        for (const auto& [question, text] : dialogue) {
            wizard.expect(question);
            EXPECT_EQ(wizard.echoes(), question != "Password: " && question != "again: ");
            wizard.type(text + "\n");
        }
    }

    bool isLoggedIn() const {
        return !readFile(root_.configuration() + "/.tavro_vendor_token").empty() &&
               done({"status"})["loggedIn"] == true;
    }

    Words words_;
};

}  // namespace

TEST_F(Wizard, OpensANewAccountOnAFreshDevice) {
    done({"setup", "--service", service_.url()});
    const auto wizard = start();
    EXPECT_THAT(wizard->shown, AllOf(HasSubstr("/shop"), HasSubstr("It promises nothing")));
    wizard->type("2\n");
    answer(*wizard, {{"agree", "y"},
                     {"E-mail address: ", "ada&co"},
                     {"cannot be sent", "ada@reader.example"},
                     {"First name", "Ada"},
                     {"Last name", "Lovelace"},
                     {"Password: ", password},
                     {"again: ", password},
                     {"now?", "n"}});
    EXPECT_EQ(wizard->wait(), 0);
    EXPECT_THAT(wizard->shown, Not(HasSubstr(password)));
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(Wizard, RefusedPasswordBringsTheChoiceBack) {
    setUpAccount();
    const auto wizard = start();
    wizard->type("1\n");
    answer(*wizard, {{"[ada@reader.example]: ", ""},
                     {"Password: ", "wrong"},
                     {"Your choice: ", "3"},
                     {"[ada@reader.example]: ", ""},
                     {"Your choice: ", "1"},
                     {"[ada@reader.example]: ", ""},
                     {"Password: ", password},
                     {"now?", ""}});
    wizard->expect("in the background");
    EXPECT_EQ(wizard->wait(), 0);
    EXPECT_THAT(wizard->shown, AllOf(HasSubstr("2008"), HasSubstr("a reminder")));
    EXPECT_TRUE(isLoggedIn());
}

TEST_F(Wizard, LeavingLogsNobodyIn) {
    setUpAccount();
    const std::vector<std::pair<std::string, std::string>> dialogues[] = {
        {{"", "q"}},
        {{"", "x"}, {"1, 2, 3 or q", "2"}, {"agree", ""}, {"Your choice: ", "q"}},
        {{"", "1"}, {"[ada@reader.example]: ", ""}, {"Password: ", ""}, {"Your choice: ", "q"}},
        {{"", "1"}, {"[ada@reader.example]: ", "\x04"}},
        {{"", "1"}, {"[ada@reader.example]: ", ""}, {"Password: ", "\x03"}}};
    for (const auto& dialogue : dialogues) {
        const auto wizard = start();
        answer(*wizard, dialogue);
        EXPECT_EQ(wizard->wait(), 1) << wizard->shown;
        EXPECT_TRUE(wizard->echoes());
        EXPECT_FALSE(isLoggedIn());
    }
}

TEST_F(Wizard, SaysWhatIsMissing) {
    Words words{"wizard"};
    Terminal unconfigured(argumentsFor(words));
    unconfigured.expect("tavroctl setup");
    EXPECT_EQ(unconfigured.wait(), 1);
    EXPECT_EQ(run({"wizard"}).status, 1);
    EXPECT_THAT(run({"wizard"}).err, HasSubstr("no terminal"));
}
