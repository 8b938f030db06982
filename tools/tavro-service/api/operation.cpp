#include "api/operation.h"

#include <stdexcept>

#include "api/handlers.h"

namespace tavro::service {

// The spellings differ from operation to operation, as devices have always sent them.
// NOLINTNEXTLINE(readability-function-size): a table, not steps
const std::vector<OperationDescription>& allOperations() {
    constexpr const char* form = nullptr;
    const auto optional = [](const char* name) { return RequestField(name, false); };
    static const std::vector<OperationDescription> operations = {
        {Operation::RegisterDevice,
         "RegisterDevice",
         "DeviceRequest",
         {"DeviceId", "DeviceType", "ServiceConsumerID", "ServiceConsumerPassword",
          optional("ShopID")},
         registerDevice},
        {Operation::CreateUser,
         "CreateUser",
         "RegisterUserRequest",
         {"Email", optional("FirstName"), optional("LastName"), "Password", "Token"},
         createUser},
        {Operation::LoginUser,
         "LoginUser",
         "LoginRequest",
         {"EmailID", "Password", "DeviceID", "Token"},
         loginUser},
        {Operation::ForgetPassword,
         "ForgetPassword",
         "ForgetPasswordRequest",
         {"EmailID", "Token"},
         forgetPassword},
        {Operation::GetShopURL,
         "GetShopURL",
         "ShopInfoRequest",
         {"DeviceId", "DeviceType", "ServiceConsumerID", "ServiceConsumerPassword"},
         getShopUrl},
        {Operation::SysnWithCloud,
         "SysnWithCloud",
         "SyncRequest",
         {"SessionID", "Token", optional("LastSynDateTime")},
         synchronise},
        {Operation::UploadContent,
         "UploadContent",
         form,
         {"Token", "SessionId", "ItemId", optional("file")},
         uploadContent},
        {Operation::DownloadContent,
         "DownloadContent",
         form,
         {"Token", "SessionId", "ItemId"},
         downloadContent},
    };
    return operations;
}

std::string operationNames() {
    std::string names;
    for (const OperationDescription& operation : allOperations())
        names += std::string(names.empty() ? "" : ", ") + operation.name;
    return names;
}

Operation operationNamed(const std::string& name) {
    for (const OperationDescription& operation : allOperations()) {
        if (operation.name == name)
            return operation.operation;
    }
    throw std::invalid_argument("there is no operation \"" + name + "\", only " + operationNames());
}

const OperationDescription& descriptionOf(Operation operation) {
    for (const OperationDescription& description : allOperations()) {
        if (description.operation == operation)
            return description;
    }
    throw std::logic_error("an operation without a description");
}

}  // namespace tavro::service
