#pragma once

#include <string>
#include <vector>

namespace tavro::service {

struct Call;
struct DeviceResponse;

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

/// An element of an XML request, or a field of a form.
struct RequestField {
    RequestField(const char* called, bool wanted = true) : name(called), required(wanted) {}

    const char* name;
    bool required;  ///< whether it must have a value
};

/// All there is to say about an operation.
struct OperationDescription {
    Operation operation;
    const char* name;                  ///< as its address spells it
    const char* root;                  ///< root element of its XML; null if it is a multipart form
    std::vector<RequestField> fields;  ///< exactly these in this order; a form may have more
    DeviceResponse (*handler)(Call& call);

    /// Whether a request is a multipart form, not XML.
    bool isForm() const { return root == nullptr; }

    /// Path of its address.
    std::string path() const {
        return isForm() ? std::string("/") + name + ".aspx"
                        : std::string("/IOSCloudManagement.svc/") + name;
    }
};

/// Every operation.
const std::vector<OperationDescription>& allOperations();

/// What there is to say about `operation`.
const OperationDescription& descriptionOf(Operation operation);

/// The names of all operations, with commas between them.
std::string operationNames();

/// The operation called `name`. Throws `std::invalid_argument` that names those that there are.
Operation operationNamed(const std::string& name);

/// Name of `operation`, spelt as in its address.
inline const char* name(Operation operation) {
    return descriptionOf(operation).name;
}

}  // namespace tavro::service
