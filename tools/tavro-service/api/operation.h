#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace tavro::service {

/// What a device can ask of the service.
enum class Operation {
    RegisterDevice,
    CreateUser,
    LoginUser,
    ForgetPassword,
    GetShopURL,
    SysnWithCloud,
    UploadContent,
    DownloadContent
};

inline constexpr std::array all_operations = {
    Operation::RegisterDevice, Operation::CreateUser,     Operation::LoginUser,
    Operation::ForgetPassword, Operation::GetShopURL,     Operation::SysnWithCloud,
    Operation::UploadContent,  Operation::DownloadContent};

/// Name of `operation`, spelt as in its address.
const char* name(Operation operation);

/// The operation called `name`; none if there is no such operation.
std::optional<Operation> operationNamed(std::string_view name);

/// Whether `operation` is a form with a book's content, not an XML request of the device API.
bool isContentPage(Operation operation);

/// Path of the address at which `operation` is asked for.
std::string pathOf(Operation operation);

}  // namespace tavro::service
