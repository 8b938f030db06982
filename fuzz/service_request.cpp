/// The service's reader of XML requests. Promises: a body of any kind is refused with a result code
/// or gives exactly the values of its operation, none empty that is required.

#include <string>

#include "api/device_request.h"
#include "api/result.h"
#include "require.h"

using namespace tavro::service;

namespace {

void requireComplete(const Values& values, const OperationDescription& operation) {
    require(values.size() == operation.fields.size(), "a request has its operation's values");
    for (const RequestField& field : operation.fields) {
        const auto value = values.find(field.name);
        require(value != values.end() && !(field.required && value->second.empty()),
                "a required value is not empty");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string body(reinterpret_cast<const char*>(data), size);
    for (const OperationDescription& operation : allOperations()) {
        if (operation.isForm())
            continue;
        try {
            requireComplete(readValues({operation.operation, "", body, {}}), operation);
        } catch (const RequestError& error) {
            require(error.result().code[0] == '2', "a refusal has a code of its own");
        }
    }
    return 0;
}
