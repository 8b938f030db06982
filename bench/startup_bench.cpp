// A program that opens its first session against one that only makes libcurl and Expat ready.

#include <memory>

#include "support/device_root.h"
#include "support/subject.h"

namespace bench {

std::vector<Family> startFamilies() {
    const auto make = [](std::int64_t /*one*/) {
        const auto device = std::make_shared<const DeviceRoot>();
        device->writeAccount();
        writeFile(device->file(account_files::token), "token");
        return Subject{inPrograms({TAVRO_BENCH_START_LIBRARY " " + device->configuration()}),
                       inPrograms({TAVRO_BENCH_START_LIMIT})};
    };
    return {{"start", "program", {1}, make, 20}};
}

}  // namespace bench
