#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/test_service.h"
#include "tavroserver.h"

/// A running service and a library that is connected to it, with nothing read from the device
/// root: the partner code is one without a settings file.
class ServiceFixture : public ::testing::Test {
protected:
    ServiceFixture();

    /// The last request that the service received.
    tavro::service::Request lastRequest() const { return service.requests().back(); }

    /// Runs `action` and returns what the process wrote to its standard error stream meanwhile.
    template <typename Action>
    static std::string standardErrorOf(Action action) {
        ::testing::internal::CaptureStderr();
        action();
        return ::testing::internal::GetCapturedStderr();
    }

    TemporaryFolder folder;
    TestService service{folder};
};
