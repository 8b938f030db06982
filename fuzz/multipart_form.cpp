/// The service's reader of forms, fed part by part as the HTTP library does. Promises: a form comes
/// with its fields in order and its file on disk to the byte, or is refused; no more is kept than
/// the limit says; the file goes with the form.

#include <fuzzer/FuzzedDataProvider.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "api/result.h"
#include "http/body_reader.h"
#include "require.h"
#include "support/temporary_folder.h"

using namespace tavro::service;

namespace {

constexpr std::size_t limit = 200;

struct Part {
    std::string name;
    std::string fileName;
    std::vector<std::string> pieces;

    std::string content() const {
        std::string all;
        for (const std::string& piece : pieces)
            all += piece;
        return all;
    }
};

std::vector<Part> partsFrom(FuzzedDataProvider& input) {
    std::vector<Part> parts;
    while (input.remaining_bytes() > 0 && parts.size() < 20) {
        Part& part = parts.emplace_back();
        part.name = input.ConsumeBool() ? "file" : input.ConsumeRandomLengthString(20);
        part.fileName = input.ConsumeRandomLengthString(20);
        while (input.ConsumeBool())
            part.pieces.push_back(input.ConsumeRandomLengthString(100));
    }
    return parts;
}

/// What the HTTP library hands to the reader of a form of `parts`.
httplib::ContentReader readerOf(const std::vector<Part>& parts) {
    return {[](const httplib::ContentReceiver&) { return true; },
            [&parts](const httplib::MultipartContentHeader& begin,
                     const httplib::ContentReceiver& add) {
                for (const Part& part : parts) {
                    begin({part.name, "", part.fileName, "text/plain"});
                    for (const std::string& piece : part.pieces)
                        add(piece.data(), piece.size());
                }
                return true;
            }};
}

std::size_t sizeOf(const std::vector<Part>& parts) {
    std::size_t size = 0;
    for (const Part& part : parts)
        size += part.content().size();
    return size;
}

void requireSame(const Form& form, const std::vector<Part>& parts) {
    require(form.fields.size() == parts.size(), "a form has all of its fields");
    bool seen = false;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto& [name, value] = form.fields[i];
        require(name == parts[i].name, "fields come in order");
        const bool isFile = !seen && name == "file";
        seen = seen || isFile;
        const std::string expected = parts[i].content();
        if (isFile)
            require(form.file && readFile(form.file.path()) == expected, "the file is on disk");
        else
            require(value == expected, "a field has its value");
    }
    require(seen == static_cast<bool>(form.file), "there is a file if one was sent");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    FuzzedDataProvider input(data, size);
    const std::vector<Part> parts = partsFrom(input);
    httplib::Request request;
    request.headers.emplace("Content-Type", "multipart/form-data; boundary=x");
    try {
        const Form form = readForm(request, readerOf(parts), limit, folder / "");
        require(sizeOf(parts) <= limit, "what is too large is refused");
        requireSame(form, parts);
    } catch (const RequestError& error) {
        require(&error.result() == &result::body_too_large && sizeOf(parts) > limit,
                "only what is too large is refused");
    }
    require(std::filesystem::is_empty(folder / ""), "the file goes with the form");
    return 0;
}
