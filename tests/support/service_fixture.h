#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "server/built_in_settings.h"
#include "support/test_service.h"
#include "tavroserver.h"

/// A running service and a library that is connected to it, with nothing read from the device
/// root: the partner code is one without a settings file.
class ServiceFixture : public ::testing::Test {
protected:
    ServiceFixture() {
        ::setenv("TAVRO_PARTNER", "0", 1);
        const std::string host = "http://127.0.0.1";
        TavroServer::baseApiUrl = host + service_paths::device_api;
        TavroServer::uploadUrl = host + service_paths::upload;
        TavroServer::downloadUrl = host + service_paths::download;
        TavroServer::apiPort = TavroServer::uploadPort = TavroServer::downloadPort = service.port();
    }

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
