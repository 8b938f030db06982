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
constexpr std::size_t pointer = sizeof(void*);
constexpr bool on_32_bits = pointer == 4;

/// Where a member of type `Member` lies that follows what ends at `end`.
template <typename Member>
constexpr std::size_t after(std::size_t end) {
    return (end + alignof(Member) - 1) / alignof(Member) * alignof(Member);
}

}  // namespace

// Applications were built with these headers and reach into the objects.
TEST(Layout, MembersOfTransferAndServiceLieInOrder) {
    constexpr std::size_t text = sizeof(std::string), list = sizeof(std::vector<char>);
    EXPECT_EQ(offsetof(CurlManager, curl), 0U);
    EXPECT_EQ(offsetof(CurlManager, responseBuffer), pointer);
    EXPECT_EQ(offsetof(CurlManager, downloadDir), pointer + list);
    EXPECT_EQ(offsetof(CurlManager, downloadFileName), pointer + list + text);
    EXPECT_EQ(offsetof(CurlManager, downloadStream), pointer + list + 2 * text);
    EXPECT_EQ(sizeof(CurlManager), 2 * pointer + list + 2 * text);
    EXPECT_EQ(sizeof(BookDescription), list);

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
    EXPECT_EQ(sizeof(TavroServer), offset);
    if (on_32_bits) {
        EXPECT_EQ(offset, 12U + 13 * 24);
        EXPECT_EQ(sizeof(CurlManager), 68U);
    }
}

TEST(Layout, MembersOfParserAndSessionLieInOrder) {
    using Books = std::vector<BookDescription>;
    const std::size_t item = after<std::stack<std::string>>(pointer) +
                             sizeof(std::stack<std::string>) + sizeof(Ids) +
                             sizeof(std::vector<std::string>);
    const std::size_t added = after<Books>(item + sizeof(bool));
    const std::size_t deleted = after<Books>(added + sizeof(Books) + sizeof(bool));
    EXPECT_EQ(offsetof(XMLParser, addedItems), added);
    EXPECT_EQ(offsetof(XMLParser, deletedItems), deleted);
    EXPECT_EQ(offsetof(XMLParser, answers), after<Ids>(deleted + sizeof(Books) + sizeof(bool)));
    EXPECT_EQ(offsetof(Tavro, server), 9 * sizeof(std::string));
    EXPECT_EQ(sizeof(Tavro),
              offsetof(Tavro, server) + 2 * pointer + 2 * sizeof(std::string) + sizeof(BookMap));
    if (on_32_bits) {
        EXPECT_EQ(added, 84U);
        EXPECT_EQ(deleted, 100U);
        EXPECT_EQ(offsetof(XMLParser, answers), 116U);
        EXPECT_EQ(sizeof(XMLParser), 140U);
        EXPECT_EQ(offsetof(Tavro, server), 216U);
    }
}

TEST(Layout, MembersOfTheStoresLieInOrder) {
    EXPECT_EQ(offsetof(BookMap, bookMap), 0U);
    EXPECT_EQ(offsetof(BookMap, idMap), sizeof(Ids));
    EXPECT_EQ(offsetof(BookMap, fd_), 2 * sizeof(Ids));
    EXPECT_EQ(offsetof(BookMap, path), after<std::string>(2 * sizeof(Ids) + sizeof(int)));
    EXPECT_EQ(offsetof(SyncJournal::Record, newName), sizeof(std::string));
    EXPECT_EQ(offsetof(SyncJournal::Record, flag), 2 * sizeof(std::string));
    EXPECT_EQ(sizeof(SyncJournal), sizeof(std::string) + sizeof(std::vector<int>));
    if (on_32_bits) {
        EXPECT_EQ(offsetof(BookMap, path), 52U);
        EXPECT_EQ(sizeof(BookMap), 76U);
        EXPECT_EQ(sizeof(SyncJournal::Record), 52U);
    }
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
