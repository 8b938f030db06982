// The configuration store's calls: OpenConfig to CloseConfigNoSave, WriteString and RemoveKey.

#include <memory>
#include <set>

#include "configuration_file.h"
#include "decimal.h"
#include "guarded.h"
#include "lectern_host.h"
#include "stored_value.h"

struct LecternConfig {
    ConfigurationFile file;
    std::set<std::string> handedOut;  // what callers hold pointers into, until the handle is closed
    int lostWrite = 0;                // why a write without a result of its own failed
};

namespace {

using Decoder = std::optional<std::string> (*)(std::string_view stored);
using Encoder = std::string (*)(std::string_view text);

std::optional<std::string> decoded(const LecternConfig* config, const char* key, Decoder decode) {
    if (config == nullptr || key == nullptr)
        return std::nullopt;
    const std::optional<std::string_view> stored = config->file.value(key);
    return stored ? decode(*stored) : std::nullopt;
}

const char* read(LecternConfig* config, const char* key, const char* fallback, Decoder decode) {
    return guarded(fallback, [=] {
        const std::optional<std::string> text = decoded(config, key, decode);
        return text ? config->handedOut.insert(*text).first->c_str() : fallback;
    });
}

bool write(LecternConfig* config, const char* key, const char* value, Encoder encode) {
    return guarded(false, [=] {
        if (config == nullptr || key == nullptr || value == nullptr ||
            !ConfigurationFile::isKey(key)) {
            errno = EINVAL;
            return false;
        }
        config->file.setValue(key, encode(value));
        return true;
    });
}

}  // namespace

LecternConfig* OpenConfig(const char* path, const void* /*defaults*/) {
    return guarded<LecternConfig*>(nullptr, [path]() -> LecternConfig* {
        std::optional<ConfigurationFile> file;
        if (path != nullptr)
            file = ConfigurationFile::open(path);
        return file ? new LecternConfig{std::move(*file), {}} : nullptr;
    });
}

const char* ReadString(LecternConfig* config, const char* key, const char* fallback) {
    return read(config, key, fallback, textOf);
}

int ReadInt(LecternConfig* config, const char* key, int fallback) {
    return guarded(fallback, [=] {
        const std::optional<std::string> text = decoded(config, key, textOf);
        return text ? parseDecimal(*text).value_or(fallback) : fallback;
    });
}

const char* ReadSecret(LecternConfig* config, const char* key, const char* fallback) {
    return read(config, key, fallback, secretOf);
}

void WriteSecret(LecternConfig* config, const char* key, const char* value) {
    if (!write(config, key, value, storedSecret) && config != nullptr)
        config->lostWrite = errno;
}

int WriteString(LecternConfig* config, const char* key, const char* value) {
    return write(config, key, value, storedText) ? 0 : -1;
}

int RemoveKey(LecternConfig* config, const char* key) {
    if (config == nullptr || key == nullptr)
        return -1;
    return guarded(-1, [=] {
        config->file.remove(key);
        return 0;
    });
}

int CloseConfig(LecternConfig* config) {
    return guarded(-1, [config] {
        const std::unique_ptr<LecternConfig> owner(config);
        const int cause = config == nullptr ? EINVAL : config->lostWrite;
        if (cause != 0)
            throw std::system_error(cause, std::generic_category());
        config->file.save();
        return 0;
    });
}

void CloseConfigNoSave(LecternConfig* config) {
    delete config;
}
