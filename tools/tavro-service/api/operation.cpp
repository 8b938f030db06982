#include "api/operation.h"

namespace tavro::service {

const char* name(Operation operation) {
    static constexpr std::array<const char*, all_operations.size()> names = {
        "RegisterDevice", "CreateUser",    "LoginUser",     "ForgetPassword",
        "GetShopURL",     "SysnWithCloud", "UploadContent", "DownloadContent"};
    return names[static_cast<std::size_t>(operation)];
}

std::optional<Operation> operationNamed(std::string_view wanted) {
    for (const Operation operation : all_operations) {
        if (wanted == name(operation))
            return operation;
    }
    return std::nullopt;
}

bool isContentPage(Operation operation) {
    return operation == Operation::UploadContent || operation == Operation::DownloadContent;
}

std::string pathOf(Operation operation) {
    if (isContentPage(operation))
        return "/" + std::string(name(operation)) + ".aspx";
    return "/IOSCloudManagement.svc/" + std::string(name(operation));
}

}  // namespace tavro::service
