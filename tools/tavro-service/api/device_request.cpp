#include "api/device_request.h"

#include <algorithm>

namespace tavro::service {

std::string Form::value(const std::string& name) const {
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [&](const auto& candidate) { return candidate.first == name; });
    return field == fields.end() ? "" : field->second;
}

}  // namespace tavro::service
