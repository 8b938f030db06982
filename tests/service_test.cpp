#include "service.h"

#include <SQLiteCpp/Database.h>
#include <curl/curl.h>
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
#include <pugixml.hpp>
#include <set>

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

Options serving(const fs::path& books, const fs::path& database = {}) {
    Options options;
    options.books = books;
    options.database = database;
    return options;
}

/// Makes a state file as the first version of the service did.
constexpr const char* version_one_state =
    "CREATE TABLE devices (token TEXT PRIMARY KEY, device_id TEXT NOT NULL,"
    " device_type TEXT NOT NULL);"
    "CREATE TABLE accounts (id INTEGER PRIMARY KEY, email TEXT NOT NULL UNIQUE COLLATE NOCASE,"
    " first_name TEXT NOT NULL, last_name TEXT NOT NULL, password TEXT NOT NULL);"
    "CREATE TABLE sessions (id TEXT PRIMARY KEY, token TEXT NOT NULL REFERENCES devices,"
    " account INTEGER NOT NULL REFERENCES accounts);"
    "CREATE TABLE items (id INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE,"
    " size INTEGER NOT NULL, modified INTEGER NOT NULL, title TEXT NOT NULL,"
    " artist TEXT NOT NULL, isbn TEXT NOT NULL, isbn13 TEXT NOT NULL, file_type TEXT NOT NULL,"
    " has_cover INTEGER NOT NULL, deleted INTEGER NOT NULL DEFAULT 0,"
    " upload TEXT NOT NULL DEFAULT '', upload_name TEXT NOT NULL DEFAULT '');"
    "PRAGMA user_version=1";

/// An XML element whose `value` stands in it as it is.
std::string element(const std::string& name, const std::string& value) {
    return "\t<" + name + ">" + value + "</" + name + ">\n";
}

std::string xml(const std::string& root, const std::string& elements) {
    return "<" + root + " xmlns=\"http://www.tavro.example/deviceAPI\">\n" + elements + "</" +
           root + ">";
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
class Device {
public:
    explicit Device(const Service& service) : client_("127.0.0.1", service.port()) {}

    httplib::Result post(Operation operation, const std::string& body) {
        return client_.Post(descriptionOf(operation).path(), body,
                            "application/xml; charset=utf-8");
    }
    httplib::Result form(Operation operation, const httplib::MultipartFormDataItems& parts) {
        return client_.Post(descriptionOf(operation).path(), parts);
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
    std::string get(const std::string& path) { return client_.Get(path)->body; }

    std::string registration() const {
        return xml("DeviceRequest", element("DeviceId", "SN") + element("DeviceType", "reader") +
                                        element("ServiceConsumerID", "consumer") +
                                        element("ServiceConsumerPassword", "secret") +
                                        element("ShopID", "shop"));
    }
    std::string account(const std::string& email = "ada@reader.example") const {
        return xml("RegisterUserRequest",
                   element("Email", email) + element("FirstName", "Ada") + element("LastName", "") +
                       element("Password", "pass word") + element("Token", token));
    }
    std::string login(const std::string& password = "pass word",
                      const std::string& id = "SN") const {
        return xml("LoginRequest", element("EmailID", "Ada@Reader.example") +
                                       element("Password", password) + element("DeviceID", id) +
                                       element("Token", token));
    }
    std::string reminder(const std::string& email) const {
        return xml("ForgetPasswordRequest", element("EmailID", email) + element("Token", token));
    }
    std::string sync() const {
        return xml("SyncRequest", element("SessionID", session) + element("Token", token) +
                                      element("LastSynDateTime", "0"));
    }
    std::string catalogue() { return post(Operation::SysnWithCloud, sync())->body; }

    void registerDevice() {
        token = textOf(post(Operation::RegisterDevice, registration())->body, "Token");
    }
    void logIn() {
        registerDevice();
        post(Operation::CreateUser, account());
        session = textOf(post(Operation::LoginUser, login())->body, "SessionID");
    }

    std::string token;
    std::string session;

private:
    httplib::Client client_;
};

/// A service and a device that is logged in to it.
struct Served {
    explicit Served(const Options& options) : service(options), device(service) { device.logIn(); }

    Service service;
    Device device;
};

std::string codeOf(const httplib::Result& answer) {
    return answer ? textOf(answer->body, "Error") : no_answer;
}

/// The item of the catalogue whose file is `path`.
Book bookAt(const Service& service, const std::string& path) {
    for (const Book& book : service.books()) {
        if (book.path == path)
            return book;
    }
    return {};
}

std::string idAt(const Service& service, const std::string& path) {
    return std::to_string(bookAt(service, path).id);
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

/// The answer to exactly `request`.
std::string ask(const Service& service, const std::string& request) {
    const posix::FileDescriptor connection = connectTo(service);
    EXPECT_TRUE(posix::writeAll(connection.get(), request));
    return readAll(connection.get());
}

/// Uploads a file called `name` as the device's library does. @return the name that arrived.
std::string arrivedName(Served& served, const std::string& name) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    curl_httppost* first = nullptr;
    curl_httppost* last = nullptr;
    for (const auto& field : served.device.fields(idAt(served.service, "a.txt")))
        curl_formadd(&first, &last, CURLFORM_COPYNAME, field.name.c_str(), CURLFORM_COPYCONTENTS,
                     field.content.c_str(), CURLFORM_END);
    curl_formadd(&first, &last, CURLFORM_COPYNAME, "file", CURLFORM_BUFFER, name.c_str(),
                 CURLFORM_BUFFERPTR, "new", CURLFORM_BUFFERLENGTH, 3L, CURLFORM_END);
    CURL* const curl = curl_easy_init();
    curl_easy_setopt(curl, CURLOPT_URL, (served.service.url() + "/UploadContent.aspx").c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPPOST, first);
    curl_easy_setopt(
        curl, CURLOPT_WRITEFUNCTION,
        +[](char*, std::size_t size, std::size_t count, void*) { return size * count; });
    EXPECT_EQ(curl_easy_perform(curl), CURLE_OK);
    curl_easy_cleanup(curl);
    curl_formfree(first);
#pragma GCC diagnostic pop
    return bookAt(served.service, "a.txt").fileName;
}

}  // namespace

TEST(Service, DeviceWalksTheWholeRoad) {
    Served served(serving(TAVRO_TEST_SAMPLES));
    auto& [service, device] = served;
    EXPECT_EQ(codeOf(device.post(Operation::ForgetPassword, device.reminder("ada@reader.example"))),
              "1014");
    const auto shop = device.post(
        Operation::GetShopURL,
        xml("ShopInfoRequest", element("DeviceId", "SN") + element("DeviceType", "reader") +
                                   element("ServiceConsumerID", "consumer") +
                                   element("ServiceConsumerPassword", "secret")));
    for (const char* name :
         {"ShopURL", "ShopName", "Shopid", "TermsOfServiceUrl", "TermsOfServiceText"})
        EXPECT_GT(textOf(shop->body, name).size(), 1u) << name;
    EXPECT_EQ(textOf(device.catalogue(), "CurrentServerTime").size(), 20u);

    const std::string id = idAt(service, "tides.txt");
    const std::string original = readFile(TAVRO_TEST_SAMPLES "/tides.txt");
    auto content = device.download(id);
    EXPECT_EQ(content->body, original);
    EXPECT_EQ(content->get_header_value("Content-Disposition"), "attachment; filename=tides.txt");

    // Larger than every buffer on the way, with bytes that no text has.
    const std::string changed = std::string(3 << 20, '\0') + "\r\n--end";
    EXPECT_EQ(codeOf(device.upload(id, changed, "new tides.txt")), "1003");
    const Request request = service.requests().back();
    EXPECT_THAT(request.fields,
                ElementsAre(testing::Pair("Token", device.token),
                            testing::Pair("SessionId", device.session), testing::Pair("ItemId", id),
                            testing::Pair("file", "new tides.txt")));
    content = device.download(id);
    EXPECT_TRUE(content->body == changed);
    EXPECT_EQ(content->get_header_value("Content-Disposition"),
              "attachment; filename=new tides.txt");
    EXPECT_EQ(readFile(TAVRO_TEST_SAMPLES "/tides.txt"), original);
}

TEST(Service, CatalogueTellsWhatTheBooksSay) {
    Served served(serving(TAVRO_TEST_SAMPLES));
    auto& [service, device] = served;
    const std::string catalogue = device.catalogue();
    EXPECT_THAT(catalogue, HasSubstr("<Title><![CDATA[Salt & Pepper]]></Title>"));
    const Book epub = bookAt(service, "salt-and-pepper.epub");
    EXPECT_EQ(epub.artist, "Ida Marlowe, Tom Brandt");
    EXPECT_EQ(epub.isbn13, "9783161484100");
    const Book fb2 = bookAt(service, "severny-veter.fb2.zip");
    EXPECT_EQ(fb2.title, "Северный ветер");
    EXPECT_EQ(fb2.artist, "Мария Петровна Лугова");
    EXPECT_EQ(fb2.isbn, "5000000013");
    EXPECT_EQ(bookAt(service, "river-guide.pdf").title, "river-guide");
    EXPECT_EQ(bookAt(service, "anna/letters.txt").fileName,
              bookAt(service, "boris/letters.txt").fileName);

    EXPECT_THAT(catalogue, HasSubstr("<CoverArtImage>" + service.url() + "/covers/" +
                                     std::to_string(epub.id) + "</CoverArtImage>"));
    EXPECT_THAT(device.get("/covers/" + std::to_string(epub.id)), testing::StartsWith("\x89PNG"));
    EXPECT_THAT(device.get("/covers/" + std::to_string(fb2.id)),
                testing::StartsWith("\xFF\xD8\xFF"));

    // Devices remember item ids for longer than a service without a state file lives.
    Options options = serving(TAVRO_TEST_SAMPLES);
    options.entityReferences = true;
    Served next(options);
    EXPECT_EQ(bookAt(next.service, "salt-and-pepper.epub").id, epub.id);
    EXPECT_THAT(next.device.catalogue(), HasSubstr("<Title>Salt &amp; Pepper</Title>"));
}

TEST(Service, RefusesWhatAServiceWouldRefuse) {
    Options options = serving(TAVRO_TEST_SAMPLES);
    options.consumer.emplace("consumer", "secret");
    options.maximumBody = 4000;
    Served served(options);
    auto& [service, device] = served;
    Device other(service);
    other.registerDevice();
    other.session = device.session;
    Device stranger(service);
    stranger.token = "stranger";
    const std::string longName(5000, 'x');
    const auto replaced = [](std::string text, const std::string& what, const std::string& with) {
        return text.replace(text.find(what), what.size(), with);
    };

    const struct {
        Operation operation;
        std::string body;
        const char* code;
    } cases[] = {
        {Operation::LoginUser, "", "2001"},
        {Operation::LoginUser, "<LoginRequest", "2001"},
        {Operation::LoginUser, device.login("a & b"), "2001"},
        {Operation::LoginUser, device.login("a</Password><Password>b"), "2001"},
        {Operation::LoginUser, device.login("a<b/>"), "2001"},
        {Operation::LoginUser, replaced(device.login(), "deviceAPI", "other"), "2001"},
        {Operation::LoginUser, device.reminder("ada@reader.example"), "2001"},
        {Operation::RegisterDevice, replaced(device.registration(), "ShopID>shop</ShopID", "x/"),
         "2001"},
        {Operation::RegisterDevice, replaced(device.registration(), ">SN<", "><"), "2002"},
        {Operation::LoginUser, device.login(longName), "2003"},
        {Operation::RegisterDevice, replaced(device.registration(), "secret", "guess"), "2004"},
        {Operation::LoginUser, device.login("pass word", "SN-2"), "2005"},
        {Operation::LoginUser, stranger.login(), "2006"},
        {Operation::CreateUser, stranger.account("eve@reader.example"), "2006"},
        {Operation::CreateUser, device.account("ADA@reader.example"), "2007"},
        {Operation::LoginUser, device.login("Pass word"), "2008"},
        {Operation::SysnWithCloud, other.sync(), "2009"},
        {Operation::ForgetPassword, device.reminder("eve@reader.example"), "2011"},
        {Operation::UploadContent, "no form", "2001"},
    };
    for (const auto& [operation, body, code] : cases)
        EXPECT_EQ(codeOf(device.post(operation, body)), code) << body.substr(0, 300);

    httplib::Client client(service.url());
    std::size_t sent = 0;
    const auto unannounced = [&](std::size_t, httplib::DataSink& sink) {
        return sent++ < 3 ? sink.write(longName.data(), 2000) : (sink.done(), true);
    };
    EXPECT_EQ(
        codeOf(client.Post(descriptionOf(Operation::LoginUser).path(), unannounced, "text/xml")),
        "2003");

    const std::string id = idAt(service, "tides.txt");
    const auto refused = device.download("1");
    EXPECT_EQ(codeOf(refused), "2010");
    EXPECT_FALSE(refused->has_header("Content-Disposition"));
    EXPECT_EQ(codeOf(other.download(id)), "2009");
    EXPECT_EQ(codeOf(device.form(Operation::UploadContent, device.fields(id))), "2002");
    EXPECT_EQ(codeOf(device.upload(id, longName, "tides.txt")), "2003");
    EXPECT_EQ(bookAt(service, "tides.txt").content, TAVRO_TEST_SAMPLES "/tides.txt");
    EXPECT_EQ(
        client.Post("/IOSCloudManagement.svc/SyncWithCloud", device.sync(), "text/xml")->status,
        404);
    EXPECT_EQ(client.Post("/control/faults", "{}", "text/plain")->status, 403);
}

TEST(Service, FaultsTakeThePlaceOfTheAnswer) {
    Served served(serving(TAVRO_TEST_SAMPLES));
    auto& [service, device] = served;
    const std::string id = idAt(service, "tides.txt");
    const std::string book = readFile(TAVRO_TEST_SAMPLES "/tides.txt");
    const struct {
        const char* fault;
        const char* body;    // of the answer; null if it does not matter
        const char* header;  // announcing the file
        int status;          // 0: the connection ends before a whole answer
    } cases[] = {
        {"delay=1", book.c_str(), "attachment; filename=tides.txt", 200},
        {"status=503", book.c_str(), "attachment; filename=tides.txt", 503},
        {"filename=\"a\"; size=1", book.c_str(), "attachment; filename=\"a\"; size=1", 200},
        {"filename=", book.c_str(), "", 200},
        {"body=", "", "attachment; filename=tides.txt", 200},
        {"cut=1000000", book.c_str(), "attachment; filename=tides.txt", 200},
        {"code=1014", book.c_str(), "attachment; filename=tides.txt", 200},
        {"code=2010", nullptr, "", 200},
        {"cut=10", nullptr, nullptr, 0},
        {"cut=0", nullptr, nullptr, 0},
        {"close", nullptr, nullptr, 0},
    };
    for (const auto& [text, body, header, status] : cases) {
        SCOPED_TRACE(text);
        const auto [operation, fault] = parseFault("DownloadContent", {text, "times=1"});
        service.inject(operation, fault);
        const auto answer = device.download(id);
        ASSERT_EQ(answer ? answer->status : 0, status);
        if (body != nullptr) {
            EXPECT_EQ(answer->body, body);
        }
        if (header != nullptr) {
            EXPECT_EQ(answer->get_header_value("Content-Disposition"), header);
        }
        EXPECT_TRUE(service.requests().back().faulty);
        EXPECT_EQ(device.download(id)->body, book) << "the fault was for one request";
    }
}

TEST(Service, FaultsDoNotChangeTheStateUnlessTheySaySuccess) {
    Service service({});
    Device device(service);
    device.registerDevice();
    const auto create = [&](const std::string& fault) {
        const auto [operation, parsed] = parseFault("CreateUser:times=1," + fault);
        service.inject(operation, parsed);
        return device.post(Operation::CreateUser, device.account());
    };
    // One after the other: only the first success opens the account.
    const struct {
        const char* fault;
        const char* code;
        const char* message;
    } cases[] = {
        {"code=77", "77", "A fault asked for by the developer"},
        {"code=", "", "A fault asked for by the developer"},
        {"close,code=1003", no_answer, nullptr},
        {"code=1014", "1014", "Success"},  // carried out, with a code of another request
        {"code=1003", "1003", "There is an account with this e-mail"},
        {"delay=1", "2007", "There is an account with this e-mail"},
    };
    for (const auto& [fault, code, message] : cases) {
        const auto answer = create(fault);
        EXPECT_EQ(codeOf(answer), code) << fault;
        EXPECT_EQ(service.requests().back().code, answer ? code : "") << fault;
        EXPECT_EQ(service.requests().back().status, answer ? 200 : 0) << fault;
        if (answer) {
            EXPECT_EQ(textOf(answer->body, "Message"), message) << fault;
        }
    }
    EXPECT_EQ(create("body-hex=3C004100")->body, std::string("<\0A\0", 4));
    pugi::xml_document document;
    EXPECT_FALSE(document.load_string(create("malformed")->body.c_str()));
}

TEST(Service, FaultsAreSetAndClearedWhileItRuns) {
    Service service({});
    httplib::Client client(service.url());
    const auto fault = parseFault(
        "LoginUser:delay=5,code=1,status=500,body-hex=00ff,cut=3,malformed,"
        "close,filename=x,times=2");
    const std::string json = faultToJson(fault);
    EXPECT_THAT(client.Post("/control/faults", json, "application/json")->body, HasSubstr(json));
    EXPECT_THAT(client.Delete("/control/faults")->body, HasSubstr("\"faults\":[]"));
    for (const char* wrong : {"", "[]", "{\"operation\":\"Login\"}", "{\"operation\":1}",
                              "{\"operation\":\"LoginUser\",\"body-file\":\"/etc/hostname\"}",
                              "{\"operation\":\"LoginUser\",\"cut\":-1}"})
        EXPECT_EQ(client.Post("/control/faults", wrong, "application/json")->status, 400) << wrong;
    for (const char* wrong : {"LoginUser", "LoginUser:", "Login:code=1", "LoginUser:cod=1",
                              "LoginUser:times=x", "LoginUser:body-hex=0", "LoginUser:status=99"})
        EXPECT_THROW(parseFault(wrong), std::invalid_argument) << wrong;
}

// A restart that forgot a session or an upload would look to a device like lost books.
TEST(Service, StateFileSurvivesRestartAndRemembersRemovedBooks) {
    const TemporaryFolder folder;
    const fs::path books = folder / "books";
    writeFile(books / "a.txt", "old");
    writeFile(books / "b.txt", "b");
    const Options options = serving(books, folder / "state");
    auto service = std::make_unique<Service>(options);
    auto device = std::make_unique<Device>(*service);
    device->logIn();
    const std::string a = idAt(*service, "a.txt");
    const std::string b = idAt(*service, "b.txt");
    device->upload(a, "first", "../a.txt");
    device->upload(a, "new", "../a.txt");
    EXPECT_THROW(Service{options}, std::runtime_error) << "two services with one state file";
    const auto [token, session] = std::pair(device->token, device->session);
    service.reset();

    writeFile(folder / "state.uploads/receiving-lost", "left by a killed service");
    fs::remove(books / "b.txt");
    service = std::make_unique<Service>(options);
    device = std::make_unique<Device>(*service);
    device->token = token;
    device->session = session;
    EXPECT_EQ(device->download(a)->body, "new");
    EXPECT_EQ(device->download(a)->get_header_value("Content-Disposition"),
              "attachment; filename=a.txt");
    EXPECT_EQ(codeOf(device->download(b)), "2010");
    EXPECT_EQ(codeOf(device->post(Operation::LoginUser, device->login())), "1003");
    std::string catalogue = device->catalogue();
    EXPECT_THAT(catalogue.substr(catalogue.find("<DeletedItems>")),
                HasSubstr("<ItemID>" + b + "<"));
    EXPECT_EQ(readFile(books / "a.txt"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "state.uploads"), {}), 1);

    writeFile(books / "b.txt", "back");
    EXPECT_THAT(device->catalogue(), HasSubstr("<DeletedItems/>"));
    EXPECT_EQ(device->download(b)->body, "back");
}

TEST(Service, ReportsAndSkipsUnreadableBooks) {
    const TemporaryFolder folder;
    const auto container = [](const std::string& path) {
        return "<container><rootfile full-path=\"" + path + "\"/></container>";
    };
    writeFile(folder / "junk.epub", "no archive");
    writeFile(folder / "junk.pdf", "no document");
    writeFile(folder / "cut.fb2", "<FictionBook><title-info>");
    writeFile(folder / "code.fb2", "<?xml version='1.0' encoding='x-none'?><FictionBook/>");
    writeArchive(folder / "empty.fb2.zip", "book.txt", "");
    writeArchive(folder / "lost.epub", "META-INF/container.xml", container("../../etc/passwd"));
    writeArchive(folder / "bomb.epub", "META-INF/container.xml", std::string(5u << 20, ' '));
    std::string elements;
    for (int count = 0; count < 1'100'000; ++count)
        elements += "<a b=''/>";
    writeArchive(folder / "many.fb2.zip", "many.fb2", elements);
    writeFile(folder / "odd.fb2",
              "<f:FictionBook xmlns:f='f'><f:title-info><f:book-title>\xFF <![CDATA[<]]>\x01\n"
              "</f:book-title></f:title-info></f:FictionBook>");
    std::vector<std::string> reports;
    Options options = serving(folder / "");
    options.report = [&](const std::string& text) { reports.push_back(text); };
    Served served(options);
    auto& [service, device] = served;
    EXPECT_THAT(device.catalogue(), HasSubstr("<Title><![CDATA[\xEF\xBF\xBD <]]></Title>"));
    device.catalogue();
    EXPECT_EQ(service.books().size(), 1u);
    EXPECT_EQ(reports.size(), 8u) << testing::PrintToString(reports);
    EXPECT_THAT(reports, testing::Contains(HasSubstr("bomb.epub: skipped: entry "
                                                     "\"META-INF/container.xml\" is too large")));

    EXPECT_THAT(reports, testing::Contains(HasSubstr("many.fb2.zip: skipped: has too many")));

    // A book that is being copied over must not vanish from the devices meanwhile.
    writeFile(folder / "odd.fb2", "<f:FictionBook");
    device.catalogue();
    EXPECT_EQ(reports.size(), 9u);
    EXPECT_FALSE(bookAt(service, "odd.fb2").deleted);
}

// A device keeps only the last piece of a text that its XML reader splits.
TEST(Service, TitlesReachTheDeviceWhole) {
    const TemporaryFolder folder;
    const std::pair<std::string, std::string> cases[] = {
        {"a [b] > c]] d", "a [b] > c]] d"}, {"a & b", "a & b"},     {"a]]>b", "a))>b"},
        {"[a] & <b>", "(a) & <b>"},         {"]]>&]]>", "))>&))>"}, {"x[0] < y", "x(0) < y"},
        {"a > b & c", "a > b & c"},         {"&amp; ]", "&amp; )"},
    };
    for (std::size_t index = 0; index < std::size(cases); ++index) {
        pugi::xml_document book;
        book.append_child("FictionBook")
            .append_child("title-info")
            .append_child("book-title")
            .text()
            .set(cases[index].first.c_str());
        book.save_file((folder / (std::to_string(index) + ".fb2")).c_str());
    }
    Served served(serving(folder / ""));
    const std::string catalogue = served.device.catalogue();
    XMLParser parser;
    parser.init("utf-8");
    ASSERT_TRUE(parser.parse(catalogue.data(), static_cast<unsigned>(catalogue.size())));
    std::vector<std::string> titles;
    for (const BookDescription& book : parser.addedItems)
        titles.push_back(book.field(BookDescription::Title));
    ASSERT_EQ(titles.size(), std::size(cases));
    for (std::size_t index = 0; index < std::size(cases); ++index)
        EXPECT_EQ(titles[index], cases[index].second);
}

TEST(Service, NamesTheAuthorsOfFictionBooks) {
    const TemporaryFolder folder;
    writeFile(
        folder / "a.fb2",
        "<FictionBook><title-info><author/>"
        "<author><nickname>Nick</nickname></author><author><first-name> </first-name></author>"
        "<author><first-name>Ann</first-name><nickname>A.</nickname></author>"
        "</title-info></FictionBook>");
    EXPECT_EQ(Service(serving(folder / "")).books().at(0).artist, "Nick, Ann");
}

TEST(Service, CleansTexts) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {" \t\n", ""},
        {" a \r\n b ", "a b"},
        {std::string("a\0b\x1F\x7F", 5), "ab"},
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\x96", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\x96"},
        {"\xE2\x82", "\xEF\xBF\xBD\xEF\xBF\xBD"},                    // cut
        {"\xC0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD"},                    // overlong
        {"\xED\xA0\x80x", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBDx"},  // surrogate
        {"\xEF\xBF\xBF]]>", "]]>"},
    };
    for (const auto& [text, clean] : cases)
        EXPECT_EQ(cleanText(text), clean) << testing::PrintToString(text);
}

// Any page in the user's browser can send requests to this machine, and any name can lead to it.
TEST(Service, RefusesOtherSitesAndOtherNames) {
    Options options = serving(TAVRO_TEST_SAMPLES);
    options.hosts = {"Shelf.example", "forwarded.example:8080"};
    std::vector<std::string> reports;
    options.report = [&](const std::string& text) { reports.push_back(text); };
    Served served(options);
    const std::string port = ":" + std::to_string(served.service.port());
    const std::string book = idAt(served.service, "salt-and-pepper.epub");
    const std::string none = "-";
    const struct {
        std::string host;
        std::string origin;
        bool taken;
    } cases[] = {
        {"127.0.0.1" + port, none, true},
        {"LOCALHOST", none, true},
        {"[::1]" + port, none, true},
        {"[0:0::1]", none, true},
        {"shelf.example" + port, none, true},
        {"localhost" + port, "http://127.0.0.1" + port, true},
        {"attacker.example" + port, none, false},
        {"Forwarded.example:8080", "http://forwarded.example:8080", true},
        {"forwarded.example" + port, none, false},
        {"localhost:1", none, false},
        {"localhost:", none, false},
        {"localhost.attacker.example", none, false},
        {"[::1", none, false},
        {"192.0.2.1" + port, none, false},
        {"", none, false},
        {"localhost" + port, "http://attacker.example", false},
        {"localhost" + port, "https://localhost" + port, false},
        {"localhost" + port, "null", false},
    };
    httplib::Client client(served.service.url());
    for (const auto& [host, origin, taken] : cases) {
        SCOPED_TRACE(host + " from " + origin);
        httplib::Headers headers = {{"Host", host}};
        if (origin != none)
            headers.emplace("Origin", origin);
        reports.clear();
        EXPECT_EQ(client.Get("/covers/" + book, headers)->status, taken ? 200 : 403);
        EXPECT_EQ(client.Get("/control/status", headers)->status, taken ? 200 : 403);
        EXPECT_EQ(reports.size(), taken ? 0u : 2u);
        const std::size_t requests = served.service.requests().size();
        for (const auto& operation : allOperations())
            EXPECT_EQ(client.Post(operation.path(), headers, "x", "text/xml")->status,
                      taken ? 200 : 403);
        EXPECT_EQ(served.service.requests().size() - requests, taken ? allOperations().size() : 0);
    }
    EXPECT_THAT(ask(served.service, "GET /shop HTTP/1.0\r\n\r\n"), HasSubstr(" 403 "));

    options.address = "0.0.0.0";
    const Service everywhere(options);
    EXPECT_THAT(ask(everywhere, "GET /shop HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n"),
                HasSubstr(" 200 "));
    EXPECT_THAT(ask(everywhere, "GET /shop HTTP/1.1\r\nHost: 192.0.2.1\r\n\r\n"),
                HasSubstr(" 403 "));
}

TEST(Service, ReportsShowWhatATerminalWouldObey) {
    const TemporaryFolder folder;
    writeFile(folder / "\x1B[2J\xFF.epub", "no archive");
    std::vector<std::string> reports;
    Options options = serving(folder / "");
    options.report = [&](const std::string& text) { reports.push_back(text); };
    const Service service(options);
    httplib::Client(service.url()).Post("/%1B%5B2J%C2%9B%FF", "", "text/xml");
    EXPECT_THAT(reports, ElementsAre(HasSubstr("/\uFFFD[2J\uFFFD.epub: skipped"),
                                     testing::EndsWith("POST /\uFFFD[2J\uFFFD\uFFFD")));
}

// Nobody has to log in to be remembered.
TEST(Service, BoundsWhatStrangersMakeItKeep) {
    Service service({});
    Device device(service);
    const std::string large(1'000'000, 'x');
    for (int count = 0; count < 20; ++count)
        device.post(Operation::LoginUser, large);
    std::size_t bytes = 0;
    for (const Request& request : service.requests())
        bytes += request.body.size();
    EXPECT_GT(bytes, 15u << 20);
    EXPECT_LT(bytes, 16u << 20);

    const auto refused = httplib::Client(service.url()).Put("/", large, "text/plain");
    ASSERT_TRUE(refused) << "the answer is lost";
    EXPECT_EQ(refused->status, 413);

    const auto parts = [](std::size_t count, const std::string& name, const std::string& file) {
        return httplib::MultipartFormDataItems(count, {name, "", file, ""});
    };
    const struct {
        httplib::MultipartFormDataItems form;
        const char* code;
    } forms[] = {
        {parts(64, std::string(256, 'n'), ""), "2002"},
        {parts(65, "n", ""), "2001"},
        {parts(1, std::string(257, 'n'), ""), "2001"},
        {parts(1, "file", std::string(1025, 'n')), "2001"},
    };
    for (const auto& [form, code] : forms) {
        EXPECT_EQ(codeOf(device.form(Operation::UploadContent, form)), code);
        EXPECT_LE(service.requests().back().fields.size(), 64u);
    }

    const std::string nested = "{\"operation\":\"LoginUser\",\"code\":" + std::string(500'000, '[');
    EXPECT_EQ(
        httplib::Client(service.url())
            .Post("/control/faults", nested + std::string(500'000, ']') + "}", "application/json")
            ->status,
        400);
}

TEST(Service, NobodyWaitsForThoseWhoWait) {
    Options options;
    options.patience = std::chrono::milliseconds(700);
    Service service(options);
    service.inject(Operation::LoginUser, parseFault("LoginUser:delay=3600000").second);
    std::vector<std::future<std::string>> answers;
    answers.reserve(40);
    for (int count = 0; count < 40; ++count)
        answers.push_back(std::async(std::launch::async, [&] {
            return ask(service,
                       "POST /IOSCloudManagement.svc/LoginUser HTTP/1.1\r\n"
                       "Host: localhost\r\nContent-Length: 0\r\n\r\n");
        }));
    std::vector<posix::FileDescriptor> idle;
    idle.reserve(100);
    for (int count = 0; count < 100; ++count)
        idle.push_back(connectTo(service));
    const posix::FileDescriptor slow = connectTo(service);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(httplib::Client(service.url()).Get("/shop"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, options.patience);

    while (::send(slow.get(), "G", 1, MSG_NOSIGNAL) == 1 &&
           std::chrono::steady_clock::now() - start < std::chrono::seconds(20))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    for (const posix::FileDescriptor& connection : idle)
        EXPECT_EQ(readAll(connection.get()), "");

    httplib::Client(service.url()).Delete("/control/faults");
    for (auto& answer : answers)
        EXPECT_THAT(answer.get(), HasSubstr("<Error>2001<"));
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
    const std::string text = line;
    const std::string url = "\"url\":\"";
    const std::size_t begin = text.find(url) + url.size();
    httplib::Client client(text.substr(begin, text.find('"', begin) - begin));
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
    const std::string id = idAt(served.service, "a.txt");
    for (int count = 0; count < 100; ++count)
        ASSERT_EQ(codeOf(served.device.upload(id, "new", "a.txt")), "1003");
    ::umask(mask);
    EXPECT_LT(fs::file_size(folder / "state-wal"), 256u << 10);
    std::set<std::string> open;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "")) {
        const bool ours = entry.path().filename().string().rfind("state", 0) == 0 ||
                          entry.path().parent_path().filename() == "state.uploads";
        if (ours && (entry.status().permissions() & fs::perms(0077)) != fs::perms::none)
            open.insert(entry.path());
    }
    EXPECT_THAT(open, ElementsAre());
}

TEST(Service, StopDoesNotWaitForSlowRequests) {
    Service service({});
    Device device(service);
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
    writeFile(folder / "a.txt", "a");
    Served served(serving(folder / ""));
    for (const char* name : {"q\"q.txt", "a\\b.txt", "a\\\\b.txt", "100%.txt", "%41.txt",
                             "a; filename=b.txt", "\xD0\xAF \xE2\x82\xAC.txt"})
        EXPECT_EQ(arrivedName(served, name), name);
    const std::string id = idAt(served.service, "a.txt");
    served.device.upload(id, "new", "o\\\"l\\\\d %22.txt");  // as older versions of libcurl
    EXPECT_EQ(bookAt(served.service, "a.txt").fileName, "o\"l\\d %22.txt");
}

// A folder that cannot be read says nothing about its books; devices would delete theirs.
TEST(Service, NoBookIsDeletedUnlessItsFolderWasRead) {
    const TemporaryFolder folder;
    const fs::path books = folder / "books";
    for (const char* name : {"a.txt", "sub/deep/b.txt", "sub.txt/c.txt", "d.txt"})
        writeFile(books / name, name);
    std::vector<std::string> reports;
    Options options = serving(books, folder / "state");
    options.report = [&](const std::string& text) { reports.push_back(text); };
    auto served = std::make_unique<Served>(options);
    const auto deleted = [&] {
        served->device.catalogue();
        std::vector<std::string> paths;
        for (const Book& book : served->service.books()) {
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
    {
        SQLite::Database(folder / "state", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
            .exec(version_one_state);
    }
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
        served.device.upload(idAt(served.service, "a.txt"), "mine", "a.txt");
    }
    SQLite::Database(folder / "state", SQLite::OPEN_READWRITE)
        .exec(
            "CREATE TRIGGER broken BEFORE UPDATE OF upload ON items"
            " BEGIN SELECT RAISE(ABORT, 'the disk is full'); END");
    {
        Served served(options);
        const std::string id = idAt(served.service, "a.txt");
        EXPECT_EQ(codeOf(served.device.upload(id, "next", "a.txt")), "2099");
        EXPECT_EQ(served.device.download(id)->body, "mine");
        EXPECT_EQ(uploads(), 1);
    }
    fs::rename(folder / "state", folder / "mislaid");
    { const Service service(options); }
    fs::rename(folder / "mislaid", folder / "state");
    Served served(options);
    EXPECT_EQ(served.device.download(idAt(served.service, "a.txt"))->body, "mine");
}
