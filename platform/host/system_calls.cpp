// Process start-up, partner code, applications and events.

#include <cerrno>

#include "decimal.h"
#include "lectern.h"

void InitLectern(int /*flags*/) {}

int GetCustomizedPartner() {
    constexpr int default_partner = 16;
    return environmentNumber("TAVRO_PARTNER", default_partner);
}

// A desktop has no application manager yet: well-formed calls fail with ENOSYS.

int OpenBook(const char* path, const char* /*parameters*/, int /*flags*/) {
    errno = path == nullptr || *path == '\0' ? EINVAL : ENOSYS;
    return -1;
}

int SendEventTo(int target, int type, int /*parameter1*/, int /*parameter2*/) {
    errno = target < 0 || type < 0 ? EINVAL : ENOSYS;
    return -1;
}
