#include <core_utils.h>

#include <sstream>

#include "device-check/module_checks.h"

namespace tavro::device_check {

extern "C" void tavro_check_string_list(const Context&, std::string& found) {
    using folium::utilities::SerializationUtils;
    const std::string list("\2\0\0\0\3\0\0\0one\3\0\0\0two", 18);
    std::vector<std::string> texts = {"replaced"};
    std::istringstream whole(list);
    expect(SerializationUtils::DeserializeStringVec(whole, texts), "refuses a list of two texts");
    expect(texts == std::vector<std::string>{"one", "two"}, "reads other texts than the list's");
    std::istringstream cut(list.substr(0, list.size() - 1));
    expect(!SerializationUtils::DeserializeStringVec(cut, texts), "takes a list that is cut");
    expect(texts.empty(), "leaves texts of a list that is cut");
    found = "reads a list, refuses a cut one";
}

}  // namespace tavro::device_check
