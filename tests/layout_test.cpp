// What programs built against the library find in memory and on disk, by number. The numbers of a
// 32-bit device are checked by the same tests, in the ARM build.
#include <gtest/gtest.h>

#include <cstddef>

#include "bookmap.h"
#include "syncjournal.h"
#include "tavro.h"

// The classes have private members among the public ones; GCC and Clang lay them out all the same.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

using folium::tavro::CurlManager;

namespace {

using Ids = std::map<std::string, int>;
using Books = std::vector<BookDescription>;
using Stack = std::stack<std::string>;

constexpr std::size_t pointer = sizeof(void*), text = sizeof(std::string), list = sizeof(Books);

/// Where a member of type `Member` lies that follows what ends at `end`.
template <typename Member>
constexpr std::size_t after(std::size_t end) {
    return (end + alignof(Member) - 1) / alignof(Member) * alignof(Member);
}

// Of the parser: what its public members follow.
constexpr std::size_t item_flag = after<Stack>(pointer) + sizeof(Stack) + sizeof(Ids) + list;
constexpr std::size_t added = after<Books>(item_flag + sizeof(bool));
constexpr std::size_t deleted = after<Books>(added + list + sizeof(bool));
constexpr std::size_t answers = after<Ids>(deleted + list + sizeof(bool));

}  // namespace

// Applications were built with these headers and reach into the objects.
TEST(Layout, MembersLieInOrder) {
    const struct {
        std::size_t actual, expected, on32Bits;
    } places[] = {{offsetof(CurlManager, curl), 0, 0},
                  {offsetof(CurlManager, responseBuffer), pointer, 4},
                  {offsetof(CurlManager, downloadDir), pointer + list, 16},
                  {offsetof(CurlManager, downloadFileName), pointer + list + text, 40},
                  {offsetof(CurlManager, downloadStream), pointer + list + 2 * text, 64},
                  {sizeof(CurlManager), 2 * pointer + list + 2 * text, 68},
                  {sizeof(BookDescription), list, 12},
                  {offsetof(XMLParser, addedItems), added, 84},
                  {offsetof(XMLParser, deletedItems), deleted, 100},
                  {offsetof(XMLParser, answers), answers, 116},
                  {sizeof(XMLParser), answers + sizeof(Ids), 140},
                  {offsetof(Tavro, server), 9 * text, 216},
                  {sizeof(Tavro), 9 * text + 2 * pointer + 2 * text + sizeof(BookMap), 348},
                  {offsetof(BookMap, bookMap), 0, 0},
                  {offsetof(BookMap, idMap), sizeof(Ids), 24},
                  {offsetof(BookMap, fd_), 2 * sizeof(Ids), 48},
                  {offsetof(BookMap, path), after<std::string>(2 * sizeof(Ids) + sizeof(int)), 52},
                  {sizeof(BookMap), after<std::string>(2 * sizeof(Ids) + sizeof(int)) + text, 76},
                  {offsetof(SyncJournal::Record, newName), text, 24},
                  {offsetof(SyncJournal::Record, flag), 2 * text, 48},
                  {sizeof(SyncJournal::Record), after<std::string>(2 * text + sizeof(bool)), 52},
                  {sizeof(SyncJournal), text + list, 36}};
    for (const auto& place : places) {
        const auto number = &place - places;
        EXPECT_EQ(place.actual, pointer == 4 ? place.on32Bits : place.expected) << number;
    }
}

TEST(Layout, TextsOfTheServiceLieBehindItsThreePointers) {
    std::size_t offset = 3 * pointer;  // virtual table, transfer manager, parser
    for (const std::size_t member :
         {offsetof(TavroServer, lastMessage), offsetof(TavroServer, lastError),
          offsetof(TavroServer, deviceId), offsetof(TavroServer, token),
          offsetof(TavroServer, sessionId), offsetof(TavroServer, vendorToken),
          offsetof(TavroServer, vendorId), offsetof(TavroServer, serverTime),
          offsetof(TavroServer, shopUrl), offsetof(TavroServer, shopId),
          offsetof(TavroServer, termsOfServiceUrl), offsetof(TavroServer, termsOfServiceText),
          offsetof(TavroServer, shopName)}) {
        EXPECT_EQ(member, offset);
        offset += text;
    }
    EXPECT_EQ(sizeof(TavroServer), pointer == 4 ? 324 : offset);
}

// Other programs, and the libraries of other devices, find the account's files by name.
TEST(Layout, FilesOfTheAccountKeepTheirNames) {
    const std::pair<const char*, const char*> names[] = {
        {Tavro::config_file, ".tavro.conf"},      {Tavro::token_file, ".tavro_token"},
        {Tavro::tavro_password, ".tavro_shadow"}, {Tavro::list_file, ".tavro.lst"},
        {Tavro::tavro_books, ".tbooks.xml"},      {Tavro::journal_file, ".tavro_journal"}};
    for (const auto& [name, expected] : names)
        EXPECT_STREQ(name, expected);
}
