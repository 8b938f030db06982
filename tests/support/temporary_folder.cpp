#include "support/temporary_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "bookmap.h"
#include "platform/account_files.h"

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() : owner_(::getpid()) {
    std::string name = fs::temp_directory_path() / "tavro-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder");
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    if (::getpid() != owner_)  // a child that ends must not take it from the test
        return;
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeFile(const fs::path& path, const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    if (!stream.write(content.data(), static_cast<std::streamsize>(content.size())))
        throw std::runtime_error("cannot write " + path.string());
}

void writeProgram(const fs::path& path, const std::string& text) {
    writeFile(path, "#!/bin/sh\n" + text);
    fs::permissions(path, fs::perms::owner_all);
}

std::string accountConfiguration(const std::string& syncFolder) {
    return "SerialNumber=SN-0001\nConsumerID=consumer\nConsumerPassword=secret\n"
           "DeviceType=reader\nEmail=ada@reader.example\nFirstName=Ada\nLastName=Lovelace\n"
           "DownloadFolderPath=" +
           syncFolder + "\n";
}

void addToMap(const std::string& configuration, const std::map<std::string, int>& books) {
    BookMap map;
    map.path = configuration + "/" + account_files::book_map;
    for (const auto& [name, item] : books)
        map.Add(name, item);
}
