#include <lectern.h>

#include "device-check/files.h"
#include "device-check/shared_library.h"
#include "posix/files.h"

namespace tavro::device_check {

namespace {

LecternConfig* open(const std::string& path) {
    return lectern<decltype(OpenConfig)>("OpenConfig")(path.c_str(), nullptr);
}

void discard(LecternConfig* config) {
    lectern<decltype(CloseConfigNoSave)>("CloseConfigNoSave")(config);
}

std::string text(LecternConfig* config, const char* key) {
    return lectern<decltype(ReadString)>("ReadString")(config, key, "(none)");
}

int number(LecternConfig* config, const char* key) {
    return lectern<decltype(ReadInt)>("ReadInt")(config, key, -1);
}

std::string secret(LecternConfig* config, const char* key) {
    return lectern<decltype(ReadSecret)>("ReadSecret")(config, key, "(none)");
}

std::string checkOpening(const Context& context) {
    LecternConfig* const fresh = open(context.folder + "/new.cfg");
    expect(fresh != nullptr, "no handle for a new file");
    expect(text(fresh, "key") == "(none)", "a new file has values");
    discard(fresh);
    expect(open(context.folder + "/none/file.cfg") == nullptr, "a handle in a missing folder");
    return "as agreed for new files and missing folders";
}

std::string checkReading(const Context& context) {
    LecternConfig* const config = open(writeFile(
        context.folder, "some.cfg", "text=two words\nurl=http://a.example:80/?b=c\nport=1510\n"));
    expect(config != nullptr, "no handle for a file of key=value lines");
    expect(text(config, "text") == "two words",
           "reads \"" + text(config, "text") + "\" for a text");
    expect(text(config, "url") == "http://a.example:80/?b=c", "cuts an address");
    expect(number(config, "port") == 1510, "reads no number");
    expect(number(config, "text") == -1, "reads a number where there is none");
    expect(text(config, "none") == "(none)", "no fallback for a missing key");
    discard(config);
    expect(text(nullptr, "text") == "(none)" && number(nullptr, "port") == -1,
           "no fallback without a handle");
    return "texts, numbers and fallbacks";
}

std::string checkSecrets(const Context& context) {
    const auto write = lectern<decltype(WriteSecret)>("WriteSecret");
    const auto save = lectern<decltype(CloseConfig)>("CloseConfig");
    const std::string path = context.folder + "/secret.cfg";
    const std::string password = "correct horse: 3=2";
    LecternConfig* config = open(path);
    write(config, "password", password.c_str());
    expect(save(config) == 0, "CloseConfig does not save");
    expect(posix::readFile(path).find(password) == std::string::npos,
           "the file shows a secret to everybody who reads it");
    config = open(path);
    expect(secret(config, "password") == password, "a secret reads back as another text");
    expect(secret(config, "none") == "(none)", "no fallback for a missing key");
    discard(config);
    write(nullptr, "password", "");
    expect(secret(nullptr, "password") == "(none)", "no fallback without a handle");
    expect(save(nullptr) == -1, "CloseConfig saves without a handle");
    return "written, hidden, read back";
}

}  // namespace

std::vector<Check> settingsChecks() {
    return {{"OpenConfig", "no account is found, and no password is stored", "", checkOpening},
            {"ReadString, ReadInt", "the account and the server settings are misread",
             "write .tavro.conf and server_connection_data.cfg with the platform's own tools",
             checkReading},
            {"ReadSecret, WriteSecret", "the password is lost, or for everybody to see", "",
             checkSecrets}};
}

}  // namespace tavro::device_check
