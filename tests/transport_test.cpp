#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdarg>

#include "curlmanager.h"
#include "support/next_function.h"
#include "support/service_fixture.h"

using folium::tavro::CurlManager;
using namespace tavro::service;
using namespace std::string_literals;
using testing::HasSubstr;

namespace {

/// What the library asked of libcurl; the calls below stand before libcurl's own.
struct CurlCalls {
    std::vector<CURLoption> options;
    std::vector<long> values;  ///< of the options that take a number
    std::size_t failingOption = SIZE_MAX;
    int transfers = 0;
};

CurlCalls calls;

}  // namespace

#undef curl_easy_setopt
extern "C" CURLcode curl_easy_setopt(CURL* curl, CURLoption option, ...) {
    calls.options.push_back(option);
    if (calls.options.size() - 1 == calls.failingOption)
        return CURLE_UNKNOWN_OPTION;
    std::va_list arguments;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"  // libcurl declares its last named parameter an enum
    va_start(arguments, option);
#pragma GCC diagnostic pop
    void* const value = va_arg(arguments, void*);
    va_end(arguments);
    if (option < CURLOPTTYPE_OBJECTPOINT)
        calls.values.push_back(reinterpret_cast<long>(value));
    return next<CURLcode(CURL*, CURLoption, ...)>("curl_easy_setopt")(curl, option, value);
}

extern "C" CURLcode curl_easy_perform(CURL* curl) {
    ++calls.transfers;
    return next<CURLcode(CURL*)>("curl_easy_perform")(curl);
}

namespace {

class Transport : public ServiceFixture {
protected:
    Transport() {
        writeFile(folder / "in/note", "note");
        calls = {};
    }

    std::string download() {
        return curl.downloadFile(TavroServer::downloadUrl, service.port(), fields, folder / "in",
                                 "ignored");
    }

    void request() { curl.sendRequest(TavroServer::baseApiUrl + "LoginUser", service.port(), "x"); }

    void upload() {
        curl.uploadFile(TavroServer::uploadUrl, service.port(), fields, folder / "in/note");
    }

    std::string response() const {
        return {curl.responseBuffer.begin(), curl.responseBuffer.end()};
    }

    const CurlManager::FormFields fields = {{"Token", "t"}, {"SessionId", ""}, {"ItemId", "1"}};
    CurlManager curl;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
const std::vector<CURLoption> request_options = {
    CURLOPT_VERBOSE,     CURLOPT_TIMEOUT,       CURLOPT_FOLLOWLOCATION,
    CURLOPT_AUTOREFERER, CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA,
    CURLOPT_URL,         CURLOPT_PORT,          CURLOPT_POST,
    CURLOPT_HTTPHEADER,  CURLOPT_POSTFIELDS};
const std::vector<CURLoption> download_options = {
    CURLOPT_VERBOSE,   CURLOPT_FOLLOWLOCATION, CURLOPT_AUTOREFERER, CURLOPT_WRITEFUNCTION,
    CURLOPT_WRITEDATA, CURLOPT_HEADERFUNCTION, CURLOPT_HEADERDATA,  CURLOPT_URL,
    CURLOPT_PORT,      CURLOPT_POST,           CURLOPT_HTTPPOST};
const std::vector<CURLoption> upload_options = {CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA,
                                                CURLOPT_URL,           CURLOPT_PORT,
                                                CURLOPT_POST,          CURLOPT_HTTPPOST};
#pragma GCC diagnostic pop

}  // namespace

// Under the sanitizers this also shows that no early end leaks a list or a form.
TEST_F(Transport, EveryOptionIsSetInOrderAndAFailingOneEndsTheOperation) {
    const struct {
        std::function<void()> run;
        const std::vector<CURLoption>& options;
        std::vector<long> values;
    } operations[] = {{[this] { request(); }, request_options, {1, 60, 1, 1, service.port(), 1}},
                      {[this] { download(); }, download_options, {1, 1, 1, service.port(), 1}},
                      {[this] { upload(); }, upload_options, {service.port(), 1}}};
    for (const auto& operation : operations) {
        calls = {};
        operation.run();
        EXPECT_EQ(calls.options, operation.options);
        EXPECT_EQ(calls.values, operation.values);
        EXPECT_EQ(calls.transfers, 1);
        for (std::size_t failing = 0; failing < operation.options.size(); ++failing) {
            calls = {};
            calls.failingOption = failing;
            EXPECT_EQ(standardErrorOf(operation.run), "");
            EXPECT_EQ(calls.options.size(), failing + 1);
            EXPECT_EQ(calls.transfers, 0);
            EXPECT_EQ(response(), "");
            EXPECT_EQ(curl.responseBuffer.capacity(), 4096U);
        }
    }
}

TEST_F(Transport, RequestCarriesItsHeadersAndAnswersOnlyInTheBuffer) {
    service.answer(Operation::LoginUser, "one\0two"s);
    EXPECT_EQ(curl.sendRequest(TavroServer::baseApiUrl + "LoginUser", service.port(), "<a>&</a>"),
              "");
    EXPECT_EQ(response(), "one\0two"s);
    const Request sent = lastRequest();
    EXPECT_EQ(sent.body, "<a>&</a>");
    EXPECT_EQ(sent.soapAction, TavroServer::baseApiUrl + "LoginUser");
    EXPECT_EQ(sent.contentType, "application/xml; charset=utf-8");
    EXPECT_EQ(sent.accept, "text/xml");
}

TEST_F(Transport, FailedTransferIsReportedAndLeavesAnEmptyBuffer) {
    service.stop();
    for (const auto& run : std::vector<std::function<void()>>{
             [this] { request(); }, [this] { upload(); }, [this] { download(); }}) {
        EXPECT_THAT(standardErrorOf(run),
                    HasSubstr("curl_easy_perform() failed: Couldn't connect to server\n"));
        EXPECT_EQ(response(), "");
    }
}

TEST_F(Transport, OnlyAnswersBelowTenKibibytesAreLogged) {
    const std::string log = folder / "log";
    ::setenv("TAVRO_LOG", log.c_str(), 1);
    ::setenv("TAVRO_LOG_LEVEL", "4", 1);
    const std::string url = TavroServer::baseApiUrl + "LoginUser";
    for (const std::size_t size : {4096U, 10239U, 10240U}) {
        writeFile(log, "");
        const std::string body(size, 'x');
        service.answer(Operation::LoginUser, body);
        request();
        EXPECT_EQ(response(), body);
        const std::string text = readFile(log);
        EXPECT_THAT(text, HasSubstr("Requesting url [" + url + "] with params [x]"));
        const bool logged =
            text.find("Request to " + url + " return [" + body + "]") != std::string::npos;
        EXPECT_EQ(logged, size < 10240U) << size;
    }
    ::unsetenv("TAVRO_LOG");
    ::unsetenv("TAVRO_LOG_LEVEL");
}

TEST_F(Transport, BufferGrowsAsIfBytesCameOneByOne) {
    std::vector<char> expected;
    for (const std::size_t size : {1U, 2U, 5U, 4000U, 88U, 1U, 20000U}) {
        std::string bytes(size, 'b');
        expected.reserve(0);
        for (const char byte : bytes)
            expected.push_back(byte);
        EXPECT_EQ(CurlManager::write_callback(bytes.data(), size, 1, &curl), size);
        EXPECT_EQ(curl.responseBuffer, expected);
        EXPECT_EQ(curl.responseBuffer.capacity(), expected.capacity());
    }
    char byte = 'x';
    EXPECT_EQ(CurlManager::write_callback(&byte, 1, 0, &curl), 0U);
    EXPECT_EQ(CurlManager::write_callback(&byte, 1, 1, nullptr), 0U);
    EXPECT_EQ(CurlManager::write_header(&byte, 1, 1, nullptr), 0U);
    EXPECT_EQ(CurlManager::write_download(&byte, 1, 1, nullptr), 0U);
    EXPECT_EQ(CurlManager::write_download(&byte, 1, 1, &curl), 0U);
}

// A hostile header line must not be read past its end.
TEST_F(Transport, FileNameIsTheRestOfTheHeaderLineLessItsLineEnd) {
    const std::pair<std::string, std::string> lines[] = {
        {"Content-Disposition: attachment; filename=a.txt\r\n", "a.txt"},
        {"content-disposition: x; filename=\"a b.txt\"; size=3\r\n", "\"a b.txt\"; size=3"},
        {"X: filename=one; filename=two\r\n", "one; filename=two"},
        {"X: filename=\r\n", ""},
        {"X: filename=\n", ""},
        {"X: filename=", ""}};
    curl.downloadDir = folder / "in";
    for (const auto& [line, name] : lines) {
        curl.downloadFileName = "unset";
        std::string bytes = line;
        EXPECT_EQ(CurlManager::write_header(bytes.data(), 1, bytes.size(), &curl), line.size());
        EXPECT_EQ(curl.downloadFileName, name);
        ASSERT_NE(curl.downloadStream, nullptr);
        std::fclose(std::exchange(curl.downloadStream, nullptr));
    }
    std::string other = "Content-Length: 12\r\n";
    EXPECT_EQ(CurlManager::write_header(other.data(), 1, other.size(), &curl), other.size());
    EXPECT_EQ(curl.downloadStream, nullptr);
}

// A cut book must never pass for a whole one, whether the network or the disk cut it.
TEST_F(Transport, CutDownloadHasNoName) {
    service.inject("DownloadContent:filename=\"book.txt\",body-hex=610062");
    EXPECT_EQ(download(), "\"book.txt\"");
    EXPECT_EQ(readFile(folder / "in/\"book.txt\".downloading"), "a\0b"s);
    EXPECT_FALSE(std::filesystem::exists(folder / "in/\"book.txt\""));
    EXPECT_EQ(curl.downloadStream, nullptr);
    EXPECT_EQ(lastRequest().fields, fields);

    writeFile(folder / "in/book.txt", "an older file");
    service.inject("DownloadContent:filename=book.txt,body=content,cut=3");
    EXPECT_THAT(standardErrorOf([this] { EXPECT_EQ(download(), ""); }), HasSubstr("failed"));
    EXPECT_EQ(readFile(folder / "in/book.txt.downloading"), "con");
    EXPECT_FALSE(std::filesystem::exists(folder / "in/book.txt"));

    std::filesystem::create_symlink("/dev/full", folder / "in/full.txt.downloading");
    for (const std::string& fault :
         {"filename=full.txt,body=content"s, "filename=,body=content"s,
          "filename=missing/book.txt,body="s, "filename=full.txt,body=" + std::string(8192, 'x')}) {
        service.inject("DownloadContent:" + fault);
        EXPECT_EQ(download(), "") << fault;
    }
}

TEST_F(Transport, UploadSendsTheFileAsTheLastPart) {
    service.answer(Operation::UploadContent, "taken");
    upload();
    EXPECT_EQ(response(), "taken");
    auto expected = fields;
    expected.emplace_back("file", "note");
    EXPECT_EQ(lastRequest().fields, expected);
    EXPECT_EQ(lastRequest().fileContentType, "text/plain");
    std::filesystem::remove(folder / "in/note");
    EXPECT_THAT(standardErrorOf([this] { upload(); }), HasSubstr("failed"));
    EXPECT_EQ(response(), "");
}
