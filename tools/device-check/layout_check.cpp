// Whether libtavro and what is built with its headers agree about its classes in memory.

#include <cstddef>

#include "bookmap.h"
#include "device-check/module_checks.h"
#include "platform/device_paths.h"
#include "syncjournal.h"
#include "tavro.h"
#include "tavro_client.h"
#include "tavro_entry_points.h"

// The classes have private members among the public ones; GCC and Clang lay them out all the same.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace tavro::device_check {

namespace {

/// Where the device's other programs expect members. Only a 32-bit machine has these numbers.
void checkOffsets() {
    const struct {
        const char* member;
        std::size_t actual, expected;
    } places[] = {{"tavro_book_info::title", offsetof(tavro_book_info, title), 16},
                  {"tavro_book_info::author", offsetof(tavro_book_info, author), 20},
                  {"tavro_book_info::category_id", offsetof(tavro_book_info, category_id), 32},
                  {"tavro_book_info::isbn", offsetof(tavro_book_info, isbn), 88},
                  {"Tavro::server", offsetof(Tavro, server), 216},
                  {"TavroServer::shopName", offsetof(TavroServer, shopName), 300},
                  {"BookMap::path", offsetof(BookMap, path), 52},
                  {"SyncJournal::Record::flag", offsetof(SyncJournal::Record, flag), 48}};
    for (const auto& place : places)
        expect(place.actual == place.expected, std::string(place.member) + " lies at " +
                                                   std::to_string(place.actual) + ", not " +
                                                   std::to_string(place.expected));
}

/// Whether members read as libtavro has set them.
void checkObjects(const Context& context) {
    expect(Tavro().server == nullptr, "a new Tavro has a server");
    expect(TavroServer("a device").deviceId == "a device", "TavroServer::deviceId lies elsewhere");
    XMLParser parser;
    parser.init("utf-8");
    const std::string answer = "<Answer><Error>1003</Error></Answer>";
    parser.parse(answer.data(), static_cast<unsigned>(answer.size()));
    expect(parser.answers["Error"] == "1003", "XMLParser::answers lies elsewhere");
    BookMap map;
    map.path = context.folder + "/map";
    map.Add("a book", 7);
    expect(map.fd_ == -1 && map.GetIdMap()[7] == "a book", "BookMap's members lie elsewhere");
    SyncJournal journal(context.folder + "/journal");
    journal.push({"old", "new", true});
    journal.reload();
    SyncJournal::Record record;
    expect(journal.pop(record) && record.newName == "new" && record.flag,
           "SyncJournal::Record's members lie elsewhere");
}

}  // namespace

extern "C" void tavro_check_layout(const Context& context, std::string& found) {
    constexpr bool has_offsets = sizeof(void*) == 4;
    if (has_offsets)
        checkOffsets();
    checkObjects(context);
    expect(TavroClient().GetProfile() == device_paths::configurationFolder(),
           "libtavro.so was built for another device root: " + TavroClient().GetProfile());
    found = has_offsets
                ? "members lie where the device's programs expect them"
                : "the library and its headers agree; the device's offsets are not for here";
}

}  // namespace tavro::device_check
