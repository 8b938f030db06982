#include "http/body_reader.h"

#include <algorithm>

#include "api/result.h"
#include "state/catalogue.h"
#include "text/text.h"

namespace tavro::service {

namespace {

/// Largest body, or form without its file, that is kept in memory, in bytes.
constexpr std::size_t largest_text = 1u << 20;

/// Most parts of a form, and most bytes of a part's name and type and of its file's name.
constexpr std::size_t most_parts = 64;
constexpr std::size_t longest_name = 256;
constexpr std::size_t longest_file_name = 1024;

bool isModest(const httplib::MultipartFormData& part) {
    return part.name.size() <= longest_name && part.content_type.size() <= longest_name &&
           part.filename.size() <= longest_file_name;
}

class Allowance {
public:
    explicit Allowance(std::size_t limit) : left_(limit) {}

    /// Whether `size` more bytes are within the limit, and all before them were.
    bool take(std::size_t size) {
        exceeded_ = exceeded_ || size > left_;
        left_ -= exceeded_ ? 0 : size;
        return !exceeded_;
    }

    bool exceeded() const { return exceeded_; }

private:
    std::size_t left_;
    bool exceeded_ = false;
};

/// The file name that libcurl wrote as `name`. Newer versions write a quote and line ends like
/// bytes of an address, "%22", and leave all else alone; older ones put a backslash before a quote
/// and before a backslash. A backslash before a quote is nothing that newer versions send.
std::string unescaped(const std::string& name) {
    const bool backslashes = name.find("\\\"") != std::string::npos;
    std::string plain;
    for (std::size_t place = 0; place < name.size(); ++place) {
        const std::string_view escape = std::string_view(name).substr(place, 3);
        if (backslashes && name[place] == '\\' && place + 1 < name.size()) {
            plain += name[++place];
        } else if (!backslashes && (escape == "%22" || escape == "%0D" || escape == "%0A")) {
            plain += hexDecode(escape.substr(1)).value();
            place += 2;
        } else {
            plain += name[place];
        }
    }
    return plain;
}

/// Whether the client announces more than `limit` bytes, which the HTTP library then passes over.
bool announcesMore(const httplib::Request& request, std::size_t limit) {
    return request.get_header_value<std::uint64_t>("Content-Length") > limit;
}

void check(bool complete, bool tooLarge) {
    if (tooLarge)
        throw RequestError(result::body_too_large);
    if (!complete)
        throw RequestError(result::malformed_request);
}

/// Reads a body of either kind; `begin` is told of each part of a form, `add` of bytes. @return
/// whether it came whole.
bool readEither(const httplib::Request& request, const httplib::ContentReader& reader,
                const httplib::MultipartContentHeader& begin, const httplib::ContentReceiver& add) {
    return request.is_multipart_form_data() ? reader(begin, add) : reader(add);
}

}  // namespace

std::string readBody(const httplib::Request& request, const httplib::ContentReader& reader,
                     std::size_t limit) {
    std::string body;
    Allowance allowance(std::min(limit, largest_text));
    const auto add = [&](const char* bytes, std::size_t size) {
        if (allowance.take(size))
            body.append(bytes, size);
        return true;
    };
    const auto begin = [](const httplib::MultipartFormData&) { return true; };
    const bool complete = readEither(request, reader, begin, add);
    check(complete && !request.is_multipart_form_data(),
          allowance.exceeded() || announcesMore(request, limit));
    return body;
}

void discardBody(const httplib::Request& request, const httplib::ContentReader& reader) {
    readEither(
        request, reader, [](const httplib::MultipartFormData&) { return true; },
        [](const char*, std::size_t) { return true; });
}

Form readForm(const httplib::Request& request, const httplib::ContentReader& reader,
              std::size_t limit, const std::filesystem::path& folder) {
    Form form;
    Allowance allowance(limit);
    Allowance textAllowance(largest_text);
    bool inFile = false;
    bool modest = true;
    const auto begin = [&](const httplib::MultipartFormData& part) {
        modest = modest && isModest(part) && form.fields.size() < most_parts;
        if (!modest)
            return true;
        inFile = part.name == "file" && !form.file;
        form.fields.emplace_back(part.name, inFile ? unescaped(part.filename) : "");
        if (inFile) {
            form.file = posix::TemporaryFile(folder / unfinished_upload);
            form.fileContentType = part.content_type;
        }
        return true;
    };
    const auto add = [&](const char* bytes, std::size_t size) {
        const bool part = !form.fields.empty();  // else the body is no form at all
        if (!part || !modest || !allowance.take(size) || (!inFile && !textAllowance.take(size)))
            return true;
        if (inFile)
            form.file.write({bytes, size});
        else
            form.fields.back().second.append(bytes, size);
        return true;
    };
    const bool complete = readEither(request, reader, begin, add);
    check(complete && modest && request.is_multipart_form_data(),
          allowance.exceeded() || textAllowance.exceeded() || announcesMore(request, limit));
    return form;
}

}  // namespace tavro::service
