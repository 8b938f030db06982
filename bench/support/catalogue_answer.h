#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// The service's answer to a synchronisation, with `books` books whose items are 1, 2, ...
inline std::string catalogueAnswer(std::int64_t books) {
    std::string answer =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<SyncResponse>\n  <Error>1003</Error>\n"
        "  <Message>Success</Message>\n  <AddedItems>\n";
    for (std::int64_t book = 1; book <= books; ++book) {
        const std::string number = std::to_string(book);
        answer += "    <ItemsResponse>\n      <Artist>The author of book " + number +
                  "</Artist>\n      <CategoryId>1</CategoryId>\n      <CoverArtImage>"
                  "http://127.0.0.1/covers/" +
                  number +
                  "</CoverArtImage>\n      <Duration>0</Duration>\n      <FileType>epub</FileType>"
                  "\n      <ISBN>0306406152</ISBN>\n      <ISBN13>9780306406157</ISBN13>\n"
                  "      <ItemID>" +
                  number + "</ItemID>\n      <TavroID>TAVRO-" + number +
                  "</TavroID>\n      <NumberOfFiles>1</NumberOfFiles>\n"
                  "      <Status>Active</Status>\n      <Title>The title of book " +
                  number + "</Title>\n    </ItemsResponse>\n";
    }
    return answer + "  </AddedItems>\n  <DeletedItems/>\n</SyncResponse>\n";
}

}  // namespace bench
