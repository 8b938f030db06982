#include "tavroctl/change_report.h"

#include "account/changes.h"
#include "account/service_failure.h"

namespace tavro::tools {

Json asJson(const Change& change) {
    return {{"old", change.oldName}, {"new", change.newName}, {"uploaded", change.flag}};
}

Json asJson(const std::vector<Change>& changes) {
    Json json = Json::array();
    for (const auto& change : changes)
        json.push_back(asJson(change));
    return json;
}

Json asJournalEntry(const Account& account, const Change& change) {
    Json json = asJson(change);
    json["missing"] = isWaitingForFile(account, change);
    return json;
}

Failure uploadFailure(const Tavro& session, const std::string& what) {
    return serviceFailure(
        *session.server, what, uploadAddress(),
        "run 'tavroctl replay' later, or 'tavroctl login' if the session has ended");
}

}  // namespace tavro::tools
