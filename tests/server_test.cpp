// What the requests make of the service's answers, whatever those are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <regex>

#include "support/service_fixture.h"

using namespace tavro::service;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Pair;

namespace {

struct Case {
    std::string answer;
    int result;
    std::string error;
    std::string values;  ///< of the members that the request is about
};

class Requests : public ServiceFixture {
protected:
    Requests() { server.token = "tok", server.sessionId = "ses"; }

    /// Has `operation` answered as each of `cases` says, and compares what `request` makes of it,
    /// and `values` behind it.
    void expect(Operation operation, const std::vector<Case>& cases,
                const std::function<int()>& request, const std::function<std::string()>& values) {
        for (const Case& expected : cases) {
            service.answer(operation, expected.answer);
            EXPECT_EQ(request(), expected.result) << expected.answer;
            EXPECT_EQ(server.lastError, expected.error) << expected.answer;
            EXPECT_EQ(values(), expected.values) << expected.answer;
        }
    }

    /// The elements of the last request as "name=text ", in the order sent.
    std::string sent() const {
        return std::regex_replace(lastRequest().body, std::regex("<(\\w+)>(.*)</\\w+>"), "$1=$2 ",
                                  std::regex_constants::format_no_copy);
    }

    TavroServer server{"SN-1"};
};

constexpr const char* cut = "<Answer><Error>1003</Error>";

}  // namespace

TEST_F(Requests, RegistrationNeedsTheCodeAndAToken) {
    expect(
        Operation::RegisterDevice,
        {{answerXml("1003", "<Token>t1</Token>"), 0, "1003", "t1 text"},
         {answerXml("1003", "<Token></Token>"), 1, "1003", " text"},
         {answerXml("0", "<Token>t2</Token>"), 1, "0", "t2 text"},
         {answerXml("1014", "<Token>t3</Token>"), 1, "1014", "t3 text"},
         {"", 1, "", " "},
         {"<R/>", 1, "", " "},
         {"not xml", 1, "", " "}},
        [this] { return server.RegisterDevice("cid", "cpw", "type"); },
        [this] { return server.token + " " + server.lastMessage; });
    EXPECT_EQ(sent(),
              "DeviceId=SN-1 DeviceType=type ServiceConsumerID=cid ServiceConsumerPassword=cpw "
              "ShopID=" +
                  TavroServer::shopID + " ");
}

TEST_F(Requests, AccountAndReminderHaveDifferentSuccessCodes) {
    const auto message = [this] { return server.lastMessage; };
    std::vector<Case> cases = {{answerXml("1003"), 0, "1003", "text"},
                               {answerXml("1014"), 1, "1014", "text"},
                               {answerXml(""), 1, "", "text"},
                               {"", 1, "", ""},
                               {"<A></B>", 1, "", ""},
                               {"<A><Message>m</Message></A>", 1, "", "m"}};
    expect(
        Operation::CreateUser, cases, [this] { return server.CreateUser("e", "f", "l", "p&<"); },
        message);
    EXPECT_EQ(sent(), "Email=e FirstName=f LastName=l Password=p&< Token=tok ");
    std::swap(cases[0].result, cases[1].result);
    expect(
        Operation::ForgetPassword, cases, [this] { return server.forgetPassword("e"); }, message);
    EXPECT_EQ(sent(), "EmailID=e Token=tok ");
}

TEST_F(Requests, LoginNeedsTheCodeAndASession) {
    const std::string rest = "<VendorToken>vt</VendorToken><VendorId>vi</VendorId>";
    expect(
        Operation::LoginUser,
        {{answerXml("1003", "<SessionID>s1</SessionID>" + rest), 0, "1003", "s1 vt vi text"},
         {answerXml("1003", rest), 1, "1003", " vt vi text"},
         {answerXml("7", "<SessionID>s2</SessionID>" + rest), 1, "7", "s2 vt vi text"},
         {"<A><Message>m</Message><SessionID>s3</SessionID>" + rest + "</A>", 1, "", "   "},
         {"", 1, "", "   "}},
        [this] { return server.loginUser("e", "p"); },
        [this] {
            return server.sessionId + " " + server.vendorToken + " " + server.vendorId + " " +
                   server.lastMessage;
        });
    EXPECT_EQ(sent(), "EmailID=e Password=p DeviceID=SN-1 Token=tok ");
}

TEST_F(Requests, ShopCountsSilenceAsSuccessAndACompleteRefusalAsFailure) {
    const std::string shop = "<ShopURL>u</ShopURL><ShopName>n</ShopName><Shopid>i</Shopid>";
    const std::string link = "<TermsOfServiceUrl>link</TermsOfServiceUrl>";
    const std::string text = "<TermsOfServiceText>terms</TermsOfServiceText>";
    expect(
        Operation::GetShopURL,
        {{"", 0, "", "/////"},
         {"<R/>", 1, "", "/////"},
         {"<R", 1, "", "/////"},
         {answerXml("1003"), 0, "1003", "////text/"},
         {answerXml("1003", shop + link + text), 0, "1003", "u/n/i/terms/text/terms"},
         {answerXml("9", shop + link), 0, "9", "u/n/i/link/text/"},
         {answerXml("9", shop + text), 1, "9", "u/n/i/terms/text/terms"},
         {answerXml("9", "<ShopURL>u</ShopURL>" + text), 0, "9", "u///terms/text/terms"},
         {"", 0, "", "/////"}},
        [this] { return server.getShopInfo("cid", "cpw", "type"); },
        [this] {
            return server.shopUrl + "/" + server.shopName + "/" + server.shopId + "/" +
                   server.termsOfServiceUrl + "/" + server.lastMessage + "/" +
                   server.termsOfServiceText;
        });
    EXPECT_EQ(sent(),
              "DeviceId=SN-1 DeviceType=type ServiceConsumerID=cid ServiceConsumerPassword=cpw ");
}

TEST_F(Requests, SyncAcceptsEveryReadableAnswer) {
    const std::string books =
        "<AddedItems><ItemsResponse><ItemID>5</ItemID></ItemsResponse></AddedItems>"
        "<CurrentServerTime>now</CurrentServerTime>";
    expect(
        Operation::SysnWithCloud,
        {{answerXml("77", books), 0, "77", "text now 1"},
         {"", 1, "", "  1"},  // nothing came, so that nothing was parsed
         {"<R/>", 1, "", "  0"},
         {"<R></S>", 1, "", "  0"}},
        [this] { return server.syncWithCloud("then"); },
        [this] {
            return server.lastMessage + " " + server.serverTime + " " +
                   std::to_string(server.getAddedBooks().size());
        });
    EXPECT_EQ(sent(), "SessionID=ses Token=tok LastSynDateTime=then ");
}

TEST_F(Requests, UploadIsJudgedByItsAnswerAlone) {
    writeFile(folder / "new.txt", "new");
    expect(
        Operation::UploadContent,
        {{answerXml("1003"), 0, "1003", "text"},
         {answerXml("1014"), 1, "1014", "text"},
         {cut, 0, "1003", ""},
         {"<A></B>", 1, "", ""},
         {"", 1, "", ""}},
        [this] { return server.uploadContent("-3", folder / "new.txt"); },
        [this] { return server.lastMessage; });
    EXPECT_THAT(lastRequest().fields, ElementsAre(Pair("Token", "tok"), Pair("SessionId", "ses"),
                                                  Pair("ItemId", "-3"), Pair("file", "new.txt")));
}

TEST_F(Requests, DumpsShowExactlyTheAnswersBytes) {
    const std::string odd = "<A>\0</A>"s;
    service.answer(Operation::RegisterDevice, odd);
    EXPECT_THAT(standardErrorOf([this] { server.RegisterDevice("c", "p", "t"); }),
                EndsWith("Register responce is [" + odd + "]\n"));
    service.answer(Operation::SysnWithCloud, odd);
    EXPECT_THAT(standardErrorOf([this] { server.syncWithCloud("0"); }), EndsWith(odd + "\n"));
    service.answer(Operation::UploadContent, odd);
    writeFile(folder / "new.txt", "new");
    ::testing::internal::CaptureStdout();
    server.uploadContent("1", folder / "new.txt");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), odd + "\n");
}

TEST_F(Requests, LongBodyIsSentCut) {
    const std::string longText(3000, 'p');
    server.loginUser("e", longText);
    EXPECT_EQ(lastRequest().body.size(), 2047U);
    server.RegisterDevice("c", longText, "t");
    EXPECT_EQ(lastRequest().body.size(), 2047U);
}
