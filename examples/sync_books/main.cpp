// Logs in to the Tavro service, fetches the catalogue and downloads what is not here yet.

#include <tavro/tavro.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <map>
#include <string>

namespace {

constexpr const char* success = "1003";  // the service's result code

/// Tells why the last request of `session` failed. @return the program's exit status.
int fail(const Tavro& session, const std::string& what) {
    std::cerr << "sync_books: " << what;
    if (session.server != nullptr && !session.server->lastMessage.empty())
        std::cerr << ": " << session.server->lastMessage;
    else if (session.lastError().empty())
        std::cerr << ": the service gave no readable answer; is it running?";
    std::cerr << (session.lastError().empty() ? "" : " (code " + session.lastError() + ")") << "\n";
    return EXIT_FAILURE;
}

/// Downloads the books of the catalogue of which no file is here. @return how many failed.
int downloadMissing(Tavro& session) {
    int failed = 0;
    const std::map<int, std::string> present = session.GetBooksIds();
    for (const BookDescription& book : session.getAddedBooks()) {
        const std::string& title = book.field(BookDescription::Title);
        const std::string& item = book.field(BookDescription::ItemID);
        if (present.count(static_cast<int>(std::strtol(item.c_str(), nullptr, 10))) != 0) {
            std::cout << "present     " << title << "\n";
            continue;
        }
        const std::string file = session.downloadBook(book);
        failed += file.empty() ? 1 : 0;
        std::cout << (file.empty() ? "failed      " : "downloaded  ") << title
                  << (file.empty() ? "" : " -> ") << file << "\n";
    }
    return failed;
}

int run(const std::string& configurationFolder) {
    // 1. The device: its configuration, and a token, which the service gives the first time.
    Tavro session;
    if (!session.init(configurationFolder)) {
        if (session.server != nullptr)
            return fail(session, "the device could not be registered");
        std::cerr << "sync_books: " << configurationFolder
                  << " holds no complete account configuration; 'tavroctl setup' writes one\n";
        return EXIT_FAILURE;
    }

    // 2. The account.
    std::string password;
    if (!std::getline(std::cin, password) || password.empty()) {
        std::cerr << "sync_books: the password is to come on standard input\n";
        return EXIT_FAILURE;
    }
    if (!session.login(password))
        return fail(session, "the login failed");

    // 3. The catalogue: a refusal is an answer, too.
    if (!session.syncServer() || session.lastError() != success)
        return fail(session, "the catalogue could not be fetched");

    // 4. The books.
    return downloadMissing(session) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int count, char** values) {
    if (count != 2 || values[1][0] == '\0' || values[1][0] == '-') {
        std::cerr << "Usage: sync_books CONFIGURATION-FOLDER < PASSWORD-FILE\n";
        return 2;
    }
    try {
        return run(values[1]);
    } catch (const std::exception& error) {
        std::cerr << "sync_books: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
