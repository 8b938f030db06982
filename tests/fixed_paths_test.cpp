// Where the library looks on a device. It also runs against the shipped configuration, whose paths
// are the device's own: nothing that it asks for here reaches the system.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <lectern.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/device_root.h"
#include "support/processes.h"
#include "tavro_client.h"
#include "tavro_entry_points.h"
#include "tavroserver.h"

namespace {

/// What the tests of the shipped configuration choose is not heard.
const std::string root = device_root::is_fixed ? "" : deviceRoot();

std::vector<std::string> asked;

/// Whether calls are noted and refused. Other libraries make some of them before the test begins.
bool listening = false;

int refuse(const char* path) {
    asked.emplace_back(path);
    errno = ENOENT;
    return -1;
}

}  // namespace

// These stand before the system's and the platform's.

extern "C" int system(const char* command) {
    return refuse(command);
}

extern "C" int open(const char* path, int flags, ...) {
    return listening ? refuse(path) : ::openat(AT_FDCWD, path, flags, 0600);
}

extern "C" int stat(const char* path, struct stat* status) noexcept {
    return listening ? refuse(path) : ::fstatat(AT_FDCWD, path, status, 0);
}

extern "C" int execl(const char* path, const char*, ...) noexcept {
    refuse(path);
    ::_exit(asked.back() == root + "/ebrmain/bin/tavro_sync.app" ? 0 : 1);
}

extern "C" int OpenBook(const char* path, const char*, int) {
    return refuse(path);
}

extern "C" int SendEventTo(int, int, int, int) {
    return 0;
}

extern "C" LecternConfig* OpenConfig(const char* path, const void*) {
    refuse(path);
    return nullptr;
}

// The first: what has asked for the root keeps it.
TEST(FixedPaths, RootIsTheEnvironmentsIfAShellTakesItForOneWord) {
    const std::string built = device_root::configured;
    const std::pair<const char*, std::string> cases[] = {{"/a_1/b-c", "/a_1/b-c"},
                                                         {"/a//", "/a"},
                                                         {"/a/../b", "/a/../b"},
                                                         {"", built},
                                                         {"relative", built},
                                                         {"/", built},
                                                         {"/a/..", built},
                                                         {"/../a", built},
                                                         {"/a b", built},
                                                         {"/$HOME", built},
                                                         {"/a;b", built},
                                                         {"/a\n", built},
                                                         {"/B\xC3\xBC"
                                                          "cher",
                                                          built}};
    inProcesses(std::size(cases), [&](int number) {
        const auto& [value, chosen] = cases[number];
        ::setenv(device_root::variable, value, 1);
        EXPECT_EQ((device_root::is_fixed ? "" : chosen) + "/mnt/ext1/system/config/tavro",
                  TavroClient().GetProfile())
            << value;
    });
    const std::string binary = readFile(TAVRO_TEST_LIBRARY);
    ASSERT_NE("", binary);
    for (const char* word : {device_root::variable, "getenv"})
        EXPECT_EQ(device_root::is_fixed, binary.find(word) == std::string::npos) << word;
}

TEST(FixedPaths, AreTheDevicesOwnBelowTheDeviceRoot) {
    const std::string config = root + "/mnt/ext1/system/config/tavro";
    ::setenv("TAVRO_PARTNER", "16", 1);
    listening = true;
    TavroClient client;
    EXPECT_EQ(client.GetProfile(), config);
    client.IsLoggedIn();
    client.StartLoginWizard();
    tavro_get_book_status("/a.file");
    const TavroServer server("");
    client.LogOut();
    std::vector<std::string> expected{config + "/.tavro_vendor_token",
                                      root + "/ebrmain/bin/tavro_wizard.app",
                                      config + "/.files_to_download",
                                      root + "/mnt/ext1/system/config/server_connection_data.cfg",
                                      config + "/.tavro.conf",
                                      "",
                                      config + "/.tavro.conf",
                                      "rm -rf " + config,
                                      "rm -rf " + root + "/mnt/ext1/.adobe-hidden-files",
                                      "killall browser.app"};
    if (sizeof(void*) == 4)  // the library asks a 32-bit system for the marker past the C library
        expected.erase(expected.begin());
    EXPECT_EQ(asked, expected);

    client.StartSync();
    listening = false;
    int status = -1;
    ::wait(&status);
    EXPECT_EQ(status, 0);
}
