#include "account/round_record.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "account/files.h"
#include "account/own_files.h"
#include "posix/atomic_file.h"
#include "posix/temporary_file.h"
#include "program/failure.h"
#include "program/local_time.h"

namespace tavro::tools {

namespace {

using Json = nlohmann::json;

/// More would flood whoever asks; the log has all.
constexpr std::size_t most_problems = 10;

/// Now, as "2026-11-23T12:30:00+00:00".
std::string isoTime() {
    std::string shown = localTime("%Y-%m-%dT%H:%M:%S%z");
    return shown.insert(shown.size() - 2, ":");  // which the C library leaves out
}

/// The content of a record of a round of this process.
std::string recordOf(const char* outcome, const std::vector<std::string>& problems,
                     const Failure& cause) {
    return Json{{"outcome", outcome},     {"time", isoTime()},  {"problems", problems},
                {"advice", cause.advice}, {"code", cause.code}, {"message", cause.message},
                {"process", ::getpid()}}
               .dump(-1, ' ', false, Json::error_handler_t::replace) +
           "\n";
}

LastRound unreadable() {
    LastRound round;
    round.outcome = round_outcome::unknown;
    return round;
}

/// What the record `content` says. Throws Json::exception when it is none.
LastRound parsed(const std::string& content) {
    const Json json = Json::parse(content);
    const auto text = [&](const char* name) { return json.at(name).get<std::string>(); };
    LastRound round{text("outcome"),
                    text("time"),
                    json.at("problems"),
                    text("advice"),
                    text("code"),
                    text("message"),
                    json.at("process").get<pid_t>()};
    for (const char* known : {round_outcome::running, round_outcome::done, round_outcome::failed})
        if (round.outcome == known)
            return round;
    return unreadable();
}

/// The round of the record `path`, open as `file`.
LastRound roundOf(const posix::FileDescriptor& file, const std::string& path) {
    const std::string content = contentThrough(file.get(), path);
    LastRound round = parsed(content);
    // Shared: several may ask at once, and only who runs a round has the other lock.
    if (round.outcome != round_outcome::running || ::flock(file.get(), LOCK_SH | LOCK_NB) != 0)
        return round;
    if (const auto now = contentOf(path); now != content)  // it has ended meanwhile
        return now ? parsed(*now) : LastRound{};
    round.outcome = round_outcome::interrupted;
    return round;
}

}  // namespace

LastRound lastRound(const Account& account) {
    const std::string path = account.file(own_files::round_record);
    const posix::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file && errno == ENOENT)
        return {};
    try {
        return roundOf(file, path);
    } catch (const std::exception&) {  // in words that help nobody: the next round replaces it
        return unreadable();
    }
}

RoundRecord::RoundRecord(const Account& account) : path_(account.file(own_files::round_record)) {
    try {
        posix::TemporaryFile record(account.file(std::string(posix::replacement_prefix)), path_);
        record.write(recordOf(round_outcome::running, {}, Failure("")));
        running_ = posix::FileDescriptor(::fcntl(record.descriptor(), F_DUPFD_CLOEXEC, 0));
        record.renameTo(path_);  // with the lock, which lasts as long as the duplicate
    } catch (const std::system_error& error) {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
        problem_ = "the round cannot be recorded in " + path_ + ": " + error.code().message();
    }
}

void RoundRecord::end(std::vector<std::string> problems, const Failure& cause) const {
    if (!problem_.empty())
        return;
    const char* const outcome = problems.empty() ? round_outcome::done : round_outcome::failed;
    if (problems.size() > most_problems) {
        const std::size_t others = problems.size() - most_problems;
        problems.resize(most_problems);
        problems.push_back("and " + std::to_string(others) + " more");
    }
    try {
        replaceFile(path_, recordOf(outcome, problems, cause));
    } catch (const Failure&) {  // what is recorded already says enough once this process is gone
        return;
    }
}

}  // namespace tavro::tools
