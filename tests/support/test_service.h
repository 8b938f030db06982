#pragma once

#include <string>

#include "service.h"
#include "support/temporary_folder.h"

/// A running service on a free port, with a few small books and whatever faults a test wants.
class TestService : public tavro::service::Service {
public:
    /// Serves the folder "books" of `folder`, where it puts first.txt and second.txt.
    explicit TestService(const TemporaryFolder& folder);

    /// Adds a fault, spelt "OPERATION:key=value,..." as the service's own command line takes it.
    void inject(const std::string& fault);

    /// Drops all faults and from then on answers `operation` with exactly `body`.
    void answer(tavro::service::Operation operation, const std::string& body);

    /// How many requests of `operation` came.
    std::size_t count(tavro::service::Operation operation) const;
};

/// An answer of the service with result code `code` and `more` elements.
std::string answerXml(const std::string& code, const std::string& more = {});
