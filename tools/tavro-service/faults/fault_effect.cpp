#include "faults/fault_effect.h"

namespace tavro::service {

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
