#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

#include "platform/account_files.h"
#include "session/download_name.h"
#include "support/next_function.h"
#include "support/service_fixture.h"
#include "syncjournal.h"
#include "tavro.h"

using namespace tavro::service;
using namespace std::string_literals;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

std::vector<useconds_t> pauses;
int startFlags = 0;

}  // namespace

/// Stands before the platform's, which takes the flags without a word.
extern "C" void InitLectern(int flags) {
    startFlags = flags;
    next<void(int)>("InitLectern")(flags);
}

/// Stands before the system's, so that the pauses between uploads are counted and cost nothing.
extern "C" int usleep(useconds_t microseconds) {
    pauses.push_back(microseconds);
    return 0;
}

namespace {

class Session : public ServiceFixture {
protected:
    Session() {
        fs::create_directories(sync);
        configure(accountConfiguration(sync));
        pauses.clear();
    }

    void configure(const std::string& text) { writeFile(file(account_files::configuration), text); }

    std::string file(const char* name) const { return configuration + "/" + name; }

    std::string stored(const char* name) const { return readFile(file(name)); }

    /// Brings the session to where an application has it after its first start.
    void logIn() {
        ASSERT_TRUE(session.init(configuration));
        ASSERT_TRUE(session.createUser("pw"));
        ASSERT_TRUE(session.login("pw"));
    }

    /// The journal's records as "old>new:flag", in the file's order.
    std::vector<std::string> journalled() const {
        SyncJournal journal(file(account_files::journal));
        journal.reload();
        std::vector<std::string> records;
        for (SyncJournal::Record record; journal.pop(record);)
            records.insert(records.begin(),
                           record.oldName + ">" + record.newName + ":" + (record.flag ? "1" : "0"));
        return records;
    }

    void journal(const std::string& oldName, const std::string& newName, bool flag) {
        SyncJournal(file(account_files::journal)).push({oldName, newName, flag});
    }

    const std::string configuration = folder / "config";
    const std::string sync = folder / "sync";
    Tavro session;
};

using Names = std::vector<std::string>;
using Books = std::map<std::string, int>;

BookDescription book(const std::string& itemId) {
    std::vector<std::string> fields(12);
    fields[BookDescription::ItemID] = itemId;
    return BookDescription(fields);
}

}  // namespace

TEST_F(Session, RefusesEverythingBeforeInit) {
    EXPECT_EQ(startFlags, 65573);
    EXPECT_FALSE(session.init(""));
    EXPECT_FALSE(session.createUser("pw") || session.login("pw") || session.forgetPassword("e") ||
                 session.syncServer() || session.updateACSM("a", "b", true) ||
                 session.syncDownloadFolder() || session.getShopInfo("c", "p", "t"));
    session.syncJournal();
    EXPECT_EQ(session.downloadBook(book("1")), "");
    EXPECT_EQ(session.deviceToken() + session.sessionID() + session.vendorToken() +
                  session.vendorID() + session.lastError() + session.getShopUrl() +
                  session.getShopLicenseUrl() + session.getShopName(),
              "");
    EXPECT_EQ(session.server, nullptr);
    EXPECT_TRUE(session.getAddedBooks().empty());
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Session, NeedsTheFiveRequiredSettings) {
    const std::pair<const char*, bool> settings[] = {
        {"SerialNumber", true},     {"ConsumerID", true},
        {"ConsumerPassword", true}, {"DeviceType", true},
        {"Email", false},           {"FirstName", false},
        {"LastName", false},        {"DownloadFolderPath", true}};
    for (const auto& [key, required] : settings) {
        std::string text = accountConfiguration(sync);
        configure(text.insert(text.find(key), "#"));
        Tavro other;
        EXPECT_EQ(other.init(configuration), !required) << key;
        EXPECT_EQ(other.server == nullptr, required) << key;
    }
    EXPECT_FALSE(session.init(folder / "missing"));
}

TEST_F(Session, RegistersOnceAndKeepsTheToken) {
    service.answer(Operation::RegisterDevice, answerXml("9", "<Token>refused</Token>"));
    EXPECT_FALSE(session.init(configuration));
    EXPECT_EQ(session.lastError(), "9");
    EXPECT_FALSE(fs::exists(file(account_files::token)));
    service.answer(Operation::RegisterDevice, answerXml("1003", "<Token>tok&#10;</Token>"));
    writeFile(file(account_files::token), "");
    configure(accountConfiguration(sync) + "sessionID=ses\n");
    EXPECT_TRUE(session.init(configuration));
    EXPECT_EQ(stored(account_files::token), "tok\n");
    EXPECT_THAT(lastRequest().body,
                AllOf(HasSubstr("<DeviceId>SN-0001<"), HasSubstr("<DeviceType>reader<"),
                      HasSubstr("<ServiceConsumerID>consumer<"),
                      HasSubstr("<ServiceConsumerPassword>secret<")));
    EXPECT_EQ(session.sessionID(), "ses");
    EXPECT_EQ(service.count(Operation::RegisterDevice), 2U);
    Tavro other;
    EXPECT_TRUE(other.init(configuration));
    EXPECT_EQ(other.deviceToken(), "tok\n");
    EXPECT_EQ(service.count(Operation::RegisterDevice), 2U);
    fs::remove(file(account_files::token));
    EXPECT_TRUE(other.init(configuration));
    EXPECT_EQ(stored(account_files::token), "tok\n");
}

TEST_F(Session, ShopNameFallsBackOnTheDefault) {
    ASSERT_TRUE(session.init(configuration));
    EXPECT_EQ(session.getShopName(), "Zabrin");
    service.answer(Operation::GetShopURL,
                   answerXml("1003",
                             "<ShopName>Books</ShopName><ShopURL>u</ShopURL>"
                             "<TermsOfServiceUrl>terms</TermsOfServiceUrl>"));
    EXPECT_TRUE(session.getShopInfo("c", "p", "t"));
    EXPECT_THAT(lastRequest().body,
                AllOf(HasSubstr("ID>c<"), HasSubstr("Password>p<"), HasSubstr("<DeviceType>t<")));
    EXPECT_EQ(session.getShopLicenseUrl(), "terms");
    EXPECT_EQ(session.getShopName(), "Books");
    EXPECT_EQ(session.getShopUrl(), "u");
    service.answer(Operation::GetShopURL, "<R/>");
    EXPECT_FALSE(session.getShopInfo("c", "p", "t"));
}

TEST_F(Session, PasswordIsStoredAsGivenWhateverTheServiceSays) {
    const auto storedPassword = [this] {
        Tavro other;
        other.init(configuration);
        return other.login("");
    };
    ASSERT_TRUE(session.init(configuration));
    EXPECT_FALSE(session.login(""));
    EXPECT_FALSE(fs::exists(file(account_files::password)));
    service.inject("CreateUser:code=2099,times=1");
    EXPECT_FALSE(session.createUser("first"));
    EXPECT_NE(stored(account_files::password), "");  // refused, and stored all the same
    EXPECT_EQ(stored(account_files::password).find("first"), std::string::npos);
    EXPECT_TRUE(session.createUser("first"));
    EXPECT_THAT(lastRequest().body,
                AllOf(HasSubstr("<FirstName>Ada<"), HasSubstr("<LastName>Lovelace<")));
    EXPECT_TRUE(storedPassword());   // sends the stored one, and empties the store
    EXPECT_FALSE(storedPassword());  // so that the next has none to send
    EXPECT_EQ(service.count(Operation::LoginUser), 1U);
    EXPECT_TRUE(session.login("first"));
    EXPECT_FALSE(session.sessionID().empty() || session.vendorToken().empty() ||
                 session.vendorID().empty());
    EXPECT_EQ(session.sessionID(), session.server->sessionId);
    EXPECT_EQ(session.vendorToken(), session.server->vendorToken);
    EXPECT_EQ(session.vendorID(), session.server->vendorId);
}

TEST_F(Session, RefusalsOfAccountRequestsAreSaidWithoutANewline) {
    ASSERT_TRUE(session.init(configuration));
    EXPECT_THAT(standardErrorOf([this] { EXPECT_FALSE(session.login("wrong")); }),
                EndsWith("Can't login"));
    EXPECT_THAT(standardErrorOf([this] { EXPECT_FALSE(session.forgetPassword("nobody")); }),
                EndsWith("Can't forget password"));
    EXPECT_THAT(lastRequest().body, HasSubstr("<EmailID>nobody<"));
    service.answer(Operation::ForgetPassword, answerXml("1014"));
    EXPECT_TRUE(session.forgetPassword("ada@reader.example"));
}

TEST_F(Session, SavedCatalogueIsTheAnswerAndIsParsedOncePerChange) {
    const std::string first = answerXml(
        "1003", "<AddedItems><ItemsResponse><ItemID>1</ItemID></ItemsResponse></AddedItems>");
    logIn();
    service.answer(Operation::SysnWithCloud, first);
    EXPECT_TRUE(session.syncServer());
    EXPECT_THAT(lastRequest().body, HasSubstr("<LastSynDateTime>0<"));
    EXPECT_EQ(stored(account_files::catalogue), first);
    writeFile(file(account_files::catalogue), "<R/>");
    EXPECT_EQ(session.getAddedBooks().size(), 1U);  // this process's own sync wins
    service.answer(Operation::SysnWithCloud, "");
    EXPECT_FALSE(session.syncServer());
    EXPECT_EQ(stored(account_files::catalogue), "<R/>");

    writeFile(file(account_files::catalogue), first);
    Tavro reader;
    EXPECT_TRUE(reader.getAddedBooks().empty());
    ASSERT_TRUE(reader.init(configuration));
    EXPECT_EQ(reader.getAddedBooks().size(), 1U);
    const_cast<std::vector<BookDescription>&>(reader.getAddedBooks()).emplace_back();
    EXPECT_EQ(reader.getAddedBooks().size(), 2U);  // another look would take the mark away
    for (const char* emptied : {"", "", "<AddedItems></AddedItems>"}) {
        writeFile(file(account_files::catalogue), emptied);
        EXPECT_TRUE(reader.getAddedBooks().empty()) << emptied;
    }
    fs::remove(file(account_files::catalogue));
    EXPECT_TRUE(reader.getAddedBooks().empty());
    fs::create_directory(file(account_files::catalogue));
    service.answer(Operation::SysnWithCloud, first);
    EXPECT_TRUE(session.syncServer());  // whether or not it could be saved
}

TEST_F(Session, DownloadedBookGetsTheFirstFreeName) {
    const struct {
        const char* offered;
        Names expected;  ///< of the first download, the second and so on
    } cases[] = {{"book.pdf", {"book.pdf", "book_1.pdf", "book_2.pdf"}},
                 {"a.fb2.zip", {"a.fb2.zip", "a_1.fb2.zip", "a_2.fb2.zip"}},
                 {"README", {"README", "README_1"}},
                 {".hidden", {".hidden", ".hidden_1"}},
                 {"dir.old/file", {"dir.old/file", "dir.old/file_1"}},
                 {".fb2.zip", {".fb2.zip", ".fb2_1.zip"}},
                 {"x.tar.gz", {"x.tar.gz", "x.tar_1.gz"}},
                 {"end.", {"end.", "end_1."}},
                 {"..b", {"..b", "._1.b"}}};
    logIn();
    fs::create_directories(sync + "/dir.old");
    int item = 0;
    for (const auto& row : cases)
        for (const std::string& expected : row.expected) {
            service.inject("DownloadContent:times=1,filename="s + row.offered +
                           ",body=" + expected);
            EXPECT_EQ(session.downloadBook(book(std::to_string(++item))), expected);
            EXPECT_EQ(readFile(sync + "/" + expected), expected);
            EXPECT_EQ(session.GetBooks()[expected], item);
        }
    EXPECT_EQ(session.GetBooksIds()[1], "book.pdf");
}

TEST_F(Session, AnnouncedNameWithAZeroByteEndsThere) {
    writeFile(sync + "/book", "");
    EXPECT_EQ(session::freeName(sync, "book\0.epub"s), "book_1");
    EXPECT_EQ(session::freeName(sync, "new\0.epub"s), "new");
}

TEST_F(Session, DownloadMapsTheItemNumberOfItsText) {
    logIn();
    const std::pair<BookDescription, int> cases[] = {{book("-7"), -7},
                                                     {book(" 12abc"), 12},
                                                     {book("none"), 0},
                                                     {BookDescription(), 0},
                                                     {book("99999999999"), 2147483647}};
    for (const auto& [wanted, number] : cases) {
        service.inject("DownloadContent:times=1,body=x,filename=n" + std::to_string(number));
        const std::string name = session.downloadBook(wanted);
        EXPECT_EQ(session.GetBooks()[name], number) << name;
        EXPECT_EQ(lastRequest().fields.back().second, wanted.field(BookDescription::ItemID));
    }
}

TEST_F(Session, CutDownloadLeavesNeitherBookNorMapEntry) {
    logIn();
    service.inject("DownloadContent:filename=book.txt,body=content,cut=4");
    EXPECT_EQ(session.downloadBook(book("1")), "");
    EXPECT_FALSE(fs::exists(sync + "/book.txt"));
    EXPECT_TRUE(session.GetBooks().empty());
    service.inject("DownloadContent:filename=book.txt,body=content");
    EXPECT_EQ(session.downloadBook(book("1")), "book.txt");
    EXPECT_EQ(readFile(sync + "/book.txt"), "content");
}

TEST_F(Session, ChangeIsJournalledWhateverTheUploadYields) {
    logIn();
    addToMap(configuration, {{"old.txt", 5}});
    writeFile(sync + "/new.txt", "new");
    EXPECT_FALSE(session.updateACSM("/any/unknown.txt", "/any/new.txt", true));
    EXPECT_EQ(journalled(), Names{});
    EXPECT_TRUE(session.updateACSM("/any/old.txt", "new.txt", false));
    EXPECT_EQ(service.count(Operation::UploadContent), 0U);
    service.inject("UploadContent:code=9");
    EXPECT_TRUE(session.updateACSM("old.txt", "/any/new.txt", true));
    EXPECT_EQ(service.count(Operation::UploadContent), 5U);
    EXPECT_EQ(pauses, std::vector<useconds_t>(5, 5000000));
    service.clearFaults();
    service.inject("UploadContent:code=9,times=1");
    service.inject("UploadContent:code=1003");
    EXPECT_TRUE(session.updateACSM("old.txt", "new.txt", true));
    EXPECT_EQ(pauses.size(), 6U);
    EXPECT_EQ(journalled(), (Names{"old.txt>new.txt:0", "old.txt>new.txt:0", "old.txt>new.txt:1"}));
    EXPECT_EQ(session.GetBooks(), (Books{{"old.txt", 5}}));
}

TEST_F(Session, ReplayKeepsWhatWasNeverUploadedInTheOrderTaken) {
    Tavro withoutSession;
    ASSERT_TRUE(withoutSession.init(configuration));
    logIn();
    addToMap(configuration, {{"a", 1}, {"b", 2}});
    journal("a", "a2", false);
    journal("b", "b2", false);
    EXPECT_FALSE(withoutSession.syncDownloadFolder() || withoutSession.syncServer() ||
                 withoutSession.updateACSM("a", "a2", false));
    EXPECT_EQ(withoutSession.downloadBook(book("1")), "");
    EXPECT_EQ(service.count(Operation::DownloadContent) + service.count(Operation::SysnWithCloud),
              0U);
    EXPECT_EQ(journalled(), (Names{"a>a2:0", "b>b2:0"}));
    service.inject("UploadContent:code=9");
    EXPECT_THAT(standardErrorOf([this] { EXPECT_TRUE(session.syncDownloadFolder()); }),
                HasSubstr("Replay journal: old=b new=b2 flag=0\n"));
    EXPECT_EQ(journalled(), (Names{"b>b2:0", "a>a2:0"}));
    EXPECT_EQ(pauses, std::vector<useconds_t>(10, 5000000));
    EXPECT_TRUE(session.syncDownloadFolder());
    EXPECT_EQ(journalled(), (Names{"a>a2:0", "b>b2:0"}));
    EXPECT_EQ(session.GetBooks(), (Books{{"a", 1}, {"b", 2}}));
}

TEST_F(Session, ReplayMovesTheMapEntryOnceUploaded) {
    logIn();
    addToMap(configuration, {{"sent", -1}, {"fresh", 2}});
    journal("sent", "sent2", true);
    journal("fresh", "fresh2", false);
    journal("unknown", "x", true);
    writeFile(sync + "/fresh2", "new");
    writeFile(sync + "/sent2", "new");
    service.inject("UploadContent:times=1,code=1003");  // for "fresh", the newer one
    service.inject("UploadContent:code=9");
    EXPECT_TRUE(session.syncDownloadFolder());
    EXPECT_EQ(journalled(), Names{});
    EXPECT_EQ(session.GetBooks(), (Books{{"fresh2", 2}, {"sent2", -1}}));
    EXPECT_EQ(service.count(Operation::UploadContent), 6U);
    EXPECT_EQ(lastRequest().fields.at(2).second, "-1");
}
