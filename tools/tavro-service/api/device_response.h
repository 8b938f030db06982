#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "api/operation.h"
#include "api/result.h"

namespace tavro::service {

/// Bytes of an answer, taken piece by piece from wherever they lie.
struct Content {
    std::size_t size = 0;

    /// Puts up to `capacity` bytes from `offset` into `buffer`; how many, 0 at the end or when the
    /// bytes cannot be read any more.
    std::function<std::size_t(std::size_t offset, char* buffer, std::size_t capacity)> read;
};

/// The bytes of `text`.
Content contentOf(std::string text);

/// The bytes of the file `path` as it is now: it is kept open, so that replacing it meanwhile does
/// no harm. Throws `std::system_error` if it cannot be opened.
Content contentOfFile(const std::filesystem::path& path);

/// An XML element with a text or with elements of its own.
struct Element {
    std::string name;
    std::string text;
    std::vector<Element> children = {};
};

/// What goes back to the device: XML that begins with the result, unless there is other content.
struct DeviceResponse {
    /// XML that says `result` and then `elements`.
    explicit DeviceResponse(const Result& result = result::success,
                            std::vector<Element> elements = {});

    std::string code;
    int status;
    std::string message;
    std::vector<Element> elements;
    std::string contentType = "text/xml; charset=utf-8";
    std::string fileName;            ///< announced in a header line of its own unless empty
    std::optional<Content> content;  ///< in the XML's place
};

/// The body of `response` to a request of `operation`. Texts in XML are escaped with entity
/// references or with CDATA.
Content bodyOf(const DeviceResponse& response, Operation operation, bool entityReferences);

}  // namespace tavro::service
