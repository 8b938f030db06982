#include "account/catalogue.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

#include "account/failure.h"
#include "account/files.h"
#include "platform/account_files.h"
#include "server/result_codes.h"
#include "session/item_number.h"

namespace tavro::tools {

namespace {

/// Content of the file `path`; nothing when there is no such file.
std::optional<std::string> contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

/// Whether the last answer of `session` is the content of the file `path`.
bool isSaved(const Tavro& session, const std::string& path) {
    const std::vector<char>& answer = session.server->getLastXMLAnswer();
    return contentOf(path) == std::string(answer.begin(), answer.end());
}

}  // namespace

void synchronise(Tavro& session, const Account& account) {
    const std::string file = account.file(account_files::catalogue);
    const auto former = contentOf(file);
    const bool answered = session.syncServer();
    // The library calls every readable answer a success, and leaves judging the code to us; nor
    // does it look whether the file was written.
    const bool accepted = answered && session.lastError() == result_codes::success;
    if (accepted && isSaved(session, file))
        return;
    if (answered && former)
        replaceFile(file, *former);
    if (accepted)
        throwNotWritten(file);
    throw serviceFailure(
        *session.server, "the catalogue was not fetched", apiAddress(),
        "run 'tavroctl login' again, or 'tavroctl register --renew' if the service does not "
        "know the device");
}

int itemNumber(const BookDescription& book) {
    return session::itemNumber(book.field(BookDescription::ItemID));
}

}  // namespace tavro::tools
