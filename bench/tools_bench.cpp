// The programs against programs that only make the library's calls, and the service against looking
// at its files.

#include <time.h>

#include <filesystem>
#include <memory>

#include "server/built_in_settings.h"
#include "support/raw_curl.h"
#include "support/reader_account.h"
#include "support/require.h"
#include "support/subject.h"

namespace bench {

namespace {

const std::string tavroctl = TAVRO_BENCH_TAVROCTL " ";

/// Processor time that the process `process` has used.
double processorTimeOf(pid_t process) {
    clockid_t clock = {};
    timespec time = {};
    require(::clock_getcpuclockid(process, &clock) == 0 && ::clock_gettime(clock, &time) == 0,
            "the server's processor time is told");
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// `action`, but with the processor time and the memory of the server `server`.
Action asSeenBy(const ServerProcess& server, const Action& action) {
    const pid_t process = server.id();
    const auto run = [=] {
        const double used = processorTimeOf(process);
        Cost cost = action.run();
        cost.processor = processorTimeOf(process) - used;
        return cost;
    };
    const auto peak = [=] {
        action.run();
        return memoryOf(std::to_string(process), "VmHWM:");
    };
    return {run, peak};
}

Subject downloadAll(std::int64_t books) {
    const auto account = std::make_shared<const ReaderAccount>(books);
    const auto prepare = [=] { account->removeBooks(); };
    return {
        inPrograms({tavroctl + "sync", tavroctl + "download --all"}, prepare),
        inPrograms({TAVRO_BENCH_PLAIN_DOWNLOAD " " + account->device.configuration()}, prepare)};
}

Subject idleRound(std::int64_t books) {
    const auto account = std::make_shared<const ReaderAccount>(books);
    account->placeBooks();
    const Action limit = inPrograms({TAVRO_BENCH_PLAIN_ROUND " " + account->device.configuration() +
                                     " " + account->device.syncFolder()});
    limit.run();  // which fails unless all books are there, and so the round is idle
    return {inPrograms({TAVRO_BENCH_TAVRO_SYNC}, [account] {}), limit};
}

/// Looks at the size and the time of each file of `folder`.
void lookAtFiles(const std::string& folder) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        static_cast<void>(std::make_pair(entry.file_size(), entry.last_write_time()));
}

Subject serviceSync(std::int64_t books) {
    const auto account = std::make_shared<const ReaderAccount>(books);
    const auto curl = std::make_shared<RawCurl>();
    const std::string url =
        std::string("http://127.0.0.1") + service_paths::device_api + "SysnWithCloud";
    const auto sync = [=, body = account->syncRequest()] {
        const std::string& answer = curl->request(url, account->service.port, body);
        require(answer.find("<Error>1003<") != std::string::npos,
                "the service is willing: " + answer.substr(0, 300));
    };
    return {asSeenBy(account->service, inProcess(sync)),
            inProcess([account] { lookAtFiles(account->bookFolder); })};
}

}  // namespace

std::vector<Family> toolFamilies() {
    const std::vector<std::int64_t> sizes = {100, 1000, 10000};
    return {{"download-all", "books", sizes, downloadAll, 1, 1000},
            {"idle-round", "books", sizes, idleRound, 1},
            {"service-sync", "books", sizes, serviceSync, 1}};
}

}  // namespace bench
