#pragma once

#include "device-check/check.h"

namespace tavro::device_check {

/// Prints what came of the checks, on standard output.
class Report {
public:
    /// One JSON document at the end if `asJson`, otherwise a line for each check at once.
    explicit Report(bool asJson) : asJson_(asJson) {}

    /// Takes one result.
    void add(const Check& check, const Result& result);

    /// Prints what is to be printed at the end.
    void finish() const;

    /// Whether nothing was wrong.
    bool isGood() const { return wrong_ == 0; }

private:
    bool asJson_;
    int wrong_ = 0;
    std::string json_;
};

}  // namespace tavro::device_check
