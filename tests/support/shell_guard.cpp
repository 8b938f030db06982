#include "support/shell_guard.h"

#include <cstdlib>
#include <regex>

#include "support/device_root.h"
#include "support/next_function.h"

bool isBelowDeviceRoot(const std::string& path) {
    const std::string inside = deviceRoot() + "/";
    return path.rfind(inside, 0) == 0 && path.size() > inside.size() &&
           path.find("..") == std::string::npos;
}

int runBelowDeviceRoot(const std::string& command) {
    static const std::regex removal(std::string("rm (-rf )?([A-Za-z0-9") +
                                    device_root::plain_punctuation + "]+?)(/\\*)?");
    std::smatch words;
    if (!std::regex_match(command, words, removal) || words[1].matched == words[3].matched ||
        !isBelowDeviceRoot(words[2]))
        return 0;
    return next<int(const char*)>("system")(command.c_str());
}

void guardStartedPrograms(const TemporaryFolder& folder) {
    const std::string places = deviceRoot() + "/?* | " + folder / "?*";
    writeProgram(folder / "guard/killall", "");
    writeProgram(folder / "guard/rm", "for word; do case $word in *..*) exit 1 ;; -rf | " + places +
                                          ") ;; *) exit 1 ;; esac; done\nexec /bin/rm \"$@\"\n");
    ::setenv("PATH", (folder / "guard:" + std::getenv("PATH")).c_str(), 1);
}
