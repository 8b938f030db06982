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

/// `fault` as a JSON object of the same keys, "operation" and "body-hex" among them.
std::string faultToJson(const NamedFault& fault);

/// Reads what `faultToJson` writes. Throws `std::invalid_argument`. A "body-file" is refused:
/// whoever speaks to a running service must not make it read files.
NamedFault faultFromJson(const std::string& json);

/// Whether any key of `fault` is set that does something to an answer.
bool hasEffect(const Fault& fault);

/// Lines that explain operations and keys, for help texts.
std::string faultHelp();

}  // namespace tavro::service
