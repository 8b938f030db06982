#include "service.h"

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <zip.h>

#include <fcntl.h>
#include <chrono>
#include <csignal>
#include <future>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <regex>
#include <tuple>

#include "curlmanager.h"
#include "posix/file_descriptor.h"
#include "posix/write_all.h"
#include "support/processes.h"
#include "support/temporary_folder.h"
#include "text/text.h"
#include "xmlparser.h"

namespace fs = std::filesystem;

using namespace tavro::service;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr const char* no_answer = "no answer";

using Reports = std::vector<std::string>;

Options serving(const fs::path& books, const fs::path& database = {}, Reports* reports = nullptr) {
    Options options;
    options.books = books;
    options.database = database;
    if (reports != nullptr)
        options.report = [reports](const std::string& text) { reports->push_back(text); };
    return options;
}

/// A request with `elements`: by turns a name and a value, which stands there as it is.
std::string xml(const std::string& root, const std::vector<std::string>& elements) {
    std::string text = "<" + root + " xmlns=\"http://www.tavro.example/deviceAPI\">\n";
    for (std::size_t name = 0; name < elements.size(); name += 2)
        text += "\t<" + elements[name] + ">" + elements[name + 1] + "</" + elements[name] + ">\n";
    return text + "</" + root + ">";
}

/// The text of the first element `name` of the XML answer `body`; "?" if there is none.
std::string textOf(const std::string& body, const char* name) {
    pugi::xml_document document;
    document.load_string(body.c_str());
    const auto node =
        document.find_node([&](pugi::xml_node n) { return n.name() == std::string(name); });
    return node ? node.text().get() : "?";
}

/// A device that speaks plain HTTP.
struct Device {
    explicit Device(int port) : client("127.0.0.1", port) {}

    httplib::Result post(Operation operation, const std::string& body) {
        return client.Post(descriptionOf(operation).path(), body, "application/xml; charset=utf-8");
    }
    httplib::Result form(Operation operation, const httplib::MultipartFormDataItems& parts) {
        return client.Post(descriptionOf(operation).path(), parts);
    }
    httplib::MultipartFormDataItems fields(const std::string& item) const {
        return {{"Token", token, "", ""}, {"SessionId", session, "", ""}, {"ItemId", item, "", ""}};
    }
    httplib::Result download(const std::string& item) {
        return form(Operation::DownloadContent, fields(item));
    }
    httplib::Result upload(const std::string& item, const std::string& content,
                           const std::string& name) {
        auto parts = fields(item);
        parts.push_back({"file", content, name, "text/plain"});
        return form(Operation::UploadContent, parts);
    }
    std::string get(const std::string& path) { return client.Get(path)->body; }
    /// The status of the answer to a command `json`.
    int command(const std::string& json, const char* type = "application/json") {
        return client.Post("/control/faults", json, type)->status;
    }

    static std::string shopRequest() {
        return xml("ShopInfoRequest",
                   {"DeviceId", "SN", "DeviceType", "reader", "ServiceConsumerID", "consumer",
                    "ServiceConsumerPassword", "secret"});
    }
    static std::string registration() {
        return xml("DeviceRequest",
                   {"DeviceId", "SN", "DeviceType", "reader", "ServiceConsumerID", "consumer",
                    "ServiceConsumerPassword", "secret", "ShopID", "shop"});
    }
    std::string account(const std::string& email = "ada@reader.example") const {
        return xml("RegisterUserRequest", {"Email", email, "FirstName", "Ada", "LastName", "",
                                           "Password", "pass word", "Token", token});
    }
    std::string login(const std::string& password = "pass word",
                      const std::string& id = "SN") const {
        return xml("LoginRequest", {"EmailID", "Ada@Reader.example", "Password", password,
                                    "DeviceID", id, "Token", token});
    }
    std::string reminder(const std::string& email) const {
        return xml("ForgetPasswordRequest", {"EmailID", email, "Token", token});
    }
    std::string sync() const {
        return xml("SyncRequest", {"SessionID", session, "Token", token, "LastSynDateTime", "0"});
    }
    std::string catalogue() { return post(Operation::SysnWithCloud, sync())->body; }

    void registerDevice() {
        token = textOf(post(Operation::RegisterDevice, registration())->body, "Token");
    }

    httplib::Client client;
    std::string token;
    std::string session;
};

/// A service and a device that is logged in to it.
struct Served : Service, Device {
    explicit Served(const Options& options) : Service(options), Device(port()) {
        registerDevice();
        post(Operation::CreateUser, account());
        session = textOf(post(Operation::LoginUser, login())->body, "SessionID");
    }

    /// The item of the catalogue whose file is `path`.
    Book book(const std::string& path) const {
        for (const Book& book : books()) {
            if (book.path == path)
                return book;
        }
        return {};
    }
    std::string id(const std::string& path) const { return std::to_string(book(path).id); }
};

std::string codeOf(const httplib::Result& answer) {
    return answer ? textOf(answer->body, "Error") : no_answer;
}

void writeArchive(const fs::path& path, const std::string& entry, const std::string& content) {
    zip_t* const archive = zip_open(path.c_str(), ZIP_CREATE, nullptr);
    zip_file_add(archive, entry.c_str(),
                 zip_source_buffer(archive, content.data(), content.size(), 0), 0);
    ASSERT_EQ(zip_close(archive), 0);
}

posix::FileDescriptor connectTo(const Service& service) {
    posix::FileDescriptor connection(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(service.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(
        ::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
        0);
    return connection;
}

/// All that comes over `connection` until its end.
std::string readAll(int connection) {
    std::string text;
    char buffer[4096];
    for (ssize_t got = 0; (got = ::recv(connection, buffer, sizeof buffer, 0)) > 0;)
        text.append(buffer, static_cast<std::size_t>(got));
    return text;
}

}  // namespace

TEST(Service, DeviceWalksTheWholeRoad) {
    Served served(serving(TAVRO_TEST_SAMPLES));
    EXPECT_EQ(codeOf(served.post(Operation::ForgetPassword, served.reminder("ada@reader.example"))),
              "1014");
    const auto shop = served.post(Operation::GetShopURL, Device::shopRequest());
    for (const char* name :
         {"ShopURL", "ShopName", "Shopid", "TermsOfServiceUrl", "TermsOfServiceText"})
        EXPECT_GT(textOf(shop->body, name).size(), 1u) << name;
    EXPECT_EQ(textOf(served.catalogue(), "CurrentServerTime").size(), 20u);

    const std::string id = served.id("tides.txt");
    const std::string original = readFile(TAVRO_TEST_SAMPLES "/tides.txt");
    auto content = served.download(id);
    EXPECT_EQ(content->body, original);
    EXPECT_EQ(content->get_header_value("Content-Disposition"), "attachment; filename=tides.txt");

    // Larger than every buffer on the way, with bytes that no text has.
    const std::string changed = std::string(3 << 20, '\0') + "\r\n--end";
    EXPECT_EQ(codeOf(served.upload(id, changed, "new tides.txt")), "1003");
    const Request request = served.requests().back();
    EXPECT_THAT(request.fields,
                ElementsAre(testing::Pair("Token", served.token),
                            testing::Pair("SessionId", served.session), testing::Pair("ItemId", id),
                            testing::Pair("file", "new tides.txt")));
    content = served.download(id);
    EXPECT_TRUE(content->body == changed);
    EXPECT_EQ(content->get_header_value("Content-Disposition"),
              "attachment; filename=new tides.txt");
    EXPECT_EQ(readFile(TAVRO_TEST_SAMPLES "/tides.txt"), original);

    const auto uploads =
        nlohmann::json::parse(served.get("/control/requests?operation=UploadContent&after=" +
                                         std::to_string(served.requests().front().number)));
    ASSERT_EQ(uploads.size(), 1u);
    EXPECT_EQ(uploads[0].at("item"), id);
    EXPECT_EQ(uploads[0].at("device"), 1);
    EXPECT_EQ(uploads[0].at("code"), "1003");
    EXPECT_GT(uploads[0].at("received"), changed.size());
    EXPECT_EQ(served.get("/control/requests?after=" + std::to_string(request.number + 1)), "[]\n");
    EXPECT_THAT(served.get("/control/accounts"), HasSubstr("\"ada@reader.example\""));
    for (const char* page : {"status", "requests", "devices", "accounts", "books"}) {
        const std::string told = served.get(std::string("/control/") + page);
        for (const std::string& secret :
             {served.token, served.session, std::string("pass word"), std::string("\"SN\"")})
            EXPECT_EQ(told.find(secret), std::string::npos) << page << " tells " << secret;
    }
    EXPECT_EQ(served.client.Get("/control/requests?after=x")->status, 400);
    EXPECT_EQ(served.client.Get("/control/requests?operation=Upload")->status, 400);
    EXPECT_THAT(served.client.Delete("/control/requests")->body, HasSubstr("\"requests\":0"));
    EXPECT_EQ(served.get("/control/requests"), "[]\n");
}

TEST(Service, CatalogueTellsWhatTheBooksSay) {
    Served served(serving(TAVRO_TEST_SAMPLES));
    const std::string catalogue = served.catalogue();
    EXPECT_THAT(catalogue, HasSubstr("<Title><![CDATA[Salt & Pepper]]></Title>"));
    const Book epub = served.book("salt-and-pepper.epub");
    EXPECT_EQ(epub.artist, "Ida Marlowe, Tom Brandt");
    EXPECT_EQ(epub.isbn13, "9783161484100");
    const Book fb2 = served.book("severny-veter.fb2.zip");
    EXPECT_EQ(fb2.title, "Северный ветер");
    EXPECT_EQ(fb2.artist, "Мария Петровна Лугова");
    EXPECT_EQ(fb2.isbn, "5000000013");
    EXPECT_EQ(served.book("river-guide.pdf").title, "river-guide");
    EXPECT_EQ(served.book("anna/letters.txt").fileName, served.book("boris/letters.txt").fileName);

    EXPECT_THAT(catalogue, HasSubstr("<CoverArtImage>" + served.url() + "/covers/" +
                                     std::to_string(epub.id) + "</CoverArtImage>"));
    EXPECT_THAT(served.get("/covers/" + std::to_string(epub.id)), testing::StartsWith("\x89PNG"));
    EXPECT_THAT(served.get("/covers/" + std::to_string(fb2.id)),
                testing::StartsWith("\xFF\xD8\xFF"));

    const std::string cover = "/covers/" + std::to_string(epub.id);
    const std::string tag = served.client.Get(cover)->get_header_value("ETag");
    const auto again = served.client.Get(cover, {{"If-None-Match", tag}});
    EXPECT_EQ(std::pair(again->status, again->body), std::pair(304, std::string()));

    // A second device does not have the whole book read again.
    const TemporaryFolder shelf;
    fs::copy_file(TAVRO_TEST_SAMPLES "/severny-veter.fb2.zip", shelf / "north.fb2.zip");
    Served lent(serving(shelf / ""));
    const std::string path = "/covers/" + lent.id("north.fb2.zip");
    const std::string image = lent.get(path);
    fs::remove(shelf / "north.fb2.zip");
    EXPECT_TRUE(!image.empty() && lent.get(path) == image);

    // Devices remember item ids for longer than a service without a state file lives.
    Options options = serving(TAVRO_TEST_SAMPLES);
    options.entityReferences = true;
    Served next(options);
    EXPECT_EQ(next.book("salt-and-pepper.epub").id, epub.id);
    EXPECT_THAT(next.catalogue(), HasSubstr("<Title>Salt &amp; Pepper</Title>"));
}

TEST(Service, RefusesWhatAServiceWouldRefuse) {
    Options options = serving(TAVRO_TEST_SAMPLES);
    options.consumer.emplace("consumer", "secret");
    options.maximumBody = 4000;
    Served served(options);
    Device other(served.port());
    other.registerDevice();
    other.session = served.session;
    Device stranger(served.port());
    stranger.token = "stranger";
    const std::string longName(5000, 'x');
    const auto replaced = [](std::string text, const std::string& what, const std::string& with) {
        return text.replace(text.find(what), what.size(), with);
    };

    for (const std::string& body :
         {std::string(), std::string("<LoginRequest"), served.login("a & b"),
          served.login("a</Password><Password>b"), served.login("a<b/>"),
          replaced(served.login(), "deviceAPI", "other"), served.reminder("ada@reader.example")})
        EXPECT_EQ(codeOf(served.post(Operation::LoginUser, body)), "2001") << body;
    const auto login = Operation::LoginUser;
    const auto registration = Operation::RegisterDevice;
    const std::string eve = "eve@reader.example";
    const std::tuple<Operation, std::string, const char*> cases[] = {
        {registration, replaced(served.registration(), "ShopID>shop</ShopID", "x/"), "2001"},
        {registration, replaced(served.registration(), ">SN<", "><"), "2002"},
        {login, served.login(longName), "2003"},
        {registration, replaced(served.registration(), "secret", "guess"), "2004"},
        {login, served.login("pass word", "SN-2"), "2005"},
        {login, stranger.login(), "2006"},
        {Operation::CreateUser, stranger.account(eve), "2006"},
        {Operation::CreateUser, served.account("ADA@reader.example"), "2007"},
        {login, served.login("Pass word"), "2008"},
        {Operation::SysnWithCloud, other.sync(), "2009"},
        {Operation::ForgetPassword, served.reminder(eve), "2011"},
        {Operation::UploadContent, "no form", "2001"}};
    for (const auto& [operation, body, code] : cases)
        EXPECT_EQ(codeOf(served.post(operation, body)), code) << body.substr(0, 300);

    std::size_t sent = 0;
    const auto unannounced = [&](std::size_t, httplib::DataSink& sink) {
        return sent++ < 3 ? sink.write(longName.data(), 2000) : (sink.done(), true);
    };
    EXPECT_EQ(codeOf(served.client.Post(descriptionOf(Operation::LoginUser).path(), unannounced,
                                        "text/xml")),
              "2003");

    const std::string id = served.id("tides.txt");
    const auto refused = served.download("1");
    EXPECT_EQ(codeOf(refused), "2010");
    EXPECT_FALSE(refused->has_header("Content-Disposition"));
    EXPECT_EQ(codeOf(other.download(id)), "2009");
    EXPECT_EQ(codeOf(served.form(Operation::UploadContent, served.fields(id))), "2002");
    EXPECT_EQ(codeOf(served.upload(id, longName, "tides.txt")), "2003");
    EXPECT_EQ(served.book("tides.txt").content, TAVRO_TEST_SAMPLES "/tides.txt");
    EXPECT_EQ(
        served.client.Post("/IOSCloudManagement.svc/SyncWithCloud", served.sync(), "text/xml")
            ->status,
        404);
    EXPECT_EQ(served.command("{}", "text/plain"), 403);
}

TEST(Service, FaultsTakeThePlaceOfTheAnswer) {
    Served served(serving(TAVRO_TEST_SAMPLES));
    const std::string id = served.id("tides.txt");
    const std::string book = readFile(TAVRO_TEST_SAMPLES "/tides.txt");
    const std::string named = "attachment; filename=tides.txt";
    // Status 0: the connection ends before a whole answer.
    const auto expect = [&](const char* text, int status, const std::string& body,
                            const std::string& header) {
        SCOPED_TRACE(text);
        const auto [operation, fault] = parseFault("DownloadContent", {text, "times=1"});
        served.inject(operation, fault);
        const auto answer = served.download(id);
        ASSERT_EQ(answer ? answer->status : 0, status);
        EXPECT_EQ(answer ? answer->body : "", body);
        EXPECT_EQ(answer ? answer->get_header_value("Content-Disposition") : "", header);
        EXPECT_TRUE(served.requests().back().faulty);
        EXPECT_EQ(served.download(id)->body, book) << "the fault was for one request";
    };
    for (const char* fault : {"delay=1", "cut=1000000", "code=1014"})
        expect(fault, 200, book, named);
    expect("status=503", 503, book, named);
    expect("filename=\"a\"; size=1", 200, book, "attachment; filename=\"a\"; size=1");
    expect("filename=", 200, book, "");
    expect("body=", 200, "", named);
    for (const char* fault : {"cut=10", "cut=0", "close"})
        expect(fault, 0, "", "");
    served.inject(Operation::DownloadContent, parseFault("DownloadContent:code=2010").second);
    const auto refused = served.download(id);
    EXPECT_EQ(codeOf(refused), "2010");
    EXPECT_FALSE(refused->has_header("Content-Disposition"));
}

TEST(Service, FaultsDoNotChangeTheStateUnlessTheySaySuccess) {
    Service service({});
    Device device(service.port());
    device.registerDevice();
    const auto create = [&](const std::string& fault) {
        const auto [operation, parsed] = parseFault("CreateUser:times=1," + fault);
        service.inject(operation, parsed);
        return device.post(Operation::CreateUser, device.account());
    };
    const char* const injected = "A fault asked for by the developer";
    const char* const taken = "There is an account with this e-mail";
    // One after the other: the first success, here with a code of another request, opens the
    // account.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"code=77", "77", injected},         {"code=", "", injected},
        {"close,code=1003", no_answer, "?"}, {"code=1014", "1014", "Success"},
        {"code=1003", "1003", taken},        {"delay=1", "2007", taken}};
    for (const auto& [fault, code, message] : cases) {
        const auto answer = create(fault);
        EXPECT_EQ(codeOf(answer), code) << fault;
        EXPECT_EQ(service.requests().back().code, answer ? code : "") << fault;
        EXPECT_EQ(service.requests().back().status, answer ? 200 : 0) << fault;
        EXPECT_EQ(answer ? textOf(answer->body, "Message") : "?", message) << fault;
    }
    EXPECT_EQ(create("body-hex=3C004100")->body, std::string("<\0A\0", 4));
    pugi::xml_document document;
    EXPECT_FALSE(document.load_string(create("malformed")->body.c_str()));
}

TEST(Service, FaultsAreSetAndClearedWhileItRuns) {
    const Service service({});
    Device device(service.port());
    const auto fault = parseFault(
        "LoginUser:delay=5,code=1,status=500,body-hex=00ff,cut=3,malformed,"
        "close,filename=x,times=2");
    const std::string json = faultToJson(fault);
    EXPECT_THAT(device.client.Post("/control/faults", json, "application/json")->body,
                HasSubstr(json));
    EXPECT_THAT(device.client.Delete("/control/faults")->body, HasSubstr("\"faults\":[]"));
    for (const char* wrong : {"", "[]", "{\"operation\":\"Login\"}", "{\"operation\":1}",
                              "{\"operation\":\"LoginUser\",\"body-file\":\"/etc/hostname\"}",
                              "{\"operation\":\"LoginUser\",\"cut\":-1}"})
        EXPECT_EQ(device.command(wrong), 400) << wrong;
    for (const char* wrong : {"LoginUser", "LoginUser:", "Login:code=1", "LoginUser:cod=1",
                              "LoginUser:times=x", "LoginUser:body-hex=0", "LoginUser:status=99"})
        EXPECT_THROW(parseFault(wrong), std::invalid_argument) << wrong;

    const TemporaryFolder folder;
    writeFile(folder / "faults", "# two\n\nLoginUser:code=2008,times=1\r\n" + json + "\n");
    const auto faults = readFaults(folder / "faults");
    ASSERT_EQ(faults.size(), 2u);
    EXPECT_EQ(faults[0].second.resultCode, "2008");
    EXPECT_EQ(faultToJson(faults[1]), json);
    writeFile(folder / "faults", "\nLoginUser:cod=1\n");
    EXPECT_THAT([&] { readFaults(folder / "faults"); },
                testing::ThrowsMessage<std::invalid_argument>(HasSubstr("faults:2: ")));
}

// A restart that forgot a session or an upload would look to a device like lost books.
TEST(Service, StateFileSurvivesRestartAndRemembersRemovedBooks) {
    const TemporaryFolder folder;
    const fs::path books = folder / "books";
    writeFile(books / "a.txt", "old");
    writeFile(books / "b.txt", "b");
    const Options options = serving(books, folder / "state");
    auto served = std::make_unique<Served>(options);
    const std::string a = served->id("a.txt");
    const std::string b = served->id("b.txt");
    for (const char* content : {"first", "new"})
        served->upload(a, content, "../a.txt");
    EXPECT_THROW(Service{options}, std::runtime_error) << "two services with one state file";
    const auto [token, session] = std::pair(served->token, served->session);
    served.reset();

    writeFile(folder / "state.uploads/receiving-lost", "left by a killed service");
    fs::remove(books / "b.txt");
    const Service service(options);
    Device device(service.port());
    device.token = token;
    device.session = session;
    const auto content = device.download(a);
    EXPECT_EQ(content->body, "new");
    EXPECT_EQ(content->get_header_value("Content-Disposition"), "attachment; filename=a.txt");
    EXPECT_EQ(codeOf(device.download(b)), "2010");
    EXPECT_EQ(codeOf(device.post(Operation::LoginUser, device.login())), "1003");
    const std::string catalogue = device.catalogue();
    EXPECT_THAT(catalogue.substr(catalogue.find("<DeletedItems>")),
                HasSubstr("<ItemID>" + b + "<"));
    EXPECT_EQ(readFile(books / "a.txt"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "state.uploads"), {}), 1);

    writeFile(books / "b.txt", "back");
    EXPECT_THAT(device.catalogue(), HasSubstr("<DeletedItems/>"));
    EXPECT_EQ(device.download(b)->body, "back");
}

TEST(Service, ReportsAndSkipsUnreadableBooks) {
    const TemporaryFolder folder;
    writeFile(folder / "junk.epub", "no archive");
    writeFile(folder / "junk.pdf", "no document");
    writeFile(folder / "cut.fb2", "<FictionBook><title-info>");
    writeFile(folder / "code.fb2", "<?xml version='1.0' encoding='x-none'?><FictionBook/>");
    std::string elements;
    for (int count = 0; count < 1'100'000; ++count)
        elements += "<a b=''/>";
    const std::string container = "META-INF/container.xml";
    writeArchive(folder / "empty.fb2.zip", "book.txt", "");
    writeArchive(folder / "lost.epub", container,
                 "<container><rootfile full-path=\"../../etc/passwd\"/></container>");
    writeArchive(folder / "bomb.epub", container, std::string(5u << 20, ' '));
    writeArchive(folder / "many.fb2.zip", "many.fb2", elements);
    writeFile(folder / "odd.fb2",
              "<f:FictionBook xmlns:f='f'><f:title-info><f:book-title>\xFF <![CDATA[<]]>\x01\n"
              "</f:book-title><author/><author><nickname>Nick</nickname></author><author>"
              "<first-name> </first-name></author><author><first-name>Ann</first-name>"
              "<nickname>A.</nickname></author></f:title-info></f:FictionBook>");
    Reports reports;
    Served served(serving(folder / "", {}, &reports));
    EXPECT_THAT(served.catalogue(), HasSubstr("<Title><![CDATA[\xEF\xBF\xBD <]]></Title>"));
    served.catalogue();
    EXPECT_EQ(served.books().at(0).artist, "Nick, Ann");
    EXPECT_EQ(served.books().size(), 1u);
    EXPECT_EQ(reports.size(), 8u) << testing::PrintToString(reports);
    for (const std::string& reason :
         {"bomb.epub: skipped: entry \"" + container + "\" is too large",
          std::string("many.fb2.zip: skipped: has too many")})
        EXPECT_THAT(reports, testing::Contains(HasSubstr(reason)));

    // A book that is being copied over must not vanish from the devices meanwhile.
    writeFile(folder / "odd.fb2", "<f:FictionBook");
    served.catalogue();
    EXPECT_EQ(reports.size(), 9u);
    EXPECT_FALSE(served.book("odd.fb2").deleted);
}

TEST(Service, KeepsWhatItReadBeforeItWasInterrupted) {
    const TemporaryFolder folder;
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        writeFile(folder / (std::string("books/") + name), name);
    Options options = serving(folder / "books", folder / "state");
    std::vector<std::size_t> told;
    options.progress = [&](std::size_t done, std::size_t all) {
        told.push_back(done);
        if (all == 3 && done == 2)
            throw std::runtime_error("interrupted");
    };
    EXPECT_THROW(Service{options}, std::runtime_error);
    EXPECT_THAT(told, ElementsAre(1, 2));
    EXPECT_EQ(SQLite::Database(folder / "state").execAndGet("SELECT COUNT(*) FROM items").getInt(),
              2);
}

// A device keeps only the last piece of a text that its XML reader splits.
TEST(Service, TitlesReachTheDeviceWhole) {
    const TemporaryFolder folder;
    // By turns the text of a book and what the device has of it.
    const std::vector<std::string> texts = {
        "a [b] &gt; c]] d",  "a [b] > c]] d", "a &amp; b",           "a & b",
        "a]]&gt;b",          "a))>b",         "[a] &amp; &lt;b&gt;", "(a) & <b>",
        "]]&gt;&amp;]]&gt;", "))>&))>",       "x[0] &lt; y",         "x(0) < y",
        "a &gt; b &amp; c",  "a > b & c",     "&amp;amp; ]",         "&amp; )"};
    const std::size_t count = texts.size() / 2;
    for (std::size_t index = 0; index < count; ++index)
        writeFile(folder / (std::to_string(index) + ".fb2"),
                  "<FictionBook><title-info><book-title>" + texts[2 * index] +
                      "</book-title></title-info></FictionBook>");
    const std::string catalogue = Served(serving(folder / "")).catalogue();
    XMLParser parser;
    parser.init("utf-8");
    ASSERT_TRUE(parser.parse(catalogue.data(), static_cast<unsigned>(catalogue.size())));
    ASSERT_EQ(parser.addedItems.size(), count);
    for (std::size_t index = 0; index < count; ++index)
        EXPECT_EQ(parser.addedItems[index].field(BookDescription::Title), texts[2 * index + 1]);
}

TEST(Service, CleansTexts) {
    // Cut, overlong and surrogate sequences are no text.
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {" \t\n", ""},
        {" a \r\n b ", "a b"},
        {std::string("a\0b\x1F\x7F", 5), "ab"},
        {"\u00E9\u20AC\U0001F4D6", "\u00E9\u20AC\U0001F4D6"},
        {"\xE2\x82", "\uFFFD\uFFFD"},
        {"\xC0\x80", "\uFFFD\uFFFD"},
        {"\xED\xA0\x80x", "\uFFFD\uFFFD\uFFFDx"},
        {"\uFFFF]]>", "]]>"}};
    for (const auto& [text, clean] : cases)
        EXPECT_EQ(cleanText(text), clean) << testing::PrintToString(text);
}

// Any page in the user's browser can send requests to this machine, and any name can lead to it.
TEST(Service, RefusesOtherSitesAndOtherNames) {
    Reports reports;
    Options options = serving(TAVRO_TEST_SAMPLES, {}, &reports);
    options.hosts = {"Shelf.example", "forwarded.example:8080"};
    Served served(options);
    const std::string cover = "/covers/" + served.id("salt-and-pepper.epub");
    const auto withPort = [&](const std::string& text) {
        return std::regex_replace(text, std::regex("PORT"), std::to_string(served.port()));
    };
    const auto expect = [&](int status, const std::string& host, const std::string& origin = "-") {
        SCOPED_TRACE(host + " from " + origin);
        httplib::Headers headers = {{"Host", withPort(host)}};
        if (origin != "-")
            headers.emplace("Origin", withPort(origin));
        reports.clear();
        for (const std::string& path : {cover, std::string("/control/status")})
            EXPECT_EQ(served.client.Get(path, headers)->status, status);
        EXPECT_EQ(reports.size(), status == 200 ? 0u : 2u);
        const std::size_t requests = served.requests().size();
        for (const auto& operation : allOperations())
            EXPECT_EQ(served.client.Post(operation.path(), headers, "x", "text/xml")->status,
                      status);
        EXPECT_EQ(served.requests().size() - requests, status == 200 ? allOperations().size() : 0);
    };
    for (const char* host :
         {"127.0.0.1:PORT", "LOCALHOST", "[::1]:PORT", "[0:0::1]", "shelf.example:PORT"})
        expect(200, host);
    for (const char* host :
         {"attacker.example:PORT", "forwarded.example:PORT", "localhost:1",
          "localhost:", "localhost.attacker.example", "[::1", "192.0.2.1:PORT", ""})
        expect(403, host);
    expect(200, "localhost:PORT", "http://127.0.0.1:PORT");
    expect(200, "Forwarded.example:8080", "http://forwarded.example:8080");
    for (const char* origin : {"http://attacker.example", "https://localhost:PORT", "null"})
        expect(403, "localhost:PORT", origin);
    const auto fetched = [&](const char* site, const char* destination) {
        return served.client
            .Get(cover, {{"Sec-Fetch-Site", site}, {"Sec-Fetch-Dest", destination}})
            ->status;
    };
    EXPECT_EQ(fetched("same-origin", "image"), 200);
    EXPECT_EQ(fetched("cross-site", "document"), 200) << "a link that somebody follows";
    for (const char* site : {"cross-site", "same-site"})
        EXPECT_EQ(fetched(site, "image"), 403) << site;
    const posix::FileDescriptor unnamed = connectTo(served);
    EXPECT_TRUE(posix::writeAll(unnamed.get(), "GET /shop HTTP/1.0\r\n\r\n"));
    EXPECT_THAT(readAll(unnamed.get()), HasSubstr(" 403 "));

    options.address = "0.0.0.0";
    Served everywhere(options);
    EXPECT_EQ(everywhere.client.Get("/shop", {{"Host", "127.0.0.1"}})->status, 200);
    EXPECT_EQ(everywhere.client.Get("/shop", {{"Host", "192.0.2.1"}})->status, 403);
}

TEST(Service, ReportsShowWhatATerminalWouldObey) {
    const TemporaryFolder folder;
    writeFile(folder / "\x1B[2J\xFF.epub", "no archive");
    Reports reports;
    const Service service(serving(folder / "", {}, &reports));
    Device(service.port()).client.Post("/%1B%5B2J%C2%9B%FF", "", "text/xml");
    EXPECT_THAT(reports, ElementsAre(HasSubstr("/\uFFFD[2J\uFFFD.epub: skipped"),
                                     testing::EndsWith("POST /\uFFFD[2J\uFFFD\uFFFD")));
}

// Nobody has to log in to be remembered.
TEST(Service, BoundsWhatStrangersMakeItKeep) {
    Service service({});
    Device device(service.port());
    const std::string large(1'000'000, 'x');
    for (int count = 0; count < 20; ++count)
        device.post(Operation::LoginUser, large);
    std::size_t bytes = 0;
    for (const Request& request : service.requests())
        bytes += request.body.size();
    EXPECT_GT(bytes, 15u << 20);
    EXPECT_LT(bytes, 16u << 20);

    const auto refused = Device(service.port()).client.Put("/", large, "text/plain");
    ASSERT_TRUE(refused) << "the answer is lost";
    EXPECT_EQ(refused->status, 413);

    const auto answerTo = [&](std::size_t count, const std::string& name, const std::string& file) {
        const httplib::MultipartFormDataItems parts(count, {name, "", file, ""});
        std::string code = codeOf(device.form(Operation::UploadContent, parts));
        EXPECT_LE(service.requests().back().fields.size(), 64u);
        return code;
    };
    EXPECT_EQ(answerTo(64, std::string(256, 'n'), ""), "2002");
    EXPECT_EQ(answerTo(65, "n", ""), "2001");
    EXPECT_EQ(answerTo(1, std::string(257, 'n'), ""), "2001");
    EXPECT_EQ(answerTo(1, "file", std::string(1025, 'n')), "2001");

    const std::string nested = "{\"operation\":\"LoginUser\",\"code\":" + std::string(500'000, '[');
    EXPECT_EQ(device.command(nested + std::string(500'000, ']') + "}"), 400);
}

TEST(Service, NobodyWaitsForThoseWhoWait) {
    Options options;
    options.patience = std::chrono::seconds(8);  // longer than a slow machine needs
    Service service(options);
    service.inject(Operation::LoginUser, parseFault("LoginUser:delay=3600000").second);
    std::vector<std::future<std::string>> answers(40);
    for (auto& answer : answers)
        answer = std::async(std::launch::async, [&] {
            Device device(service.port());
            device.client.set_read_timeout(60);
            return codeOf(device.post(Operation::LoginUser, ""));
        });
    std::vector<posix::FileDescriptor> idle;
    idle.reserve(100);
    while (idle.size() < idle.capacity())
        idle.push_back(connectTo(service));
    const posix::FileDescriptor slow = connectTo(service);
    Device device(service.port());
    device.client.set_read_timeout(options.patience);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(device.client.Get("/shop"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, options.patience);

    while (::send(slow.get(), "G", 1, MSG_NOSIGNAL) == 1 &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(40))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    for (const posix::FileDescriptor& connection : idle)
        EXPECT_EQ(readAll(connection.get()), "");

    device.client.Delete("/control/faults");
    for (auto& answer : answers)
        EXPECT_EQ(answer.get(), "2001");
}

TEST(Service, StandsStillForNoReaderOfItsLog) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const posix::FileDescriptor reader(ends[0]);
    posix::FileDescriptor writer(ends[1]);
    const std::string pipe = "/proc/self/fd/" + std::to_string(writer.get());
    const pid_t process =
        start({TAVRO_TEST_SERVICE, "--port", "0", "--json"}, {{1, pipe}, {2, pipe}});
    writer.close();
    char line[200] = {};
    ASSERT_GT(::read(reader.get(), line, sizeof line - 1), 0);
    httplib::Client client(nlohmann::json::parse(std::string(line)).at("url").get<std::string>());
    for (int count = 0; count < 600; ++count)
        ASSERT_TRUE(client.Post("/" + std::string(2000, 'x'), "", "text/xml")) << count;
    const auto start = std::chrono::steady_clock::now();
    ::kill(process, SIGTERM);
    EXPECT_EQ(statusOf(process), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

TEST(Service, StateIsPrivateAndStaysSmall) {
    const TemporaryFolder folder;
    writeFile(folder / "books/a.txt", "a");
    writeFile(folder / "state", "");
    fs::permissions(folder / "state", fs::perms(0666));
    fs::create_directory(folder / "state.uploads");
    const mode_t mask = ::umask(0);
    Served served(serving(folder / "books", folder / "state"));
    const std::string id = served.id("a.txt");
    for (int count = 0; count < 100; ++count)
        ASSERT_EQ(codeOf(served.upload(id, "new", "a.txt")), "1003");
    ::umask(mask);
    EXPECT_LT(fs::file_size(folder / "state-wal"), 256u << 10);
    std::vector<std::string> open;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "")) {
        const bool ours = entry.path().filename().string().rfind("state", 0) == 0 ||
                          entry.path().parent_path().filename() == "state.uploads";
        if (ours && (entry.status().permissions() & fs::perms(0077)) != fs::perms::none)
            open.push_back(entry.path());
    }
    EXPECT_THAT(open, ElementsAre());
}

TEST(Service, StopDoesNotWaitForSlowRequests) {
    Service service({});
    Device device(service.port());
    service.inject(Operation::LoginUser, parseFault("LoginUser:delay=60000").second);
    auto answer = std::async([&] { return codeOf(device.post(Operation::LoginUser, "x")); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const auto start = std::chrono::steady_clock::now();
    service.stop();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    answer.wait();
    Options options;
    options.port = service.port();
    Service successor(options);
    EXPECT_THROW(Service{options}, std::runtime_error) << "the port is taken";
}

TEST(Service, UploadsKeepTheirNames) {
    const TemporaryFolder folder;
    writeFile(folder / "books/a.txt", "a");
    Served served(serving(folder / "books"));
    const std::string id = served.id("a.txt");
    folium::tavro::CurlManager library;
    for (const char* name : {"q\"q.txt", "a\\b.txt", "a\\\\b.txt", "100%.txt", "%41.txt",
                             "a; filename=b.txt", "\xD0\xAF \xE2\x82\xAC.txt"}) {
        writeFile(fs::path(folder / name), "new");
        library.uploadFile("http://127.0.0.1/UploadContent.aspx", served.port(),
                           {{"Token", served.token}, {"SessionId", served.session}, {"ItemId", id}},
                           folder / name);
        EXPECT_EQ(served.book("a.txt").fileName, name);
    }
    served.upload(id, "new", "o\\\"l\\\\d %22.txt");  // as older versions of libcurl
    EXPECT_EQ(served.book("a.txt").fileName, "o\"l\\d %22.txt");
}

// A folder that cannot be read says nothing about its books; devices would delete theirs.
TEST(Service, NoBookIsDeletedUnlessItsFolderWasRead) {
    const TemporaryFolder folder;
    const fs::path books = folder / "books";
    for (const char* name : {"a.txt", "sub/deep/b.txt", "sub.txt/c.txt", "d.txt"})
        writeFile(books / name, name);
    Reports reports;
    const Options options = serving(books, folder / "state", &reports);
    auto served = std::make_unique<Served>(options);
    const auto deleted = [&] {
        served->catalogue();
        std::vector<std::string> paths;
        for (const Book& book : served->books()) {
            if (book.deleted)
                paths.push_back(book.path);
        }
        return paths;
    };
    const struct {
        const char* lost;  // what has a file or a link to itself in its place
        bool link;
        std::vector<std::string> deleted;
        std::size_t reports;
    } cases[] = {
        {"", true, {}, 1},         {"", false, {}, 1},     {"sub", true, {}, 1},
        {"sub/deep", true, {}, 1}, {"a.txt", true, {}, 1}, {"sub", false, {"sub/deep/b.txt"}, 0},
    };
    for (const auto& [lost, link, expected, told] : cases) {
        SCOPED_TRACE(std::string(lost) + (link ? " is a loop" : " is a file"));
        const fs::path path = *lost ? books / lost : books;
        fs::rename(path, folder / "aside");
        link ? fs::create_symlink(path, path) : writeFile(path, "");
        reports.clear();
        EXPECT_EQ(deleted(), expected);
        EXPECT_EQ(deleted(), expected);
        EXPECT_EQ(reports.size(), told) << testing::PrintToString(reports);
        if (*lost) {
            served.reset();
            served = std::make_unique<Served>(options);
            EXPECT_EQ(deleted(), expected) << "at the start";
        }
        fs::remove(path);
        fs::rename(folder / "aside", path);
        EXPECT_THAT(deleted(), ElementsAre());
    }
    fs::remove_all(books / "sub");
    EXPECT_THAT(deleted(), ElementsAre("sub/deep/b.txt"));
}

// It would delete the books of the one folder from every device, and add those of the other.
TEST(Service, StateFileBelongsToOneFolder) {
    const TemporaryFolder folder;
    writeFile(folder / "books/a.txt", "a");
    writeFile(folder / "other/b.txt", "b");
    fs::create_symlink(folder / "books", folder / "link");
    SQLite::Database(folder / "state", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec(  // the tables of the first version
            "CREATE TABLE devices (token PRIMARY KEY, device_id, device_type);"
            "CREATE TABLE accounts (id INTEGER PRIMARY KEY, email UNIQUE COLLATE NOCASE,"
            " first_name, last_name, password);"
            "CREATE TABLE sessions (id PRIMARY KEY, token, account);"
            "CREATE TABLE items (id INTEGER PRIMARY KEY, path UNIQUE, size, modified, title,"
            " artist, isbn, isbn13, file_type, has_cover, deleted DEFAULT 0, upload DEFAULT '',"
            " upload_name DEFAULT ''); PRAGMA user_version=1");
    for (const char* name : {"books", "other/../books/", "link", ""}) {
        const Service service(serving(*name ? folder / name : "", folder / "state"));
        EXPECT_EQ(service.books().size(), *name ? 1u : 0u) << name;
    }
    try {
        const Service service(serving(folder / "other", folder / "state"));
        FAIL() << "another folder is served";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(),
                    testing::AllOf(HasSubstr(folder / "books"), HasSubstr(folder / "other"),
                                   HasSubstr("--state")));
    }
}

TEST(Service, UploadsOutliveALostStateFileAndAFailedReplacement) {
    const TemporaryFolder folder;
    writeFile(folder / "books/a.txt", "old");
    const Options options = serving(folder / "books", folder / "state");
    const auto uploads = [&] {
        return std::distance(fs::directory_iterator(folder / "state.uploads"), {});
    };
    {
        Served served(options);
        served.upload(served.id("a.txt"), "mine", "a.txt");
    }
    SQLite::Database(folder / "state", SQLite::OPEN_READWRITE)
        .exec(
            "CREATE TRIGGER broken BEFORE UPDATE OF upload ON items"
            " BEGIN SELECT RAISE(ABORT, 'the disk is full'); END");
    {
        Served served(options);
        const std::string id = served.id("a.txt");
        EXPECT_EQ(codeOf(served.upload(id, "next", "a.txt")), "2099");
        EXPECT_EQ(served.download(id)->body, "mine");
        EXPECT_EQ(uploads(), 1);
    }
    fs::rename(folder / "state", folder / "mislaid");
    { const Service service(options); }
    fs::rename(folder / "mislaid", folder / "state");
    Served served(options);
    EXPECT_EQ(served.download(served.id("a.txt"))->body, "mine");
}
