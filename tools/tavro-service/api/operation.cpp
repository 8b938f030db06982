#include "api/operation.h"

#include <stdexcept>

#include "api/handlers.h"

namespace tavro::service {

// The spellings differ from operation to operation, as devices have always sent them.
const std::vector<OperationDescription>& allOperations() {
    constexpr const char* form = nullptr;
    constexpr bool optional = false;
    static const std::vector<OperationDescription> operations = {
        {Operation::RegisterDevice,
         "RegisterDevice",
         "/IOSCloudManagement.svc/RegisterDevice",
         "DeviceRequest",
         {{"DeviceId"},
          {"DeviceType"},
          {"ServiceConsumerID"},
          {"ServiceConsumerPassword"},
          {"ShopID", optional}},
         registerDevice},
        {Operation::CreateUser,
         "CreateUser",
         "/IOSCloudManagement.svc/CreateUser",
         "RegisterUserRequest",
         {{"Email"}, {"FirstName", optional}, {"LastName", optional}, {"Password"}, {"Token"}},
         createUser},
        {Operation::LoginUser,
         "LoginUser",
         "/IOSCloudManagement.svc/LoginUser",
         "LoginRequest",
         {{"EmailID"}, {"Password"}, {"DeviceID"}, {"Token"}},
         loginUser},
        {Operation::ForgetPassword,
         "ForgetPassword",
         "/IOSCloudManagement.svc/ForgetPassword",
         "ForgetPasswordRequest",
         {{"EmailID"}, {"Token"}},
         forgetPassword},
        {Operation::GetShopURL,
         "GetShopURL",
         "/IOSCloudManagement.svc/GetShopURL",
         "ShopInfoRequest",
         {{"DeviceId"}, {"DeviceType"}, {"ServiceConsumerID"}, {"ServiceConsumerPassword"}},
         getShopUrl},
        {Operation::SysnWithCloud,
         "SysnWithCloud",
         "/IOSCloudManagement.svc/SysnWithCloud",
         "SyncRequest",
         {{"SessionID"}, {"Token"}, {"LastSynDateTime", optional}},
         synchronise},
        {Operation::UploadContent,
         "UploadContent",
         "/UploadContent.aspx",
         form,
         {{"Token"}, {"SessionId"}, {"ItemId"}, {"file", optional}},
         uploadContent},
        {Operation::DownloadContent,
         "DownloadContent",
         "/DownloadContent.aspx",
         form,
         {{"Token"}, {"SessionId"}, {"ItemId"}},
         downloadContent},
    };
    return operations;
}

const OperationDescription& descriptionOf(Operation operation) {
    for (const OperationDescription& description : allOperations()) {
        if (description.operation == operation)
            return description;
    }
    throw std::logic_error("an operation without a description");
}

}  // namespace tavro::service
