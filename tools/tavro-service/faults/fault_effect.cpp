#include "faults/fault_effect.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "faults/fault_keys.h"

namespace tavro::service {

bool hasEffect(const Fault& fault) {
    return std::any_of(faultKeys().begin(), faultKeys().end(), [&](const FaultKey& key) {
        return key.get && key.name != std::string_view("times") && !key.get(fault).is_null();
    });
}

bool isCarriedOut(const Fault& fault) {
    return !fault.closeConnection && (!fault.resultCode || isSuccess(*fault.resultCode));
}

void apply(const Fault& fault, DeviceResponse& response) {
    const bool carriesCode = !response.content;  // not so the content of a book
    if (fault.resultCode && carriesCode)
        response.code = *fault.resultCode;
    if (fault.httpStatus)
        response.status = *fault.httpStatus;
    if (fault.fileName)
        response.fileName = *fault.fileName;
    if (fault.malformed)
        response.content =
            contentOf("<?xml version=\"1.0\"?><Answer><Error>1003</Message></Answer>");
    if (fault.body)
        response.content = contentOf(*fault.body);
}

}  // namespace tavro::service
