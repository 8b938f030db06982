#include "account/book_map_copy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "account/book_map_records.h"
#include "account/files.h"
#include "posix/file_descriptor.h"
#include "posix/file_status.h"
#include "posix/retry_after_signal.h"
#include "posix/write_all.h"

namespace tavro::tools {

MappedFiles BookMapCopy::read() {
    const std::string content = contentOf(path_).value_or("");
    MappedFiles entries = bookMapEntries(content);
    entries_ = entries.size();
    BookMapRecords records(content);
    for (records_ = 0; records.next(); ++records_)
        continue;
    length_ = records.length;
    isCut_ = length_ < content.size();
    return entries;
}

void BookMapCopy::add(const std::string& name, int item, const BookMapImage& map) {
    const std::string record = bookMapRecord(name, item);
    entries_ = map.size();
    ++records_;
    if (!isTidy() || !append(record))
        return replace(map);
    length_ += record.size();
}

/// Puts `record` behind the others. @return false when the file is not as it was.
bool BookMapCopy::append(const std::string& record) const {
    const posix::FileDescriptor file(::open(path_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    const auto status = posix::statusOf(file.get());
    if (!status || static_cast<std::size_t>(status->size) != length_)
        return false;
    const auto flushed = [&] { return ::fdatasync(file.get()); };
    if (posix::writeAll(file.get(), record) && posix::retryAfterSignal(flushed) == 0)
        return true;
    const int error = errno;
    // Where that fails, too, the file has another length, and is replaced before anything is added.
    [[maybe_unused]] const int cut = ::ftruncate(file.get(), static_cast<off_t>(length_));
    throwCannotWrite(path_, error);
}

void BookMapCopy::replace(const BookMapImage& map) {
    replaceFile(path_, map.bytes());
    entries_ = records_ = map.size();
    length_ = map.bytes().size();
    isCut_ = false;
}

}  // namespace tavro::tools
