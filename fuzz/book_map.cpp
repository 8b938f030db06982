/// The file of the book map. Promises: a file of any content loads; what is added to it reads back
/// together with all that it held before; what is removed is gone.

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

#include "bookmap.h"
#include "require.h"
#include "support/temporary_folder.h"

namespace {

BookMap mapIn(const std::string& path) {
    BookMap map;
    map.path = path;
    return map;
}

/// Requires that the file `path` holds `expected`, in both directions.
void requireContent(const std::string& path, const std::map<std::string, int>& expected) {
    require(mapIn(path).GetBookMap() == expected, "what was stored reads back");
    std::map<int, std::string> byId;
    for (const auto& [name, id] : expected)
        byId[id] = name;
    require(mapIn(path).GetIdMap() == byId, "the last book in byte order has the item");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    const std::string path = folder / "map";
    FuzzedDataProvider input(data, size);
    const auto id = input.ConsumeIntegral<std::int32_t>();
    const std::string name = input.ConsumeRandomLengthString(300).c_str();  // up to a zero byte
    writeFile(path, input.ConsumeRemainingBytesAsString());

    std::map<std::string, int> expected = mapIn(path).GetBookMap();
    mapIn(path).Add(name, id);
    expected[name] = id;
    requireContent(path, expected);

    mapIn(path).Remove(name);
    expected.erase(name);
    // A file of no record is empty, which reads as no file at all.
    requireContent(path, expected);
    return 0;
}
