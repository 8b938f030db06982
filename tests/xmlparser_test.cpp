#include "xmlparser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

bool parse(XMLParser& parser, const std::string& document, const char* encoding = "utf-8") {
    parser.init(encoding);
    return parser.parse(document.data(), static_cast<unsigned>(document.size()));
}

std::string item(const std::string& id, const std::string& more = {}) {
    return "<ItemsResponse><ItemID>" + id + "</ItemID>" + more + "</ItemsResponse>";
}

const std::string& field(const std::vector<BookDescription>& items, std::size_t index,
                         BookDescription::Field wanted) {
    return items.at(index).field(wanted);
}

}  // namespace

TEST(XMLParser, SortsBooksIntoAddedAndDeletedAndTextsIntoAnswers) {
    XMLParser parser;
    ASSERT_TRUE(parse(parser, "<R>\n<Error>1003</Error>\n<AddedItems>" +
                                  item("1", "<Status>\n</Status>") + "</AddedItems><DeletedItems>" +
                                  item("2") + item("3") + "</DeletedItems><AddedItems>" +
                                  item("4") +
                                  "</AddedItems><Token>a</Token><Token>&amp;b</Token></R>"));
    ASSERT_EQ(parser.addedItems.size(), 2U);
    ASSERT_EQ(parser.deletedItems.size(), 2U);
    EXPECT_EQ(field(parser.addedItems, 0, BookDescription::ItemID), "1");
    EXPECT_EQ(field(parser.addedItems, 0, BookDescription::Status), "\n");
    EXPECT_EQ(field(parser.deletedItems, 1, BookDescription::ItemID), "3");
    // Nothing of a book counts as an answer, and blanks between elements belong to their parent.
    const std::map<std::string, std::string> expected = {
        {"Error", "1003"}, {"R", "\n\n"}, {"Token", "a&b"}};
    EXPECT_EQ(parser.answers, expected);
    // The encoding that the caller gives wins over the one that the document declares.
    const std::string unknown = "<?xml version='1.0' encoding='x-unknown'?><R>text</R>";
    EXPECT_TRUE(parse(parser, unknown));
    // Nothing of the former document is left.
    EXPECT_EQ(parser.answers, (std::map<std::string, std::string>{{"R", "text"}}));
    EXPECT_TRUE(parser.addedItems.empty() && parser.deletedItems.empty());
    EXPECT_FALSE(parse(parser, unknown, nullptr));
}

TEST(XMLParser, FillsEveryFieldOfARecord) {
    const char* const names[] = {"Artist",   "CategoryId",    "CoverArtImage", "Duration",
                                 "FileType", "ISBN",          "ISBN13",        "ItemID",
                                 "TavroID",  "NumberOfFiles", "Status",        "Title"};
    std::string fields;
    std::vector<std::string> expected;
    for (const char* name : names) {
        fields.insert(0, std::string("<") + name + ">the " + name + "</" + name + ">\n");
        expected.push_back(std::string("the ") + name);
        std::string similar = name;
        similar[similar.size() / 2] = '_';
        fields += "<" + similar + ">not the field</" + similar + ">";
    }
    XMLParser parser;
    ASSERT_TRUE(parse(parser, "<AddedItems><ItemsResponse>" + fields + "<Other>x</Other>" +
                                  "</ItemsResponse></AddedItems>"));
    EXPECT_EQ(parser.addedItems.at(0).data, expected);
}

TEST(XMLParser, FieldKeepsOnlyTheLastPieceOfItsText) {
    XMLParser parser;
    ASSERT_TRUE(parse(parser, "<AddedItems>" + item("1", "<Title>War &amp; Peace</Title>") +
                                  item("2", "<Title><![CDATA[War & Peace]]></Title>") +
                                  "</AddedItems>"));
    EXPECT_EQ(field(parser.addedItems, 0, BookDescription::Title), " Peace");
    EXPECT_EQ(field(parser.addedItems, 1, BookDescription::Title), "War & Peace");
}

// A connection that breaks must not cost the books that had arrived.
TEST(XMLParser, CutAnswerKeepsCompleteBooks) {
    XMLParser parser;
    EXPECT_TRUE(parse(parser, "<R><AddedItems>" + item("1") + item("2") + "<ItemsResponse><Item"));
    EXPECT_EQ(parser.addedItems.size(), 2U);
    EXPECT_FALSE(parse(parser, "<R><Error>7</Error><AddedItems>" + item("1") + "</R>"));
    EXPECT_EQ(parser.addedItems.size(), 1U);
    EXPECT_EQ(parser.answers["Error"], "7");
    EXPECT_TRUE(parse(parser, "<R/>"));
    EXPECT_TRUE(parser.addedItems.empty());
}

// The flags of an open list outlive a cut document, and a second document may close it.
TEST(XMLParser, ParsingOnWithoutInitIsHarmless) {
    XMLParser parser;
    ASSERT_TRUE(parse(parser, "<R><AddedItems><ItemsResponse>"));
    const std::string rest = "text</ItemsResponse></AddedItems></R>";
    EXPECT_TRUE(parser.parse(rest.data(), static_cast<unsigned>(rest.size())));
    EXPECT_TRUE(parser.addedItems.empty());
    // Nor may a field of the book that was cut off stay for the first book of the next document.
    ASSERT_TRUE(parse(parser, "<AddedItems><ItemsResponse><Title>cut off</Title>"));
    ASSERT_TRUE(parse(parser, "<AddedItems>" + item("1") + "</AddedItems>"));
    EXPECT_EQ(field(parser.addedItems, 0, BookDescription::Title), "");
}

TEST(XMLParser, BookOutsideBothListsFillsGapsOfTheNextOne) {
    XMLParser parser;
    ASSERT_TRUE(parse(parser, "<R>" + item("9", "<Title>left over</Title>") + "<AddedItems>" +
                                  item("1") + item("2") + "</AddedItems></R>"));
    EXPECT_EQ(field(parser.addedItems, 0, BookDescription::ItemID), "1");
    EXPECT_EQ(field(parser.addedItems, 0, BookDescription::Title), "left over");
    EXPECT_EQ(field(parser.addedItems, 1, BookDescription::Title), "");
}

TEST(BookDescription, AnyOtherLengthReadsAsEmpty) {
    for (const std::size_t length : {0U, 11U, 13U}) {
        BookDescription book{std::vector<std::string>(length, "x")};
        EXPECT_TRUE(book.data.empty()) << length;
        book.data.assign(length, "x");
        EXPECT_EQ(&book.field(BookDescription::Artist), &BookDescription::emptyString) << length;
    }
    BookDescription book{std::vector<std::string>(12, "x")};
    EXPECT_FALSE(book.setData(std::vector<std::string>(11, "y")));
    EXPECT_EQ(book.field(BookDescription::Title), "x");
    EXPECT_EQ(book.field(12), "");
    EXPECT_TRUE(book.setData(std::vector<std::string>(12, "y")));
    EXPECT_EQ(book.field(BookDescription::Title), "y");
}
