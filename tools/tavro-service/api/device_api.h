#pragma once

#include <optional>
#include <string>
#include <utility>

#include "api/answer.h"
#include "api/device_request.h"
#include "api/form.h"
#include "state/accounts.h"
#include "state/catalogue.h"

namespace tavro::service {

/// A request as it came over the line.
struct Message {
    Operation operation;
    std::string body;     ///< of an XML request
    Form form;            ///< of a content page
    std::string baseUrl;  ///< address of this service as the device knows it
};

/// What a device may have to prove besides its requests' form.
struct ApiOptions {
    AnswerStyle style;
    /// Identifier and password of the only consumer that may register devices; any if unset.
    std::optional<std::pair<std::string, std::string>> consumer;
};

/// The service behind its addresses: reads requests, keeps the state, makes answers. Not to be used
/// by two threads at once.
class DeviceApi {
public:
    /// Works on `accounts` and `catalogue`, which must outlive the object.
    DeviceApi(Accounts& accounts, Catalogue& catalogue, ApiOptions options);

    /// Carries out the request `message` and answers it, on success with `code` unless that is
    /// empty. Throws `Refusal` when the request is to be
    /// refused, and other exceptions when the service itself fails.
    Answer answer(const Message& message, const std::string& code);

    /// An answer that carries nothing but `result`, or the code `code` in its place unless empty.
    Answer resultAnswer(Operation operation, const Result& result, const std::string& code) const;

private:
    using Handler = Answer (DeviceApi::*)(const Message&, const std::string& code);

    Answer registerDevice(const Message& message, const std::string& code);
    Answer createUser(const Message& message, const std::string& code);
    Answer loginUser(const Message& message, const std::string& code);
    Answer forgetPassword(const Message& message, const std::string& code);
    Answer shopInformation(const Message& message, const std::string& code);
    Answer synchronise(const Message& message, const std::string& code);
    Answer upload(const Message& message, const std::string& code);
    Answer download(const Message& message, const std::string& code);

    AnswerDocument success(Operation operation, const std::string& code) const;
    void requireConsumer(const Values& values) const;
    std::string requireDevice(const std::string& token);
    void requireSession(const std::string& session, const std::string& token);
    Book requireItem(const Form& form);

    Accounts& accounts_;
    Catalogue& catalogue_;
    ApiOptions options_;
};

}  // namespace tavro::service
