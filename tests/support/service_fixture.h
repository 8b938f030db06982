#pragma once

#include <gtest/gtest.h>

#include <string>

#include "service.h"
#include "support/temporary_folder.h"
#include "tavroserver.h"

/// A running service and a library that is connected to it, with nothing read from the device
/// root: the partner code is one without a settings file.
class ServiceFixture : public ::testing::Test {
protected:
    ServiceFixture();

    /// Answers the next `times` requests of `operation` (0: all of them) with exactly `body`.
    void answer(tavro::service::Operation operation, const std::string& body, int times = 0);

    /// The last request that the service received.
    tavro::service::Request lastRequest() const;

    /// Runs `action` and returns what the process wrote to its standard error stream meanwhile.
    template <typename Action>
    static std::string standardErrorOf(Action action) {
        ::testing::internal::CaptureStderr();
        action();
        return ::testing::internal::GetCapturedStderr();
    }

    TemporaryFolder folder;
    tavro::service::Service service;
};

/// An answer of the service with result code `code` and `more` elements.
std::string answerXml(const std::string& code, const std::string& more = {});
