#include "tavroserver.h"

#include <gtest/gtest.h>

#include "support/service_fixture.h"

using namespace tavro::service;
using namespace std::string_literals;

namespace {

class Requests : public ServiceFixture {
protected:
    Requests() { server.token = "tok", server.sessionId = "ses"; }

    TavroServer server{"SN-1"};
};

struct Case {
    std::string answer;
    int result;
    std::string error;
    std::string value;  ///< of the member that the request is about
};

constexpr const char* malformed = "<Answer><Error>1003</Error>";

}  // namespace

TEST_F(Requests, RegistrationNeedsTheCodeAndAToken) {
    const Case cases[] = {{answerXml("1003", "<Token>t1</Token>"), 0, "1003", "t1"},
                          {answerXml("1003", "<Token></Token>"), 1, "1003", ""},
                          {answerXml("1003"), 1, "1003", ""},
                          {answerXml("0", "<Token>t2</Token>"), 1, "0", "t2"},
                          {answerXml("1014", "<Token>t3</Token>"), 1, "1014", "t3"},
                          {"", 1, "", ""},
                          {"<R/>", 1, "", ""},
                          {"not xml", 1, "", ""}};
    for (const Case& expected : cases) {
        answer(Operation::RegisterDevice, expected.answer);
        EXPECT_EQ(server.RegisterDevice("cid", "cpw", "type"), expected.result) << expected.answer;
        EXPECT_EQ(server.lastError, expected.error);
        EXPECT_EQ(server.token, expected.value);
        EXPECT_EQ(server.lastMessage, expected.error.empty() ? "" : "text");
    }
    EXPECT_NE(lastRequest().body.find("<DeviceId>SN-1</DeviceId>"), std::string::npos);
    EXPECT_NE(lastRequest().body.find("<ShopID>" + TavroServer::shopID + "</ShopID>"),
              std::string::npos);
}

TEST_F(Requests, AccountAndReminderHaveDifferentSuccessCodes) {
    const Case cases[] = {{answerXml("1003"), 0, "1003", ""},
                          {answerXml("1014"), 1, "1014", ""},
                          {answerXml(""), 1, "", ""},
                          {"", 1, "", ""},
                          {"<A></B>", 1, "", ""},
                          {"<A><Message>m</Message></A>", 1, "", ""}};
    for (const Case& expected : cases) {
        answer(Operation::CreateUser, expected.answer);
        EXPECT_EQ(server.CreateUser("e", "f", "l", "p&<"), expected.result) << expected.answer;
        EXPECT_EQ(server.lastError, expected.error);
        answer(Operation::ForgetPassword, expected.answer);
        EXPECT_EQ(server.forgetPassword("e"), expected.error == "1014" ? 0 : 1);
        EXPECT_EQ(server.lastError, expected.error);
    }
    answer(Operation::CreateUser, "");
    server.CreateUser("e", "f", "l", "p&<");
    EXPECT_NE(lastRequest().body.find("<Password>p&<</Password>"), std::string::npos);
}

TEST_F(Requests, LoginNeedsTheCodeAndASession) {
    const std::string rest = "<VendorToken>vt</VendorToken><VendorId>vi</VendorId>";
    const Case cases[] = {
        {answerXml("1003", "<SessionID>s1</SessionID>" + rest), 0, "1003", "s1"},
        {answerXml("1003", rest), 1, "1003", ""},
        {answerXml("7", "<SessionID>s2</SessionID>" + rest), 1, "7", "s2"},
        {"<A><Message>m</Message><SessionID>s3</SessionID>" + rest + "</A>", 1, "", ""},
        {"", 1, "", ""}};
    for (const Case& expected : cases) {
        answer(Operation::LoginUser, expected.answer);
        EXPECT_EQ(server.loginUser("e", "p"), expected.result) << expected.answer;
        EXPECT_EQ(server.sessionId, expected.value);
        EXPECT_EQ(server.lastError, expected.error);
        const bool read = !expected.error.empty();
        EXPECT_EQ(server.lastMessage, read ? "text" : "");
        EXPECT_EQ(server.vendorToken, read ? "vt" : "");
        EXPECT_EQ(server.vendorId, read ? "vi" : "");
    }
    EXPECT_NE(lastRequest().body.find("<DeviceID>SN-1</DeviceID>"), std::string::npos);
}

TEST_F(Requests, ShopCountsSilenceAsSuccessAndACompleteRefusalAsFailure) {
    const std::string shop = "<ShopURL>u</ShopURL><ShopName>n</ShopName><Shopid>i</Shopid>";
    const std::string link = "<TermsOfServiceUrl>link</TermsOfServiceUrl>";
    const std::string text = "<TermsOfServiceText>terms</TermsOfServiceText>";
    const Case cases[] = {{"", 0, "", ""},
                          {"<R/>", 1, "", ""},
                          {"<R", 1, "", ""},
                          {answerXml("1003"), 0, "1003", ""},
                          {answerXml("1003", shop + link + text), 0, "1003", "terms"},
                          {answerXml("9", shop + link), 0, "9", "link"},
                          {answerXml("9", shop + text), 1, "9", "terms"},
                          {answerXml("9", "<ShopURL>u</ShopURL>" + text), 0, "9", "terms"}};
    for (const Case& expected : cases) {
        answer(Operation::GetShopURL, expected.answer);
        EXPECT_EQ(server.getShopInfo("cid", "cpw", "type"), expected.result) << expected.answer;
        EXPECT_EQ(server.lastError, expected.error);
        EXPECT_EQ(server.termsOfServiceUrl, expected.value);
        EXPECT_EQ(server.termsOfServiceText, expected.value == "link" ? "" : expected.value);
    }
    EXPECT_EQ(server.shopId, "");
    const std::string body = lastRequest().body;
    for (const char* part : {"<DeviceId>SN-1<", "<DeviceType>type<", "<ServiceConsumerID>cid<",
                             "<ServiceConsumerPassword>cpw<"})
        EXPECT_NE(body.find(part), std::string::npos) << part;
}

TEST_F(Requests, SyncAcceptsEveryReadableAnswer) {
    const std::string books =
        "<AddedItems><ItemsResponse><ItemID>5</ItemID></ItemsResponse>"
        "</AddedItems><CurrentServerTime>now</CurrentServerTime>";
    answer(Operation::SysnWithCloud, answerXml("77", books));
    EXPECT_EQ(server.syncWithCloud("0"), 0);
    EXPECT_EQ(server.lastError, "77");
    EXPECT_EQ(server.serverTime, "now");
    ASSERT_EQ(server.getAddedBooks().size(), 1U);
    EXPECT_NE(lastRequest().body.find("<LastSynDateTime>0</LastSynDateTime>"), std::string::npos);
    for (const std::string& unreadable : {""s, "<R/>"s, "<R></S>"s}) {
        answer(Operation::SysnWithCloud, unreadable);
        EXPECT_EQ(server.syncWithCloud("0"), 1) << unreadable;
        EXPECT_EQ(server.lastError + server.lastMessage + server.serverTime, "");
    }
}

TEST_F(Requests, UploadIsJudgedByItsAnswerAlone) {
    writeFile(folder / "new.txt", "new");
    const Case cases[] = {{answerXml("1003"), 0, "1003", ""},
                          {answerXml("1014"), 1, "1014", ""},
                          {malformed, 0, "1003", ""},  // cut between elements: readable
                          {"<A></B>", 1, "", ""},
                          {"", 1, "", ""}};
    for (const Case& expected : cases) {
        answer(Operation::UploadContent, expected.answer);
        EXPECT_EQ(server.uploadContent("-3", folder / "new.txt"), expected.result)
            << expected.answer;
        EXPECT_EQ(server.lastError, expected.error);
    }
    const std::vector<std::pair<std::string, std::string>> sent = {
        {"Token", "tok"}, {"SessionId", "ses"}, {"ItemId", "-3"}, {"file", "new.txt"}};
    EXPECT_EQ(lastRequest().fields, sent);
}

TEST_F(Requests, DumpsShowExactlyTheAnswersBytes) {
    const std::string odd = "<A>\0</A>"s;
    const auto ends = [](const std::string& text, const std::string& end) {
        return text.size() >= end.size() &&
               text.compare(text.size() - end.size(), end.size(), end) == 0;
    };
    answer(Operation::RegisterDevice, odd);
    EXPECT_TRUE(ends(standardErrorOf([this] { server.RegisterDevice("c", "p", "t"); }),
                     "Register responce is [" + odd + "]\n"));
    answer(Operation::SysnWithCloud, odd);
    EXPECT_TRUE(ends(standardErrorOf([this] { server.syncWithCloud("0"); }), odd + "\n"));
    answer(Operation::UploadContent, odd);
    writeFile(folder / "new.txt", "new");
    ::testing::internal::CaptureStdout();
    server.uploadContent("1", folder / "new.txt");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), odd + "\n");
}

TEST_F(Requests, LongBodyIsSentCut) {
    const std::string longText(3000, 'p');
    answer(Operation::LoginUser, answerXml("1"));
    server.loginUser("e", longText);
    EXPECT_EQ(lastRequest().body.size(), 2047U);
    answer(Operation::RegisterDevice, answerXml("1"));
    server.RegisterDevice("c", longText, "t");
    EXPECT_EQ(lastRequest().body.size(), 2047U);
}
