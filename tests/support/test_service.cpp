#include "support/test_service.h"

#include <algorithm>

using namespace tavro::service;

namespace {

Options optionsFor(const TemporaryFolder& folder) {
    Options options;
    options.books = folder / "books";
    for (const std::string title : {"first", "second"})
        writeFile(options.books / (title + ".txt"), "The " + title + " book.\n");
    return options;
}

}  // namespace

TestService::TestService(const TemporaryFolder& folder) : Service(optionsFor(folder)) {}

void TestService::inject(const std::string& fault) {
    const NamedFault parsed = parseFault(fault);
    Service::inject(parsed.first, parsed.second);
}

void TestService::answer(Operation operation, const std::string& body) {
    Fault fault;
    fault.body = body;
    clearFaults();
    Service::inject(operation, fault);
}

std::size_t TestService::count(Operation operation) const {
    const std::vector<Request> all = requests();
    return static_cast<std::size_t>(std::count_if(
        all.begin(), all.end(),
        [operation](const Request& request) { return request.operation == operation; }));
}

std::string answerXml(const std::string& code, const std::string& more) {
    return "<Answer><Error>" + code + "</Error><Message>text</Message>" + more + "</Answer>";
}
