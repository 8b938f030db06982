#include <core_utils.h>
#include <lectern.h>
#include <unistd.h>

#include "device-check/files.h"
#include "device-check/module_checks.h"

namespace tavro::device_check {

namespace {

std::string checkStart(const Context&) {
    constexpr int flags = 65573;  // as the library's
    lectern<decltype(InitLectern)>("InitLectern")(flags);
    return "returns";
}

std::string checkPartner(const Context&) {
    const int code = lectern<decltype(GetCustomizedPartner)>("GetCustomizedPartner")();
    const bool configurable = code == 12 || code == 16;
    return std::to_string(code) + (configurable ? ": the server settings' file counts"
                                                : ": the built-in server settings count");
}

/// Hash of `content`, as the library asks for it.
std::string hashOf(const Context& context, const std::string& content) {
    const auto call = lectern<decltype(FastBookHash)>("FastBookHash");
    const std::string path = writeFile(context.folder, "hashed", content);
    std::string hash(256, '\0');
    const int size = call(path.c_str(), &hash[0], static_cast<int>(hash.size()));
    expect(size > 0 && size <= static_cast<int>(hash.size()),
           "wrote " + std::to_string(size) + " bytes into 256");
    return hash.substr(0, static_cast<std::size_t>(size));
}

std::string checkHash(const Context& context) {
    std::string content(100000, 'a');
    const std::string hash = hashOf(context, content);
    expect(hash == hashOf(context, content), "one content has two hashes");
    content[content.size() / 2] = 'b';
    expect(hash != hashOf(context, content), "two contents, one byte apart, have one hash");
    char buffer[256];
    const std::string none = context.folder + "/none";
    expect(lectern<decltype(FastBookHash)>("FastBookHash")(none.c_str(), buffer, 256) <= 0,
           "a file that is not there has one");
    return std::to_string(hash.size()) + " bytes, other ones for another content";
}

std::string checkLogger(const Context&) {
    const auto log = symbol<decltype(fl_print_log2)>(core_utils_library, "fl_print_log2");
    for (const int level : {1, 4})
        log(level, __FILE__, __LINE__, "checkLogger", "tavro-device-check wrote %s at level %d",
            "this line", level);
    return "returns; the system's log has lines with \"tavro-device-check\", level 4 if it is on";
}

std::string checkProcessId(const Context&) {
    const int id = *symbol<int>(core_utils_library, "g_process_pid");
    expect(id == ::getpid(), std::to_string(id) + " for process " + std::to_string(::getpid()));
    return "this process's";
}

std::string sendEvent(const Context&) {
    const int result = lectern<decltype(SendEventTo)>("SendEventTo")(-3, 215, 0, 0);
    return "returned " + std::to_string(result);
}

std::string openApplication(const Context& context) {
    const int result =
        lectern<decltype(OpenBook)>("OpenBook")(context.application.c_str(), "-library", 0);
    return "returned " + std::to_string(result) + "; see whether " + context.application +
           " has opened";
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
         "build with the C++ ABI of libcore_utils.so", inModule(string_list_check)}};
}

Check eventCheck() {
    return {"SendEventTo", "other applications do not learn of a log-out", "", sendEvent};
}

Check applicationCheck() {
    return {"OpenBook", "the login wizard does not open", "", openApplication};
}

}  // namespace tavro::device_check
