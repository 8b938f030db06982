#include <core_utils.h>
#include <lectern.h>
#include <unistd.h>

#include <cstdlib>

#include "device-check/shared_library.h"
#include "posix/files.h"

namespace tavro::device_check {

namespace {

using namespace std::string_literals;

std::string checkStart(const Context&) {
    LECTERN(InitLectern)(65573);  // flags as the library's
    return "returns";
}

std::string checkPartner(const Context&) {
    const int code = LECTERN(GetCustomizedPartner)();
    return std::to_string(code) + (code == 12 || code == 16
                                       ? ": the server settings' file counts"
                                       : ": the built-in server settings count");
}

/// Hash of `content`, as the library asks for it.
std::string hashOf(const Context& context, const std::string& content) {
    char hash[256];
    const std::string path = writeFile(context, "hashed", content);
    const int size = LECTERN(FastBookHash)(path.c_str(), hash, sizeof hash);
    expect(size > 0 && size <= 256, "wrote " + std::to_string(size) + " bytes into 256");
    return {hash, static_cast<std::size_t>(size)};
}

std::string checkHash(const Context& context) {
    std::string content(100000, 'a');
    const std::string hash = hashOf(context, content);
    expect(hash == hashOf(context, content), "one content has two hashes");
    content[content.size() / 2] = 'b';
    expect(hash != hashOf(context, content), "two contents, one byte apart, have one hash");
    char buffer[256];
    const std::string none = context.folder + "/none";
    expect(LECTERN(FastBookHash)(none.c_str(), buffer, sizeof buffer) <= 0,
           "a file that is not there has one");
    return std::to_string(hash.size()) + " bytes, other ones for another content";
}

std::string checkLogger(const Context&) {
    const auto log = symbol<decltype(fl_print_log2)>(core_utils_library, "fl_print_log2");
    for (const int level : {1, 4})
        log(level, __FILE__, __LINE__, __func__, "tavro-device-check wrote %s at level %d",
            "this line", level);
    return "returns; the system's log has lines with \"tavro-device-check\", level 4 if it is on";
}

std::string checkProcessId(const Context&) {
    const int id = *symbol<int>(core_utils_library, "g_process_pid");
    expect(id == ::getpid(), std::to_string(id) + " for process " + std::to_string(::getpid()));
    return "this process's";
}

LecternConfig* open(const std::string& path) {
    return LECTERN(OpenConfig)(path.c_str(), nullptr);
}

std::string text(LecternConfig* config, const char* key) {
    return LECTERN(ReadString)(config, key, "(none)");
}

std::string checkOpening(const Context& context) {
    LecternConfig* const fresh = open(context.folder + "/new.cfg");
    expect(fresh != nullptr, "no handle for a new file");
    expect(text(fresh, "key") == "(none)", "a new file has values");
    LECTERN(CloseConfigNoSave)(fresh);
    expect(open(context.folder + "/none/file.cfg") == nullptr, "a handle in a missing folder");
    return "as agreed for new files and missing folders";
}

std::string checkReading(const Context& context) {
    const auto number = LECTERN(ReadInt);
    LecternConfig* const config = open(writeFile(
        context, "some.cfg", "text=two words\nurl=http://a.example:80/?b=c\nport=1510\n"));
    expect(config != nullptr, "no handle for a file of key=value lines");
    const std::string words = text(config, "text");
    expect(words == "two words", "reads \"" + words + "\" for a text");
    expect(text(config, "url") == "http://a.example:80/?b=c", "cuts an address");
    expect(number(config, "port", -1) == 1510, "reads no number");
    expect(number(config, "text", -1) == -1, "reads a number where there is none");
    expect(text(config, "none") == "(none)", "no fallback for a missing key");
    LECTERN(CloseConfigNoSave)(config);
    expect(text(nullptr, "text") == "(none)" && number(nullptr, "port", -1) == -1,
           "no fallback without a handle");
    return "texts, numbers and fallbacks";
}

std::string checkSecrets(const Context& context) {
    const auto write = LECTERN(WriteSecret);
    const auto save = LECTERN(CloseConfig);
    const auto secret = [](LecternConfig* config, const char* key) -> std::string {
        return LECTERN(ReadSecret)(config, key, "(none)");
    };
    const std::string path = context.folder + "/secret.cfg", password = "correct horse: 3=2";
    LecternConfig* config = open(path);
    write(config, "password", password.c_str());
    expect(save(config) == 0, "CloseConfig does not save");
    expect(posix::readFile(path).find(password) == std::string::npos,
           "the file shows a secret to everybody who reads it");
    config = open(path);
    expect(secret(config, "password") == password, "a secret reads back as another text");
    expect(secret(config, "none") == "(none)", "no fallback for a missing key");
    LECTERN(CloseConfigNoSave)(config);
    write(nullptr, "password", "");
    expect(secret(nullptr, "password") == "(none)", "no fallback without a handle");
    expect(save(nullptr) == -1, "CloseConfig saves without a handle");
    return "written, hidden, read back";
}

// Small pictures, made by hand from the formats' descriptions, in few grey pixels.

/// 8 x 8 pixels of middle grey: Huffman tables of one code each, and two zero bits.
const std::string jpeg = "\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0\xff\xdb\0\x43\0"s +
                         std::string(64, '\x10') +
                         "\xff\xc0\0\x0b\x08\0\x08\0\x08\1\1\x11\0"
                         "\xff\xc4\0\x14\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                         "\xff\xc4\0\x14\x10\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                         "\xff\xda\0\x08\1\1\0\0\x3f\0\x3f\xff\xd9"s;

/// 2 x 2 pixels, a chequer of black and white; check sums and packed rows are zlib's.
const std::string png =
    "\x89PNG\r\n\x1a\n"
    "\0\0\0\x0dIHDR\0\0\0\2\0\0\0\2\x08\0\0\0\0\x57\xdd\x52\xf8"
    "\0\0\0\x0cIDAT\x78\xda\x63\x60\xf8\x0f\x84\0\x06\0\1\xff\xad\x2c\x37\x25"
    "\0\0\0\0IEND\xae\x42\x60\x82"s;

/// The same in 24 bits.
const std::string bmp =
    "BM\x46\0\0\0\0\0\0\0\x36\0\0\0"
    "\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x10\0\0\0"
    "\x13\x0b\0\0\x13\x0b\0\0\0\0\0\0\0\0\0\0"
    "\0\0\0\xff\xff\xff\0\0"
    "\xff\xff\xff\0\0\0\0\0"s;

/// A check of the image loader `name` with `picture`, and with what is no picture and no file. What
/// `load` returns for a path is freed as the browser frees it.
Check imageCheck(const char* name, const char* breaks, const std::string& picture,
                 const std::function<void*(const char* path)>& load) {
    const auto loads = [load](const std::string& path) {
        void* const bitmap = load(path.c_str());
        std::free(bitmap);
        return bitmap != nullptr;
    };
    return {name, breaks, "", [=](Context& context) {
                expect(loads(writeFile(context, "picture", picture)), "does not load a small one");
                expect(!loads(writeFile(context, "text", "no picture")), "takes a text for one");
                expect(!loads(context.folder + "/none"), "loads a file that is not there");
                return "loads one of " + std::to_string(picture.size()) +
                       " bytes, refuses what is none";
            }};
}

}  // namespace

std::vector<Check> platformChecks() {
    return {
        {"InitLectern", "every session, as it begins with this call", "", checkStart},
        {"GetCustomizedPartner", "the service is not found", "", checkPartner},
        {"FastBookHash", "the browser keeps describing books from an old catalogue", "", checkHash},
        {"fl_print_log2", "every call that is logged", "", checkLogger},
        {"g_process_pid", "log lines name another process", "", checkProcessId},
        {"DeserializeStringVec", "the browser shows waiting books as missing",
         "build with the C++ ABI of libcore_utils.so", inModule("DeserializeStringVec")},
        {"OpenConfig", "no account is found, and no password is stored", "", checkOpening},
        {"ReadString, ReadInt", "the account and the server settings are misread",
         "write .tavro.conf and server_connection_data.cfg with the platform's own tools",
         checkReading},
        {"ReadSecret, WriteSecret", "the password is lost, or for everybody to see", "",
         checkSecrets},
        // Brightness, contrast and the rest as the library passes them for covers.
        imageCheck("LoadJPEG", "the browser shows no JPEG covers", jpeg,
                   [](const char* path) { return LECTERN(LoadJPEG)(path, 8, 8, 96, 105, 1); }),
        imageCheck("LoadPNGStretch", "the browser shows no PNG covers", png,
                   [](const char* path) { return LECTERN(LoadPNGStretch)(path, 8, 8, 1, 1); }),
        imageCheck("LoadBitmap", "the browser shows no BMP covers", bmp,
                   [](const char* path) { return LECTERN(LoadBitmap)(path); })};
}

Check eventCheck() {
    return {"SendEventTo", "other applications do not learn of a log-out", "", [](Context&) {
                return "returned " + std::to_string(LECTERN(SendEventTo)(-3, 215, 0, 0));
            }};
}

Check applicationCheck(const std::string& application) {
    return {"OpenBook", "the login wizard does not open", "", [application](Context&) {
                const int result = LECTERN(OpenBook)(application.c_str(), "-library", 0);
                return "returned " + std::to_string(result) + "; see whether " + application +
                       " has opened";
            }};
}

}  // namespace tavro::device_check
