// Fetches the catalogue of the account in the folder that its first argument names, and looks
// whether each of its books lies in the folder of the second.

#include <unistd.h>

#include "tavro.h"

int main(int count, char** values) {
    Tavro session;
    if (count != 3 || !session.init(values[1]) || !session.syncServer())
        return 1;
    const std::map<int, std::string> files = session.GetBooksIds();
    for (const BookDescription& book : session.getAddedBooks()) {
        const auto file = files.find(std::stoi(book.field(BookDescription::ItemID)));
        if (file == files.end() || ::access((values[2] + ("/" + file->second)).c_str(), R_OK) != 0)
            return 1;
    }
    return 0;
}
