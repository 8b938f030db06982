/// The settings file. Promises: a file of any content opens and, when nothing is changed, stays as
/// it is to the byte; a text or secret that was written reads back after closing; a new key leaves
/// the file's old content in front of it; a secret does not stand in the file as it is.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <string>

#include "lectern_host.h"
#include "require.h"
#include "support/temporary_folder.h"

namespace {

/// Opens the settings file `path`, which must work.
LecternConfig* open(const std::string& path) {
    LecternConfig* const config = OpenConfig(path.c_str(), nullptr);
    require(config != nullptr, "a settings file opens whatever stands in it");
    return config;
}

using Read = const char* (*)(LecternConfig* config, const char* key, const char* fallback);

/// What `read` finds under `key` in the file `path`.
std::string readBack(const std::string& path, Read read, const std::string& key) {
    LecternConfig* const config = open(path);
    const std::string value = read(config, key.c_str(), "\x01missing");
    CloseConfigNoSave(config);
    return value;
}

bool has(const std::string& content, const std::string& part) {
    return content.find(part) != std::string::npos;
}

void checkText(const std::string& path, const std::string& key, const std::string& value) {
    const std::string before = readFile(path);
    LecternConfig* const config = open(path);
    const bool isNew = ReadString(config, key.c_str(), nullptr) == nullptr &&
                       ReadSecret(config, key.c_str(), nullptr) == nullptr && !has(before, key);
    const bool written = WriteString(config, key.c_str(), value.c_str()) == 0;
    require(CloseConfig(config) == 0, "settings can be saved");
    if (!written)
        return require(readFile(path) == before, "what was refused changes nothing");
    require(readBack(path, ReadString, key) == value, "a text that was written reads back");
    if (isNew)
        require(readFile(path).compare(0, before.size(), before) == 0,
                "a new key leaves the old content as it is");
}

void checkSecret(const std::string& path, const std::string& key, const std::string& secret) {
    const bool visible = has(readFile(path), secret) || has(key, secret);
    LecternConfig* const config = open(path);
    WriteSecret(config, key.c_str(), secret.c_str());
    if (CloseConfig(config) != 0)
        return;
    require(readBack(path, ReadSecret, key) == secret, "a secret that was written reads back");
    // The mark of secrets has eight characters, and what follows are digits that could be anything.
    constexpr std::size_t too_long_for_chance = 24;
    if (secret.size() >= too_long_for_chance && !visible)
        require(!has(readFile(path), secret), "a secret does not stand in the file as it is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    const std::string path = folder / "settings";
    FuzzedDataProvider input(data, size);
    const std::string key = input.ConsumeRandomLengthString(40).c_str();  // up to a zero byte
    const std::string value = input.ConsumeRandomLengthString(100).c_str();
    const std::string content = input.ConsumeRemainingBytesAsString();
    writeFile(path, content);

    LecternConfig* const unchanged = open(path);
    ReadInt(unchanged, key.c_str(), 0);
    require(CloseConfig(unchanged) == 0 && readFile(path) == content,
            "settings that nobody changes stay as they are");
    checkText(path, key, value);
    checkSecret(path, key, value);
    return 0;
}
