// The login wizard at a terminal, opened through the library as the device's programs do.
#include <gmock/gmock.h>

#include "support/tavroctl_fixture.h"
#include "support/terminal.h"

using tavro::service::Operation;
using testing::HasSubstr;
using testing::Not;

namespace {

class Wizard : public Tavroctl {
protected:
    Wizard() { installApplication("tavro_wizard.app", "exec " TAVRO_TEST_WIZARD " \"$@\"\n"); }

    /// Starts the wizard on a device that is set up.
    static std::unique_ptr<Terminal> start() {
        auto terminal = std::make_unique<Terminal>(tavroctl({"wizard"}));
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

    /// The wizard itself, started by a shell with `arguments`.
    static Words direct(const std::string& arguments) {
        return {"/bin/sh", "-c", TAVRO_TEST_WIZARD " " + arguments};
    }

    bool isLoggedIn() const {
        return !readFile(root.file(account_files::login_marker)).empty() &&
               done({"status"})["loggedIn"] == true;
    }
};

}  // namespace

TEST_F(Wizard, OpensANewAccountOnAFreshDevice) {
    done({"setup", "--service", service.url()});
    const auto wizard = start();
    EXPECT_THAT(wizard->shown, AllOf(HasSubstr("/shop"), HasSubstr("It promises nothing")));
    wizard->type("2\n");
    answer(*wizard, {{"agree", "y"},
                     {"E-mail address: ", "ada&co"},
                     {"cannot be sent", "bad address"},
                     {"without blanks", "ada@reader.example"},
                     {"First name", "Ada"},
                     {"Last name", "Lovelace"},
                     {"Password: ", password},
                     {"again: ", "something else"},
                     {"differ", "2"},
                     {"agree", "y"},
                     {"[ada@reader.example]: ", ""},
                     {"[Ada]: ", ""},
                     {"[Lovelace]: ", ""},
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
                     {"Password: ", "this & that"},
                     {"Your choice: ", "1"},
                     {"[ada@reader.example]: ", ""},
                     {"Password: ", "wrong"},
                     {"Your choice: ", "3"},
                     {"[ada@reader.example]: ", ""},
                     {"Your choice: ", "1"},
                     {"[ada@reader.example]: ", ""},
                     {"Password: ", password},
                     {"now?", ""}});
    wizard->expect("in the background");
    EXPECT_EQ(wizard->wait(), 0);
    EXPECT_THAT(wizard->shown,
                AllOf(HasSubstr("& and < cannot"), HasSubstr("2008"), HasSubstr("a reminder")));
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
    const auto says = [](const char* text, const char* arguments, int status) {
        Terminal wizard(direct(arguments));
        wizard.expect(text);
        EXPECT_EQ(wizard.wait(), status) << text;
    };
    says("tavroctl setup", "-library </dev/null", 1);
    setUpAccount();
    says("no terminal", "-library </dev/null", 2);
    EXPECT_EQ(2, run({"wizard"}).status);
    says("--help", "--fast", 2);
    says("tavro_wizard.app ", "--version", 0);
    done({"setup", "--service", "http://127.0.0.1:1"});
    says("is the service running?", "-library", 1);
}

// Whoever starts it must not take the session of an earlier day for a login.
TEST_F(Wizard, OwnExitStatusTellsWhatTheDialogueDid) {
    setUpAccount();
    done({"login", "--password-stdin"}, password + "\n");
    for (const char* leaving : {"q\n", "\x04"}) {
        Terminal wizard(direct("-library"));
        wizard.expect("Your choice: ");
        wizard.type(leaving);
        wizard.expect("without logging in");
        EXPECT_EQ(wizard.wait(), 1);
    }
    EXPECT_TRUE(isLoggedIn()) << "leaving must not end a session";

    // Another account's address ends the session, even when the login fails.
    Terminal changed(direct("-library"));
    answer(changed, {{"Your choice: ", "1"},
                     {"[ada@reader.example]: ", "bob@reader.example"},
                     {"Password: ", "wrong"},
                     {"Your choice: ", "q"}});
    EXPECT_EQ(changed.wait(), 1);
    EXPECT_FALSE(isLoggedIn());
}

TEST_F(Wizard, ShowsTheLinesOfLongTermsAsSuch) {
    setUpAccount();
    service.answer(
        Operation::GetShopURL,
        answerXml("1003",
                  "<ShopURL>http://shop.example</ShopURL><ShopName>S</ShopName><Shopid>1</Shopid>"
                  "<TermsOfServiceUrl>http://shop.example/terms</TermsOfServiceUrl>"
                  "<TermsOfServiceText>One.\nTwo\xC2\x9B.</TermsOfServiceText>"));
    const auto wizard = start();
    wizard->type("q\n");
    EXPECT_EQ(wizard->wait(), 1);
    EXPECT_THAT(wizard->shown, HasSubstr("One.\r\nTwo\xEF\xBF\xBD.\r\n"));
}
