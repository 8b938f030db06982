// Process start-up and partner code.

#include "decimal.h"
#include "lectern.h"

void InitLectern(int /*flags*/) {}

int GetCustomizedPartner() {
    constexpr int default_partner = 16;
    return environmentNumber("TAVRO_PARTNER", default_partner);
}
