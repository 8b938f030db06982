// Downloads all books of the account in the folder that its argument names, by the library's calls
// alone.

#include "tavro.h"

int main(int count, char** values) {
    Tavro session;
    if (count != 2 || !session.init(values[1]) || !session.syncServer())
        return 1;
    for (const BookDescription& book : session.getAddedBooks())
        if (session.downloadBook(book).empty())
            return 1;
    return 0;
}
