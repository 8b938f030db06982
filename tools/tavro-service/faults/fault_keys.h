#pragma once

#include <nlohmann/json_fwd.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "faults/fault.h"

namespace tavro::service {

/// One setting of a fault as it was given. Whatever reads the value throws `std::invalid_argument`
/// that says what is wrong with it.
struct Setting {
    std::string key;
    std::string value;

    /// The exception that says that `wanted`.
    std::invalid_argument wrong(const std::string& wanted) const;

    /// The value as a number from `lowest` to `highest`.
    int number(int lowest, int highest) const;

    /// The value as true or false; true if it is empty.
    bool flag() const;

    /// The bytes of which the value is the hexadecimal digits.
    std::string bytes() const;

    /// The bytes of the file that the value names.
    std::string fileContent() const;
};

/// All there is to say about one key of a fault.
struct FaultKey {
    const char* name;
    const char* argument;  ///< as the help shows it after the name
    const char* help;
    void (*set)(Fault& fault, const Setting& setting);
    /// Its value in JSON, null if it is not set; no function if another key stands for it there.
    nlohmann::json (*get)(const Fault& fault);
    bool onlyFromCommandLine = false;
};

/// Every key of a fault.
const std::vector<FaultKey>& faultKeys();

}  // namespace tavro::service
