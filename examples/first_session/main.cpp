#include <tavro.h>

#include <cstdlib>
#include <iostream>

int stop(const Tavro& session, const char* what) {  // tells why
    std::cerr << what << ": ";
    if (!session.server)
        std::cerr << "no complete account configuration is there\n";
    else if (session.lastError().empty())
        std::cerr << "no readable answer came from the service\n";
    else
        std::cerr << session.server->lastMessage << " (code " << session.lastError() << ")\n";
    return EXIT_FAILURE;
}

int main(int count, char** values) {
    Tavro session;
    if (!session.init(count > 1 ? values[1] : "/mnt/ext1/system/config/tavro"))
        return stop(session, "not registered");  // done the first time, and the token is kept
    if (!session.login("the password"))
        return stop(session, "not logged in");
    if (!session.syncServer() || session.lastError() != "1003")  // a refusal is an answer, too
        return stop(session, "no catalogue");

    bool complete = true;
    const std::map<int, std::string> present = session.GetBooksIds();
    for (const BookDescription& book : session.getAddedBooks())
        if (present.count(std::atoi(book.field(BookDescription::ItemID).c_str())) == 0)
            complete &= !session.downloadBook(book).empty();  // the file's name, or empty
    session.syncDownloadFolder();                             // sends what changed on the device
    std::cerr << (complete ? "" : "not all books came\n");
    return complete ? EXIT_SUCCESS : EXIT_FAILURE;
}
