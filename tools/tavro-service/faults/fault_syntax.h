#pragma once

#include <string>
#include <vector>

#include "faults/fault.h"

namespace tavro::service {

/// Reads "OPERATION:key=value,key=value". Throws `std::invalid_argument` that says what is wrong.
NamedFault parseFault(const std::string& text);

/// Reads an operation and its "key=value" texts. Throws `std::invalid_argument` alike; also when a
/// "body-file" cannot be read.
NamedFault parseFault(const std::string& operation, const std::vector<std::string>& settings);

/// Reads the file `path` with a fault on each line, written as "OPERATION:key=value,key=value" or
/// as a JSON object; lines that are empty or begin with "#" are passed over. Throws
/// `std::invalid_argument` that names the line.
std::vector<NamedFault> readFaults(const std::string& path);

/// `fault` as a JSON object of the same keys, "operation" and "body-hex" among them.
std::string faultToJson(const NamedFault& fault);

/// Reads what `faultToJson` writes. Throws `std::invalid_argument`. A "body-file" is refused:
/// whoever speaks to a running service must not make it read files.
NamedFault faultFromJson(const std::string& json);

/// Whether any key of `fault` is set that does something to an answer.
bool hasEffect(const Fault& fault);

/// Lines that explain operations and keys, for help texts.
std::string faultHelp();

/// What a person is told of one key of a fault.
struct FaultKeyHelp {
    const char* name;
    const char* argument;  ///< as "=MS"; empty for a flag
    const char* help;
};

/// The keys that a fault may have in JSON.
std::vector<FaultKeyHelp> faultKeyHelp();

}  // namespace tavro::service
